#pragma once

#include "Platform/Linux/AtSpi/ApplicationDirectory.h"

#include <QSizeF>

namespace veltrin {
struct TopLevelWindow;
}

namespace veltrin::AtSpi {

/// A rectangle as an application gave it, with what must be known to tell its place on the desktop.
struct PlacedRectangle {
    QRectF rectangle;
    Toolkit toolkit = Toolkit::other;
    /// Where the application believes that its window ends. LibreOffice leaves its menu bar out of account:
    /// everything stands as much too high as this is above the window's lower edge.
    std::optional<double> lowerEdge;
};

/// Gecko gives this corner for what it has not laid out yet; asking makes it do so.
bool isNotLaidOut(const QRectF& rectangle, Toolkit toolkit);

/// Worker thread only.
AXResult<PlacedRectangle> placed(const QRectF& rectangle, const ObjectAddress& object,
                                 ApplicationDirectory& directory, Conversation& conversation);

/// How many pixels of the desktop one of an application's own points has: 1 unless the application enlarges
/// itself. By the size that it tells of its window and the window's real one; 1 where these disagree
/// otherwise than by a factor.
double pixelsPerPoint(const QSizeF& told, const QSizeF& real, Toolkit toolkit);

/// The place on the desktop, in its pixels. `told` is the corner of the window as the application tells of
/// it; it counts where points have more than one pixel.
QRectF onDesktop(const PlacedRectangle& placed, const TopLevelWindow& window, double pixelsPerPoint,
                 const QPointF& told);

}  // namespace veltrin::AtSpi

#pragma once

#include "Platform/Linux/AtSpi/ApplicationDirectory.h"

namespace veltrin::AtSpi {

/// A rectangle as an application gave it, with what must be known to tell its place on the desktop.
struct PlacedRectangle {
    QRectF rectangle;
    bool isWindowRelative = false;  ///< GTK 4 does not know where on the desktop its window is
    /// Where the application believes that its window ends. LibreOffice leaves its menu bar out of account:
    /// everything stands as much too high as this is above the window's lower edge.
    std::optional<double> lowerEdge;
};

/// Gecko gives this corner for what it has not laid out yet; asking makes it do so.
bool isNotLaidOut(const QRectF& rectangle, Toolkit toolkit);

/// Worker thread only.
AXResult<PlacedRectangle> placed(const QRectF& rectangle, const ObjectAddress& object,
                                 ApplicationDirectory& directory, Conversation& conversation);

}  // namespace veltrin::AtSpi

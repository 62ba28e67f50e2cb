#include "Platform/Linux/AtSpi/PlacedRectangle.h"

#include "Platform/Linux/TopLevelWindows.h"

#include <cmath>

namespace veltrin::AtSpi {
namespace {

constexpr int highestAncestor = 40;
constexpr double tallestMenuBar = 120;
constexpr double largestFactor = 8;

/// The lower edge of the pane that holds everything in the object's window but its menu bar.
std::optional<double> rootPaneEdge(ObjectAddress object, Conversation& conversation) {
    for (int i = 0; i < highestAncestor && !object.isNull(); ++i) {
        Pending role = conversation.call(object, Name::accessible, "GetRole");
        Pending extents = conversation.call(object, Name::component, "GetExtents", {screenCoordinates});
        Pending parent = conversation.property(object, Name::accessible, "Parent");
        const Reply roleReply = conversation.reply(std::move(role));
        const Reply extentsReply = conversation.reply(std::move(extents));
        const Reply parentReply = conversation.reply(std::move(parent));
        if (!roleReply.ok()) return {};
        if (static_cast<Role>(roleReply.number()) == Role::rootPane) {
            const auto rectangle = extentsReply.rectangle();
            return rectangle ? std::optional(rectangle->y() + rectangle->height()) : std::nullopt;
        }
        object = parentReply.object();
    }
    return {};
}

}  // namespace

bool isNotLaidOut(const QRectF& rectangle, Toolkit toolkit) {
    return toolkit == Toolkit::gecko && rectangle.topLeft() == QPointF(-1, -1);
}

AXResult<PlacedRectangle> placed(const QRectF& rectangle, const ObjectAddress& object,
                                 ApplicationDirectory& directory, Conversation& conversation) {
    const Toolkit toolkit = directory.toolkitOf(object.bus, conversation);
    PlacedRectangle result{rectangle, toolkit, {}};
    if (toolkit == Toolkit::office) result.lowerEdge = rootPaneEdge(object, conversation);
    if (conversation.hasGivenUp()) return AXError::cannotComplete;
    return result;
}

double pixelsPerPoint(const QSizeF& told, const QSizeF& real, Toolkit toolkit) {
    // Chromium alone speaks of its window in points and of everything in it in pixels.
    if (told.isEmpty() || real.isEmpty() || toolkit == Toolkit::chromium) return 1;
    const double across = real.width() / told.width();
    const double down = real.height() / told.height();
    if (toolkit == Toolkit::qt) {
        constexpr double rounding = 0.03;
        const bool isFactor = std::abs(across / down - 1) < rounding && across > 1 + rounding;
        return isFactor && across < largestFactor ? across : 1;
    }
    // The others enlarge by whole numbers, and some count the shadow that they draw themselves.
    const double factor = std::round(across);
    return factor == std::round(down) && factor > 1 && factor < largestFactor ? factor : 1;
}

QRectF onDesktop(const PlacedRectangle& placed, const TopLevelWindow& window, double pixelsPerPoint,
                 const QPointF& told) {
    const auto enlarged = [=](const QRectF& points) {
        return QRectF(points.topLeft() * pixelsPerPoint, points.size() * pixelsPerPoint);
    };
    // GTK 4 does not know where on the desktop its window is.
    if (placed.toolkit == Toolkit::gtk4)
        return enlarged(placed.rectangle).translated(window.client.topLeft());
    // Qt enlarges each screen from its own corner.
    if (placed.toolkit == Toolkit::qt && pixelsPerPoint != 1)
        return enlarged(placed.rectangle.translated(-told)).translated(window.client.topLeft());
    const QRectF result = enlarged(placed.rectangle);
    if (!placed.lowerEdge) return result;
    const double missing = window.client.bottom() - *placed.lowerEdge * pixelsPerPoint;
    const bool isMenuBar = missing > 0 && missing < tallestMenuBar * pixelsPerPoint;
    return isMenuBar ? result.translated(0, missing) : result;
}

}  // namespace veltrin::AtSpi

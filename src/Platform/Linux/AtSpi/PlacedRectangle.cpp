#include "Platform/Linux/AtSpi/PlacedRectangle.h"

namespace veltrin::AtSpi {
namespace {

constexpr int highestAncestor = 40;

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
    PlacedRectangle result{rectangle, toolkit == Toolkit::gtk4, {}};
    if (toolkit == Toolkit::office) result.lowerEdge = rootPaneEdge(object, conversation);
    if (conversation.hasGivenUp()) return AXError::cannotComplete;
    return result;
}

}  // namespace veltrin::AtSpi

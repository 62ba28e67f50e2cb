import QtQuick
import Veltrin

/// What every floating panel is made of: the card, and the motion with which it comes and goes. The window around it
/// fades; the card grows, so that no seam shows.
Item {
    id: card

    property string text
    property bool dark: false
    /// False where nothing blends windows: then the card is opaque and fills its window to the edge.
    property bool translucent: true
    readonly property QtObject colors: VtTheme.popup(dark)
    readonly property color surfaceColor: translucent ? colors.surface : colors.surfaceOpaque

    Accessible.role: Accessible.AlertMessage
    Accessible.name: text

    VtSurface {
        anchors.fill: parent
        radius: VtTheme.radiusPopup
        color: card.surfaceColor
        stroke: card.colors.stroke
    }
}

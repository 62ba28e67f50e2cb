import QtQuick
import Veltrin

/// The card that every popup is made of, with its shadow where the desktop blends windows.
Item {
    id: background

    property VtPalette theme: PopupTheme.current
    /// False where nothing blends windows: then the card is opaque and throws no shadow.
    property bool translucent: true
    /// How much room the shadow has around the card; 0 for none.
    property int shadowRoom: 0
    property int radius: VtTheme.radiusPopup
    readonly property color ground: translucent ? theme.surface : theme.surfaceOpaque

    Accessible.ignored: true

    VtShadow {
        anchors.fill: parent
        anchors.margins: -background.shadowRoom
        visible: background.shadowRoom > 0
        spread: background.shadowRoom
        radius: background.radius
        color: background.theme.shadow
        Accessible.ignored: true
    }
    VtSurface {
        anchors.fill: parent
        radius: background.radius
        color: background.ground
        stroke: background.theme.stroke
        Accessible.ignored: true
    }
}

import QtQuick
import Veltrin

/// What every floating panel is made of. The window around it fades; the card grows, so that no seam shows.
Item {
    id: card

    property string text
    property bool translucent: true
    property int shadowRoom: 0
    property int cornerRadius: VtTheme.radiusPopup
    property VtPalette theme: PopupTheme.current
    readonly property color surfaceColor: background.ground
    default property alias content: inside.data

    Accessible.role: Accessible.AlertMessage
    Accessible.name: text

    PopupCardBackground {
        id: background
        anchors.fill: parent
        anchors.margins: card.shadowRoom
        theme: card.theme
        translucent: card.translucent
        shadowRoom: card.shadowRoom
        radius: card.cornerRadius
    }
    Item {
        id: inside
        anchors.fill: background
    }
}

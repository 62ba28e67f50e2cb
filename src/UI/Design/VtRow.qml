import QtQuick
import Veltrin

/// A line of a list or of the settings: an icon, a title with a word below it, and a control at its end.
Item {
    id: row

    property VtPalette theme: VtTheme.window
    property string title
    property string detail
    property string symbol
    property string colorHex
    default property alias trailing: end.data

    implicitWidth: 320
    implicitHeight: Math.max(44, words.implicitHeight + 2 * VtTheme.gap, end.implicitHeight + 2 * VtTheme.space)

    Accessible.role: Accessible.ListItem
    Accessible.name: title
    Accessible.description: detail

    VtIconTile {
        id: tile
        anchors.verticalCenter: parent.verticalCenter
        visible: row.symbol.length > 0
        side: 28
        theme: row.theme
        symbol: row.symbol
        colorHex: row.colorHex
    }
    Column {
        id: words
        anchors {
            left: parent.left
            leftMargin: tile.visible ? tile.width + VtTheme.padding : 0
            right: end.left
            rightMargin: VtTheme.padding
            verticalCenter: parent.verticalCenter
        }
        spacing: 2

        VtText {
            width: parent.width
            text: row.title
            theme: row.theme
            weight: VtTheme.weightMedium
        }
        VtText {
            width: parent.width
            visible: text.length > 0
            text: row.detail
            theme: row.theme
            size: VtTheme.sizeSmall
            tone: VtText.Muted
        }
    }
    Row {
        id: end
        anchors { right: parent.right; verticalCenter: parent.verticalCenter }
        spacing: VtTheme.gap
    }
}

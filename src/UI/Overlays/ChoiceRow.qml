import QtQuick
import Veltrin

/// One line of the choice: its number, what it is, and a word at its end.
VtPressable {
    id: row

    property int slotNumber: 1
    property string title
    property string detail
    /// Said, not shown: what kind of row it is, and what it does.
    property string mark
    property string explanation
    property string symbol
    property string colorHex
    property bool vacant: false
    /// The row that Return and Space choose.
    property bool preferred: false
    /// Pixels saved between the parts of a narrow row.
    property int tightness: 0

    label: (mark.length > 0 ? mark + " " : "") + title
    focusable: false
    implicitHeight: VtTheme.target
    Accessible.role: Accessible.MenuItem
    Accessible.description: detail.length > 0 ? detail : explanation

    VtSurface {
        anchors.fill: parent
        radius: VtTheme.radiusControl
        color: row.pressed ? row.theme.accentSoft : row.hovered ? row.theme.surfaceAlt : "transparent"
        Accessible.ignored: true
    }
    VtKeyCap {
        id: number
        x: 6
        anchors.verticalCenter: parent.verticalCenter
        theme: row.theme
        text: row.slotNumber
        highlighted: row.preferred
        Accessible.ignored: true
    }
    VtIconTile {
        id: tile
        anchors { left: number.right; leftMargin: VtTheme.gap - row.tightness; verticalCenter: parent.verticalCenter }
        visible: row.symbol.length > 0
        side: 20
        theme: row.theme
        symbol: row.symbol
        colorHex: row.colorHex
    }
    VtText {
        id: name
        anchors { left: tile.visible ? tile.right : number.right; leftMargin: VtTheme.gap - row.tightness; verticalCenter: parent.verticalCenter }
        width: Math.min(implicitWidth, parent.width - x - (row.detail.length > 0 ? 60 : VtTheme.gap))
        text: row.title
        theme: row.theme
        tone: row.vacant ? VtText.Muted : VtText.Primary
        weight: row.vacant ? VtTheme.weightRegular : VtTheme.weightMedium
        Accessible.ignored: true
    }
    VtText {
        anchors {
            left: name.right
            leftMargin: VtTheme.gap
            right: parent.right
            rightMargin: VtTheme.gap
            verticalCenter: parent.verticalCenter
        }
        visible: row.detail.length > 0
        text: row.detail
        theme: row.theme
        size: VtTheme.sizeCaption
        tone: VtText.Muted
        horizontalAlignment: Text.AlignRight
        Accessible.ignored: true
    }
}

import QtQuick
import Veltrin

/// An icon on a small tile of its own colour, as agents, actions and scenes bring it. The colour may be anything the
/// user's files say; what is no colour gives a plain tile.
Item {
    id: tile

    property VtPalette theme: VtTheme.window
    property string symbol
    property string colorHex
    property int side: 22
    readonly property bool colored: /^#[0-9A-Fa-f]{6}$/.test(colorHex)
    readonly property color fill: colored ? colorHex : theme.surfaceAlt
    /// Dark drawings on light tiles and light ones on dark.
    readonly property bool lightFill: 0.299 * fill.r + 0.587 * fill.g + 0.114 * fill.b > 0.5

    implicitWidth: side
    implicitHeight: side
    Accessible.ignored: true

    VtSurface {
        anchors.fill: parent
        radius: Math.round(tile.side * 0.3)
        color: tile.fill
    }
    VtIcon {
        anchors.centerIn: parent
        width: Math.round(tile.side * 0.64)
        height: width
        symbol: tile.symbol
        color: !tile.colored ? tile.theme.textSub : tile.lightFill ? "#1A1A1A" : "#FFFFFF"
        Accessible.ignored: true
    }
}

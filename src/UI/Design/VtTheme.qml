pragma Singleton
import QtQuick

/// Every token of the look, in one place. A popup takes its colours from `popup(dark)`.
QtObject {
    readonly property var families: ["Inter", "Noto Sans", "Noto Sans CJK SC", "Noto Color Emoji"]
    readonly property string family: families[0]

    readonly property int sizeCaption: 11
    readonly property int sizeSmall: 12
    readonly property int sizeBody: 13
    readonly property int sizeTitle: 15

    readonly property int space: 4
    readonly property int radiusControl: 8
    readonly property int radiusCard: 12
    readonly property int radiusPopup: 16

    readonly property color accent: "#FFE066"
    readonly property color accentText: "#1A1A1A"

    readonly property QtObject popupLight: QtObject {
        readonly property color surface: "#F0FFFFFF"
        readonly property color surfaceOpaque: "#FFFFFF"
        readonly property color stroke: "#14000000"
        readonly property color text: "#1A1A1A"
        readonly property color secondary: "#6B6B70"
    }
    readonly property QtObject popupDark: QtObject {
        readonly property color surface: "#F0161618"
        readonly property color surfaceOpaque: "#161618"
        readonly property color stroke: "#24FFFFFF"
        readonly property color text: "#F5F5F5"
        readonly property color secondary: "#A0A0A6"
    }

    function popup(dark: bool): QtObject { return dark ? popupDark : popupLight }
}

import QtQuick
import Veltrin

/// A short message: its first line is the headline, the rest explains. The mark at its left tells how it went.
PanelCard {
    id: panel

    enum Tone { Plain, Success, Failure }

    property int tone: TextPanel.Plain
    readonly property int lineEnd: text.indexOf("\n")
    readonly property string headline: lineEnd < 0 ? text : text.slice(0, lineEnd)
    readonly property string explanation: lineEnd < 0 ? "" : text.slice(lineEnd + 1)
    readonly property color mark: tone === TextPanel.Success ? theme.success
        : tone === TextPanel.Failure ? theme.danger : theme.accent

    VtSurface {
        id: tile
        x: VtTheme.margin
        anchors.verticalCenter: parent.verticalCenter
        width: 32
        height: 32
        radius: 10
        color: panel.mark
        Accessible.ignored: true

        VtIcon {
            anchors.centerIn: parent
            width: 20
            height: 20
            weight: 2
            symbol: panel.tone === TextPanel.Success ? "checkmark"
                : panel.tone === TextPanel.Failure ? "exclamationmark.triangle.fill" : "sparkles"
            color: panel.tone === TextPanel.Plain ? panel.theme.accentText : "#FFFFFF"
            Accessible.ignored: true
        }
    }
    Column {
        anchors {
            left: tile.right
            leftMargin: VtTheme.padding
            right: parent.right
            rightMargin: VtTheme.margin
            verticalCenter: parent.verticalCenter
        }
        spacing: 2

        VtText {
            width: parent.width
            text: panel.headline
            theme: panel.theme
            size: VtTheme.sizeBody
            weight: VtTheme.weightStrong
            wrapMode: panel.explanation.length > 0 ? Text.NoWrap : Text.Wrap
            maximumLineCount: panel.explanation.length > 0 ? 1 : 3
            Accessible.ignored: true
        }
        VtText {
            width: parent.width
            visible: text.length > 0
            text: panel.explanation
            theme: panel.theme
            size: VtTheme.sizeSmall
            tone: VtText.Secondary
            wrapMode: Text.Wrap
            maximumLineCount: 2
            lineHeight: 1.15
            Accessible.ignored: true
        }
    }
}

import QtQuick
import Veltrin

/// A short message: its first line is the headline, the rest explains.
PanelCard {
    id: panel

    readonly property int lineEnd: text.indexOf("\n")
    readonly property string headline: lineEnd < 0 ? text : text.slice(0, lineEnd)
    readonly property string explanation: lineEnd < 0 ? "" : text.slice(lineEnd + 1)

    Column {
        anchors.centerIn: parent
        width: parent.width - 8 * VtTheme.space
        spacing: VtTheme.space

        Text {
            width: parent.width
            text: panel.headline
            textFormat: Text.PlainText
            color: panel.colors.text
            font { family: VtTheme.family; pixelSize: VtTheme.sizeTitle; weight: Font.DemiBold }
            horizontalAlignment: Text.AlignHCenter
            elide: Text.ElideRight
            maximumLineCount: 1
        }
        Text {
            width: parent.width
            visible: text.length > 0
            text: panel.explanation
            textFormat: Text.PlainText
            color: panel.colors.secondary
            font { family: VtTheme.family; pixelSize: VtTheme.sizeBody }
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            elide: Text.ElideRight
            maximumLineCount: 2
        }
    }
}

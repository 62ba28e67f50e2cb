import QtQuick
import Veltrin

/// The word that stands beside the caret while something runs.
PanelCard {
    id: pill

    Text {
        anchors.centerIn: parent
        width: parent.width - 2 * VtTheme.space
        text: pill.text
        textFormat: Text.PlainText
        color: pill.colors.text
        font { family: VtTheme.family; pixelSize: VtTheme.sizeSmall; weight: Font.Medium }
        horizontalAlignment: Text.AlignHCenter
        elide: Text.ElideRight
    }
}

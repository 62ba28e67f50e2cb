import QtQuick
import Veltrin

/// The word that stands beside the caret while something runs.
PanelCard {
    id: pill

    Column {
        anchors.centerIn: parent
        spacing: 6

        VtText {
            anchors.horizontalCenter: parent.horizontalCenter
            width: Math.min(implicitWidth, pill.width - 2 * pill.shadowRoom - 2 * VtTheme.space)
            text: pill.text
            theme: pill.theme
            size: VtTheme.sizeSmall
            weight: VtTheme.weightMedium
            Accessible.ignored: true
        }
        PopupThinkingDots {
            anchors.horizontalCenter: parent.horizontalCenter
            color: pill.theme.text
            dotSize: 4
        }
    }
}

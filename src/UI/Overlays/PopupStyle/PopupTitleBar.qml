import QtQuick
import Veltrin

/// The head of a popup: an icon, what it is, and a word at the end.
Item {
    id: bar

    property VtPalette theme: PopupTheme.current
    property string title
    property string systemName
    property string detail

    implicitWidth: 280
    implicitHeight: 24

    Accessible.role: Accessible.Heading
    Accessible.name: title
    Accessible.description: detail

    VtIcon {
        id: icon
        anchors.verticalCenter: parent.verticalCenter
        visible: bar.systemName.length > 0
        symbol: bar.systemName
        color: bar.theme.text
        Accessible.ignored: true
    }
    VtText {
        id: name
        anchors {
            left: parent.left
            leftMargin: icon.visible ? icon.width + VtTheme.gap : 0
            right: word.left
            rightMargin: VtTheme.gap
            verticalCenter: parent.verticalCenter
        }
        text: bar.title
        theme: bar.theme
        size: VtTheme.sizeBody
        weight: VtTheme.weightStrong
        Accessible.ignored: true
    }
    VtText {
        id: word
        anchors { right: parent.right; verticalCenter: parent.verticalCenter }
        width: Math.min(implicitWidth, parent.width / 2)
        text: bar.detail
        theme: bar.theme
        size: VtTheme.sizeCaption
        tone: VtText.Muted
        Accessible.ignored: true
    }
}

import QtQuick
import Veltrin

/// A key of the keyboard: what is written on it.
VtSurface {
    id: cap

    property VtPalette theme: VtTheme.window
    property string text
    property bool highlighted: false

    implicitWidth: Math.max(implicitHeight, Math.ceil(label.implicitWidth) + 12)
    implicitHeight: 20
    radius: 6
    color: highlighted ? theme.accent : theme.surfaceAlt
    stroke: highlighted ? "transparent" : theme.stroke

    Accessible.role: Accessible.StaticText
    Accessible.name: text

    VtText {
        id: label
        anchors.centerIn: parent
        text: cap.text
        theme: cap.theme
        size: VtTheme.sizeCaption
        weight: VtTheme.weightStrong
        tone: cap.highlighted ? VtText.OnAccent : VtText.Secondary
        Accessible.ignored: true
    }
}

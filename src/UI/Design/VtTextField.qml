import QtQuick
import Veltrin

/// One line to write in.
Item {
    id: field

    property VtPalette theme: VtTheme.window
    property string label
    property string placeholder
    property alias text: input.text
    property alias echoMode: input.echoMode
    property alias readOnly: input.readOnly
    signal accepted()

    implicitWidth: 220
    implicitHeight: 32
    opacity: enabled ? 1 : 0.45

    VtSurface {
        anchors.fill: parent
        radius: VtTheme.radiusControl
        color: field.theme.dark ? field.theme.surfaceAlt : field.theme.card
        stroke: field.theme.outline
    }
    VtText {
        anchors { fill: parent; leftMargin: VtTheme.padding; rightMargin: VtTheme.padding }
        visible: input.text.length === 0 && input.preeditText.length === 0
        verticalAlignment: Text.AlignVCenter
        text: field.placeholder
        theme: field.theme
        tone: VtText.Muted
        Accessible.ignored: true
    }
    TextInput {
        id: input
        anchors { fill: parent; leftMargin: VtTheme.padding; rightMargin: VtTheme.padding }
        verticalAlignment: TextInput.AlignVCenter
        clip: true
        selectByMouse: true
        activeFocusOnTab: true
        color: field.theme.text
        selectionColor: field.theme.accent
        selectedTextColor: field.theme.accentText
        font.pixelSize: VtTheme.sizeBody
        onAccepted: field.accepted()

        Accessible.role: Accessible.EditableText
        Accessible.name: field.label
    }
    VtFocusRing { theme: field.theme; shown: input.activeFocus }
}

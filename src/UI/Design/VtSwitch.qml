import QtQuick
import Veltrin

/// On or off. It does not switch itself: `toggled` asks, and the owner sets `checked`.
VtPressable {
    id: toggle

    property bool checked: false
    signal toggled(bool wanted)

    implicitWidth: 40
    implicitHeight: VtTheme.target
    opacity: enabled ? 1 : 0.45
    Accessible.role: Accessible.CheckBox
    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.onToggleAction: toggle.trigger()

    onClicked: toggled(!checked)

    VtSurface {
        id: groove
        anchors.centerIn: parent
        width: 40
        height: 24
        radius: 12
        color: toggle.checked ? toggle.theme.accent : toggle.theme.surfaceAlt
        stroke: toggle.theme.outline

        VtSurface {
            x: toggle.checked ? 19 : 3
            y: 3
            width: 18
            height: 18
            radius: 9
            color: toggle.checked ? toggle.theme.accentText : toggle.theme.textSub
            Behavior on x { NumberAnimation { duration: VtTheme.quick; easing.type: VtTheme.easing } }
        }
    }
    VtFocusRing { theme: toggle.theme; anchors.fill: groove; radius: 14; shown: toggle.activeFocus }
}

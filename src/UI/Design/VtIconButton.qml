import QtQuick
import Veltrin

/// A button that is only an icon; `label` is its name.
VtPressable {
    id: button

    property string symbol

    implicitWidth: VtTheme.target
    implicitHeight: VtTheme.target
    opacity: enabled ? 1 : 0.45

    VtSurface {
        anchors.fill: parent
        radius: VtTheme.radiusControl
        color: button.hovered || button.pressed ? button.theme.surfaceAlt : "transparent"
    }
    VtIcon {
        anchors.centerIn: parent
        symbol: button.symbol
        color: button.hovered ? button.theme.text : button.theme.textSub
        Accessible.ignored: true
    }
    VtFocusRing { theme: button.theme; shown: button.activeFocus }
}

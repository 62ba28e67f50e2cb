import QtQuick
import Veltrin

/// The round icon beside a selection. The ring around it tells how long it still stays.
PanelCard {
    id: icon

    enum Action { Open }

    readonly property int stayMs: 3000
    property real remaining: 1
    property bool dragged: false
    signal acted(action: int)

    cornerRadius: 29
    Accessible.role: Accessible.Grouping

    Window.onVisibilityChanged: if (Window.visibility !== Window.Hidden) remaining = 1

    Timer {
        interval: 50
        repeat: true
        running: icon.remaining > 0 && icon.visible && icon.Window.visibility !== Window.Hidden && !VtLook.reducedMotion
        onTriggered: icon.remaining = Math.max(0, icon.remaining - interval / icon.stayMs)
    }
    VtRing {
        anchors.fill: parent
        anchors.margins: 3
        thickness: 2
        color: icon.theme.dark ? icon.theme.accent : "#E8BE1E"
        track: icon.theme.divider
        length: icon.remaining
        Accessible.ignored: true
    }
    VtPressable {
        id: press
        anchors.fill: parent
        label: icon.text
        focusable: false
        theme: icon.theme
        onClicked: icon.acted(SmartSelectIcon.Open)

        VtSurface {
            anchors.centerIn: parent
            width: 42
            height: 42
            radius: 21
            color: press.pressed ? Qt.darker(icon.theme.accent, 1.12)
                : press.hovered ? Qt.lighter(icon.theme.accent, 1.06) : icon.theme.accent
            scale: press.pressed ? 0.94 : press.hovered ? 1.04 : 1
            Behavior on scale { NumberAnimation { duration: VtTheme.quick; easing.type: VtTheme.easing } }

            VtIcon {
                anchors.centerIn: parent
                width: 24
                height: 24
                weight: 1.7
                symbol: "sparkles"
                color: icon.theme.accentText
                Accessible.ignored: true
            }
        }
    }
}

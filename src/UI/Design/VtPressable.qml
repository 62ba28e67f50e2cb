import QtQuick
import Veltrin

/// What can be pressed: by the mouse, by Space and Return, and through accessibility.
Item {
    id: pressable

    property VtPalette theme: VtTheme.window
    property string label
    /// Whether it takes the keyboard; a panel that never has the focus says no.
    property bool focusable: true
    readonly property bool hovered: hover.hovered && enabled
    readonly property bool pressed: tap.pressed || keyDown
    property bool keyDown: false
    signal clicked()

    activeFocusOnTab: focusable
    Accessible.role: Accessible.Button
    Accessible.name: label
    Accessible.focusable: focusable
    Accessible.onPressAction: pressable.trigger()

    function trigger(): void { if (enabled) clicked() }

    HoverHandler {
        id: hover
        cursorShape: Qt.PointingHandCursor
    }
    TapHandler {
        id: tap
        gesturePolicy: TapHandler.ReleaseWithinBounds
        onTapped: {
            if (pressable.focusable) pressable.forceActiveFocus(Qt.MouseFocusReason)
            pressable.trigger()
        }
    }
    Keys.onPressed: event => {
        if (event.isAutoRepeat) return
        if (event.key === Qt.Key_Space || event.key === Qt.Key_Return || event.key === Qt.Key_Enter) {
            keyDown = true
            event.accepted = true
        }
    }
    Keys.onReleased: event => {
        if (!keyDown || event.isAutoRepeat) return
        keyDown = false
        event.accepted = true
        trigger()
    }
    onActiveFocusChanged: keyDown = false
}

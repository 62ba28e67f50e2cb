import QtQuick
import Veltrin

/// A button: the one main thing (Primary), an ordinary one (Plain), one that destroys (Danger).
VtPressable {
    id: button

    enum Kind { Primary, Plain, Danger }

    property int kind: VtButton.Plain
    property string text
    property string symbol
    readonly property color ground: kind === VtButton.Primary ? theme.accent
        : kind === VtButton.Danger ? theme.dangerFill : theme.card
    readonly property color ink: kind === VtButton.Primary ? theme.accentText
        : kind === VtButton.Danger ? theme.dangerFillText : theme.text

    label: text
    implicitWidth: Math.ceil(content.implicitWidth) + 2 * VtTheme.padding
    implicitHeight: 32
    opacity: enabled ? 1 : 0.45

    VtSurface {
        anchors.fill: parent
        radius: VtTheme.radiusControl
        color: button.pressed ? Qt.darker(button.ground, button.theme.dark ? 1.25 : 1.1)
            : button.hovered ? (button.theme.dark ? Qt.lighter(button.ground, 1.12) : Qt.darker(button.ground, 1.04))
            : button.ground
        stroke: button.kind === VtButton.Plain ? button.theme.stroke : "transparent"
    }
    Row {
        id: content
        anchors.centerIn: parent
        spacing: 6

        VtIcon {
            anchors.verticalCenter: parent.verticalCenter
            visible: button.symbol.length > 0
            symbol: button.symbol
            color: button.ink
            Accessible.ignored: true
        }
        VtText {
            anchors.verticalCenter: parent.verticalCenter
            text: button.text
            color: button.ink
            weight: VtTheme.weightMedium
            Accessible.ignored: true
        }
    }
    VtFocusRing { theme: button.theme; shown: button.activeFocus }
}

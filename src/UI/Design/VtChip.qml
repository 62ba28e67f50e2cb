import QtQuick
import Veltrin

/// A small word with a mark: a tag, a filter, an agent. It can be pressed when it is `selectable`.
VtPressable {
    id: chip

    property string text
    property string symbol
    /// The colour of its mark; none without one.
    property string colorHex
    property bool selectable: false
    property bool selected: false

    label: text
    focusable: selectable
    implicitWidth: Math.ceil(content.implicitWidth) + 20
    implicitHeight: VtTheme.target
    Accessible.role: selectable ? Accessible.CheckBox : Accessible.StaticText
    Accessible.checkable: selectable
    Accessible.checked: selected

    onClicked: if (selectable) selected = !selected

    VtSurface {
        anchors.fill: parent
        radius: height / 2
        color: chip.selected ? chip.theme.accentSoft
            : chip.selectable && chip.hovered ? Qt.darker(chip.theme.surfaceAlt, chip.theme.dark ? 0.85 : 1.04)
            : chip.theme.surfaceAlt
        stroke: chip.selected ? chip.theme.accent : "transparent"
    }
    Row {
        id: content
        anchors.centerIn: parent
        spacing: 6

        VtSurface {
            anchors.verticalCenter: parent.verticalCenter
            visible: /^#[0-9A-Fa-f]{6}$/.test(chip.colorHex)
            width: 8
            height: 8
            radius: 4
            color: visible ? chip.colorHex : "transparent"
            stroke: chip.theme.stroke
        }
        VtIcon {
            anchors.verticalCenter: parent.verticalCenter
            visible: chip.symbol.length > 0
            width: 14
            height: 14
            symbol: chip.symbol
            color: chip.theme.textSub
            Accessible.ignored: true
        }
        VtText {
            anchors.verticalCenter: parent.verticalCenter
            text: chip.text
            theme: chip.theme
            size: VtTheme.sizeSmall
            weight: VtTheme.weightMedium
            tone: chip.selected ? VtText.Primary : VtText.Secondary
            Accessible.ignored: true
        }
    }
    VtFocusRing { theme: chip.theme; radius: height / 2; shown: chip.activeFocus }
}

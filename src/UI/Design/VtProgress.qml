import QtQuick
import Veltrin

/// How far something is, from 0 to 1.
Item {
    id: progress

    property VtPalette theme: VtTheme.window
    property string label
    property real value: 0
    readonly property real part: Math.max(0, Math.min(1, isNaN(value) ? 0 : value))

    implicitWidth: 200
    implicitHeight: 6

    Accessible.role: Accessible.ProgressBar
    Accessible.name: label

    VtSurface {
        anchors.fill: parent
        radius: height / 2
        color: progress.theme.surfaceAlt
    }
    VtSurface {
        width: Math.max(parent.height, parent.width * progress.part)
        height: parent.height
        visible: progress.part > 0
        radius: height / 2
        color: progress.theme.accent
        stroke: progress.theme.stroke
        Behavior on width { NumberAnimation { duration: VtTheme.slow; easing.type: VtTheme.easing } }
    }
}

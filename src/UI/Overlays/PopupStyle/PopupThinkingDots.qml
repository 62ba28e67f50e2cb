pragma ComponentBehavior: Bound
import QtQuick
import Veltrin

/// Three dots that breathe one after the other while something is thought about. They move in steps of 60 ms, which
/// looks alive and costs a fraction of a display's full rate.
Item {
    id: dots

    property color color: PopupTheme.current.text
    property real dotSize: 5
    property real spacing: 4
    property bool running: true
    property real phase: 0

    implicitWidth: 3 * dotSize + 2 * spacing
    implicitHeight: dotSize

    Accessible.role: Accessible.Animation
    Accessible.name: L.t("思考中", "Thinking")

    Timer {
        interval: 60
        repeat: true
        running: dots.running && dots.visible && !VtLook.reducedMotion && dots.Window.visibility !== Window.Hidden
        onTriggered: dots.phase = (dots.phase + 0.06) % 1
    }
    Repeater {
        model: 3

        VtSurface {
            required property int index
            // A wave that runs through the dots; held in the middle when motion is unwanted.
            readonly property real wave: VtLook.reducedMotion ? 0.7
                : 0.5 + 0.5 * Math.cos(2 * Math.PI * (dots.phase - index * 0.18))

            x: index * (dots.dotSize + dots.spacing)
            width: dots.dotSize
            height: dots.dotSize
            radius: dots.dotSize / 2
            color: dots.color
            opacity: 0.25 + 0.75 * wave
            Accessible.ignored: true
        }
    }
}

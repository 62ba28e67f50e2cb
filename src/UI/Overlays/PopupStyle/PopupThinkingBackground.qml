import QtQuick
import Veltrin

/// A popup's ground while something is thought about: a breath of the accent goes over the card.
Item {
    id: background

    property VtPalette theme: PopupTheme.current
    property bool running: true
    property real phase: 0

    Accessible.role: Accessible.Animation
    Accessible.name: L.t("思考中", "Thinking")

    Timer {
        interval: 80
        repeat: true
        running: background.running && background.visible && !VtLook.reducedMotion
                 && background.Window.visibility !== Window.Hidden
        onTriggered: background.phase = (background.phase + 0.036) % 1
    }
    VtSurface {
        anchors.fill: parent
        radius: VtTheme.radiusPopup
        color: background.theme.accentSoft
        opacity: VtLook.reducedMotion ? 0.6 : 0.55 - 0.45 * Math.cos(2 * Math.PI * background.phase)
        Accessible.ignored: true
    }
    VtSurface {
        anchors.fill: parent
        radius: VtTheme.radiusPopup
        color: "transparent"
        stroke: background.theme.stroke
        Accessible.ignored: true
    }
}

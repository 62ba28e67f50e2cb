import QtQuick
import Veltrin

/// Shows where the keyboard is. It lies around what has the focus.
VtSurface {
    property VtPalette theme: VtTheme.window
    property bool shown: false

    anchors.fill: parent
    anchors.margins: -2
    visible: shown
    color: "transparent"
    strokeWidth: 2
    stroke: theme.dark ? theme.accent : theme.text
    radius: VtTheme.radiusControl + 2
    Accessible.ignored: true
}

import QtQuick
import Veltrin

/// A line between two things that belong together.
Rectangle {
    property VtPalette theme: VtTheme.window

    implicitHeight: 1
    implicitWidth: 1
    color: theme.divider
    Accessible.role: Accessible.Separator
    Accessible.name: L.t("分隔线", "Separator")
}

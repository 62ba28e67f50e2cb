import QtQuick
import Veltrin

/// A short word at the edge of a window that something is done, or was not.
Item {
    id: toast

    enum Kind { Plain, Success, Danger }

    property VtPalette theme: VtTheme.window
    property int kind: VtToast.Plain
    property string text
    readonly property color mark: kind === VtToast.Success ? theme.success
        : kind === VtToast.Danger ? theme.danger : theme.textSub

    implicitWidth: Math.ceil(content.implicitWidth) + 2 * VtTheme.margin
    implicitHeight: 40

    Accessible.role: Accessible.AlertMessage
    Accessible.name: text

    VtShadow {
        anchors.fill: parent
        anchors.margins: -spread
        spread: 14
        radius: height / 2
        color: toast.theme.shadow
        Accessible.ignored: true
    }
    VtSurface {
        anchors.fill: parent
        radius: height / 2
        color: toast.theme.card
        stroke: toast.theme.stroke
    }
    Row {
        id: content
        anchors.centerIn: parent
        spacing: VtTheme.gap

        VtIcon {
            anchors.verticalCenter: parent.verticalCenter
            symbol: toast.kind === VtToast.Success ? "checkmark.circle.fill"
                : toast.kind === VtToast.Danger ? "exclamationmark.triangle.fill" : "info.circle"
            color: toast.mark
            Accessible.ignored: true
        }
        VtText {
            anchors.verticalCenter: parent.verticalCenter
            text: toast.text
            theme: toast.theme
            weight: VtTheme.weightMedium
            Accessible.ignored: true
        }
    }
}

import QtQuick
import Veltrin

/// A row of the settings with one combination, and its two buttons.
VtRow {
    id: row

    property ShortcutCaptureModel model

    ShortcutCaptureView {
        anchors.verticalCenter: parent.verticalCenter
        theme: row.theme
        model: row.model
    }
    VtButton {
        anchors.verticalCenter: parent.verticalCenter
        theme: row.theme
        text: L.t("自定义", "Customize")
        onClicked: row.model.beginCapture()
    }
    VtButton {
        anchors.verticalCenter: parent.verticalCenter
        theme: row.theme
        text: L.t("恢复默认", "Restore default")
        onClicked: row.model.restoreDefaults()
    }
}

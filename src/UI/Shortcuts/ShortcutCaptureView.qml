pragma ComponentBehavior: Bound
import QtQuick
import Veltrin

/// Shows a combination, or waits for a new one. While it waits it takes every key of its window.
Item {
    id: view

    property VtPalette theme: VtTheme.window
    property ShortcutCaptureModel model
    readonly property bool recording: model !== null && model.recording
    readonly property var keys: model !== null ? model.keys : []

    implicitWidth: Math.max(96, content.implicitWidth + 2 * VtTheme.gap)
    implicitHeight: 32

    Accessible.role: Accessible.HotkeyField
    Accessible.name: recording ? L.t("按下按键...", "Press keys...") : keys.join(" ")
    Accessible.description: recording && model.captureHint.length > 0 ? hint.text : ""

    onRecordingChanged: if (recording) catcher.forceActiveFocus()

    VtSurface {
        anchors.fill: parent
        radius: VtTheme.radiusControl
        color: view.recording ? view.theme.accentSoft : view.theme.surfaceAlt
        stroke: view.recording ? view.theme.accent : view.theme.stroke
    }
    ShortcutKeyCatcher {
        id: catcher
        anchors.fill: parent
        model: view.model
    }
    Row {
        id: content
        anchors.centerIn: parent
        spacing: VtTheme.space

        VtText {
            anchors.verticalCenter: parent.verticalCenter
            visible: view.recording
            text: L.t("按下按键...", "Press keys...")
            theme: view.theme
            size: VtTheme.sizeSmall
            Accessible.ignored: true
        }
        VtText {
            id: hint
            anchors.verticalCenter: parent.verticalCenter
            visible: view.recording && text.length > 0
            text: view.model === null || view.model.captureHint.length === 0 ? ""
                : L.t(view.model.captureHint, "Modifier keys + Space")
            theme: view.theme
            size: VtTheme.sizeCaption
            tone: VtText.Secondary
            Accessible.ignored: true
        }
        Repeater {
            model: view.recording ? [] : view.keys

            VtKeyCap {
                required property string modelData
                y: (content.height - height) / 2
                theme: view.theme
                text: modelData
                Accessible.ignored: true
            }
        }
    }
}

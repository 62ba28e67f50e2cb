import QtQuick
import Veltrin

/// What went wrong, and the two ways on.
Item {
    id: failure

    property VtPalette theme: PopupTheme.current
    property string title
    property string detail
    property string suggestion
    signal retry()
    signal copyOriginal()

    Accessible.role: Accessible.AlertMessage
    Accessible.name: title
    Accessible.ignored: title.length === 0
    Accessible.description: detail + "\n" + suggestion

    onVisibleChanged: copied = false
    property bool copied: false

    VtIcon {
        id: sign
        x: 0
        y: 1
        width: 15
        height: 15
        symbol: "exclamationmark.triangle.fill"
        color: failure.theme.dangerText
        Accessible.ignored: true
    }
    VtText {
        id: headline
        height: 17
        verticalAlignment: Text.AlignVCenter
        anchors { left: sign.right; leftMargin: 6; right: parent.right }
        text: failure.title
        theme: failure.theme
        weight: VtTheme.weightStrong
        Accessible.ignored: true
    }
    PopupScrollText {
        anchors { left: parent.left; right: parent.right; top: headline.bottom; topMargin: 4; bottom: ways.top; bottomMargin: 6 }
        // One paragraph, since there is room for three lines.
        readonly property string gap: /[。！？；：]$/.test(failure.detail) ? "" : " "
        text: failure.suggestion.length > 0 ? failure.detail + gap + failure.suggestion : failure.detail
        theme: failure.theme
        tone: VtText.Secondary
    }
    Row {
        id: ways
        anchors { left: parent.left; bottom: parent.bottom }
        spacing: VtTheme.gap

        VtButton {
            height: VtTheme.target
            focusable: false
            theme: failure.theme
            text: L.t("重试", "Retry")
            symbol: "arrow.clockwise"
            onClicked: failure.retry()
        }
        VtButton {
            height: VtTheme.target
            focusable: false
            theme: failure.theme
            text: L.t("复制原文", "Copy original")
            symbol: failure.copied ? "checkmark" : "doc.on.doc"
            onClicked: {
                failure.copied = true
                failure.copyOriginal()
            }
        }
    }
}

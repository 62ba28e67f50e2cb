import QtQuick
import Veltrin

/// A text that may be longer than its room: the wheel moves it by whole lines, of which none is ever cut, and a thin bar
/// tells where it stands. The mouse's button is left to the popup, which it drags.
Item {
    id: scroll

    property VtPalette theme: PopupTheme.current
    property string text
    property int tone: VtText.Primary
    property int size: VtTheme.sizeSmall
    /// Pixels from line to line, whatever scripts they hold.
    property int line: 18
    readonly property bool overflows: page.contentHeight > page.height + 1

    Accessible.role: Accessible.StaticText
    Accessible.name: text
    Accessible.ignored: text.length === 0

    /// Pixels that the wheel has moved it, which may be parts of a line.
    property real wheeled: 0

    onTextChanged: wheeled = 0
    onWheeledChanged: page.contentY = Math.round(wheeled / line) * line

    Flickable {
        id: page
        anchors { left: parent.left; right: parent.right; top: parent.top; rightMargin: 8 }
        height: Math.max(1, Math.floor(parent.height / scroll.line)) * scroll.line
        clip: true
        interactive: false
        contentHeight: words.height

        VtText {
            id: words
            width: page.width
            text: scroll.text
            theme: scroll.theme
            tone: scroll.tone
            size: scroll.size
            wrapMode: Text.Wrap
            elide: Text.ElideNone
            lineHeight: scroll.line
            lineHeightMode: Text.FixedHeight
            Accessible.ignored: true
        }
    }
    WheelHandler {
        acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad
        onWheel: event => {
            const step = event.pixelDelta.y !== 0 ? event.pixelDelta.y : event.angleDelta.y / 120 * 2 * scroll.line
            scroll.wheeled = Math.max(0, Math.min(page.contentHeight - page.height, scroll.wheeled - step))
        }
    }
    VtSurface {
        anchors.right: parent.right
        visible: scroll.overflows
        width: 3
        radius: 1.5
        height: Math.max(16, page.height * page.height / Math.max(1, page.contentHeight))
        y: (page.height - height) * (page.contentY / Math.max(1, page.contentHeight - page.height))
        color: scroll.theme.outline
        opacity: 0.7
        Accessible.ignored: true
    }
}

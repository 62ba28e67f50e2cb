import QtQuick
import Veltrin

/// Who works on a selection: the recogniser, or the user's agent. A new name springs into its place.
Item {
    id: chip

    property VtPalette theme: PopupTheme.current
    property string name
    property string mark
    property string symbol
    property string colorHex
    property bool springs: false

    /// The width that shows everything.
    readonly property real wanted: words.x + Math.max(label.implicitWidth, note.implicitWidth) + 10

    implicitHeight: 40
    implicitWidth: wanted

    Accessible.role: Accessible.StaticText
    Accessible.name: name
    Accessible.description: mark

    onNameChanged: if (springs && !VtLook.reducedMotion && Window.visibility !== Window.Hidden) spring.restart()

    NumberAnimation {
        id: spring
        // A damped spring: response 0.24 s, damping 0.82; it has come to rest within 0.4 s.
        readonly property real response: 0.24
        readonly property real damping: 0.82
        readonly property real frequency: 2 * Math.PI / response
        readonly property real damped: frequency * Math.sqrt(1 - damping * damping)

        function at(t: real): real {
            const rest = Math.exp(-damping * frequency * t)
            return 1 - rest * (Math.cos(damped * t) + damping * frequency / damped * Math.sin(damped * t))
        }

        target: chip
        property: "seconds"
        from: 0
        to: 0.4
        duration: 400
    }
    property real seconds: 0.4
    readonly property real settled: spring.at(seconds)

    VtSurface {
        anchors.fill: parent
        radius: 10
        color: chip.theme.surfaceAlt
        Accessible.ignored: true
    }
    VtIconTile {
        id: tile
        x: 8
        anchors.verticalCenter: parent.verticalCenter
        side: 24
        theme: chip.theme
        symbol: chip.symbol
        colorHex: chip.colorHex
    }
    Column {
        id: words
        anchors { left: tile.right; leftMargin: 7; right: parent.right; rightMargin: 8; verticalCenter: parent.verticalCenter }
        spacing: 0

        Item {
            width: parent.width
            height: label.implicitHeight
            clip: chip.settled < 0.999

            VtText {
                id: label
                width: parent.width
                y: (1 - chip.settled) * 12
                opacity: Math.min(1, chip.seconds / 0.1)
                text: chip.name
                theme: chip.theme
                size: VtTheme.sizeSmall
                weight: VtTheme.weightMedium
                Accessible.ignored: true
            }
        }
        VtText {
            id: note
            width: parent.width
            text: chip.mark
            theme: chip.theme
            size: VtTheme.sizeCaption
            tone: VtText.Muted
            Accessible.ignored: true
        }
    }
}

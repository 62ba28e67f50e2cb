import QtQuick
import Veltrin

/// The popup over a selection: what the text is, who works on it, and what can be done with it.
PanelCard {
    id: popup

    enum Stage { Offer, Thinking, Result, Failure }
    /// As everybody counts them; the first is the icon's.
    enum Action { Open, Save, Reply, Organize, Retry, CopyOriginal, Close }

    property int stage: SmartSelectPopup.Offer
    property string title
    property string subtitle
    property int tone: TextPanel.Plain
    property string recognizerName
    property string agentName
    property string agentSymbol
    property string agentColorHex
    /// The beginning of the selection, or of the result.
    property string body
    property string failureTitle
    property string failureDetail
    property string failureSuggestion
    /// True while the mouse drags the popup: what it lets go then was not clicked.
    property bool dragged: false
    signal acted(action: int)

    readonly property bool thinking: stage === SmartSelectPopup.Thinking
    readonly property bool showsAgents: stage === SmartSelectPopup.Offer || thinking
    readonly property bool moves: thinking && visible && !VtLook.reducedMotion && Window.visibility !== Window.Hidden
    property real phase: 0

    text: title
    Accessible.role: Accessible.Dialog
    Accessible.description: subtitle

    component ActionButton: VtButton {
        property real spare: 0

        width: implicitWidth + spare
        focusable: false
    }

    function act(action: int): void { if (!dragged) acted(action) }

    onThinkingChanged: phase = 0

    Timer {
        interval: 40
        repeat: true
        running: popup.moves
        onTriggered: popup.phase = (popup.phase + 0.022) % 1
    }

    // MARK: The head

    VtSurface {
        id: orb
        x: 14
        y: 12
        width: 36
        height: 36
        radius: 18
        color: popup.tone === TextPanel.Success ? popup.theme.success
            : popup.tone === TextPanel.Failure ? popup.theme.danger
            : popup.thinking ? popup.theme.accentSoft : popup.theme.accent
        Accessible.ignored: true

        VtIcon {
            anchors.centerIn: parent
            width: 20
            height: 20
            weight: 1.8
            symbol: popup.tone === TextPanel.Success ? "checkmark"
                : popup.tone === TextPanel.Failure ? "exclamationmark.triangle.fill" : "sparkles"
            color: popup.tone !== TextPanel.Plain ? "#FFFFFF" : popup.thinking ? popup.theme.text : popup.theme.accentText
            Accessible.ignored: true
        }
        VtRing {
            anchors.fill: parent
            visible: popup.thinking
            thickness: 2.5
            color: popup.theme.dark ? popup.theme.accent : "#E8BE1E"
            // Two turns while the light goes over the lines once.
            start: 2 * popup.phase
            length: 0.28
            Accessible.ignored: true
        }
    }
    VtText {
        id: headline
        anchors { left: orb.right; leftMargin: 10; top: orb.top }
        height: 20
        verticalAlignment: Text.AlignVCenter
        width: Math.min(implicitWidth, close.x - x - 34)
        text: popup.title
        theme: popup.theme
        size: VtTheme.sizeTitle
        weight: VtTheme.weightStrong
        Accessible.role: Accessible.Heading
    }
    PopupThinkingDots {
        anchors { left: headline.right; leftMargin: 6; verticalCenter: headline.verticalCenter; verticalCenterOffset: 1 }
        visible: popup.thinking
        running: popup.moves
        dotSize: 4
        spacing: 3
        color: popup.theme.text
    }
    VtText {
        anchors { left: headline.left; right: close.left; rightMargin: VtTheme.space; bottom: orb.bottom }
        height: 16
        verticalAlignment: Text.AlignVCenter
        text: popup.subtitle
        theme: popup.theme
        size: VtTheme.sizeSmall
        weight: popup.tone === TextPanel.Plain ? VtTheme.weightRegular : VtTheme.weightMedium
        tone: popup.tone === TextPanel.Success ? VtText.Success
            : popup.tone === TextPanel.Failure ? VtText.Danger : VtText.Muted
    }
    VtIconButton {
        id: close
        anchors { right: parent.right; rightMargin: 10; top: parent.top; topMargin: 10 }
        focusable: false
        theme: popup.theme
        symbol: "xmark"
        label: L.t("关闭", "Close")
        onClicked: popup.act(SmartSelectPopup.Close)
    }

    // MARK: Who works on it

    Item {
        id: agents
        x: 14
        y: 56
        width: parent.width - 28
        height: 40
        opacity: popup.showsAgents ? 1 : 0
        visible: opacity > 0
        Behavior on opacity { NumberAnimation { duration: VtTheme.quick; easing.type: VtTheme.easing } }

        SmartSelectAgentChip {
            id: recognizer
            width: Math.min(Math.max(108, wanted), 132)
            height: parent.height
            theme: popup.theme
            name: popup.recognizerName
            mark: L.t("不可替换", "Built in")
            symbol: "doc.text.magnifyingglass"
            springs: true
        }
        SmartSelectAgentChip {
            anchors { left: recognizer.right; leftMargin: VtTheme.gap; right: parent.right }
            height: parent.height
            theme: popup.theme
            readonly property string kind: L.t("用户 Agent", "Yours")
            readonly property string choice: L.t("可替换", "swappable")
            name: popup.agentName.length > 0 ? popup.agentName : kind
            mark: popup.agentName.length > 0 ? kind + " · " + choice : choice
            symbol: popup.agentSymbol.length > 0 ? popup.agentSymbol : "person.fill"
            colorHex: popup.agentColorHex
        }
    }

    // MARK: The text

    VtSurface {
        id: sheet
        x: 14
        y: popup.showsAgents ? 104 : 56
        width: parent.width - 28
        height: actions.y - 8 - y
        radius: 10
        color: popup.stage === SmartSelectPopup.Failure || popup.stage === SmartSelectPopup.Result
            ? popup.theme.surfaceAlt : "transparent"
        stroke: popup.showsAgents ? popup.theme.divider : "transparent"
        Behavior on y {
            enabled: popup.Window.visibility !== Window.Hidden
            NumberAnimation { duration: VtTheme.normal; easing.type: VtTheme.easing }
        }
        Accessible.ignored: true

        VtSurface {
            id: quoteBar
            x: 10
            y: 10
            width: 3
            height: parent.height - 20
            radius: 1.5
            visible: popup.showsAgents
            color: popup.theme.accent
            Accessible.ignored: true
        }
        PopupScrollText {
            anchors { fill: parent; leftMargin: 21; rightMargin: 4; topMargin: 8; bottomMargin: 8 }
            visible: popup.stage === SmartSelectPopup.Offer
            text: popup.body
            theme: popup.theme
            tone: VtText.Secondary
        }
        VtShimmer {
            anchors { fill: parent; leftMargin: 21; rightMargin: 12; topMargin: 13; bottomMargin: 10 }
            visible: popup.thinking
            color: popup.theme.surfaceAlt
            light: popup.theme.dark ? "#8A7B3A" : "#FFDF5E"
            phase: VtLook.reducedMotion ? 0.5 : popup.phase
            Accessible.role: Accessible.Animation
            Accessible.name: L.t("思考中", "Thinking")
        }
        PopupScrollText {
            anchors { fill: parent; margins: 10; rightMargin: 4 }
            visible: popup.stage === SmartSelectPopup.Result
            text: popup.body
            theme: popup.theme
            size: VtTheme.sizeBody
            line: 19
        }
        SmartSelectFailure {
            anchors { fill: parent; margins: 10; topMargin: 9 }
            visible: popup.stage === SmartSelectPopup.Failure
            theme: popup.theme
            title: popup.failureTitle
            detail: popup.failureDetail
            suggestion: popup.failureSuggestion
            onRetry: popup.act(SmartSelectPopup.Retry)
            onCopyOriginal: popup.act(SmartSelectPopup.CopyOriginal)
        }
    }

    // MARK: What can be done

    Row {
        id: actions
        x: 14
        y: parent.height - 12 - 32
        width: parent.width - 28
        spacing: VtTheme.gap
        readonly property real needed: save.implicitWidth + reply.implicitWidth + organize.implicitWidth
        readonly property real spare: (width - 2 * spacing - needed) / 3

        ActionButton {
            id: save
            theme: popup.theme
            spare: actions.spare
            text: L.t("入库", "Save")
            symbol: "square.and.arrow.down"
            onClicked: popup.act(SmartSelectPopup.Save)
        }
        ActionButton {
            id: reply
            theme: popup.theme
            spare: actions.spare
            kind: VtButton.Primary
            enabled: !popup.thinking
            text: L.t("回复", "Reply")
            symbol: "arrowshape.turn.up.left.fill"
            onClicked: popup.act(SmartSelectPopup.Reply)
        }
        ActionButton {
            id: organize
            theme: popup.theme
            spare: actions.spare
            enabled: !popup.thinking
            text: L.t("整理", "Organize")
            symbol: "text.badge.checkmark"
            onClicked: popup.act(SmartSelectPopup.Organize)
        }
    }
}

pragma ComponentBehavior: Bound
import QtQuick
import Veltrin

/// The choice beside the caret: a row for each agent's slot, then the actions, all under the numbers of their keys. It
/// never has the keyboard; the numbers are read elsewhere, and a click chooses like a key.
PanelCard {
    id: bubble

    property string presetMark
    /// Rows as { slot, title, detail, symbol, colorHex, isVacant }.
    property var agents: []
    property var presets: []
    signal slotChosen(slot: int)

    Accessible.role: Accessible.PopupMenu

    Column {
        id: column
        anchors { fill: parent; leftMargin: 10; rightMargin: 10; topMargin: 11; bottomMargin: 9 }

        PopupTitleBar {
            x: 6
            width: parent.width - 12
            title: bubble.text
            systemName: "wand.and.stars"
            detail: L.t("Esc 关闭", "Esc closes")
            theme: bubble.theme
        }
        Item { width: 1; height: 5 }
        Repeater {
            // By count, so that the rows stay when the panel comes again with other words.
            model: bubble.agents.length

            ChoiceRow {
                required property int index
                readonly property var entry: bubble.agents[index] ?? {}

                width: column.width
                height: 30
                theme: bubble.theme
                slotNumber: Number.isInteger(entry.slot) ? entry.slot : index + 1
                title: entry.title ?? ""
                detail: entry.detail ?? ""
                symbol: entry.symbol ?? ""
                colorHex: entry.colorHex ?? ""
                vacant: entry.isVacant ?? false
                preferred: slotNumber === 1
                onClicked: bubble.slotChosen(slotNumber)
            }
        }
        Item {
            visible: bubble.presets.length > 0
            width: column.width
            height: 22

            VtText {
                id: mark
                x: 6
                anchors.verticalCenter: parent.verticalCenter
                text: bubble.presetMark
                theme: bubble.theme
                size: VtTheme.sizeCaption
                weight: VtTheme.weightMedium
                tone: VtText.Muted
            }
            VtDivider {
                anchors { left: mark.right; leftMargin: VtTheme.gap; right: parent.right; rightMargin: 6; verticalCenter: parent.verticalCenter }
                theme: bubble.theme
                Accessible.ignored: true
            }
        }
        Grid {
            width: column.width
            columns: 2
            columnSpacing: 4

            Repeater {
                model: bubble.presets.length

                ChoiceRow {
                    required property int index
                    readonly property var entry: bubble.presets[index] ?? {}

                    width: (column.width - 4) / 2
                    theme: bubble.theme
                    slotNumber: Number.isInteger(entry.slot) ? entry.slot : index + 1
                    title: entry.title ?? ""
                    mark: bubble.presetMark
                    tightness: 3
                    explanation: entry.detail ?? ""
                    symbol: entry.symbol ?? ""
                    colorHex: entry.colorHex ?? ""
                    onClicked: bubble.slotChosen(slotNumber)
                }
            }
        }
    }
}

import QtQuick
import Veltrin

/// The choice beside the caret: one row for each agent slot, then the preset actions. A click gives a row's number.
PanelCard {
    id: bubble

    property var agents: []
    property var presets: []
    property string presetMark

    signal slotChosen(int slot)

    Accessible.role: Accessible.PopupMenu

    Column {
        anchors { fill: parent; margins: 3 * VtTheme.space }

        Text {
            width: parent.width
            height: 24
            text: bubble.text
            textFormat: Text.PlainText
            color: bubble.colors.text
            font { family: VtTheme.family; pixelSize: VtTheme.sizeTitle; weight: Font.DemiBold }
        }
        Repeater {
            model: bubble.agents.concat(bubble.presets)

            Item {
                id: row

                required property var modelData
                required property int index
                readonly property string mark: index < bubble.agents.length ? "" : bubble.presetMark + " "

                width: parent.width
                height: 24
                Accessible.role: Accessible.MenuItem
                Accessible.name: mark + modelData.title
                Accessible.description: modelData.detail
                Accessible.onPressAction: bubble.slotChosen(modelData.slot)

                Text {
                    id: number
                    anchors.verticalCenter: parent.verticalCenter
                    width: 5 * VtTheme.space
                    text: row.modelData.slot
                    color: bubble.colors.secondary
                    font { family: VtTheme.family; pixelSize: VtTheme.sizeSmall }
                }
                VtSurface {
                    id: dot
                    anchors { left: number.right; verticalCenter: parent.verticalCenter }
                    width: 8
                    height: 8
                    radius: 4
                    color: row.modelData.color
                }
                Text {
                    id: title
                    anchors { left: dot.right; leftMargin: 2 * VtTheme.space; verticalCenter: parent.verticalCenter }
                    width: Math.min(implicitWidth, parent.width - x)
                    text: row.mark + row.modelData.title
                    textFormat: Text.PlainText
                    color: row.modelData.vacant ? bubble.colors.secondary : bubble.colors.text
                    font { family: VtTheme.family; pixelSize: VtTheme.sizeBody }
                    elide: Text.ElideRight
                    maximumLineCount: 1
                }
                Text {
                    anchors {
                        left: title.right; leftMargin: 2 * VtTheme.space
                        right: parent.right; verticalCenter: parent.verticalCenter
                    }
                    text: row.modelData.detail
                    textFormat: Text.PlainText
                    color: bubble.colors.secondary
                    font { family: VtTheme.family; pixelSize: VtTheme.sizeCaption }
                    elide: Text.ElideRight
                    maximumLineCount: 1
                }
                MouseArea {
                    anchors.fill: parent
                    onClicked: bubble.slotChosen(row.modelData.slot)
                }
            }
        }
    }
}

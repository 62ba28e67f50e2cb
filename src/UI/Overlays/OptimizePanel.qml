pragma ComponentBehavior: Bound
import QtQuick
import Veltrin

/// The choice inside our own window: four ways to optimise what stands in its field.
Item {
    id: panel

    enum LoadingState { Idle, Loading }
    enum OptimizeOption { Refine, Restructure, ModelAdapt, OutFmt }

    property VtPalette theme: PopupTheme.current
    property int loadingState: OptimizePanel.Idle
    property int selectedOption: OptimizePanel.Refine
    signal chosen(option: int)
    signal closed()

    readonly property var options: [
        { option: OptimizePanel.Refine, title: L.t("更精确", "More precise"), symbol: "scope" },
        { option: OptimizePanel.Restructure, title: L.t("重组结构", "Restructure"), symbol: "list.bullet" },
        { option: OptimizePanel.ModelAdapt, title: L.t("适配模型", "Fit the model"), symbol: "brain.head.profile" },
        { option: OptimizePanel.OutFmt, title: L.t("适配格式", "Fit the format"), symbol: "doc.richtext.fill" }
    ]

    implicitWidth: 300
    implicitHeight: 10 + 28 + 8 + 2 * 36 + 6 + 12

    Accessible.role: Accessible.Dialog
    Accessible.name: title.title

    PopupCardBackground { anchors.fill: parent; theme: panel.theme; translucent: false }
    PopupThinkingBackground {
        anchors.fill: parent
        visible: panel.loadingState === OptimizePanel.Loading
        running: visible
        theme: panel.theme
    }
    PopupTitleBar {
        id: title
        anchors { left: parent.left; leftMargin: VtTheme.padding; right: close.left; rightMargin: VtTheme.space; verticalCenter: close.verticalCenter }
        theme: panel.theme
        title: L.t("优化提示词", "Optimize the prompt")
        systemName: "wand.and.stars"
    }
    VtIconButton {
        id: close
        anchors { right: parent.right; rightMargin: VtTheme.gap; top: parent.top; topMargin: 10 }
        theme: panel.theme
        symbol: "xmark"
        label: L.t("关闭", "Close")
        onClicked: panel.closed()
    }
    Row {
        anchors { horizontalCenter: parent.horizontalCenter; verticalCenter: grid.verticalCenter }
        visible: panel.loadingState === OptimizePanel.Loading
        spacing: VtTheme.gap

        VtText { text: L.t("思考中", "Thinking"); theme: panel.theme; weight: VtTheme.weightMedium }
        PopupThinkingDots { anchors.verticalCenter: parent.verticalCenter; color: panel.theme.text }
    }
    Grid {
        id: grid
        anchors { left: parent.left; right: parent.right; top: close.bottom; margins: VtTheme.padding; topMargin: VtTheme.gap }
        visible: panel.loadingState === OptimizePanel.Idle
        columns: 2
        columnSpacing: 6
        rowSpacing: 6

        Repeater {
            model: panel.options

            VtPressable {
                id: option
                required property var modelData
                readonly property bool isSelected: modelData.option === panel.selectedOption

                width: (grid.width - 6) / 2
                height: 36
                label: modelData.title
                theme: panel.theme
                onClicked: {
                    panel.selectedOption = modelData.option
                    panel.chosen(modelData.option)
                }

                VtSurface {
                    anchors.fill: parent
                    radius: VtTheme.radiusControl
                    color: option.isSelected ? panel.theme.accentSoft : panel.theme.surfaceAlt
                    stroke: option.isSelected ? panel.theme.accent : "transparent"
                }
                Row {
                    anchors { left: parent.left; leftMargin: 10; verticalCenter: parent.verticalCenter }
                    spacing: VtTheme.gap

                    VtIcon { symbol: option.modelData.symbol; color: panel.theme.text; Accessible.ignored: true }
                    VtText { text: option.label; theme: panel.theme; weight: VtTheme.weightMedium; Accessible.ignored: true }
                }
                VtFocusRing { theme: panel.theme; shown: option.activeFocus }
            }
        }
    }
}

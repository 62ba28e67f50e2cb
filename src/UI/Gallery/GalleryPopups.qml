import QtQuick
import Veltrin

/// Every popup in one appearance, on a ground that could be anybody's window.
Rectangle {
    id: popups

    property VtPalette theme: PopupTheme.current

    width: 342
    height: column.height + 32
    radius: VtTheme.radiusCard
    color: theme.dark ? "#D8D8D2" : "#E9E9E4"

    Column {
        id: column
        x: 16
        y: 16
        width: 310
        spacing: 14

        OptimizeChoiceBubble {
            width: 310
            height: 248
            theme: popups.theme
            text: L.t("优化提示词", "Optimize Prompt")
            presetMark: L.t("预设", "Preset")
            agents: [
                { slot: 1, title: L.t("产品思维", "Product thinking"), symbol: "lightbulb.fill", colorHex: "#F4C8E0" },
                { slot: 2, title: L.t("代码架构", "Code architecture"), symbol: "chevron.left.forwardslash.chevron.right", colorHex: "#A7DFFC" },
                { slot: 3, title: L.t("名字特别特别长的智能体也要好好地省略显示", "An agent whose name is much too long for its row"), symbol: "brain.head.profile", colorHex: "#C4B5FD" },
                { slot: 4, title: L.t("未设置优化 Agent", "No agent set"), detail: L.t("前往 Agent Studio 配置", "Choose one in Agent Studio"), isVacant: true }
            ]
            presets: [
                { slot: 1, title: L.t("提示词优化", "Better prompt"), symbol: "scope", colorHex: "#FFE066" },
                { slot: 2, title: L.t("添加表情", "Add emoji"), symbol: "face.smiling", colorHex: "#F4C8E0" },
                { slot: 3, title: L.t("更专业", "More professional"), symbol: "briefcase.fill", colorHex: "#B5D8FF" },
                { slot: 4, title: L.t("更简洁", "More concise"), symbol: "bolt.fill", colorHex: "#B5F0C8" }
            ]
        }
        TextPanel {
            width: 300
            height: 84
            theme: popups.theme
            text: "Veltrin Ready"
        }
        TextPanel {
            width: 300
            height: 84
            theme: popups.theme
            tone: TextPanel.Success
            text: "已复制\n优化结果：请把下面的文字改写得更清晰、更容易执行，并且保留…"
        }
        TextPanel {
            width: 300
            height: 84
            theme: popups.theme
            tone: TextPanel.Failure
            text: "优化失败\n模型请求超时，当前服务响应太慢或文本较长。请稍后重试，或切换更快的模型。"
        }
        Row {
            spacing: VtTheme.padding

            StatusPill {
                width: 72
                height: 40
                theme: popups.theme
                text: "正在优化"
            }
            Item {
                width: 226
                height: 64

                PopupCardBackground { anchors.fill: parent; theme: popups.theme; translucent: false }
                PopupThinkingBackground { anchors.fill: parent; theme: popups.theme }
                PopupTitleBar {
                    anchors { left: parent.left; right: parent.right; margins: VtTheme.padding; top: parent.top; topMargin: 8 }
                    theme: popups.theme
                    title: L.t("智能拖拽", "Smart drop")
                    systemName: "square.and.arrow.down"
                    detail: "PDF"
                }
                PopupThinkingDots {
                    anchors { horizontalCenter: parent.horizontalCenter; bottom: parent.bottom; bottomMargin: 14 }
                    color: popups.theme.text
                }
            }
        }
        OptimizePanel { theme: popups.theme }
        OptimizePanel { theme: popups.theme; loadingState: OptimizePanel.Loading }
    }
}

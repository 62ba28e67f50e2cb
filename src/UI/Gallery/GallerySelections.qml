import QtQuick
import Veltrin

/// The icon beside a selection and the popup over it in each of its states, in one appearance.
Rectangle {
    id: selections

    property VtPalette theme: PopupTheme.current

    width: 1376
    height: 244 + 32
    radius: VtTheme.radiusCard
    color: theme.dark ? "#D8D8D2" : "#E9E9E4"

    component Popup: SmartSelectPopup {
        width: 300
        height: 244
        title: L.t("已选中", "Selected")
        recognizerName: L.t("对话识别", "Chat reader")
        agentName: L.t("评论回复", "Comment replies")
        agentSymbol: "bubble.left.fill"
        agentColorHex: "#FDDC8A"
        body: L.t("王欣：明天下午三点的评审改到周五可以吗？\n李然：我这边没问题，会议室我来重新约，资料周四前发给大家。",
                  "Wang: Could we move tomorrow's review to Friday?\nLi: Fine with me. I will book the room again and send the papers by Thursday.")
    }

    Row {
        x: 16
        y: 16
        spacing: 20

        SmartSelectIcon {
            width: 58
            height: 58
            remaining: 0.72
            text: L.t("处理选中的文字", "Work on the selected text")
            theme: selections.theme
        }
        Popup {
            theme: selections.theme
            subtitle: L.t("对话 · 58 字", "Chat · 123 characters")
        }
        Popup {
            theme: selections.theme
            stage: SmartSelectPopup.Thinking
            title: L.t("思考中", "Thinking")
            subtitle: L.t("对话 · 58 字", "Chat · 123 characters")
            agentName: L.t("名字特别特别长的智能体也要好好地省略显示", "An agent whose name is much too long")
            agentColorHex: "#C4B5FD"
        }
        Popup {
            theme: selections.theme
            stage: SmartSelectPopup.Result
            tone: TextPanel.Success
            title: L.t("思考结果", "Result")
            subtitle: L.t("已复制", "Copied")
            body: L.t("好的，周五可以。那我把明天下午三点的时间空出来，周四前会先看完资料，有问题提前和大家说。\n会议室确定后麻烦发到群里，谢谢！",
                      "Friday works for me, so I will keep tomorrow at three free. I will have read the papers by Thursday and bring up any questions early.\nPlease post the room once it is booked, thanks!")
        }
        Popup {
            theme: selections.theme
            stage: SmartSelectPopup.Failure
            tone: TextPanel.Failure
            subtitle: L.t("需要处理", "Needs attention")
            failureTitle: L.t("处理失败", "This did not work")
            failureDetail: L.t("模型请求超时，当前服务响应太慢或文本较长。", "The model took too long to answer.")
            failureSuggestion: L.t("请稍后重试，或切换更快的模型；这不是系统权限问题。", "Try again later, or choose a faster model.")
        }
    }
}

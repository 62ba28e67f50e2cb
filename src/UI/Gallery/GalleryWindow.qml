pragma ComponentBehavior: Bound
import QtQuick
import Veltrin

/// Every element of the interface on one page.
Window {
    id: gallery

    required property var symbols
    required property ShortcutCaptureModel shortcut

    width: 1440
    height: Math.ceil(page.height + selections.height) + 28 + 2 * 32
    minimumWidth: 1440
    title: L.t("Veltrin 设计元素", "Veltrin design elements")
    color: VtTheme.window.surface

    component Section: Column {
        property string name
        property string explanation
        width: parent.width
        spacing: VtTheme.padding

        VtText {
            text: parent.name
            size: VtTheme.sizeTitle
            weight: VtTheme.weightStrong
        }
    }
    component Swatch: Column {
        id: swatch
        property color color
        property string name
        spacing: VtTheme.space

        VtSurface {
            width: 56
            height: 40
            radius: VtTheme.radiusControl
            color: swatch.color
            stroke: VtTheme.window.stroke
        }
        VtText { text: swatch.name; size: VtTheme.sizeCaption; tone: VtText.Muted }
    }

    Row {
        id: page
        x: 32
        y: 32
        spacing: 80

        Column {
            width: 580
            spacing: 28

            Column {
                spacing: VtTheme.space

                VtText { text: "Veltrin"; size: VtTheme.sizeDisplay; weight: VtTheme.weightStrong }
                VtText {
                    text: L.t("覆盖每一个文本框的 AI 操作层", "An AI layer over every text field")
                    size: VtTheme.sizeTitle
                    tone: VtText.Secondary
                }
            }
            Section {
                name: L.t("颜色", "Colors")

                Grid {
                    columns: 8
                    columnSpacing: VtTheme.padding
                    rowSpacing: VtTheme.padding

                    Repeater {
                        model: ["surface", "card", "surfaceAlt", "text", "textSub", "muted", "accent", "accentSoft",
                                "success", "successText", "danger", "dangerText"]
                        Swatch {
                            required property string modelData
                            name: modelData
                            color: VtTheme.window[modelData]
                        }
                    }
                }
            }
            Section {
                name: L.t("文字", "Type")

                Column {
                    spacing: 6
                    VtText { text: L.t("标题二十 永国语言 Aa 123", "Heading twenty Aa 123"); size: VtTheme.sizeHeading; weight: VtTheme.weightStrong }
                    VtText { text: L.t("小标题十五，中文与 English 混排", "Title fifteen, with 中文 among it"); size: VtTheme.sizeTitle; weight: VtTheme.weightMedium }
                    VtText { text: L.t("正文十三：直接、骨、曜、门都用简体字形。", "Body thirteen: the quick brown fox jumps over 13 lazy dogs."); tone: VtText.Primary }
                    VtText { text: L.t("说明十二：次要文字。", "Small twelve: secondary text."); size: VtTheme.sizeSmall; tone: VtText.Secondary }
                    VtText { text: L.t("注释十一：最安静的文字。", "Caption eleven: the quietest text."); size: VtTheme.sizeCaption; tone: VtText.Muted }
                    Row {
                        spacing: VtTheme.margin
                        VtText { text: L.t("已完成", "Done"); tone: VtText.Success; weight: VtTheme.weightMedium }
                        VtText { text: L.t("需要处理", "Needs attention"); tone: VtText.Danger; weight: VtTheme.weightMedium }
                    }
                }
            }
            Section {
                name: L.t("按钮", "Buttons")

                Row {
                    spacing: VtTheme.gap
                    VtButton { kind: VtButton.Primary; text: L.t("保存", "Save") }
                    VtButton { text: L.t("复制", "Copy"); symbol: "doc.on.doc" }
                    VtButton { kind: VtButton.Danger; text: L.t("删除", "Delete"); symbol: "trash" }
                    VtButton { text: L.t("不可用", "Disabled"); enabled: false }
                    VtIconButton { symbol: "gearshape"; label: L.t("设置", "Settings"); anchors.verticalCenter: parent.verticalCenter }
                    VtIconButton { symbol: "xmark"; label: L.t("关闭", "Close"); anchors.verticalCenter: parent.verticalCenter }
                }
                Row {
                    spacing: VtTheme.gap
                    VtChip { text: L.t("全部", "All"); selectable: true; selected: true }
                    VtChip { text: L.t("写作", "Writing"); selectable: true }
                    VtChip { text: L.t("代码", "Code"); symbol: "chevron.left.forwardslash.chevron.right"; selectable: true }
                    VtChip { text: L.t("产品思维", "Product"); colorHex: "#F4C8E0" }
                }
            }
            Section {
                name: L.t("输入", "Input")

                Row {
                    spacing: VtTheme.padding
                    VtTextField { width: 240; label: L.t("搜索", "Search"); placeholder: L.t("搜索提示词、智能体...", "Search prompts and agents...") }
                    VtTextField { width: 240; label: L.t("密钥", "Key"); text: "secret-key"; echoMode: TextInput.Password }
                }
                Row {
                    spacing: VtTheme.margin
                    VtSwitch { label: L.t("开", "On"); checked: true }
                    VtSwitch { label: L.t("关", "Off") }
                    VtSwitch { label: L.t("不可用", "Disabled"); checked: true; enabled: false }
                    VtProgress { anchors.verticalCenter: parent.verticalCenter; width: 240; value: 0.62; label: L.t("进度", "Progress") }
                }
            }
            VtCard {
                width: parent.width
                title: L.t("快捷键", "Shortcuts")
                detail: L.t("在任何应用里都可用。", "They work in every application.")

                ShortcutCustomizer {
                    width: parent.width
                    title: L.t("语音输入", "Voice input")
                    symbol: "mic.fill"
                    colorHex: "#F4C8E0"
                    model: gallery.shortcut
                }
                VtDivider { width: parent.width }
                VtRow {
                    width: parent.width
                    title: L.t("双击空格", "Double space")
                    detail: L.t("在光标旁打开优化选择", "Opens the choice beside the caret")
                    symbol: "bolt.fill"
                    colorHex: "#FFE066"

                    VtSwitch { anchors.verticalCenter: parent.verticalCenter; label: L.t("双击空格", "Double space"); checked: true }
                }
            }
            Section {
                name: L.t("提示", "Toasts")

                Row {
                    spacing: VtTheme.margin
                    VtToast { text: L.t("已复制", "Copied"); kind: VtToast.Success }
                    VtToast { text: L.t("保存失败", "Not saved"); kind: VtToast.Danger }
                    VtToast { text: L.t("正在检查更新", "Looking for updates") }
                }
            }
        }
        Column {
            width: 700
            spacing: 28

            Section {
                name: L.t("浮窗", "Popups")

                Row {
                    spacing: VtTheme.margin

                    Repeater {
                        model: [PopupTheme.light, PopupTheme.invertedBlack]

                        GalleryPopups {
                            required property VtPalette modelData
                            theme: modelData
                        }
                    }
                }
            }
            Section {
                name: L.t("图标", "Icons")

                Grid {
                    columns: 21
                    columnSpacing: 11
                    rowSpacing: 10

                    Repeater {
                        model: gallery.symbols

                        VtIcon {
                            required property string modelData
                            width: 22
                            height: 22
                            symbol: modelData
                            color: VtTheme.window.text
                            Accessible.role: Accessible.Graphic
                            Accessible.name: modelData
                        }
                    }
                }
                Row {
                    spacing: VtTheme.gap

                    Repeater {
                        model: [["lightbulb.fill", "#F4C8E0"], ["chevron.left.forwardslash.chevron.right", "#A7DFFC"],
                                ["paintbrush.fill", "#C4B5FD"], ["graduationcap.fill", "#B5F0C8"],
                                ["person.2.fill", "#FFE066"], ["chart.bar.fill", "#FBC0C6"], ["scope", "#FF7A45"],
                                ["briefcase.fill", "#4A90D9"], ["no.such.symbol", "none"]]

                        VtIconTile {
                            required property var modelData
                            side: 32
                            symbol: modelData[0]
                            colorHex: modelData[1]
                        }
                    }
                }
            }
        }
    }
    Section {
        id: selections
        anchors { left: page.left; top: page.bottom; topMargin: 28 }
        width: parent.width - 2 * 32
        name: L.t("选中文字", "Selections")

        Repeater {
            model: [PopupTheme.light, PopupTheme.invertedBlack]

            GallerySelections {
                required property VtPalette modelData
                theme: modelData
            }
        }
    }
}

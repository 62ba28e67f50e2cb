import QtQuick
import Veltrin

/// Text as the interface writes it. Never rich: what it shows may come from anywhere.
Text {
    id: label

    enum Tone { Primary, Secondary, Muted, Success, Danger, OnAccent }

    property VtPalette theme: VtTheme.window
    property int tone: VtText.Primary
    property int size: VtTheme.sizeBody
    property int weight: VtTheme.weightRegular

    textFormat: Text.PlainText
    elide: Text.ElideRight
    // A line break in what anybody wrote makes no second line where there is room for one.
    maximumLineCount: wrapMode === Text.NoWrap ? 1 : 2147483647
    font { pixelSize: size; weight: weight }
    color: switch (tone) {
        case VtText.Secondary: return theme.textSub
        case VtText.Muted: return theme.muted
        case VtText.Success: return theme.successText
        case VtText.Danger: return theme.dangerText
        case VtText.OnAccent: return theme.accentText
        default: return theme.text
    }

    Accessible.role: Accessible.StaticText
    Accessible.name: text
    Accessible.ignored: text.length === 0
}

import QtQuick
import Veltrin

/// A card on a page. What is put into it stands below each other.
Item {
    id: card

    property VtPalette theme: VtTheme.window
    property string title
    property string detail
    property int padding: VtTheme.margin
    default property alias content: column.data

    implicitWidth: 280
    implicitHeight: column.implicitHeight + 2 * padding

    Accessible.role: Accessible.Grouping
    Accessible.name: title.length > 0 ? title : L.t("卡片", "Card")

    VtSurface {
        anchors.fill: parent
        radius: VtTheme.radiusCard
        color: card.theme.card
        stroke: card.theme.stroke
    }
    Column {
        id: column
        x: card.padding
        y: card.padding
        width: card.width - 2 * card.padding
        spacing: VtTheme.gap

        VtText {
            width: parent.width
            visible: text.length > 0
            text: card.title
            theme: card.theme
            size: VtTheme.sizeTitle
            weight: VtTheme.weightStrong
        }
        VtText {
            width: parent.width
            visible: text.length > 0
            text: card.detail
            theme: card.theme
            tone: VtText.Secondary
            wrapMode: Text.Wrap
            lineHeight: 1.25
        }
    }
}

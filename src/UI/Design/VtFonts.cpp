#include "UI/Design/VtFonts.h"

#include <QFont>
#include <QGuiApplication>

namespace veltrin {

QStringList VtFonts::families() {
    return {QStringLiteral("Inter"), QStringLiteral("Noto Sans"), QStringLiteral("Noto Sans CJK SC"),
            QStringLiteral("Noto Color Emoji")};
}

void VtFonts::install() {
    QFont font = QGuiApplication::font();
    font.setFamilies(families());
    font.setPixelSize(13);
    QGuiApplication::setFont(font);
}

}  // namespace veltrin

#include "UI/Tray/TrayItem.h"

#include <QIcon>
#include <QMenu>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QSystemTrayIcon>

#include <utility>

namespace veltrin {
namespace {

constexpr int iconSize = 64;

/// The program's mark, as packaging/com.veltrin.app.svg has it. Drawn here, because a theme that knows it is
/// there only when the program is installed, and a renderer for it only when somebody installed that.
QIcon drawnIcon() {
    QPixmap pixmap(iconSize, iconSize);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(iconSize / 128.0, iconSize / 128.0);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x1C, 0x1C, 0x1E));
    painter.drawRoundedRect(QRectF(8, 8, 112, 112), 28, 28);
    painter.setBrush(QColor(0xF5, 0xF5, 0xF5));
    painter.drawRoundedRect(QRectF(36, 98, 56, 7), 3.5, 3.5);
    QPainterPath mark(QPointF(36, 40));
    mark.lineTo(64, 92);
    mark.lineTo(92, 40);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0xFF, 0xE0, 0x66), 12, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(mark);
    return QIcon(pixmap);
}

}  // namespace

TrayItem::TrayItem(Actions actions)
    : actions_(std::move(actions)),
      menu_(std::make_unique<QMenu>()),
      icon_(std::make_unique<QSystemTrayIcon>(drawnIcon())) {
    icon_->setToolTip(QStringLiteral("Veltrin"));
    // English only, as the rest of the program's menu.
    if (actions_.open) {
        QObject::connect(menu_->addAction(QStringLiteral("Open Veltrin")), &QAction::triggered, icon_.get(),
                         [this] { actions_.open(); });
        menu_->addSeparator();
        QObject::connect(icon_.get(), &QSystemTrayIcon::activated, icon_.get(),
                         [this](QSystemTrayIcon::ActivationReason reason) {
                             if (reason == QSystemTrayIcon::Trigger) actions_.open();
                         });
    }
    QObject::connect(menu_->addAction(QStringLiteral("Quit Veltrin")), &QAction::triggered, icon_.get(),
                     [this] { actions_.quit(); });
    icon_->setContextMenu(menu_.get());
}

TrayItem::~TrayItem() = default;

void TrayItem::show() {
    icon_->show();
}

void TrayItem::hide() {
    icon_->hide();
}

}  // namespace veltrin

#include "UI/Tray/TrayItem.h"

#include "UI/Overlays/XDisplay.h"

#include <QDBusConnectionInterface>
#include <QIcon>
#include <QMenu>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QSystemTrayIcon>

#include <chrono>
#include <utility>

namespace veltrin {
namespace {

constexpr int iconSize = 64;
/// After this long nobody is starting up any more. The toolkit then waits for a tray of the older kind.
constexpr std::chrono::seconds trayPatience{60};

const QString trayService = QStringLiteral("org.kde.StatusNotifierWatcher");

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

bool isTrayThere() {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || bus.interface()->isServiceRegistered(trayService)) return true;
    xcb_connection_t* connection = windowsConnection();
    if (connection == nullptr) return false;
    const XReplyOf<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
        connection, xcb_get_selection_owner(connection, atomNamed("_NET_SYSTEM_TRAY_S0")), nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

}  // namespace

TrayItem::TrayItem(Actions actions)
    : actions_(std::move(actions)),
      watcher_(trayService, QDBusConnection::sessionBus(), QDBusServiceWatcher::WatchForRegistration),
      menu_(std::make_unique<QMenu>()) {
    QObject::connect(&watcher_, &QDBusServiceWatcher::serviceRegistered, &patience_, [this] { makeIcon(); });
    patience_.setSingleShot(true);
    QObject::connect(&patience_, &QTimer::timeout, &patience_, [this] { makeIcon(); });
    // English only, as the rest of the program's menu.
    if (actions_.open) {
        QObject::connect(menu_->addAction(QStringLiteral("Open Veltrin")), &QAction::triggered, &patience_,
                         [this] { actions_.open(); });
        menu_->addSeparator();
    }
    QObject::connect(menu_->addAction(QStringLiteral("Quit Veltrin")), &QAction::triggered, &patience_,
                     [this] { actions_.quit(); });
}

TrayItem::~TrayItem() = default;

/// The toolkit looks once what kind of tray there is, and keeps to it. At a login the tray may come after the
/// program, so the look waits for it.
void TrayItem::show() {
    if (icon_) return icon_->show();
    if (isTrayThere()) return makeIcon();
    patience_.start(trayPatience);
}

void TrayItem::makeIcon() {
    patience_.stop();
    if (icon_) return;
    icon_ = std::make_unique<QSystemTrayIcon>(drawnIcon());
    icon_->setToolTip(QStringLiteral("Veltrin"));
    icon_->setContextMenu(menu_.get());
    if (actions_.open) {
        QObject::connect(icon_.get(), &QSystemTrayIcon::activated, icon_.get(),
                         [this](QSystemTrayIcon::ActivationReason reason) {
                             if (reason == QSystemTrayIcon::Trigger) actions_.open();
                         });
    }
    icon_->show();
}

void TrayItem::hide() {
    patience_.stop();
    if (icon_) icon_->hide();
}

}  // namespace veltrin

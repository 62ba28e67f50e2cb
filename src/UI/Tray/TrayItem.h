#pragma once

#include <QDBusServiceWatcher>
#include <QTimer>

#include <functional>
#include <memory>

class QMenu;
class QSystemTrayIcon;

namespace veltrin {

/// The program's place in the desktop's tray, so that a program without a window can be reached and ended.
/// Where there is no tray it waits for one. Needs a QApplication and the session bus.
class TrayItem {
public:
    struct Actions {
        std::function<void()> open;  ///< may be absent: then there is nothing to open
        std::function<void()> quit;
    };

    explicit TrayItem(Actions actions);
    ~TrayItem();
    TrayItem(const TrayItem&) = delete;
    TrayItem& operator=(const TrayItem&) = delete;

    void show();
    void hide();

private:
    void makeIcon();

    Actions actions_;
    QDBusServiceWatcher watcher_;
    QTimer patience_;
    std::unique_ptr<QMenu> menu_;
    std::unique_ptr<QSystemTrayIcon> icon_;
};

}  // namespace veltrin

#pragma once

#include "Foundation/Observers.h"

#include <QString>

#include <map>

namespace veltrin {

/// Named notifications inside the process. Observers are told at once, in the order they came. Main thread
/// only.
class NotificationCenter {
public:
    Subscription observe(const QString& name, std::function<void()> observer) {
        return observers_[name].subscribe(std::move(observer));
    }
    void post(const QString& name) {
        if (const auto found = observers_.find(name); found != observers_.end()) found->second.notify();
    }

private:
    std::map<QString, Observers<>> observers_;
};

namespace Notifications {
inline const QString showMainWindow = QStringLiteral("VeltrinShowMainWindow");
inline const QString showOnboarding = QStringLiteral("VeltrinShowOnboarding");
inline const QString veltrinNavigateToDragWorkbench = QStringLiteral("VeltrinNavigateToDragWorkbench");
// Nobody observes these yet; the cards follow the published state.
inline const QString veltrinFatigueReminder = QStringLiteral("veltrinFatigueReminder");
inline const QString veltrinPomodoroBreak = QStringLiteral("veltrinPomodoroBreak");
inline const QString veltrinPomodoroResume = QStringLiteral("veltrinPomodoroResume");
}  // namespace Notifications

}  // namespace veltrin

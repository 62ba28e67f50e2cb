#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <functional>

class QDBusMessage;
class QDBusServiceWatcher;

namespace veltrin {

/// Whether the user's session is locked, as its screen locker says on the session bus, or the system's login
/// manager. Says nothing of lockers that speak to nobody; the key tap finds those by their grab. Main thread;
/// never waits.
class SessionLock : public QObject {
    Q_OBJECT
public:
    /// `onChange` is called with the new state, never with the same one twice; the session counts as unlocked
    /// at first.
    SessionLock(QDBusConnection sessionBus, QDBusConnection systemBus, std::function<void(bool)> onChange);
    ~SessionLock() override;

    bool isLocked() const { return !lockers_.isEmpty() || isLockedByLogin_; }

private:
    void watchLockers();
    void watchLogin();
    void askLockers();
    void tellChange();

private Q_SLOTS:
    void activeChanged(bool active, const QDBusMessage& message);
    void propertiesChanged(const QString& interface, const QVariantMap& changed,
                           const QStringList& invalidated);

private:
    QDBusConnection session_;
    QDBusConnection system_;
    std::function<void(bool)> onChange_;
    QDBusServiceWatcher* watcher_ = nullptr;
    QSet<QString> lockers_;  ///< unique bus names of those that are active
    bool isLockedByLogin_ = false;
    bool told_ = false;
};

}  // namespace veltrin

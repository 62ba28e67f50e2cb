#include "Platform/Linux/SessionLock.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

#include <utility>

namespace veltrin {
namespace {

struct Locker {
    const char* service;  ///< also the interface
    const char* path;
};
/// They share one interface by different names.
constexpr Locker knownLockers[] = {
    {"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver"},
    {"org.gnome.ScreenSaver", "/org/gnome/ScreenSaver"},
    {"org.mate.ScreenSaver", "/org/mate/ScreenSaver"},
    {"org.cinnamon.ScreenSaver", "/org/cinnamon/ScreenSaver"},
    {"org.xfce.ScreenSaver", "/org/xfce/ScreenSaver"},
};

const QString loginService = QStringLiteral("org.freedesktop.login1");
const QString loginSession = QStringLiteral("org.freedesktop.login1.Session");
const QString properties = QStringLiteral("org.freedesktop.DBus.Properties");
const QString lockedHint = QStringLiteral("LockedHint");

QDBusMessage callTo(const QString& service, const QString& path, const QString& interface,
                    const QString& method, const QVariantList& arguments = {}) {
    auto message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    message.setAutoStartService(false);
    return message;
}

}  // namespace

SessionLock::SessionLock(QDBusConnection sessionBus, QDBusConnection systemBus,
                         std::function<void(bool)> onChange)
    : session_(std::move(sessionBus)), system_(std::move(systemBus)), onChange_(std::move(onChange)) {
    if (session_.isConnected()) watchLockers();
    if (system_.isConnected()) watchLogin();
}

SessionLock::~SessionLock() = default;

void SessionLock::watchLockers() {
    watcher_ = new QDBusServiceWatcher(this);
    watcher_->setConnection(session_);
    watcher_->setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
    // A locker that is gone locks nothing.
    connect(watcher_, &QDBusServiceWatcher::serviceUnregistered, this, [this](const QString& name) {
        watcher_->removeWatchedService(name);
        lockers_.remove(name);
        tellChange();
    });
    for (const auto& locker : knownLockers) {
        session_.connect(QString(), QString(), QString::fromLatin1(locker.service),
                         QStringLiteral("ActiveChanged"), this, SLOT(activeChanged(bool, QDBusMessage)));
    }
    askLockers();
}

/// How they stand already.
void SessionLock::askLockers() {
    for (const auto& locker : knownLockers) {
        const QString service = QString::fromLatin1(locker.service);
        const auto message =
            callTo(service, QString::fromLatin1(locker.path), service, QStringLiteral("GetActive"));
        auto* call = new QDBusPendingCallWatcher(session_.asyncCall(message), this);
        connect(call, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* done) {
            const QDBusPendingReply<bool> reply = *done;
            if (!reply.isError()) activeChanged(reply.value(), reply.reply());
            done->deleteLater();
        });
    }
}

void SessionLock::activeChanged(bool active, const QDBusMessage& message) {
    const QString locker = message.service();
    if (active && !lockers_.contains(locker)) {
        lockers_.insert(locker);
        watcher_->addWatchedService(locker);
    } else if (!active && lockers_.remove(locker)) {
        watcher_->removeWatchedService(locker);
    }
    tellChange();
}

void SessionLock::watchLogin() {
    const QString id = qEnvironmentVariable("XDG_SESSION_ID");
    const auto manager = QStringLiteral("org.freedesktop.login1.Manager");
    const auto root = QStringLiteral("/org/freedesktop/login1");
    const auto message = id.isEmpty()
                             ? callTo(loginService, root, manager, QStringLiteral("GetSessionByPID"),
                                      {QVariant::fromValue<quint32>(0)})
                             : callTo(loginService, root, manager, QStringLiteral("GetSession"), {id});
    auto* call = new QDBusPendingCallWatcher(system_.asyncCall(message), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* done) {
        const QDBusPendingReply<QDBusObjectPath> session = *done;
        done->deleteLater();
        if (session.isError()) return;
        const QString path = session.value().path();
        system_.connect(loginService, path, properties, QStringLiteral("PropertiesChanged"), this,
                        SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
        const auto get =
            callTo(loginService, path, properties, QStringLiteral("Get"), {loginSession, lockedHint});
        auto* hint = new QDBusPendingCallWatcher(system_.asyncCall(get), this);
        connect(hint, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* answered) {
            const QDBusPendingReply<QDBusVariant> reply = *answered;
            answered->deleteLater();
            if (reply.isError()) return;
            isLockedByLogin_ = reply.value().variant().toBool();
            tellChange();
        });
    });
}

void SessionLock::propertiesChanged(const QString& interface, const QVariantMap& changed,
                                    const QStringList& /*invalidated*/) {
    const auto found = changed.constFind(lockedHint);
    if (interface != loginSession || found == changed.constEnd()) return;
    isLockedByLogin_ = found->toBool();
    tellChange();
}

void SessionLock::tellChange() {
    if (isLocked() == told_) return;
    told_ = isLocked();
    if (onChange_) onChange_(told_);
}

}  // namespace veltrin

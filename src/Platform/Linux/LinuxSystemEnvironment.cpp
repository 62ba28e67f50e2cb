#include "Platform/Linux/LinuxSystemEnvironment.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QLocale>
#include <QStandardPaths>

namespace veltrin {
namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
const QString group = QStringLiteral("org.freedesktop.appearance");
const QString colorScheme = QStringLiteral("color-scheme");

/// 1 is dark, 2 is light, 0 is no preference. Old portals wrap the number in a second variant.
bool saysDark(QVariant value) {
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value.toUInt() == 1;
}

}  // namespace

LinuxSystemEnvironment::LinuxSystemEnvironment() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;
    bus.connect(service, path, interface, QStringLiteral("SettingChanged"), this,
                SLOT(onSettingChanged(QString, QString, QDBusVariant)));
    auto call = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
    call << group << colorScheme;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        if (reply.isValid()) dark_ = saysDark(reply.value().variant());
        watcher->deleteLater();
    });
}

QStringList LinuxSystemEnvironment::preferredLanguages() const {
    // The C locale names no language.
    QStringList languages = QLocale::system().uiLanguages();
    languages.removeAll(QStringLiteral("C"));
    return languages;
}

QString LinuxSystemEnvironment::applicationSupportDirectory() const {
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
}

void LinuxSystemEnvironment::onSettingChanged(const QString& changedGroup, const QString& key,
                                              const QDBusVariant& value) {
    if (changedGroup == group && key == colorScheme) dark_ = saysDark(value.variant());
}

}  // namespace veltrin

#include "Platform/Linux/LinuxDesktopAppearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QFile>
#include <QGuiApplication>
#include <QPalette>
#include <QStandardPaths>

namespace veltrin {
namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearanceGroup = QStringLiteral("org.freedesktop.appearance");
const QString colorScheme = QStringLiteral("color-scheme");
const QString interfaceGroup = QStringLiteral("org.gnome.desktop.interface");
const QString enableAnimations = QStringLiteral("enable-animations");
/// No settings file is longer; what is, is none.
constexpr qint64 longestSettings = 65536;

bool paletteIsDark() {
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()) == nullptr) return false;
    return QGuiApplication::palette().color(QPalette::Window).lightnessF() < 0.5F;
}

bool isTrue(const QString& value) {
    return value == u"1" || value.compare(u"true", Qt::CaseInsensitive) == 0;
}

}  // namespace

LinuxDesktopAppearance::LinuxDesktopAppearance()
    : LinuxDesktopAppearance(QDBusConnection::sessionBus(),
                             QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)) {
}

LinuxDesktopAppearance::LinuxDesktopAppearance(QDBusConnection bus, const QString& configFolder)
    : fallbackDark_(paletteIsDark()) {
    readGtkSettings(configFolder);
    if (!bus.isConnected()) return;
    // Qt looks the slot's types up by their names, and knows this one only once somebody has used it.
    qRegisterMetaType<QDBusVariant>();
    // From whoever stands at the portal's place: it may be started anew at any time.
    bus.connect(QString(), path, interface, QStringLiteral("SettingChanged"), this,
                SLOT(onSettingChanged(QString, QString, QDBusVariant)));
    ask(bus, appearanceGroup, colorScheme);
    ask(bus, interfaceGroup, enableAnimations);
}

void LinuxDesktopAppearance::ask(QDBusConnection& bus, const QString& group, const QString& key) {
    auto call = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
    call << group << key;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, group, key] {
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        if (reply.isValid()) take(group, key, reply.value().variant());
        watcher->deleteLater();
    });
}

void LinuxDesktopAppearance::onSettingChanged(const QString& group, const QString& key,
                                              const QDBusVariant& value) {
    take(group, key, value.variant());
}

void LinuxDesktopAppearance::take(const QString& group, const QString& key, const QVariant& given) {
    // Old portals wrap the value in a second variant.
    QVariant value = given;
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    const bool wasDark = isDark();
    const bool reduced = reducesMotion();
    if (group == appearanceGroup && key == colorScheme) {
        // 1 is dark, 2 is light, 0 is no preference.
        const uint scheme = value.toUInt();
        portalDark_ = scheme == 1 || scheme == 2 ? std::optional(scheme == 1) : std::nullopt;
    } else if (group == interfaceGroup && key == enableAnimations) {
        animations_ = value.toBool();
    }
    if (isDark() != wasDark || reducesMotion() != reduced) changed.notify();
}

void LinuxDesktopAppearance::readGtkSettings(const QString& configFolder) {
    for (const char* version : {"gtk-3.0", "gtk-4.0"}) {
        QFile file(QStringLiteral("%1/%2/settings.ini").arg(configFolder, QString::fromLatin1(version)));
        if (!file.open(QIODevice::ReadOnly)) continue;
        const auto lines = QString::fromUtf8(file.read(longestSettings)).split(u'\n');
        for (const QString& line : lines) {
            const QString name = line.section(u'=', 0, 0).trimmed();
            const QString value = line.section(u'=', 1).trimmed();
            if (name == u"gtk-application-prefer-dark-theme" && isTrue(value)) fallbackDark_ = true;
            if (name == u"gtk-theme-name" && value.endsWith(u"-dark", Qt::CaseInsensitive))
                fallbackDark_ = true;
            if (name == u"gtk-enable-animations") fallbackAnimations_ = isTrue(value);
        }
    }
}

}  // namespace veltrin

#include "Platform/Linux/LinuxDesktopAppearance.h"
#include "support/desktop/RealDesktop.h"
#include "support/desktop/Waiting.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace veltrin {
namespace {

/// The settings portal of a desktop, with what a test puts into it.
class SettingsPortal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")
public:
    QVariant scheme = 0U;
    QVariant animations = true;
    bool wrapsTwice = true;  ///< as portals before version 2 do
    int reads = 0;

public Q_SLOTS:
    Q_SCRIPTABLE QDBusVariant Read(const QString& group, const QString&) {
        ++reads;
        const QVariant value = group == u"org.freedesktop.appearance" ? scheme : animations;
        const QDBusVariant once(value);
        return wrapsTwice ? QDBusVariant(QVariant::fromValue(once)) : once;
    }
};

class DesktopLookOnTheBus : public testing::Test {
protected:
    static constexpr const char* path = "/org/freedesktop/portal/desktop";

    DesktopLookOnTheBus()
        : server_(QDBusConnection::connectToBus(desktop_.sessionBusAddress(), QStringLiteral("portal"))),
          client_(QDBusConnection::connectToBus(desktop_.sessionBusAddress(), QStringLiteral("look"))) {}
    ~DesktopLookOnTheBus() override {
        QDBusConnection::disconnectFromBus(QStringLiteral("portal"));
        QDBusConnection::disconnectFromBus(QStringLiteral("look"));
    }

    void startPortal() {
        ASSERT_TRUE(server_.registerObject(QString::fromLatin1(path), &portal_,
                                           QDBusConnection::ExportScriptableSlots));
        ASSERT_TRUE(server_.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
    }
    void change(const char* group, const char* key, const QVariant& value) {
        QDBusMessage signal = QDBusMessage::createSignal(QString::fromLatin1(path),
                                                         QStringLiteral("org.freedesktop.portal.Settings"),
                                                         QStringLiteral("SettingChanged"));
        signal << QString::fromLatin1(group) << QString::fromLatin1(key)
               << QVariant::fromValue(QDBusVariant(value));
        EXPECT_TRUE(server_.send(signal));
    }

    RealDesktop desktop_{[] {
        DesktopOptions options;
        options.accessibility = false;
        options.windowManager = false;
        return options;
    }()};
    QTemporaryDir folder_;
    SettingsPortal portal_;
    QDBusConnection server_;
    QDBusConnection client_;
};

TEST_F(DesktopLookOnTheBus, followsThePortalAndItsChanges) {
    portal_.scheme = 1U;
    startPortal();
    LinuxDesktopAppearance look(client_, folder_.path());
    int changes = 0;
    const Subscription subscription = look.changed.subscribe([&] { ++changes; });
    EXPECT_TRUE(eventually(10, [&] { return look.isDark(); }));
    EXPECT_EQ(changes, 1);
    change("org.freedesktop.appearance", "color-scheme", 2U);
    EXPECT_TRUE(eventually(10, [&] { return !look.isDark(); }));
    change("org.gnome.desktop.interface", "enable-animations", false);
    EXPECT_TRUE(eventually(10, [&] { return look.reducesMotion(); }));
    EXPECT_EQ(changes, 3);
}

TEST_F(DesktopLookOnTheBus, takesAValueThatIsWrappedOnce) {
    portal_.wrapsTwice = false;
    portal_.scheme = 1U;
    portal_.animations = false;
    startPortal();
    const LinuxDesktopAppearance look(client_, folder_.path());
    EXPECT_TRUE(eventually(10, [&] { return look.isDark() && look.reducesMotion(); }));
}

TEST_F(DesktopLookOnTheBus, aPortalOfAnotherMindThanItsTypesIsNoPreference) {
    portal_.scheme = QStringLiteral("dark");
    portal_.animations = 1;
    startPortal();
    LinuxDesktopAppearance look(client_, folder_.path());
    ASSERT_TRUE(eventually(10, [&] { return portal_.reads == 2; }))
        << "else its answers come behind the changes";
    change("org.freedesktop.appearance", "color-scheme", 7U);
    change("org.gnome.desktop.interface", "enable-animations", false);
    EXPECT_TRUE(eventually(10, [&] { return look.reducesMotion(); }));
    EXPECT_FALSE(look.isDark());
}

}  // namespace
}  // namespace veltrin

#include "AppearanceTests.moc"

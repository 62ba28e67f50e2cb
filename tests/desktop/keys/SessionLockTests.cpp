#include "Platform/Linux/SessionLock.h"
#include "desktop/x11/KeyTapTest.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>

namespace veltrin {
namespace {

/// A connection to the desktop's session bus, which stands in for the system's too.
class Bus {
public:
    Bus(RealDesktop& desktop, const char* name)
        : name_(QString::fromLatin1(name)),
          connection(QDBusConnection::connectToBus(desktop.sessionBusAddress(), name_)) {}
    ~Bus() { QDBusConnection::disconnectFromBus(name_); }
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;

private:
    QString name_;

public:
    QDBusConnection connection;
};

/// A screen locker, and a login manager with one session.
class Locker : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")
public:
    bool active = false;
public Q_SLOTS:
    bool GetActive() const { return active; }
Q_SIGNALS:
    void ActiveChanged(bool active);
};

class LoginManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")
public Q_SLOTS:
    QDBusObjectPath GetSession(const QString&) { return QDBusObjectPath(QStringLiteral("/session")); }
    QDBusObjectPath GetSessionByPID(uint) { return QDBusObjectPath(QStringLiteral("/session")); }
};

class LoginSession : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Session")
    Q_PROPERTY(bool LockedHint MEMBER locked)
public:
    bool locked = false;
};

class SessionLocks : public KeyTapTest {
protected:
    SessionLocks()
        : ours(desktop, "lock-ours"), theirs(desktop, "lock-theirs"), nobody(QStringLiteral("none")) {}

    std::unique_ptr<SessionLock> watch(const QDBusConnection& session, const QDBusConnection& system) {
        return std::make_unique<SessionLock>(session, system, [this](bool locked) {
            changes.push_back(locked);
            taps.setSilent(locked);
        });
    }
    bool waitForChanges(std::size_t count) {
        return eventually(10, [&] { return changes.size() >= count; });
    }

    Bus ours;
    Bus theirs;
    QDBusConnection nobody;
    std::vector<bool> changes;
};

TEST_F(SessionLocks, theTapIsSilentAndClaimsNothingWhileAScreenLockerIsActive) {
    start({{KeyCode::returnKey, 0, false}});
    answer = [](const KeyEvent& event) { return event.keyCode != KeyCode::returnKey; };
    Locker locker;
    theirs.connection.registerObject(QStringLiteral("/anywhere"), &locker,
                                     QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
    const auto lock = watch(ours.connection, nobody);
    Q_EMIT locker.ActiveChanged(true);
    ASSERT_TRUE(waitForChanges(1));
    EXPECT_TRUE(lock->isLocked());
    type([](Typist& t) { t.type(QStringLiteral("secret\n")); });
    ASSERT_TRUE(client.waitForKeys(14)) << "the locker gets every key";
    runEventLoopFor(0.05);
    EXPECT_TRUE(events.empty()) << words(events);
    Q_EMIT locker.ActiveChanged(false);
    ASSERT_TRUE(waitForChanges(2));
    runEventLoopFor(0.01);
    type([](Typist& t) { t.type(QStringLiteral("\na")); });
    ASSERT_TRUE(waitForEvents(4));
    EXPECT_EQ(words(events), "+36 -36 +0 -0");
    EXPECT_EQ(changes, (std::vector<bool>{true, false}));
}

TEST_F(SessionLocks, aLockerThatWasActiveBeforeIsFoundAndOneThatDiesLocksNothing) {
    Locker locker;
    locker.active = true;
    {
        Bus dying(desktop, "lock-dying");
        dying.connection.registerObject(QStringLiteral("/org/freedesktop/ScreenSaver"), &locker,
                                        QDBusConnection::ExportAllSlots);
        ASSERT_TRUE(dying.connection.registerService(QStringLiteral("org.freedesktop.ScreenSaver")));
        const auto lock = watch(ours.connection, nobody);
        EXPECT_FALSE(lock->isLocked());
        ASSERT_TRUE(waitForChanges(1));
        EXPECT_TRUE(changes.front());
        dying.connection.unregisterService(QStringLiteral("org.freedesktop.ScreenSaver"));
        QDBusConnection::disconnectFromBus(QStringLiteral("lock-dying"));
        dying.connection = QDBusConnection(QStringLiteral("none"));
        ASSERT_TRUE(waitForChanges(2));
        EXPECT_FALSE(lock->isLocked());
    }
}

TEST_F(SessionLocks, theLoginManagersWordCountsToo) {
    LoginManager manager;
    LoginSession session;
    session.locked = true;
    theirs.connection.registerObject(QStringLiteral("/org/freedesktop/login1"), &manager,
                                     QDBusConnection::ExportAllSlots);
    theirs.connection.registerObject(QStringLiteral("/session"), &session,
                                     QDBusConnection::ExportAllProperties);
    ASSERT_TRUE(theirs.connection.registerService(QStringLiteral("org.freedesktop.login1")));
    const auto lock = watch(nobody, ours.connection);
    ASSERT_TRUE(waitForChanges(1));
    EXPECT_TRUE(lock->isLocked());
    auto changed = QDBusMessage::createSignal(QStringLiteral("/session"),
                                              QStringLiteral("org.freedesktop.DBus.Properties"),
                                              QStringLiteral("PropertiesChanged"));
    changed.setArguments({QStringLiteral("org.freedesktop.login1.Session"),
                          QVariantMap{{QStringLiteral("LockedHint"), false}}, QStringList()});
    theirs.connection.send(changed);
    ASSERT_TRUE(waitForChanges(2));
    EXPECT_FALSE(lock->isLocked());
}

TEST_F(SessionLocks, withoutAnyBusNothingIsLocked) {
    const auto lock = watch(nobody, nobody);
    EXPECT_FALSE(lock->isLocked());
}

}  // namespace
}  // namespace veltrin

#include "SessionLockTests.moc"

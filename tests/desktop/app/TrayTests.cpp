#include "desktop/road/RoadTest.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QThread>

#include <gtest/gtest.h>

#include <mutex>

namespace veltrin {
namespace {

const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString menuInterface = QStringLiteral("com.canonical.dbusmenu");

/// What a desktop's tray says and is told.
class StatusNotifierWatcher : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ isThere CONSTANT SCRIPTABLE true)
    Q_PROPERTY(int ProtocolVersion READ version CONSTANT SCRIPTABLE true)
public:
    static bool isThere() { return true; }
    static int version() { return 0; }
    QStringList items() const {
        const std::lock_guard lock(mutex_);
        return items_;
    }

public Q_SLOTS:
    Q_SCRIPTABLE void RegisterStatusNotifierItem(const QString& item) {
        const std::lock_guard lock(mutex_);
        items_ << item;
    }

private:
    mutable std::mutex mutex_;
    QStringList items_;
};

/// A tray on the session bus, answering on a thread of its own, so that a test may wait meanwhile.
class Tray {
public:
    explicit Tray(const QString& address)
        : bus_(QDBusConnection::connectToBus(address, QStringLiteral("tray"))) {
        watcher_.moveToThread(&thread_);
        thread_.start();
        // Not what relays signals, which would become a child of it from this thread.
        EXPECT_TRUE(bus_.registerObject(
            QStringLiteral("/StatusNotifierWatcher"), &watcher_,
            QDBusConnection::ExportScriptableSlots | QDBusConnection::ExportScriptableProperties));
        EXPECT_TRUE(bus_.registerService(watcherName));
    }
    ~Tray() {
        bus_.unregisterService(watcherName);
        bus_.unregisterObject(QStringLiteral("/StatusNotifierWatcher"));
        thread_.quit();
        thread_.wait();
        QDBusConnection::disconnectFromBus(QStringLiteral("tray"));
    }
    Tray(const Tray&) = delete;
    Tray& operator=(const Tray&) = delete;

    /// The bus name of the first item; empty when none comes.
    QString item(double seconds = 20) {
        waitUntil(seconds, [this] { return !watcher_.items().isEmpty(); });
        return watcher_.items().value(0);
    }
    QVariant property(const QString& item, const char* name) {
        const auto reply = call(item, QStringLiteral("/StatusNotifierItem"),
                                QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
                                {QStringLiteral("org.kde.StatusNotifierItem"), QString::fromLatin1(name)});
        return reply.value<QDBusVariant>().variant();
    }
    /// The numbers of the menu's entries, by their words.
    QMap<QString, int> menu(const QString& item) {
        const QDBusMessage reply =
            send(item, menuPath(item), menuInterface, QStringLiteral("GetLayout"), {0, -1, QStringList()});
        QMap<QString, int> entries;
        if (reply.arguments().size() < 2) return entries;
        addEntries(reply.arguments().at(1).value<QDBusArgument>(), entries);
        return entries;
    }
    void choose(const QString& item, int entry) {
        call(item, menuPath(item), menuInterface, QStringLiteral("Event"),
             {entry, QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(0)), 0U});
    }

private:
    QDBusMessage send(const QString& service, const QString& path, const QString& interface,
                      const QString& method, const QVariantList& arguments) {
        QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
        message.setArguments(arguments);
        return bus_.call(message, QDBus::Block, 5000);
    }
    QVariant call(const QString& service, const QString& path, const QString& interface,
                  const QString& method, const QVariantList& arguments) {
        return send(service, path, interface, method, arguments).arguments().value(0);
    }
    QString menuPath(const QString& item) { return property(item, "Menu").value<QDBusObjectPath>().path(); }
    /// An entry is its number, its properties and the entries below it.
    static void addEntries(const QDBusArgument& argument, QMap<QString, int>& entries) {
        int number = 0;
        QVariantMap properties;
        argument.beginStructure();
        argument >> number >> properties;
        if (const QString label = properties.value(QStringLiteral("label")).toString(); !label.isEmpty())
            entries.insert(QString(label).remove(u'_'), number);
        argument.beginArray();
        while (!argument.atEnd()) {
            QDBusVariant below;
            argument >> below;
            addEntries(below.variant().value<QDBusArgument>(), entries);
        }
        argument.endArray();
        argument.endStructure();
    }

    QDBusConnection bus_;
    StatusNotifierWatcher watcher_;
    QThread thread_;
};

class TrayTest : public RoadTest {
protected:
    std::unique_ptr<Tray> makeTray() const { return std::make_unique<Tray>(desktop().sessionBusAddress()); }
};

TEST_F(TrayTest, theProgramHasAnItemWithAPictureAndAName) {
    const auto tray = makeTray();
    startProgram();
    const QString item = tray->item();
    ASSERT_FALSE(item.isEmpty()) << qPrintable(log());
    EXPECT_EQ(tray->property(item, "Status").toString(), QStringLiteral("Active"));
    EXPECT_EQ(tray->property(item, "Category").toString(), QStringLiteral("ApplicationStatus"));
    EXPECT_TRUE(tray->property(item, "IconName").toString().isEmpty() ||
                !tray->property(item, "IconThemePath").isNull());
    const auto pictures = tray->property(item, "IconPixmap").value<QDBusArgument>();
    ASSERT_EQ(pictures.currentType(), QDBusArgument::ArrayType);
    pictures.beginArray();
    ASSERT_FALSE(pictures.atEnd());
    int width = 0;
    int height = 0;
    QByteArray bytes;
    pictures.beginStructure();
    pictures >> width >> height >> bytes;
    pictures.endStructure();
    pictures.endArray();
    EXPECT_EQ(bytes.size(), width * height * 4);
    EXPECT_GE(width, 16);
    EXPECT_NE(bytes.count('\0'), bytes.size());
    EXPECT_EQ(tray->menu(item).keys(), QStringList{QStringLiteral("Quit Veltrin")});
}

TEST_F(TrayTest, itsMenuEndsTheProgram) {
    const auto tray = makeTray();
    startProgram();
    const QString item = tray->item();
    ASSERT_FALSE(item.isEmpty()) << qPrintable(log());
    tray->choose(item, tray->menu(item).value(QStringLiteral("Quit Veltrin"), -1));
    EXPECT_TRUE(program().waitForExit(10));
    EXPECT_EQ(program().exitStatus(), 0);
}

TEST_F(TrayTest, aTrayThatIsStartedAgainGetsItsItemAgain) {
    auto tray = makeTray();
    startProgram();
    ASSERT_FALSE(tray->item().isEmpty());
    tray.reset();
    tray = makeTray();
    EXPECT_FALSE(tray->item().isEmpty());
}

TEST_F(TrayTest, aTrayThatComesAfterTheProgramGetsItsItemToo) {
    startProgram();
    const auto tray = makeTray();
    const QString item = tray->item();
    ASSERT_FALSE(item.isEmpty());
    EXPECT_EQ(tray->menu(item).keys(), QStringList{QStringLiteral("Quit Veltrin")});
}

}  // namespace
}  // namespace veltrin

#include "TrayTests.moc"

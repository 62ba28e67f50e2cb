#include "Platform/Linux/AtSpi/AtSpiBus.h"

#include "Foundation/MVPLog.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QFileInfo>

#include <algorithm>
#include <atomic>
#include <climits>

namespace veltrin::AtSpi {
namespace {

using namespace std::chrono_literals;

constexpr Milliseconds ordinaryPatience = 250ms;
constexpr Milliseconds shortPatience = 50ms;
constexpr Milliseconds betweenShortWaits = 500ms;
constexpr Milliseconds launchTimeout = 3000ms;  // the session bus may have to launch the accessibility bus
constexpr Milliseconds firstRetry = 1000ms;
constexpr Milliseconds lastRetry = 30000ms;
constexpr int forEver = INT_MAX;

constexpr char sessionConnectionName[] = "veltrin-accessibility-session";
constexpr char localPath[] = "/org/freedesktop/DBus/Local";
constexpr char localInterface[] = "org.freedesktop.DBus.Local";

/// The session bus by its address, as it stands in the environment or at its usual place. Never by its type:
/// the D-Bus library remembers the first address it saw, and without any it would launch a session bus of its
/// own.
QString sessionBusAddress() {
    QString named = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    if (!named.isEmpty()) return named;
    const QString socket = qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus");
    return QFileInfo::exists(socket) ? QStringLiteral("unix:path=") + socket : QString();
}

QDBusMessage call(const QString& service, const QString& path, const char* interface, const char* method) {
    return QDBusMessage::createMethodCall(service, path, QLatin1String(interface), QLatin1String(method));
}

}  // namespace

AtSpiBus::AtSpiBus() : connection_(QString()), retry_(this), retryInterval_(firstRetry) {
    retry_.setSingleShot(true);
    connect(&retry_, &QTimer::timeout, this, &AtSpiBus::connectNow);
}

AtSpiBus::~AtSpiBus() {
    close();
}

bool AtSpiBus::waitForFirstAttempt(Milliseconds limit) {
    if (!firstAttempt_.tryAcquire(1, static_cast<int>(limit.count()))) return false;
    firstAttempt_.release();
    return true;
}

void AtSpiBus::connectNow() {
    if (isReady()) return;
    retry_.stop();
    const bool good = open();
    if (good) {
        MVPLog::write("Accessibility bus connected");
        retryInterval_ = firstRetry;
        hasReportedFailure_ = false;
        isReady_.store(true, std::memory_order_release);
        Q_EMIT opened();
    } else {
        close();
        if (!hasReportedFailure_)
            MVPLog::write("Accessibility bus unavailable, trying again from time to time");
        hasReportedFailure_ = true;
        retry_.start(retryInterval_);
        retryInterval_ = std::min(retryInterval_ * 2, lastRetry);
    }
    if (firstAttempt_.available() == 0) firstAttempt_.release();
}

/// Turns accessibility on for all applications and gives the address of the accessibility bus.
QString AtSpiBus::addressFromSession() {
    const QString sessionAddress = sessionBusAddress();
    if (sessionAddress.isEmpty()) return {};
    QString address;
    {
        auto session = QDBusConnection::connectToBus(sessionAddress, QLatin1String(sessionConnectionName));
        if (session.isConnected()) {
            const QString service = QStringLiteral("org.a11y.Bus");
            const QString path = QStringLiteral("/org/a11y/bus");
            QDBusMessage turnOn = call(service, path, Name::properties, "Set");
            turnOn << QStringLiteral("org.a11y.Status") << QStringLiteral("IsEnabled")
                   << QVariant::fromValue(QDBusVariant(true));
            const auto timeout = static_cast<int>(launchTimeout.count());
            session.call(turnOn, QDBus::Block, timeout);
            const auto reply =
                session.call(call(service, path, "org.a11y.Bus", "GetAddress"), QDBus::Block, timeout);
            if (reply.type() == QDBusMessage::ReplyMessage) address = reply.arguments().value(0).toString();
        }
    }
    QDBusConnection::disconnectFromBus(QLatin1String(sessionConnectionName));
    return address;
}

bool AtSpiBus::open() {
    const QString address = addressFromSession();
    if (address.isEmpty()) return false;
    // Connections are the process's; one name for two would be one connection.
    static std::atomic<int> number{0};
    const QString name = QStringLiteral("veltrin-accessibility-%1").arg(++number);
    connection_ = QDBusConnection::connectToBus(address, name);
    if (!connection_.isConnected()) return false;
    connection_.connect(QString(), QLatin1String(localPath), QLatin1String(localInterface),
                        QStringLiteral("Disconnected"), this, SLOT(disconnected()));
    connection_.connect(QLatin1String(Name::daemon), QLatin1String(Name::daemonPath),
                        QLatin1String(Name::daemon), QStringLiteral("NameOwnerChanged"), this,
                        SLOT(nameOwnerChanged(QString, QString, QString)));
    QDBusMessage ping =
        call(QLatin1String(Name::registry), QLatin1String(Name::rootPath), Name::accessible, "GetRole");
    const auto answer = connection_.call(ping, QDBus::Block, static_cast<int>(launchTimeout.count()));
    return answer.type() == QDBusMessage::ReplyMessage;
}

void AtSpiBus::close() {
    isReady_.store(false, std::memory_order_release);
    silent_.clear();
    const QString name = connection_.name();
    connection_ = QDBusConnection(QString());
    if (!name.isEmpty()) QDBusConnection::disconnectFromBus(name);
}

void AtSpiBus::disconnected() {
    if (!isReady()) return;
    MVPLog::write("Accessibility bus lost");
    close();
    retry_.start(retryInterval_);
}

void AtSpiBus::nameOwnerChanged(const QString& name, const QString& former, const QString& owner) {
    if (name == QLatin1String(Name::registry) && !owner.isEmpty()) Q_EMIT registryRestarted();
    if (owner.isEmpty() && !former.isEmpty() && name.startsWith(u':')) {
        silent_.remove(name);
        Q_EMIT applicationGone(name);
    }
}

QDBusPendingCall AtSpiBus::send(const ObjectAddress& to, const char* interface, const char* method,
                                const QVariantList& arguments, Milliseconds timeout) const {
    QDBusMessage message = call(to.bus, to.path, interface, method);
    message.setArguments(arguments);
    message.setAutoStartService(false);
    return connection_.asyncCall(message, static_cast<int>(timeout.count()));
}

Milliseconds AtSpiBus::patience(const QString& bus) {
    const auto found = silent_.find(bus);
    if (found == silent_.end()) return ordinaryPatience;
    const auto now = std::chrono::steady_clock::now();
    if (now - found->lastWait < betweenShortWaits) return Milliseconds(0);
    found->lastWait = now;
    return shortPatience;
}

void AtSpiBus::noteSilence(const QString& bus) {
    const auto now = std::chrono::steady_clock::now();
    const auto found = silent_.find(bus);
    if (found != silent_.end()) {
        found->lastWait = now;
        return;
    }
    silent_.insert(bus, {now});
    // One question stays open until it is answered: the answer says that the application is back. It is one
    // that needs the application's main loop, unlike a ping, which a thread of the toolkit may answer.
    const QDBusPendingCall question =
        connection_.asyncCall(call(bus, QLatin1String(Name::rootPath), Name::accessible, "GetRole"), forEver);
    auto* watcher = new QDBusPendingCallWatcher(question, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, bus, watcher] {
        watcher->deleteLater();
        silent_.remove(bus);
    });
}

void AtSpiBus::noteAnswer(const QString& bus) {
    silent_.remove(bus);
}

}  // namespace veltrin::AtSpi

#include "support/desktop/RealDesktop.h"

#include "support/desktop/ProcessSweep.h"
#include "support/desktop/Waiting.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDir>
#include <QFile>

#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <set>
#include <stdexcept>
#include <string>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

constexpr double startPatience = 15;  // a machine that also builds; an idle one needs 0.2 s

void writeFile(const QString& path, const QString& content) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content.toUtf8()) < 0) {
        throw std::runtime_error("cannot write " + path.toStdString());
    }
}

/// Click to focus and to raise, drag by the title bar, nothing on the keyboard: every key belongs to the
/// tests.
constexpr const char* windowManagerConfiguration = R"(<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>yes</focusNew><followMouse>no</followMouse></focus>
  <placement><policy>Smart</policy><monitor>Primary</monitor></placement>
  <theme><animateIconify>no</animateIconify></theme>
  <desktops><number>2</number><popupTime>0</popupTime></desktops>
  <keyboard></keyboard>
  <mouse>
    <context name="Client">
      <mousebind button="Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
    </context>
    <context name="Titlebar">
      <mousebind button="Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
      <mousebind button="Left" action="Drag"><action name="Move"/></mousebind>
    </context>
    <context name="Close">
      <mousebind button="Left" action="Click"><action name="Close"/></mousebind>
    </context>
  </mouse>
</openbox_config>
)";

QString busConfiguration(const QString& folder) {
    return u"<busconfig><type>session</type><listen>unix:path=%1/bus</listen><auth>EXTERNAL</auth>"
           "<servicedir>%1/bus-services</servicedir>"
           "<policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/>"
           "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>"_s.arg(folder);
}

/// A bus connection for one task, closed with it.
class BusConnection {
public:
    explicit BusConnection(const QString& address)
        : name_(u"veltrin-tests-%1"_s.arg(++count)), bus_(QDBusConnection::connectToBus(address, name_)) {}
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;
    ~BusConnection() { QDBusConnection::disconnectFromBus(name_); }

    QDBusMessage call(const QString& service, const QString& path, const QString& interface,
                      const QString& method, const QVariantList& arguments = {}) {
        QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
        message.setArguments(arguments);
        return bus_.call(message, QDBus::Block, static_cast<int>(startPatience * 1000));
    }
    QVariant askBus(const QString& method, const QVariantList& arguments) {
        return call(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s, method,
                    arguments)
            .arguments()
            .value(0);
    }

private:
    static inline int count = 0;
    QString name_;
    QDBusConnection bus_;
};

QString accessibilityLauncher() {
    for (const QString& path :
         {u"/usr/libexec/at-spi-bus-launcher"_s, u"/usr/lib/at-spi2-core/at-spi-bus-launcher"_s}) {
        if (QFile::exists(path)) return path;
    }
    throw std::runtime_error("at-spi-bus-launcher is not installed");
}

/// Kills the processes of a desktop but the spared ones, with what they start meanwhile, and leaves no
/// zombie.
void endMarked(const std::string& folder, const std::vector<pid_t>& spared) {
    waitUntil(5, [&] {
        auto left = processesMarked(folder);
        std::erase_if(left, [&](pid_t pid) { return std::ranges::find(spared, pid) != spared.end(); });
        for (const pid_t pid : left)
            kill(pid, SIGKILL);
        reapOrphans(ChildProcess::all());
        return left.empty();
    });
}

}  // namespace

RealDesktop::RealDesktop(const DesktopOptions& options) {
    try {
        makeFolders();
        buildEnvironment(options);
        startServers(options);
        x_ = std::make_unique<XDesktop>(display_);
        if (options.accessibility) startAccessibility();
        if (options.windowManager) startWindowManager();
        setMonitors(options);
        if (options.accessibility) waitForAccessibility();
        servers_ = processesMarked(folder_.toStdString());
    } catch (...) {
        end();
        throw;
    }
}

RealDesktop::~RealDesktop() {
    end();
}

RealDesktop& RealDesktop::shared() {
    static RealDesktop desktop;
    return desktop;
}

void RealDesktop::makeFolders() {
    // Short, for the sockets below it: their paths must fit into 108 bytes.
    char pattern[] = "/tmp/vtdesk-XXXXXX";
    if (!mkdtemp(pattern)) throw std::runtime_error("no temporary folder");
    folder_ = QString::fromLatin1(pattern);
    startKeeper();
    for (const auto* name : {"home", "config", "config/gtk-3.0", "config/gtk-4.0", "data", "cache", "state",
                             "run", "bus-services"}) {
        const QString path = file(QString::fromLatin1(name));
        if (mkdir(path.toLocal8Bit().constData(), 0700) != 0) throw std::runtime_error("no folder in /tmp");
    }
    writeFile(file(u"openbox.xml"_s), QString::fromLatin1(windowManagerConfiguration));
    writeFile(file(u"bus.conf"_s), busConfiguration(folder_));
    // What moves by itself would make pictures and waits depend on the moment.
    const auto gtk = u"[Settings]\ngtk-enable-animations=0\ngtk-cursor-blink=0\n"_s;
    writeFile(file(u"config/gtk-3.0/settings.ini"_s), gtk);
    writeFile(file(u"config/gtk-4.0/settings.ini"_s), gtk);
}

void RealDesktop::buildEnvironment(const DesktopOptions& options) {
    environment_ = {
        {QString::fromLatin1(desktopMarker), folder_},
        {u"HOME"_s, home()},
        {u"XDG_CONFIG_HOME"_s, configHome()},
        {u"XDG_DATA_HOME"_s, dataHome()},
        {u"XDG_CACHE_HOME"_s, file(u"cache"_s)},
        {u"XDG_STATE_HOME"_s, file(u"state"_s)},
        {u"XDG_RUNTIME_DIR"_s, runtimeDirectory()},
        {u"XDG_DATA_DIRS"_s, u"/usr/local/share:/usr/share"_s},
        {u"XDG_CONFIG_DIRS"_s, u"/etc/xdg"_s},
        {u"XDG_SESSION_TYPE"_s, u"x11"_s},
        {u"LANG"_s, options.locale},
        {u"GSETTINGS_BACKEND"_s, u"memory"_s},  // no dconf, whose service is not on this bus
        {u"GIO_USE_VFS"_s, u"local"_s},
        {u"GDK_BACKEND"_s, u"x11"_s},
        {u"GSK_RENDERER"_s, u"cairo"_s},
        {u"LIBGL_ALWAYS_SOFTWARE"_s, u"1"_s},
        {u"QT_QPA_PLATFORM"_s, u"xcb"_s},
        {u"GTK_IM_MODULE"_s, u"gtk-im-context-simple"_s},
    };
    if (options.accessibility) {
        environment_.insert(u"QT_LINUX_ACCESSIBILITY_ALWAYS_ON"_s, u"1"_s);
    } else {
        environment_.insert(u"NO_AT_BRIDGE"_s, u"1"_s);
        environment_.insert(u"GTK_A11Y"_s, u"none"_s);
    }
    for (const char* kept : {"PATH", "LD_LIBRARY_PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS",
                             "TSAN_OPTIONS", "GCOV_PREFIX"}) {
        if (qEnvironmentVariableIsSet(kept)) {
            environment_.insert(QString::fromLatin1(kept), qEnvironmentVariable(kept));
        }
    }
    environment_.insert(options.environment);
    // Orphans of programs that end come to us, so that we can take their last status and none stays a zombie.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    // A probe that died is an error to report, not the end of the test program.
    std::signal(SIGPIPE, SIG_IGN);
}

void RealDesktop::startServers(const DesktopOptions& options) {
    QRect area(QPoint(0, 0), options.screen);
    for (const QRect& monitor : options.monitors)
        area = area.united(monitor);
    Pipe displayNumber;
    Pipe busAddress;
    QStringList command{u"Xvfb"_s,    u"-displayfd"_s, u"3"_s,
                        u"-screen"_s, u"0"_s,          u"%1x%2x24"_s.arg(area.width()).arg(area.height()),
                        u"-dpi"_s,    u"96"_s,         u"-nolisten"_s,
                        u"tcp"_s,     u"-noreset"_s};
    command += options.serverArguments;
    server_ = ChildProcess({command, environment_, file(u"server.log"_s), -1, -1, displayNumber.write});
    tellKeeper("server " + QByteArray::number(server_.pid()) + '\n');
    bus_ = ChildProcess({{u"dbus-daemon"_s, u"--config-file=%1/bus.conf"_s.arg(folder_), u"--nofork"_s,
                          u"--print-address=3"_s},
                         environment_,
                         file(u"bus.log"_s),
                         -1,
                         -1,
                         busAddress.write});
    displayNumber.closeWrite();
    busAddress.closeWrite();

    QByteArray pending;
    const auto number = readLine(displayNumber.read, pending, startPatience);
    if (!number) throw std::runtime_error("Xvfb did not start: " + outputOf(u"server.log"_s).toStdString());
    display_ = u":"_s + QString::fromLatin1(number->trimmed());
    tellKeeper("display " + display_.toLatin1() + '\n');
    pending.clear();
    const auto address = readLine(busAddress.read, pending, startPatience);
    if (!address)
        throw std::runtime_error("dbus-daemon did not start: " + outputOf(u"bus.log"_s).toStdString());
    busAddress_ = QString::fromLatin1(address->trimmed());
    environment_.insert(u"DISPLAY"_s, display_);
    environment_.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, busAddress_);
}

void RealDesktop::startKeeper() {
    Environment plain;  // without the marker: the keeper must not end itself
    plain.insert(u"PATH"_s, qEnvironmentVariable("PATH"));
    keeper_ =
        ChildProcess({.command = {QStringLiteral(VELTRIN_BINARY_DIR "/bin/veltrin_desktop_keeper"), folder_},
                      .environment = plain,
                      .input = keeperPipe_.read});
    keeperPipe_.closeRead();
}

void RealDesktop::tellKeeper(const QByteArray& line) {
    if (write(keeperPipe_.write, line.constData(), static_cast<std::size_t>(line.size())) < 0) {
        throw std::runtime_error("the keeper of the desktop is gone");
    }
}

void RealDesktop::setMonitors(const DesktopOptions& options) {
    for (qsizetype index = 0; index < options.monitors.size(); ++index) {
        const QRect& place = options.monitors.at(index);
        const bool first = index == 0;
        const auto millimetres = [](int pixels) { return pixels * 254 / 960; };
        // The first monitor takes the one output of the server, which would else report itself; a star is
        // "primary".
        runTool({u"xrandr"_s, u"--setmonitor"_s, (first ? u"*SCREEN-%1"_s : u"SCREEN-%1"_s).arg(index),
                 u"%1/%2x%3/%4+%5+%6"_s.arg(place.width())
                     .arg(millimetres(place.width()))
                     .arg(place.height())
                     .arg(millimetres(place.height()))
                     .arg(place.x())
                     .arg(place.y()),
                 first ? u"screen"_s : u"none"_s});
    }
}

void RealDesktop::startWindowManager() {
    windowManager_ =
        ChildProcess({{u"openbox"_s, u"--sm-disable"_s, u"--config-file"_s, file(u"openbox.xml"_s)},
                      environment_,
                      file(u"openbox.log"_s)});
    servers_.push_back(windowManager_.pid());
    if (!waitUntil(startPatience, [this] { return x_->hasWindowManager(); })) {
        throw std::runtime_error("openbox did not start: " + outputOf(u"openbox.log"_s).toStdString());
    }
}

void RealDesktop::stopWindowManager() {
    windowManager_.terminate();
}

void RealDesktop::startAccessibility() {
    accessibility_ = ChildProcess(
        {{accessibilityLauncher(), u"--launch-immediately"_s}, environment_, file(u"accessibility.log"_s)});
}

void RealDesktop::waitForAccessibility() {
    const auto service = u"org.a11y.Bus"_s;
    const auto path = u"/org/a11y/bus"_s;
    BusConnection session(busAddress_);
    const bool there =
        waitUntil(startPatience, [&] { return session.askBus(u"NameHasOwner"_s, {service}).toBool(); });
    if (!there) {
        throw std::runtime_error("no accessibility bus: " + outputOf(u"accessibility.log"_s).toStdString());
    }
    session.call(service, path, u"org.freedesktop.DBus.Properties"_s, u"Set"_s,
                 {u"org.a11y.Status"_s, u"IsEnabled"_s, QVariant::fromValue(QDBusVariant(true))});
    const QString address =
        session.call(service, path, service, u"GetAddress"_s).arguments().value(0).toString();
    BusConnection accessibility(address);
    // The registry starts on demand; started here, it costs no test its first contact.
    const QVariant started =
        accessibility.askBus(u"StartServiceByName"_s, {u"org.a11y.atspi.Registry"_s, 0U});
    if (started.toUInt() == 0) {
        throw std::runtime_error("no accessibility registry: " +
                                 outputOf(u"accessibility.log"_s).toStdString());
    }
}

void RealDesktop::applyToThisProcess() {
    if (applied_) return;
    applied_ = true;
    for (auto entry = environment_.begin(); entry != environment_.end(); ++entry) {
        const QByteArray name = entry.key().toLatin1();
        if (qEnvironmentVariableIsSet(name.constData())) {
            replaced_.insert(entry.key(), qEnvironmentVariable(name.constData()));
        } else {
            added_.append(entry.key());
        }
        qputenv(name.constData(), entry.value().toLocal8Bit());
    }
}

void RealDesktop::restoreThisProcess() {
    if (!applied_) return;
    for (auto entry = replaced_.begin(); entry != replaced_.end(); ++entry) {
        qputenv(entry.key().toLatin1().constData(), entry.value().toLocal8Bit());
    }
    for (const QString& name : added_)
        qunsetenv(name.toLatin1().constData());
    applied_ = false;
}

void RealDesktop::killServer() {
    server_.kill();
}

void RealDesktop::setKeyboardLayout(const QString& layout) {
    runTool({u"setxkbmap"_s, u"-layout"_s, layout});
}

void RealDesktop::runTool(const QStringList& command) {
    const QString log = command.first() + u".log"_s;
    ChildProcess tool({.command = command, .environment = environment_, .outputFile = file(log)});
    if (!tool.waitForExit(startPatience) || tool.exitStatus() != 0) {
        throw std::runtime_error(command.first().toStdString() + ": " + outputOf(log).toStdString());
    }
}

std::vector<pid_t> RealDesktop::programs() const {
    auto found = processesMarked(folder_.toStdString());
    std::erase_if(found, [this](pid_t pid) { return std::ranges::find(servers_, pid) != servers_.end(); });
    return found;
}

void RealDesktop::endPrograms() {
    endMarked(folder_.toStdString(), servers_);
}

void RealDesktop::end() {
    restoreThisProcess();
    x_.reset();
    if (folder_.isEmpty()) return;
    // Everything but the X server at once; it goes last and orderly, so that it unlinks its socket.
    const std::string folder = folder_.toStdString();
    const pid_t server = server_.pid();
    for (ChildProcess* child : {&windowManager_, &accessibility_, &bus_})
        child->kill();
    endMarked(folder, {server});
    server_.terminate();
    reapOrphans(ChildProcess::all());
    removeDisplayLeftovers(display_.toStdString(), server);
    QDir(folder_).removeRecursively();
    if (keeperPipe_.write >= 0 && keeper_.isRunning()) {
        if (write(keeperPipe_.write, "done\n", 5) == 5) keeperPipe_.closeWrite();
        keeper_.waitForExit(2);
    }
    folder_.clear();
}

QString RealDesktop::outputOf(const QString& name) const {
    QFile log(file(name));
    return log.open(QIODevice::ReadOnly) ? QString::fromUtf8(log.readAll()) : QString();
}

}  // namespace veltrin

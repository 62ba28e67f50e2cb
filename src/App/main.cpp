#include "App/CompositionRoot.h"
#include "App/GalleryMode.h"
#include "Foundation/MVPLog.h"
#include "Platform/Linux/SingleInstance.h"
#include "Platform/Linux/TerminationSignals.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QQuickWindow>

#include <xcb/xcb.h>

#include <cstdio>

namespace veltrin {
namespace {

constexpr double formerInstanceSeconds = 2;

/// Why there is no display to run on, or nothing when there is one. Asked before Qt, which would abort.
std::optional<QString> displayProblem() {
    if (!qEnvironmentVariableIsSet("DISPLAY")) {
        if (qEnvironmentVariableIsSet("WAYLAND_DISPLAY"))
            return QStringLiteral(
                "Veltrin cannot listen to keys in a Wayland-only session. Log in with an X11 session "
                "(\"Xorg\" in the login screen), then start it again.");
        return QStringLiteral(
            "Veltrin found no display: DISPLAY is not set. Start it inside a desktop session.");
    }
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    const bool reachable = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    if (reachable) return std::nullopt;
    return QStringLiteral(
               "Veltrin cannot open the display \"%1\". Is the X server running, and may this user use it?")
        .arg(qEnvironmentVariable("DISPLAY"));
}

/// Leaves what this start was asked for to the program that runs already.
bool handOver(SingleInstance& instance, const QStringList& urls) {
    if (urls.isEmpty()) {
        if (!instance.activateOther()) return false;
        MVPLog::write("Veltrin is already running; brought it to front");
        return true;
    }
    if (!instance.openInOther(urls)) return false;
    // Not which: an address may carry a login.
    MVPLog::write("Veltrin is already running; handed over addresses:", urls.size());
    return true;
}

int run(QApplication& application) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("An AI layer over every text field of the desktop."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption logFile(QStringLiteral("log-file"), QStringLiteral("Append the log to <path>."),
                                     QStringLiteral("path"));
    parser.addOption(logFile);
    parser.addPositionalArgument(QStringLiteral("urls"), QStringLiteral("Addresses to open, veltrin://…"),
                                 QStringLiteral("[urls...]"));
    GalleryMode::addOptions(parser);
    parser.process(application);
    const QStringList urls = parser.positionalArguments();
    if (parser.isSet(logFile)) MVPLog::setLogURL(parser.value(logFile));

    if (GalleryMode::isWanted(parser)) return GalleryMode::run(parser);

    SingleInstance instance(QStringLiteral("com.veltrin.app"));
    switch (instance.acquire(0)) {
        case SingleInstance::Outcome::first:
            break;
        case SingleInstance::Outcome::noSession:
            MVPLog::write("Single instance check skipped: no session bus");
            break;
        case SingleInstance::Outcome::another:
            if (handOver(instance, urls)) return 0;
            // It holds the name and does not answer: most likely on its way out.
            if (instance.acquire(formerInstanceSeconds) == SingleInstance::Outcome::another) {
                std::fprintf(stderr, "Veltrin is already running and does not answer.\n");
                return 1;
            }
    }

    CompositionRoot root(application, instance);
    const TerminationSignals signals_([&root] { root.terminate(); });
    root.launch();
    root.open(urls);
    return QApplication::exec();
}

}  // namespace
}  // namespace veltrin

int main(int argc, char** argv) {
    if (const auto problem = veltrin::displayProblem()) {
        std::fprintf(stderr, "%s\n", qPrintable(*problem));
        return 1;
    }
    // Keys, clipboard and panels speak X11, also where a Wayland display stands beside it.
    qputenv("QT_QPA_PLATFORM", "xcb");
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QCoreApplication::setApplicationName(QStringLiteral("Veltrin"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VELTRIN_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("com.veltrin.app"));
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication application(argc, argv);
    return veltrin::run(application);
}

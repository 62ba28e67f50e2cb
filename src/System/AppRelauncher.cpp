#include "System/AppRelauncher.h"

#include <QFileInfo>

namespace veltrin {
namespace {

constexpr double relaunchDelay = 0.8;
constexpr double forceExitDelay = 1.0;

QString quoted(QString path) {
    return u'\'' + path.replace(u'\'', QStringLiteral("'\"'\"'")) + u'\'';
}

}  // namespace

QString AppRelauncher::relaunchShellCommand(const QString& bundlePath,
                                            const std::optional<QString>& executablePath, double delay) {
    const bool opensBundle = QFileInfo(bundlePath).suffix() == u"app" || !executablePath;
    const QString command =
        opensBundle ? QStringLiteral("/usr/bin/open -n ") + quoted(bundlePath) : quoted(*executablePath);
    return QStringLiteral("sleep %1; ").arg(delay, 0, 'f', 2) + command;
}

void AppRelauncher::relaunchCurrentAppAndTerminate() {
    // This desktop has no bundles; what stands in a bundle's place is the folder of the executable.
    const auto executable = workspace_.executablePath();
    const QString bundle = executable ? QFileInfo(*executable).path() : QString();
    const QString command = relaunchShellCommand(bundle, executable, relaunchDelay);
    process_.systemLog(QStringLiteral("[Veltrin] Scheduling relaunch: ") + command);
    if (const auto failure =
            process_.launchDetached(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), command}))
        process_.systemLog(QStringLiteral("[Veltrin] Failed to schedule relaunch: ") + *failure);
    process_.closeAllWindows();
    // Captures the process and nothing else: this object may be gone by then.
    ProcessControl& process = process_;
    runLoop_.post([&process] { process.terminate(); });
    runLoop_.afterDetached(forceExitDelay, [&process] {
        process.systemLog(QStringLiteral("[Veltrin] Force exit fallback triggered"));
        process.exitImmediately(0);
    });
}

}  // namespace veltrin

#include "Platform/Linux/LinuxProcessControl.h"

#include <QGuiApplication>
#include <QProcess>
#include <QWindow>

#include <unistd.h>

#include <cstdio>

namespace veltrin {

std::optional<QString> LinuxProcessControl::launchDetached(const QString& program,
                                                           const QStringList& arguments) {
    beforeRelaunch_();
    QProcess process;
    process.setProgram(program);
    process.setArguments(arguments);
    if (process.startDetached()) return std::nullopt;
    return process.errorString();
}

void LinuxProcessControl::exitImmediately(int status) {
    _exit(status);
}

void LinuxProcessControl::closeAllWindows() {
    for (QWindow* window : QGuiApplication::topLevelWindows())
        window->close();
}

void LinuxProcessControl::systemLog(const QString& line) {
    // Standard error of a desktop session goes to the journal.
    std::fprintf(stderr, "%s\n", qPrintable(line));
}

}  // namespace veltrin

#include "support/desktop/Program.h"

#include "support/desktop/Waiting.h"

#include <QFile>

#include <csignal>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

int lastNumber = 0;

QString writeDocument(RealDesktop& desktop, const QString& text) {
    QString path = desktop.file(u"document-%1.txt"_s.arg(++lastNumber));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0) {
        throw std::runtime_error("cannot write " + path.toStdString());
    }
    return path;
}

Program ready(Program program, const QString& windowClass = {}) {
    program.waitForWindow(20, windowClass);
    return program;
}

/// An editor with a document, or with an untitled one when there is no text.
Program editor(RealDesktop& desktop, QStringList command, const QString& text) {
    if (!text.isEmpty()) command.append(writeDocument(desktop, text));
    return ready(Program(desktop, command));
}

/// The state letter of /proc/PID/stat, which follows the name in parentheses.
char processState(pid_t pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    const std::string stat{std::istreambuf_iterator<char>(file), {}};
    const auto end = stat.rfind(')');
    return end == std::string::npos || end + 2 >= stat.size() ? '?' : stat[end + 2];
}

}  // namespace

Program::Program(RealDesktop& desktop, const QStringList& command, const Environment& extra)
    : desktop_(&desktop), log_(desktop.file(u"program-%1.log"_s.arg(++lastNumber))) {
    Environment environment = desktop.environment();
    for (auto entry = extra.begin(); entry != extra.end(); ++entry)
        environment[entry.key()] = entry.value();
    process_ = ChildProcess({command, environment, log_});
}

Program Program::mousepad(RealDesktop& desktop, const QString& text) {
    return editor(desktop, {u"mousepad"_s, u"--disable-server"_s}, text);
}

Program Program::gedit(RealDesktop& desktop, const QString& text) {
    return editor(desktop, {u"gedit"_s, u"--standalone"_s}, text);
}

Program Program::gnomeTextEditor(RealDesktop& desktop, const QString& text) {
    return editor(desktop, {u"gnome-text-editor"_s, u"--standalone"_s}, text);
}

Program Program::zenityEntry(RealDesktop& desktop, const QString& text) {
    return ready(Program(desktop, {u"zenity"_s, u"--entry"_s, u"--entry-text"_s, text}));
}

Program Program::zenityPassword(RealDesktop& desktop) {
    return ready(Program(desktop, {u"zenity"_s, u"--password"_s}));
}

Program Program::xterm(RealDesktop& desktop, const QStringList& command) {
    return ready(Program(desktop, QStringList{u"xterm"_s, u"-u8"_s, u"-e"_s} + command), u"xterm"_s);
}

Program Program::qtEditor(RealDesktop& desktop, const QStringList& arguments) {
    const auto option = arguments.indexOf(u"--windows"_s);
    Program program(desktop,
                    QStringList{QStringLiteral(VELTRIN_BINARY_DIR "/bin/veltrin_test_editor")} + arguments);
    program.waitForWindow(20, {}, option < 0 ? 1 : arguments.value(option + 1).toInt());
    return program;
}

QByteArray Program::output() const {
    QFile file(log_);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QList<xcb_window_t> Program::windows(const QString& windowClass) const {
    XDesktop& x = desktop_->x();
    QList<xcb_window_t> found = x.windows();
    found.removeIf([&](xcb_window_t window) {
        return windowClass.isEmpty() ? x.processOf(window) != pid()
                                     : !x.windowClass(window).contains(windowClass, Qt::CaseInsensitive);
    });
    return found;
}

xcb_window_t Program::waitForWindow(double seconds, const QString& windowClass, int count) {
    window_ = 0;
    const double deadline = monotonicSeconds() + seconds;
    waitUntil(seconds, [&] {
        const auto found = windows(windowClass);
        if (found.size() >= count) window_ = found.last();
        return window_ != 0 || !isRunning();
    });
    if (window_ == 0) throw std::runtime_error("the program shows no window: " + output().toStdString());
    // A new window normally gets the focus; a window manager that guards the focus against thieves needs a
    // word.
    waitUntil(0.5, [&] { return desktop_->x().activeWindow() == window_; });
    if (desktop_->x().activeWindow() != window_ &&
        !desktop_->x().activate(window_, deadline - monotonicSeconds())) {
        throw std::runtime_error("the program's window does not become active: " + output().toStdString());
    }
    return window_;
}

void Program::stop() {
    process_.send(SIGSTOP);
    waitUntil(5, [this] { return processState(pid()) == 'T'; });
}

void Program::resume() {
    process_.send(SIGCONT);
    waitUntil(5, [this] { return processState(pid()) != 'T'; });
}

}  // namespace veltrin

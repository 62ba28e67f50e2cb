#include "support/desktop/PanelHost.h"

#include "support/desktop/Waiting.h"

#include <unistd.h>

#include <stdexcept>

namespace veltrin {
namespace {

Environment with(Environment environment, const Environment& extra) {
    environment.insert(extra);
    return environment;
}

}  // namespace

PanelHost::PanelHost(RealDesktop& desktop, const Environment& extra)
    : desktop_(desktop),
      process_({.command = {QStringLiteral(VELTRIN_BINARY_DIR "/bin/veltrin_panel_host")},
                .environment = with(desktop.environment(), extra),
                .outputFile = desktop.file(QStringLiteral("panel-host.log")),
                .input = in_.read,
                .output = out_.write}) {
    in_.closeRead();
    out_.closeWrite();
    if (readLine(out_.read, pending_, 30) != QByteArray("ready"))
        throw std::runtime_error("the panels' host did not start");
}

QByteArray PanelHost::ask(const QByteArray& command, double seconds) {
    const QByteArray line = command + '\n';
    if (write(in_.write, line.constData(), static_cast<std::size_t>(line.size())) != line.size())
        throw std::runtime_error("the panels' host is gone");
    const auto reply = readLine(out_.read, pending_, seconds);
    if (!reply || !reply->startsWith("ok ") || *reply == "ok bad")
        throw std::runtime_error("the panels' host did not do: " + command.toStdString());
    return reply->mid(3);
}

QList<xcb_window_t> PanelHost::windows() {
    QList<xcb_window_t> own;
    for (const xcb_window_t window : desktop_.x().rootChildren()) {
        if (desktop_.x().processOf(window) == pid()) own.append(window);
    }
    return own;
}

QRect PanelHost::place() {
    const auto own = windows();
    return own.size() == 1 ? desktop_.x().geometry(own.first()) : QRect();
}

bool PanelHost::waitForPlace(const QRect& wanted, double seconds) {
    return waitUntil(seconds, [&] { return place() == wanted; });
}

}  // namespace veltrin

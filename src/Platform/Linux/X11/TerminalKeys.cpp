#include "Platform/Linux/X11/TerminalKeys.h"

#include <string_view>

namespace veltrin {
namespace {

struct Terminal {
    std::string_view name;  ///< a part of WM_CLASS or an application id, in lower case
    TerminalKeys keys;
};

constexpr Terminal terminals[] = {
    // Those that stand on VTE.
    {"gnome-terminal", TerminalKeys::withShift},
    {"gnome-terminal-server", TerminalKeys::withShift},
    {"org.gnome.terminal", TerminalKeys::withShift},
    {"org.gnome.console", TerminalKeys::withShift},
    {"kgx", TerminalKeys::withShift},
    {"org.gnome.ptyxis", TerminalKeys::withShift},
    {"xfce4-terminal", TerminalKeys::withShift},
    {"mate-terminal", TerminalKeys::withShift},
    {"tilix", TerminalKeys::withShift},
    {"com.gexperts.tilix", TerminalKeys::withShift},
    {"terminator", TerminalKeys::withShift},
    {"lxterminal", TerminalKeys::withShift},
    {"sakura", TerminalKeys::withShift},
    {"guake", TerminalKeys::withShift},
    {"tilda", TerminalKeys::withShift},
    {"termit", TerminalKeys::withShift},
    {"roxterm", TerminalKeys::withShift},
    {"io.elementary.terminal", TerminalKeys::withShift},
    {"deepin-terminal", TerminalKeys::withShift},
    // Those with the same keys of their own.
    {"konsole", TerminalKeys::withShift},
    {"yakuake", TerminalKeys::withShift},
    {"qterminal", TerminalKeys::withShift},
    {"cool-retro-term", TerminalKeys::withShift},
    {"kitty", TerminalKeys::withShift},
    {"alacritty", TerminalKeys::withShift},
    {"org.wezfurlong.wezterm", TerminalKeys::withShift},
    {"com.mitchellh.ghostty", TerminalKeys::withShift},
    {"contour", TerminalKeys::withShift},
    {"terminology", TerminalKeys::withShift},
    {"st", TerminalKeys::withShift},
    {"st-256color", TerminalKeys::withShift},
    // Those without: Ctrl+Shift+C interrupts there too.
    {"xterm", TerminalKeys::none},
    {"uxterm", TerminalKeys::none},
    {"koi8rxterm", TerminalKeys::none},
    {"urxvt", TerminalKeys::none},
    {"rxvt", TerminalKeys::none},
    {"mlterm", TerminalKeys::none},
    {"aterm", TerminalKeys::none},
    {"eterm", TerminalKeys::none},
    {"zutty", TerminalKeys::none},
};

}  // namespace

std::optional<TerminalKeys> terminalKeys(const QStringList& windowClass, const QString& applicationId) {
    for (const QString& name : windowClass + QStringList(applicationId)) {
        const QByteArray lower = name.toLower().toUtf8();
        const std::string_view wanted(lower.constData(), static_cast<std::size_t>(lower.size()));
        for (const auto& terminal : terminals) {
            if (terminal.name == wanted) return terminal.keys;
        }
    }
    return std::nullopt;
}

}  // namespace veltrin

// Gives the keyboard back when the program that listens to it stands still. A key that may be claimed stops
// the keyboard until the program has decided; a program that was stopped, or hangs in a debugger or in the
// writing of a core file, would never decide. Then its connection for keys is ended here, which sets the
// keyboard free; the program opens another one when it goes on.
//
// Usage: veltrin-keyguard DISPLAY WINDOW TOKEN, with a socket to the program as descriptor 3. WINDOW belongs
// to the connection and carries TOKEN, so that no other program's is ever ended. It asks "are you there?"
// while a modifier is down, or while the program says that keys without one may be claimed; at other times it
// sleeps. It ends with its program.
#include "Platform/Linux/X11/X11KeyGuardWire.h"
#include "Platform/Linux/X11/X11ServerTime.h"
#include "Platform/Linux/X11/XcbHeaders.h"

#include <poll.h>
#include <sys/socket.h>

#include <cstdlib>
#include <cstring>
#include <optional>

namespace {

using namespace veltrin;
using namespace veltrin::KeyGuardWire;

constexpr int socketToProgram = 3;
constexpr std::uint64_t millisecond = 1'000'000;
constexpr std::uint64_t askEvery = 100 * millisecond;
/// Far above what a decision takes (50 ms), so that a busy machine is not taken for a hung program.
constexpr std::uint64_t answerLimit = 500 * millisecond;
constexpr unsigned locks = XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2;

class Guard {
public:
    Guard(xcb_connection_t* connection, xcb_window_t window, std::uint32_t token)
        : connection_(connection), window_(window), token_(token) {
        const X11Reply<xcb_xkb_use_extension_reply_t> use(
            xcb_xkb_use_extension_reply(connection, xcb_xkb_use_extension(connection, 1, 0), nullptr));
        xcb_xkb_select_events_details_t details{};
        details.affectState = XCB_XKB_STATE_PART_MODIFIER_BASE;
        details.stateDetails = XCB_XKB_STATE_PART_MODIFIER_BASE;
        xcb_xkb_select_events_aux(connection, XCB_XKB_ID_USE_CORE_KBD, XCB_XKB_EVENT_TYPE_STATE_NOTIFY, 0, 0,
                                  0, 0, &details);
        const X11Reply<xcb_xkb_get_state_reply_t> state(xcb_xkb_get_state_reply(
            connection, xcb_xkb_get_state(connection, XCB_XKB_ID_USE_CORE_KBD), nullptr));
        if (state) modifiers_ = state->baseMods & ~locks;
        const auto* xkb = xcb_get_extension_data(connection, &xcb_xkb_id);
        firstEvent_ = xkb != nullptr ? xkb->first_event : 0;
    }

    /// Returns when there is nothing to guard any more.
    void run() {
        for (;;) {
            readKeyboard();
            if (xcb_connection_has_error(connection_) != 0) return;
            const auto now = monotonicNow();
            if (askedAt_ && now - *askedAt_ >= answerLimit) return endConnection();
            if (isWatching() && !askedAt_ && now >= nextAsk_) {
                if (!say(question)) return;
                askedAt_ = now;
                nextAsk_ = now + askEvery;
            }
            pollfd descriptors[] = {{xcb_get_file_descriptor(connection_), POLLIN, 0},
                                    {socketToProgram, POLLIN, 0}};
            poll(descriptors, 2, timeout(monotonicNow()));
            if (descriptors[1].revents != 0 && !hear()) return;
        }
    }

private:
    bool isWatching() const { return closely_ || modifiers_ != 0; }

    int timeout(std::uint64_t now) const {
        if (!askedAt_ && !isWatching()) return -1;
        const std::uint64_t next = askedAt_ ? *askedAt_ + answerLimit : nextAsk_;
        return next <= now ? 0 : static_cast<int>((next - now) / millisecond + 1);
    }

    void readKeyboard() {
        while (const X11Reply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
            if ((event->response_type & 0x7F) != firstEvent_ || event->pad0 != XCB_XKB_STATE_NOTIFY) continue;
            modifiers_ = reinterpret_cast<const xcb_xkb_state_notify_event_t&>(*event).baseMods & ~locks;
        }
        xcb_flush(connection_);
    }

    static bool say(char word) { return send(socketToProgram, &word, 1, MSG_DONTWAIT | MSG_NOSIGNAL) == 1; }
    /// False when the program is gone.
    bool hear() {
        char words[64];
        const auto count = recv(socketToProgram, words, sizeof words, MSG_DONTWAIT);
        if (count <= 0) return false;
        for (const char* word = words; word != words + count; ++word) {
            if (*word == answer) askedAt_.reset();
            if (*word == watchClosely) closely_ = true;
            if (*word == relax) closely_ = false;
        }
        return true;
    }

    void endConnection() {
        const X11Reply<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
            connection_, xcb_intern_atom(connection_, 0, std::strlen(tokenProperty), tokenProperty),
            nullptr));
        if (!atom) return;
        const X11Reply<xcb_get_property_reply_t> property(xcb_get_property_reply(
            connection_, xcb_get_property(connection_, 0, window_, atom->atom, XCB_ATOM_CARDINAL, 0, 1),
            nullptr));
        if (!property || xcb_get_property_value_length(property.get()) != sizeof token_) return;
        std::uint32_t found = 0;
        std::memcpy(&found, xcb_get_property_value(property.get()), sizeof found);
        if (found != token_) return;
        xcb_kill_client(connection_, window_);
        const X11Reply<xcb_get_input_focus_reply_t> done(
            xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
    }

    xcb_connection_t* connection_;
    xcb_window_t window_;
    std::uint32_t token_;
    unsigned modifiers_ = 0;
    bool closely_ = false;
    std::optional<std::uint64_t> askedAt_;
    std::uint64_t nextAsk_ = 0;
    std::uint8_t firstEvent_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) return 2;
    xcb_connection_t* connection = xcb_connect(argv[1], nullptr);
    if (xcb_connection_has_error(connection) == 0) {
        Guard(connection, static_cast<xcb_window_t>(std::strtoul(argv[2], nullptr, 10)),
              static_cast<std::uint32_t>(std::strtoul(argv[3], nullptr, 10)))
            .run();
    }
    xcb_disconnect(connection);
    return 0;
}

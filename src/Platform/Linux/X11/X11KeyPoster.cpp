#include "Platform/Linux/X11/X11KeyPoster.h"

#include "Platform/Linux/X11/TerminalKeys.h"

#include <unistd.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <thread>
#include <vector>

namespace veltrin {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds modifierPatience{300};
constexpr milliseconds modifierLook{5};
constexpr milliseconds answerPatience{250};
constexpr milliseconds focusPatience{200};
constexpr milliseconds focusLook{5};
/// Locks do not count as held; they do not change what a chord means.
constexpr unsigned heldMask = 0xFFU & ~(XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2);

PostResult refused(const QString& why) {
    return {false, why};
}

QString heldByAnother() {
    return QStringLiteral("another program holds the keyboard");
}

bool isChord(const KeyPost& post, qint64 key) {
    return post.keyCode == key && post.flags == KeyFlags::command;
}

}  // namespace

X11KeyPoster::X11KeyPoster(const X11Windows& windows, Parts parts)
    : windows_(windows),
      parts_(std::move(parts)),
      ping_(windows.connection().display()),
      connection_(X11Connection::open(windows.connection().display())) {
    if (!connection_) return;
    holder_ = std::make_unique<X11KeyboardHolder>(*connection_);
    if (!connection_->hasXkb()) return;
    constexpr std::uint16_t notices = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    xcb_xkb_select_events(connection_->xcb(), XCB_XKB_ID_USE_CORE_KBD, notices, 0, notices, 0xFF, 0xFF,
                          nullptr);
    keymap_ = X11Keymap::load(*connection_);
}

X11KeyPoster::~X11KeyPoster() = default;

void X11KeyPoster::refreshKeymap() {
    connection_->roundTrip();
    bool changed = !keymap_;
    while (const X11Reply<xcb_generic_event_t> event{xcb_poll_for_event(connection_->xcb())}) {
        changed = changed || (event->response_type & 0x7F) == connection_->xkbFirstEvent();
    }
    if (!changed) return;
    if (auto keymap = X11Keymap::load(*connection_)) keymap_ = std::move(keymap);
}

QString X11KeyPoster::refusalOfWindow(const PostTarget& target, xcb_window_t* window) const {
    const auto active = windows_.active();
    if (!active) return QStringLiteral("no window is active");
    if (window != nullptr) *window = active->window;
    if (target.window != 0 && active->window != target.window)
        return QStringLiteral("another window is active");
    if (target.processIdentifier && active->process != target.processIdentifier) {
        return QStringLiteral("another application is active");
    }
    return {};
}

QString X11KeyPoster::refusalOfApplication() {
    const auto active = windows_.active();
    if (!active) return QStringLiteral("no window is active");
    // This thread would have to answer for our own windows.
    if (active->process == static_cast<qint32>(getpid())) return {};
    return ping_.ask(active->window, answerPatience) == X11WindowPing::Answer::unanswered
               ? QStringLiteral("the application does not answer")
               : QString();
}

QString X11KeyPoster::refusalOfTerminal(const KeyPost& chord, quint64& flags, bool& isTerminal) const {
    const auto active = windows_.active();
    if (!active) return QStringLiteral("no window is active");
    const auto keys =
        terminalKeys(windows_.windowClass(active->window), windows_.gtkApplicationId(active->window));
    isTerminal = keys.has_value();
    if (!isTerminal) return {};
    const bool isCopy = isChord(chord, KeyCode::c);
    const bool isPaste = isChord(chord, KeyCode::v);
    if (!isCopy && !isPaste) return QStringLiteral("a terminal takes the key for a command");
    if (isPaste && chord.textHasLineBreak) return QStringLiteral("a terminal would run pasted lines");
    if (*keys == TerminalKeys::none) return QStringLiteral("the terminal has no such key");
    flags |= KeyFlags::shift;
    return {};
}

QString X11KeyPoster::refusalOfField(const KeyPost& chord) const {
    if (parts_.inspector == nullptr || !chord.target.element) return {};
    auto state = parts_.inspector->inspect(chord.target.element);
    // A focus that was just asked for comes after a moment.
    const auto deadline = Clock::now() + focusPatience;
    while (state.answered && state.isElsewhere && Clock::now() < deadline) {
        std::this_thread::sleep_for(focusLook);
        state = parts_.inspector->inspect(chord.target.element);
    }
    if (!state.answered) return QStringLiteral("the field does not answer");
    if (state.isElsewhere) return QStringLiteral("another field has the focus");
    if (state.isPassword) return QStringLiteral("the field is a password field");
    const bool onlyReads = isChord(chord, KeyCode::c) || isChord(chord, KeyCode::a);
    if (!onlyReads && !state.isEditable) return QStringLiteral("the field cannot be edited");
    return {};
}

X11KeyPoster::Keyboard X11KeyPoster::keyboard() const {
    auto* xcb = connection_->xcb();
    Keyboard result;
    const auto stateAsked = xcb_xkb_get_state(xcb, XCB_XKB_ID_USE_CORE_KBD);
    const auto downAsked = xcb_query_keymap(xcb);
    result.isHeld = holder_->isHeld();
    const X11Reply<xcb_xkb_get_state_reply_t> state(xcb_xkb_get_state_reply(xcb, stateAsked, nullptr));
    const X11Reply<xcb_query_keymap_reply_t> down(xcb_query_keymap_reply(xcb, downAsked, nullptr));
    if (state) {
        result.modifiers = state->baseMods & heldMask;
        result.group = state->group;
    }
    if (down) std::copy(std::begin(down->keys), std::end(down->keys), result.down.begin());
    return result;
}

/// What to press for the post in the user's layout; none when the keyboard has no such key.
std::optional<X11KeyPoster::Chord> X11KeyPoster::chordFor(const KeyPost& post, quint64 flags,
                                                          unsigned group) const {
    qint64 code = post.keyCode;
    if (!keymap_->hasLatinLetters() && (flags & KeyFlags::command) != 0) {
        if (flags != KeyFlags::command || (code != KeyCode::c && code != KeyCode::v)) return std::nullopt;
        if (code == KeyCode::v) flags = KeyFlags::shift;
        code = KeyCode::insert;
    }
    const auto keys = keymap_->keys(code, group);
    if (keys.empty()) return std::nullopt;
    return Chord{keys.front(), keymap_->modifiers(flags)};
}

/// Gives the user a moment to let go of the modifiers and of the chord's own key, and a menu one to close.
/// How the keyboard is then.
X11KeyPoster::Keyboard X11KeyPoster::waitForQuietKeyboard(const KeyPost& post, quint64 flags) const {
    const auto deadline = Clock::now() + modifierPatience;
    for (;;) {
        const Keyboard now = keyboard();
        const auto chord = chordFor(post, flags, now.group);
        const bool isQuiet = !now.isHeld && now.modifiers == 0 && !(chord && now.isDown(chord->key));
        if (isQuiet || Clock::now() >= deadline) return now;
        std::this_thread::sleep_for(modifierLook);
    }
}

PostResult X11KeyPoster::post(const KeyPost& chord) {
    if (!connection_ || connection_->isLost() || !connection_->hasXTest()) {
        return refused(QStringLiteral("the X server does not take keys"));
    }
    if (const QString why = refusalOfWindow(chord.target); !why.isEmpty()) return refused(why);
    quint64 flags = chord.flags;
    bool isTerminal = false;
    if (const QString why = refusalOfTerminal(chord, flags, isTerminal); !why.isEmpty()) return refused(why);

    if (parts_.letGoOfKeyboard) parts_.letGoOfKeyboard();
    refreshKeymap();
    if (!keymap_) return refused(QStringLiteral("the X server has no keymap"));
    if (waitForQuietKeyboard(chord, flags).isHeld) return refused(heldByAnother());

    if (const QString why = refusalOfApplication(); !why.isEmpty()) return refused(why);
    if (!isTerminal) {
        if (const QString why = refusalOfField(chord); !why.isEmpty()) return refused(why);
    }
    // Asked again last: waiting took its time, and a Control let go meanwhile would leave a plain letter.
    xcb_window_t window = XCB_NONE;
    if (const QString why = refusalOfWindow(chord.target, &window); !why.isEmpty()) return refused(why);
    refreshKeymap();
    const Keyboard now = keyboard();
    if (now.isHeld) return refused(heldByAnother());
    const auto keys = chordFor(chord, flags, now.group);
    if (!keys) return refused(QStringLiteral("the keyboard has no such key"));
    if (isChord(chord, KeyCode::v) && parts_.pastePosted) parts_.pastePosted(window);
    send(*keys, now);
    return {true, QString()};
}

void X11KeyPoster::fake(bool press, X11Keymap::Keycode key) const {
    xcb_test_fake_input(connection_->xcb(), press ? XCB_KEY_PRESS : XCB_KEY_RELEASE, key, XCB_CURRENT_TIME,
                        XCB_NONE, 0, 0, 0);
}

/// Modifiers that are in the way are lifted and stay lifted: pressing them again would leave them down for
/// ever when the user has let go meanwhile.
void X11KeyPoster::liftModifiers(unsigned modifiers, const Keyboard& keyboard) const {
    auto* xcb = connection_->xcb();
    const X11Reply<xcb_get_modifier_mapping_reply_t> map(
        xcb_get_modifier_mapping_reply(xcb, xcb_get_modifier_mapping(xcb), nullptr));
    // A key in between, so that nobody takes the lifted Alt or Super for a tap of it.
    if (const auto silent = keymap_->silentKey()) {
        fake(true, *silent);
        fake(false, *silent);
    }
    if (!map) return;
    const auto* keys = xcb_get_modifier_mapping_keycodes(map.get());
    for (unsigned modifier = 0; modifier < 8; ++modifier) {
        if ((modifiers & (1U << modifier)) == 0) continue;
        for (unsigned i = 0; i < map->keycodes_per_modifier; ++i) {
            const auto key = keys[modifier * map->keycodes_per_modifier + i];
            if (key != 0 && keyboard.isDown(key)) fake(false, key);
        }
    }
}

/// Sends the whole chord in one piece.
void X11KeyPoster::send(const Chord& chord, const Keyboard& keyboard) const {
    if (const unsigned inTheWay = keyboard.modifiers & ~chord.modifiers; inTheWay != 0)
        liftModifiers(inTheWay, keyboard);
    // The server drops the press of a key that is down already.
    if (keyboard.isDown(chord.key)) fake(false, chord.key);
    std::vector<X11Keymap::Keycode> pressed;
    for (const auto flag : {KeyFlags::command, KeyFlags::shift, KeyFlags::option, KeyFlags::control}) {
        const unsigned mask = keymap_->modifiers(flag);
        const auto key = keymap_->modifierKey(flag);
        // What the user holds already is not pressed, and so not let go either.
        if (key && (mask & chord.modifiers) != 0 && (mask & keyboard.modifiers) == 0) pressed.push_back(*key);
    }
    for (const auto key : pressed)
        fake(true, key);
    fake(true, chord.key);
    fake(false, chord.key);
    for (auto key = pressed.rbegin(); key != pressed.rend(); ++key)
        fake(false, *key);
    // Done when it returns, so that a tap that goes on afterwards can tell these keys from the user's by
    // their time.
    connection_->roundTrip();
}

}  // namespace veltrin

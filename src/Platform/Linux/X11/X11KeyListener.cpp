#include "Platform/Linux/X11/X11KeyListener.h"

#include "Platform/Linux/X11/X11ServerTime.h"

#include <poll.h>
#include <pthread.h>
#include <sched.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-x11.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <utility>

namespace veltrin {
namespace {

/// How long freeing the keyboard by force may take; only a server that does not answer takes so long.
constexpr std::chrono::milliseconds freeingLimit{200};
/// A new keymap comes as a burst of notices; the grabs are renewed once it is over.
constexpr std::uint64_t reloadDelay = 60'000'000;
constexpr std::uint64_t millisecond = 1'000'000;
/// How often keys are looked for while a person types, and how long after the last one.
constexpr std::uint64_t gatheringInterval = 8 * millisecond;
constexpr std::uint64_t typingTime = 1'000 * millisecond;
constexpr std::uint64_t lockLookInterval = 300 * millisecond;
constexpr std::uint64_t unlockingTime = 1'000 * millisecond;

/// The two layouts that matter of the events that all extensions share.
template <typename T>
const T& as(const xcb_generic_event_t& event) {
    return reinterpret_cast<const T&>(event);
}

bool isGeneric(const xcb_generic_event_t& event, std::uint8_t opcode) {
    return (event.response_type & 0x7F) == XCB_GE_GENERIC &&
           as<xcb_ge_generic_event_t>(event).extension == opcode;
}

}  // namespace

std::unique_ptr<X11KeyListener> X11KeyListener::start(const QByteArray& display, KeyQuestions& questions,
                                                      std::chrono::milliseconds answerLimit,
                                                      std::function<void()> onLoss) {
    auto connection = X11Connection::open(display);
    if (!connection || !connection->hasXInput22() || !connection->hasXkb() || !connection->hasXTest())
        return nullptr;
    const auto master = xkb_x11_get_core_keyboard_device_id(connection->xcb());
    auto keymap = X11Keymap::load(*connection);
    if (master < 0 || !keymap) return nullptr;
    std::unique_ptr<X11KeyListener> listener(new X11KeyListener(std::move(connection),
                                                                static_cast<std::uint16_t>(master), questions,
                                                                answerLimit, std::move(onLoss)));
    if (listener->wake_ < 0) return nullptr;
    listener->keymap_ = std::move(keymap);
    listener->thread_ = std::thread([raw = listener.get()] { raw->run(); });
    pthread_setname_np(listener->thread_.native_handle(), "veltrin-keys");
    return listener;
}

X11KeyListener::X11KeyListener(std::unique_ptr<X11Connection> connection, std::uint16_t masterKeyboard,
                               KeyQuestions& questions, std::chrono::milliseconds answerLimit,
                               std::function<void()> onLoss)
    : connection_(std::move(connection)),
      questions_(questions),
      answerLimit_(answerLimit),
      onLoss_(std::move(onLoss)),
      guard_(X11KeyGuard::start(*connection_)),
      wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      holder_(*connection_),
      grabs_(*connection_, masterKeyboard),
      hold_(*connection_, grabs_, mutex_, [this] {
          bringEvents();
          return std::any_of(pending_.begin(), pending_.end(),
                             [this](const auto& event) { return isGrabEvent(*event); });
      }) {
    constexpr std::uint16_t notices = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY |
                                      XCB_XKB_EVENT_TYPE_STATE_NOTIFY | XCB_XKB_EVENT_TYPE_CONTROLS_NOTIFY;
    constexpr std::uint16_t allParts = 0xFF;
    auto* xcb = connection_->xcb();
    xcb_xkb_select_events(xcb, XCB_XKB_ID_USE_CORE_KBD, notices, 0, notices, allParts, allParts, nullptr);
    // Asked after the notices were chosen, so that no change falls in between.
    const X11Reply<xcb_xkb_get_state_reply_t> state(
        xcb_xkb_get_state_reply(xcb, xcb_xkb_get_state(xcb, XCB_XKB_ID_USE_CORE_KBD), nullptr));
    if (state) {
        modifiers_ = state->mods;
        group_ = state->group;
    }
    repeats_.readSettings(*connection_);
}

X11KeyListener::~X11KeyListener() {
    stopping_ = true;
    questions_.giveUp();
    poke();
    if (thread_.joinable()) thread_.join();
    hold_.drop();
    if (wake_ >= 0) close(wake_);
}

void X11KeyListener::poke() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(wake_, &one, sizeof one);
}

void X11KeyListener::configure(bool listening, const std::vector<ClaimableKey>& claimable) {
    const bool closely = std::any_of(claimable.begin(), claimable.end(),
                                     [](const ClaimableKey& key) { return key.flags == 0; });
    {
        const std::lock_guard guard(mutex_);
        if (listening != listening_) selectEvents(listening);
        listening_ = listening;
        claimable_ = claimable;
        mayClaimPlainKeys_ = closely;
        grabs_.arm(claimable_, *keymap_, group_);
    }
    // Also brings the thread's events into the queue of the connection, where it would not notice them by
    // itself.
    connection_->roundTrip();
    poke();
    if (guard_ && closely != isWatchedClosely_) guard_->watchClosely(closely);
    isWatchedClosely_ = closely;
}

void X11KeyListener::letGo(std::chrono::milliseconds limit) {
    if (hold_.waitUntilIdle(limit)) return;
    poke();
    hold_.waitUntilFreed(freeingLimit);
}

void X11KeyListener::selectEvents(bool listening) {
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } wanted{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
             listening ? static_cast<std::uint32_t>(XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS |
                                                    XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE)
                       : 0U};
    xcb_input_xi_select_events(connection_->xcb(), connection_->root(), 1, &wanted.head);
}

void X11KeyListener::run() {
    while (!stopping_ && !connection_->isLost()) {
        if (const auto event = nextEvent()) {
            handle(*event);
            continue;
        }
        if (hold_.isFreeingWanted()) {
            bringEvents();
            if (!pending_.empty()) continue;
            hold_.free();
        }
        const auto now = monotonicNow();
        if (reloadAt_ && now >= *reloadAt_) reloadKeymap();
        if (const auto due = repeats_.due(); due && now >= *due) makeRepeat();
        waitForMore();
    }
    if (stopping_) return;
    hold_.drop();
    if (onLoss_) onLoss_();
}

X11Reply<xcb_generic_event_t> X11KeyListener::nextEvent() {
    if (pending_.empty()) return X11Reply<xcb_generic_event_t>(xcb_poll_for_event(connection_->xcb()));
    auto event = std::move(pending_.front());
    pending_.pop_front();
    return event;
}

/// Keys are sent to us as such by our grabs alone.
bool X11KeyListener::isGrabEvent(const xcb_generic_event_t& event) const {
    if (!isGeneric(event, connection_->xinputOpcode())) return false;
    const auto type = as<xcb_ge_generic_event_t>(event).event_type;
    return type == XCB_INPUT_KEY_PRESS || type == XCB_INPUT_KEY_RELEASE;
}

/// Everything that the server sent us up to now is pending when it returns.
void X11KeyListener::bringEvents() {
    connection_->roundTrip();
    while (auto* event = xcb_poll_for_event(connection_->xcb()))
        pending_.emplace_back(event);
}

void X11KeyListener::waitForMore() {
    // What a request of ours brought along lies in the queue already.
    if (auto* queued = xcb_poll_for_event(connection_->xcb())) {
        pending_.emplace_back(queued);
        return;
    }
    const auto now = monotonicNow();
    const bool gathers = gathersKeys(now);
    std::optional<std::uint64_t> next = reloadAt_;
    const auto noLaterThan = [&](std::uint64_t due) { next = next ? std::min(*next, due) : due; };
    if (const auto due = repeats_.due()) noLaterThan(*due);
    if (gathers) noLaterThan(now + gatheringInterval);
    int timeout = -1;
    if (next) {
        timeout = *next <= now
                      ? 0
                      : static_cast<int>(std::min<std::uint64_t>((*next - now) / millisecond + 1, 60'000));
    }
    connection_->flush();
    pollfd descriptors[] = {{gathers ? -1 : xcb_get_file_descriptor(connection_->xcb()), POLLIN, 0},
                            {wake_, POLLIN, 0},
                            {guard_ ? guard_->descriptor() : -1, POLLIN, 0}};
    poll(descriptors, 3, timeout);
    if (descriptors[2].revents != 0) guard_->answer();
    if ((descriptors[1].revents & POLLIN) != 0) {
        std::uint64_t count = 0;
        [[maybe_unused]] const auto taken = read(wake_, &count, sizeof count);
    }
}

/// Whether keys are fetched at intervals instead of being waited for. The server wakes nobody who does not
/// wait, and the application that is typed into need not share the processor with us. What may be claimed is
/// waited for: a key that is grabbed stops the keyboard, and combinations begin with a modifier.
bool X11KeyListener::gathersKeys(std::uint64_t now) {
    if (!typedAt_ || now > *typedAt_ + typingTime) return false;
    constexpr auto beginCombinations = KeyFlags::control | KeyFlags::option | KeyFlags::command;
    const std::lock_guard guard(mutex_);
    return !mayClaimPlainKeys_ && !hold_.isActive() && (keymap_->flags(modifiers_) & beginCombinations) == 0;
}

void X11KeyListener::handle(const xcb_generic_event_t& event) {
    if ((event.response_type & 0x7F) == connection_->xkbFirstEvent()) {
        handleXkb(event);
        return;
    }
    if (!isGeneric(event, connection_->xinputOpcode())) return;
    const auto& generic = as<xcb_ge_generic_event_t>(event);
    const auto& raw = as<xcb_input_raw_key_press_event_t>(event);
    switch (generic.event_type) {
        case XCB_INPUT_RAW_KEY_PRESS:
            rawPress(static_cast<Keycode>(raw.detail), raw.time);
            break;
        case XCB_INPUT_RAW_KEY_RELEASE:
            rawRelease(static_cast<Keycode>(raw.detail), raw.time);
            break;
        case XCB_INPUT_KEY_PRESS:
            grabbedPress(as<DeviceEvent>(event));
            break;
        case XCB_INPUT_KEY_RELEASE:
            grabbedRelease(as<DeviceEvent>(event));
            break;
        default:
            break;
    }
}

void X11KeyListener::handleXkb(const xcb_generic_event_t& event) {
    // The second byte of every XKB event is its kind.
    switch (event.pad0) {
        case XCB_XKB_STATE_NOTIFY: {
            const auto& state = as<xcb_xkb_state_notify_event_t>(event);
            modifiers_ = state.mods;
            if (state.group == group_) break;
            const std::lock_guard guard(mutex_);
            group_ = state.group;
            grabs_.arm(claimable_, *keymap_, group_);
            connection_->flush();
            break;
        }
        case XCB_XKB_CONTROLS_NOTIFY:
        case XCB_XKB_NEW_KEYBOARD_NOTIFY:
        case XCB_XKB_MAP_NOTIFY:
            if (!reloadAt_) reloadAt_ = monotonicNow() + reloadDelay;
            break;
        default:
            break;
    }
}

void X11KeyListener::reloadKeymap() {
    reloadAt_.reset();
    repeats_.readSettings(*connection_);
    auto keymap = X11Keymap::load(*connection_);
    if (!keymap) return;
    const std::lock_guard guard(mutex_);
    keymap_ = std::move(keymap);
    grabs_.arm(claimable_, *keymap_, group_);
    grabs_.rearm();
    connection_->flush();
}

KeyEvent X11KeyListener::keyEvent(KeyEventType type, Keycode key, unsigned modifiers,
                                  std::uint64_t time) const {
    KeyEvent event;
    event.type = type;
    event.keyCode = keymap_->virtualCode(key, group_);
    event.flags = keymap_->flags(modifiers);
    event.timestamp = time;
    return event;
}

bool X11KeyListener::isClaimable(const KeyEvent& event) {
    const std::lock_guard guard(mutex_);
    return std::any_of(claimable_.begin(), claimable_.end(), [&](const ClaimableKey& key) {
        return key.keyCode == event.keyCode &&
               (key.anyFlags ? (event.flags & key.flags) == key.flags : event.flags == key.flags);
    });
}

/// Whether the press just listened to comes once more, as the event of one of our grabs. The server makes
/// both in one go, so after a round trip it is there or never comes: an open menu of an application keeps our
/// grabs from firing.
bool X11KeyListener::grabEventFollows(Keycode key, xcb_timestamp_t time) {
    const auto waiting = [&] {
        while (auto* event = xcb_poll_for_event(connection_->xcb()))
            pending_.emplace_back(event);
        return std::any_of(pending_.begin(), pending_.end(), [&](const auto& event) {
            return isGeneric(*event, connection_->xinputOpcode()) &&
                   as<xcb_ge_generic_event_t>(*event).event_type == XCB_INPUT_KEY_PRESS &&
                   as<DeviceEvent>(*event).detail == key && as<DeviceEvent>(*event).time == time;
        });
    };
    if (waiting()) return true;
    bringEvents();
    return waiting();
}

void X11KeyListener::rawPress(Keycode key, xcb_timestamp_t time) {
    if (key == keymap_->silentKey()) return;
    if (keymap_->isModifier(key)) {
        // The first key of most combinations: the moment to see whether one has become free.
        const std::lock_guard guard(mutex_);
        if (grabs_.hasRefused()) grabs_.retryRefused();
        return;
    }
    const auto when = monotonicTime(time);
    bool mayBeGrabbed = false;
    {
        const std::lock_guard guard(mutex_);
        mayBeGrabbed = grabs_.covers(key) || hold_.isActive();
    }
    const unsigned modifiers = modifiers_;
    if (mayBeGrabbed && grabEventFollows(key, time)) {
        repeats_.pressed(key, when);
        return;
    }
    if (mayBeGrabbed) {
        // Another program has taken the combination since; the newest grab wins.
        const std::lock_guard guard(mutex_);
        grabs_.renew(key, modifiers);
    }
    // What is typed to unlock the screen is nobody's business.
    silenced_[key] = isForTheLockScreen(when);
    if (silenced_[key]) return repeats_.stop();
    repeats_.pressed(key, when);
    toldKey_ = key;
    toldTime_ = time;
    tellOrdinary(keyEvent(KeyEventType::keyDown, key, modifiers, when));
}

/// The server writes to its listeners first and to the application that is typed into last. What waits for
/// the processor now is that application, so it goes first.
void X11KeyListener::tellOrdinary(const KeyEvent& event) {
    sched_yield();
    // A tap of the space bar may begin a gesture, and the end of one is to be seen at once.
    typedAt_.reset();
    if (event.keyCode != KeyCode::space) typedAt_ = monotonicNow();
    questions_.tell(event);
}

bool X11KeyListener::isForTheLockScreen(std::uint64_t when) {
    // The key that unlocked may be looked at when the locker is gone already.
    // A screen is not locked between two keys of a word, and asking costs the server a turn.
    const bool isFresh = !lockedAt_ && unlockedAt_ && when < *unlockedAt_ + lockLookInterval;
    const bool isUp = !isFresh && holder_.isLockScreen();
    if (!isUp && !isFresh) unlockedAt_ = when;
    if (!isUp && (!lockedAt_ || when > *lockedAt_ + unlockingTime)) {
        lockedAt_.reset();
        return false;
    }
    if (isUp) lockedAt_ = when;
    return true;
}

void X11KeyListener::rawRelease(Keycode key, xcb_timestamp_t time) {
    if (key == keymap_->silentKey() || keymap_->isModifier(key)) return;
    repeats_.released(key);
    hold_.rawRelease(key);
    if (silenced_[key]) {
        silenced_.reset(key);
        return;
    }
    tellOrdinary(keyEvent(KeyEventType::keyUp, key, modifiers_, monotonicTime(time)));
}

void X11KeyListener::grabbedPress(const DeviceEvent& event) {
    const auto key = static_cast<Keycode>(event.detail);
    const auto when = monotonicTime(event.time);
    auto report = keyEvent(KeyEventType::keyDown, key, event.mods.effective, when);
    report.isAutoRepeat = (event.flags & XCB_INPUT_KEY_EVENT_FLAGS_KEY_REPEAT) != 0;
    if (report.isAutoRepeat)
        repeats_.repeatSeen(key, when);
    else
        repeats_.pressed(key, when);
    // No press is told twice, however it came here.
    const bool told = !report.isAutoRepeat && key == toldKey_ && event.time == toldTime_;

    X11KeyHold::Event held;
    held.key = key;
    held.time = event.time;
    held.isRepeat = report.isAutoRepeat;
    held.isModifier = keymap_->isModifier(key);
    held.claimable = !told && isClaimable(report);
    hold_.press(
        held, [&] { return questions_.ask(report, answerLimit_); },
        [&] {
            if (!told) questions_.tell(report);
        });
}

void X11KeyListener::grabbedRelease(const DeviceEvent& event) {
    const auto key = static_cast<Keycode>(event.detail);
    X11KeyHold::Event held;
    held.key = key;
    held.time = event.time;
    held.isModifier = keymap_->isModifier(key);
    held.optionHeld = (keymap_->flags(event.mods.effective) & KeyFlags::option) != 0;
    repeats_.released(key);
    const bool opensMenu = hold_.release(held);
    // A client that holds the keyboard is sent no raw events, so this release comes nowhere else.
    if (!held.isModifier) {
        questions_.tell(keyEvent(KeyEventType::keyUp, key, event.mods.effective, monotonicTime(event.time)));
    }
    if (!opensMenu) return;
    if (const auto silent = keymap_->silentKey()) {
        xcb_test_fake_input(connection_->xcb(), XCB_KEY_PRESS, *silent, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        xcb_test_fake_input(connection_->xcb(), XCB_KEY_RELEASE, *silent, XCB_CURRENT_TIME, XCB_NONE, 0, 0,
                            0);
        connection_->flush();
    }
}

void X11KeyListener::makeRepeat() {
    const auto now = monotonicNow();
    const auto due = repeats_.due().value_or(now);
    const auto key = repeats_.take(now);
    if (!key) return;
    {
        const std::lock_guard guard(mutex_);
        if (!listening_) {
            repeats_.stop();
            return;
        }
    }
    // A release that was never seen (it fell into a pause) must not leave a key repeating for ever.
    const X11Reply<xcb_query_keymap_reply_t> down(
        xcb_query_keymap_reply(connection_->xcb(), xcb_query_keymap(connection_->xcb()), nullptr));
    if (!down || (down->keys[*key / 8] & (1U << (*key % 8))) == 0) {
        repeats_.stop();
        return;
    }
    auto report = keyEvent(KeyEventType::keyDown, *key, modifiers_, due);
    report.isAutoRepeat = true;
    questions_.tell(report);
}

}  // namespace veltrin

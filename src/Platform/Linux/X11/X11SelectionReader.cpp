#include "Platform/Linux/X11/X11SelectionReader.h"

#include "Platform/Linux/X11/X11ServerTime.h"

#include <xcb/xfixes.h>

#include <algorithm>
#include <functional>
#include <string>

namespace veltrin {
namespace {

using std::chrono::milliseconds;

/// So many names take turns, so that a late answer to one request is not taken for that to the next.
constexpr unsigned propertyNames = 16;
/// How many of the latest changes are remembered with their times.
constexpr std::size_t rememberedChanges = 64;
constexpr std::uint32_t everything = 0x1FFFFFFF;

template <typename T>
const T& as(const xcb_generic_event_t& event) {
    return reinterpret_cast<const T&>(event);
}

}  // namespace

X11SelectionReader::X11SelectionReader(const QByteArray& display)
    : connection_(X11Connection::open(display)) {
    if (!isUsable()) return;
    auto* xcb = connection_->xcb();
    clipboard_ = connection_->atom("CLIPBOARD");
    stamp_ = connection_->atom("VELTRIN_TIME");
    window_ = xcb_generate_id(xcb);
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(xcb, 0, window_, connection_->root(), -10, -10, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    xcb_xfixes_select_selection_input(xcb, window_, clipboard_,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    connection_->roundTrip();
}

/// Counts a change of the owner; says whether the event was one.
bool X11SelectionReader::count(const xcb_generic_event_t& event) {
    if ((event.response_type & 0x7F) != connection_->xfixesFirstEvent() + XCB_XFIXES_SELECTION_NOTIFY)
        return false;
    const auto& notify = as<xcb_xfixes_selection_notify_event_t>(event);
    if (notify.selection != clipboard_) return true;
    ++changes_;
    changeTimes_.push_back(monotonicTime(notify.timestamp));
    if (changeTimes_.size() > rememberedChanges) changeTimes_.pop_front();
    return true;
}

qint64 X11SelectionReader::changeCount() {
    if (!isUsable()) return changes_;
    connection_->roundTrip();
    wait(Clock::now(), [](const xcb_generic_event_t&) { return false; });
    return changes_;
}

qint64 X11SelectionReader::changeCountAt(std::uint64_t timestamp) {
    qint64 count = changeCount();
    for (auto time = changeTimes_.rbegin(); time != changeTimes_.rend() && *time >= timestamp; ++time)
        --count;
    return count;
}

/// Waits for an event, counting changes on the way. Answers and pieces that nobody waits for any more are
/// taken off the window, so that their owners get on.
bool X11SelectionReader::wait(Clock::time_point deadline,
                              const std::function<bool(const xcb_generic_event_t&)>& wanted) {
    const auto left = std::max(milliseconds(0), std::chrono::ceil<milliseconds>(deadline - Clock::now()));
    return connection_->waitForEvent(left, [&](const xcb_generic_event_t& event) {
        if (count(event)) return false;
        if (wanted(event)) return true;
        if ((event.response_type & 0x7F) == XCB_SELECTION_NOTIFY) {
            const auto property = as<xcb_selection_notify_event_t>(event).property;
            if (property != XCB_NONE) giveUp(property);
        }
        if ((event.response_type & 0x7F) == XCB_PROPERTY_NOTIFY) {
            const auto& change = as<xcb_property_notify_event_t>(event);
            if (change.state == XCB_PROPERTY_NEW_VALUE && givenUp_.contains(change.atom))
                xcb_delete_property(connection_->xcb(), window_, change.atom);
        }
        return false;
    });
}

/// Takes away what an owner sends there, now and later, without looking at it.
void X11SelectionReader::giveUp(xcb_atom_t property) {
    givenUp_.insert(property);
    xcb_delete_property(connection_->xcb(), window_, property);
    connection_->flush();
}

xcb_atom_t X11SelectionReader::nextProperty() {
    return connection_->atom("VELTRIN_SELECTION_" + std::to_string(reads_++ % propertyNames));
}

xcb_window_t X11SelectionReader::owner() const {
    if (!isUsable()) return XCB_NONE;
    const X11Reply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
        connection_->xcb(), xcb_get_selection_owner(connection_->xcb(), clipboard_), nullptr));
    return owner ? owner->owner : XCB_NONE;
}

std::optional<xcb_timestamp_t> X11SelectionReader::serverTime(Clock::time_point deadline) {
    xcb_change_property(connection_->xcb(), XCB_PROP_MODE_APPEND, window_, stamp_, XCB_ATOM_STRING, 8, 0,
                        nullptr);
    std::optional<xcb_timestamp_t> time;
    wait(deadline, [&](const xcb_generic_event_t& event) {
        if ((event.response_type & 0x7F) != XCB_PROPERTY_NOTIFY) return false;
        const auto& change = as<xcb_property_notify_event_t>(event);
        if (change.atom != stamp_) return false;
        time = change.time;
        return true;
    });
    return time;
}

std::optional<X11Connection::Property> X11SelectionReader::take(xcb_atom_t property) {
    const auto cookie =
        xcb_get_property(connection_->xcb(), 1, window_, property, XCB_GET_PROPERTY_TYPE_ANY, 0, everything);
    return connection_->property(cookie);
}

X11SelectionReader::Answer X11SelectionReader::read(xcb_atom_t target, Clock::time_point answerBy,
                                                    Clock::time_point deadline) {
    const auto time = serverTime(answerBy);
    if (!time) return {};
    const auto property = nextProperty();
    givenUp_.erase(property);
    xcb_delete_property(connection_->xcb(), window_, property);
    xcb_convert_selection(connection_->xcb(), window_, clipboard_, target, property, *time);
    Answer answer;
    const bool answered = wait(answerBy, [&](const xcb_generic_event_t& event) {
        if ((event.response_type & 0x7F) != XCB_SELECTION_NOTIFY) return false;
        const auto& notify = as<xcb_selection_notify_event_t>(event);
        if (notify.selection != clipboard_ || notify.target != target || notify.time != *time) return false;
        if (notify.property != XCB_NONE && notify.property != property) return false;
        answer.status = notify.property == XCB_NONE ? Answer::Status::refused : Answer::Status::value;
        return true;
    });
    if (!answered || answer.status != Answer::Status::value) return answer;
    const auto content = take(property);
    if (!content) return {Answer::Status::refused, {}, XCB_ATOM_NONE, 8};
    // Taking the announcement away has told the owner to send the first piece.
    if (content->type == connection_->atom("INCR")) return readPieces(property, deadline);
    answer.bytes = content->bytes;
    answer.type = content->type;
    answer.format = content->format;
    return answer;
}

X11SelectionReader::Answer X11SelectionReader::readPieces(xcb_atom_t property, Clock::time_point deadline) {
    Answer answer;
    for (;;) {
        const bool came = wait(deadline, [&](const xcb_generic_event_t& event) {
            if ((event.response_type & 0x7F) != XCB_PROPERTY_NOTIFY) return false;
            const auto& change = as<xcb_property_notify_event_t>(event);
            return change.atom == property && change.state == XCB_PROPERTY_NEW_VALUE;
        });
        if (!came) {
            giveUp(property);
            return {};
        }
        const auto piece = take(property);
        // The notice of the announcement itself comes when it has been taken already.
        if (!piece) continue;
        if (piece->bytes.isEmpty()) {
            answer.status = Answer::Status::value;
            return answer;
        }
        answer.bytes += piece->bytes;
        answer.type = piece->type;
        answer.format = piece->format;
    }
}

/// An owner that gave its text and then falls silent is taken to have a secret: the history can do without a
/// text, but must not hold a password.
bool X11SelectionReader::isMarkedSecret(Clock::time_point deadline) {
    const auto answer = read(connection_->atom("x-kde-passwordManagerHint"), deadline);
    if (answer.status == Answer::Status::unanswered) return true;
    return answer.status == Answer::Status::value && answer.bytes.startsWith("secret");
}

PasteboardString X11SelectionReader::string(milliseconds limit) {
    if (!isUsable() || connection_->isLost()) return {PasteboardString::Status::unanswered, {}};
    const auto deadline = Clock::now() + limit;
    for (;;) {
        const auto before = changeCount();
        auto string = ask(deadline);
        // The text of one owner and the mark of the next would not belong together.
        if (string.status != PasteboardString::Status::value || changeCount() == before) return string;
        if (Clock::now() >= deadline) {
            string.isSecret = true;
            return string;
        }
    }
}

PasteboardString X11SelectionReader::ask(Clock::time_point deadline) {
    if (owner() == XCB_NONE && !connection_->isLost()) return {};
    for (const char* target : {"UTF8_STRING", "text/plain;charset=utf-8", "STRING", "TEXT"}) {
        const auto answer = read(connection_->atom(target), deadline);
        if (answer.status == Answer::Status::refused) continue;
        if (answer.status == Answer::Status::unanswered) {
            // An owner that ended meanwhile leaves an empty clipboard.
            if (owner() == XCB_NONE && !connection_->isLost()) return {};
            return {PasteboardString::Status::unanswered, {}};
        }
        QByteArray bytes = answer.bytes;
        if (bytes.endsWith('\0')) bytes.chop(1);
        const bool isLatin = answer.type == XCB_ATOM_STRING;
        return {PasteboardString::Status::value,
                isLatin ? QString::fromLatin1(bytes) : QString::fromUtf8(bytes), isMarkedSecret(deadline)};
    }
    return {};
}

xcb_atom_t X11SelectionReader::atom(const QString& name) const {
    return isUsable() ? connection_->atom(name.toStdString()) : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

QString X11SelectionReader::nameOf(xcb_atom_t atom) const {
    if (!isUsable()) return {};
    const X11Reply<xcb_get_atom_name_reply_t> name(
        xcb_get_atom_name_reply(connection_->xcb(), xcb_get_atom_name(connection_->xcb(), atom), nullptr));
    return name ? QString::fromLatin1(xcb_get_atom_name_name(name.get()),
                                      xcb_get_atom_name_name_length(name.get()))
                : QString();
}

}  // namespace veltrin

#include "Platform/Linux/X11/X11SelectionReader.h"

#include <chrono>

namespace veltrin {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto silenceLimit = 500ms;
constexpr auto totalLimit = 2s;
constexpr std::uint32_t maximumBytes = 64U << 20U;

std::uint8_t kind(const xcb_generic_event_t& event) {
    return event.response_type & 0x7F;
}

}  // namespace

std::unique_ptr<X11SelectionReader> X11SelectionReader::start(const QByteArray& display,
                                                              const char* selection) {
    auto connection = X11Connection::open(display);
    if (!connection) return nullptr;
    return std::unique_ptr<X11SelectionReader>(new X11SelectionReader(std::move(connection), selection));
}

X11SelectionReader::X11SelectionReader(std::unique_ptr<X11Connection> connection, const char* selection)
    : connection_(std::move(connection)),
      selection_(connection_->atom(selection)),
      property_(connection_->atom("VELTRIN_SELECTION")) {
    window_ = xcb_generate_id(connection_->xcb());
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection_->xcb(), XCB_COPY_FROM_PARENT, window_, connection_->root(), -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &mask);
    connection_->roundTrip();
}

PasteboardString X11SelectionReader::read() {
    xcb_connection_t* xcb = connection_->xcb();
    auto* owner = xcb_get_selection_owner_reply(xcb, xcb_get_selection_owner(xcb, selection_), nullptr);
    const bool owned = owner != nullptr && owner->owner != XCB_WINDOW_NONE;
    std::free(owner);
    if (!owned) return {PasteboardString::Status::none, {}};

    QByteArray bytes;
    switch (convert(connection_->atom("UTF8_STRING"), bytes)) {
        case Outcome::value:
            return {PasteboardString::Status::value, QString::fromUtf8(bytes)};
        case Outcome::unanswered:
            return {PasteboardString::Status::unanswered, {}};
        case Outcome::refused:
            break;
    }
    // Old clients know only Latin-1.
    switch (convert(XCB_ATOM_STRING, bytes)) {
        case Outcome::value:
            return {PasteboardString::Status::value, QString::fromLatin1(bytes)};
        case Outcome::unanswered:
            return {PasteboardString::Status::unanswered, {}};
        case Outcome::refused:
            break;
    }
    return {PasteboardString::Status::none, {}};
}

xcb_timestamp_t X11SelectionReader::serverTime() {
    xcb_timestamp_t time = XCB_CURRENT_TIME;
    xcb_change_property(connection_->xcb(), XCB_PROP_MODE_APPEND, window_, XCB_ATOM_WM_NAME, XCB_ATOM_STRING,
                        8, 0, nullptr);
    connection_->waitForEvent(silenceLimit, [&](const xcb_generic_event_t& event) {
        if (kind(event) != XCB_PROPERTY_NOTIFY) return false;
        time = reinterpret_cast<const xcb_property_notify_event_t&>(event).time;
        return true;
    });
    return time;
}

X11SelectionReader::Outcome X11SelectionReader::convert(xcb_atom_t target, QByteArray& bytes) {
    // What a former owner that was given up on may still send must not be taken for this answer.
    connection_->discardEvents();
    xcb_delete_property(connection_->xcb(), window_, property_);
    const xcb_timestamp_t time = serverTime();
    xcb_convert_selection(connection_->xcb(), window_, selection_, target, property_, time);
    xcb_atom_t given = XCB_ATOM_NONE;
    const bool answered = connection_->waitForEvent(silenceLimit, [&](const xcb_generic_event_t& event) {
        if (kind(event) != XCB_SELECTION_NOTIFY) return false;
        const auto& notify = reinterpret_cast<const xcb_selection_notify_event_t&>(event);
        if (notify.target != target || notify.time != time) return false;
        given = notify.property;
        return true;
    });
    if (!answered) return Outcome::unanswered;
    if (given == XCB_ATOM_NONE) return Outcome::refused;
    connection_->discardEvents();
    const auto property = takeProperty();
    if (!property) return Outcome::unanswered;
    if (property->type == connection_->atom("INCR")) return receivePieces(bytes);
    if (property->format != 8) return Outcome::refused;
    bytes = property->bytes;
    return Outcome::value;
}

std::optional<X11Connection::Property> X11SelectionReader::takeProperty() {
    xcb_connection_t* xcb = connection_->xcb();
    const auto cookie =
        xcb_get_property(xcb, 1, window_, property_, XCB_GET_PROPERTY_TYPE_ANY, 0, maximumBytes / 4);
    return connection_->property(cookie);
}

X11SelectionReader::Outcome X11SelectionReader::receivePieces(QByteArray& bytes) {
    bytes.clear();
    const auto deadline = Clock::now() + totalLimit;
    while (Clock::now() < deadline) {
        const bool came = connection_->waitForEvent(silenceLimit, [this](const xcb_generic_event_t& event) {
            if (kind(event) != XCB_PROPERTY_NOTIFY) return false;
            const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(event);
            return notify.atom == property_ && notify.state == XCB_PROPERTY_NEW_VALUE;
        });
        if (!came) return Outcome::unanswered;
        const auto piece = takeProperty();
        if (!piece) return Outcome::unanswered;
        if (piece->bytes.isEmpty()) return Outcome::value;
        if (bytes.size() + piece->bytes.size() > static_cast<qsizetype>(maximumBytes))
            return Outcome::unanswered;
        bytes += piece->bytes;
    }
    return Outcome::unanswered;
}

}  // namespace veltrin

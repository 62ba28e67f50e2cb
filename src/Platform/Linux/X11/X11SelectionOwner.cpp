#include "Platform/Linux/X11/X11SelectionOwner.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <future>

namespace veltrin {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto commandLimit = 2s;
constexpr auto handOverLimit = 500ms;
constexpr double transferIdleSeconds = 5;
/// Former offers that late requests may still ask for.
constexpr std::size_t historyLength = 4;
constexpr xcb_timestamp_t historyMilliseconds = 10'000;

double seconds() {
    return std::chrono::duration<double>(Clock::now().time_since_epoch()).count();
}

/// Server time wraps around after 49 days.
bool isBefore(xcb_timestamp_t a, xcb_timestamp_t b) {
    return static_cast<std::int32_t>(a - b) < 0;
}

std::uint8_t kind(const xcb_generic_event_t& event) {
    return event.response_type & 0x7F;
}

}  // namespace

std::unique_ptr<X11SelectionOwner> X11SelectionOwner::start(const QByteArray& display,
                                                            const char* selection) {
    auto connection = X11Connection::open(display);
    if (!connection || !connection->hasXFixes()) return nullptr;
    return std::unique_ptr<X11SelectionOwner>(new X11SelectionOwner(std::move(connection), selection));
}

X11SelectionOwner::X11SelectionOwner(std::unique_ptr<X11Connection> connection, const char* selection)
    : connection_(std::move(connection)),
      selection_(connection_->atom(selection)),
      wakeUp_(eventfd(0, EFD_CLOEXEC)) {
    xcb_connection_t* xcb = connection_->xcb();
    window_ = xcb_generate_id(xcb);
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(xcb, XCB_COPY_FROM_PARENT, window_, connection_->root(), -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &mask);
    xcb_xfixes_select_selection_input(xcb, window_, selection_,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    connection_->roundTrip();
    thread_ = std::thread([this] { run(); });
}

X11SelectionOwner::~X11SelectionOwner() {
    {
        std::lock_guard lock(mutex_);
        ends_ = true;
    }
    wake();
    thread_.join();
    close(wakeUp_);
}

void X11SelectionOwner::wake() const {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(wakeUp_, &one, sizeof(one));
}

bool X11SelectionOwner::take(const Offer& offer) {
    auto done = std::make_shared<std::promise<bool>>();
    auto result = done->get_future();
    {
        std::lock_guard lock(mutex_);
        commands_.push_back([this, offer, done] { done->set_value(takeNow(offer)); });
    }
    wake();
    return result.wait_for(commandLimit) == std::future_status::ready && result.get();
}

std::optional<X11SelectionOwner::Offer> X11SelectionOwner::current() const {
    std::lock_guard lock(mutex_);
    return owns_ ? current_ : std::nullopt;
}

void X11SelectionOwner::run() {
    for (;;) {
        drainEvents();
        runCommands();
        if (connection_->isLost()) {
            // Commands are still answered (with a failure) until the end.
            pollfd only{wakeUp_, POLLIN, 0};
            poll(&only, 1, 1000);
        } else {
            connection_->flush();
            pollfd sources[] = {{xcb_get_file_descriptor(connection_->xcb()), POLLIN, 0},
                                {wakeUp_, POLLIN, 0}};
            poll(sources, 2, transfers_.empty() ? -1 : 1000);
            if ((sources[1].revents & POLLIN) != 0) {
                std::uint64_t count = 0;
                [[maybe_unused]] const auto got = read(wakeUp_, &count, sizeof(count));
            }
            dropStaleTransfers();
        }
        std::unique_lock lock(mutex_);
        if (ends_ && commands_.empty()) {
            lock.unlock();
            handOver();
            return;
        }
    }
}

void X11SelectionOwner::runCommands() {
    for (;;) {
        std::function<void()> command;
        {
            std::lock_guard lock(mutex_);
            if (commands_.empty()) return;
            command = std::move(commands_.front());
            commands_.pop_front();
        }
        command();
    }
}

void X11SelectionOwner::drainEvents() {
    while (auto* event = xcb_poll_for_event(connection_->xcb())) {
        handle(*event);
        std::free(event);
    }
}

void X11SelectionOwner::handle(const xcb_generic_event_t& event) {
    if (kind(event) == connection_->xfixesFirstEvent() + XCB_XFIXES_SELECTION_NOTIFY) {
        ++changeCount_;
        return;
    }
    switch (kind(event)) {
        case XCB_SELECTION_REQUEST:
            answer(reinterpret_cast<const xcb_selection_request_event_t&>(event));
            break;
        case XCB_SELECTION_CLEAR: {
            const auto& cleared = reinterpret_cast<const xcb_selection_clear_event_t&>(event);
            // One that is older than the present ownership speaks of a former one.
            if (history_.empty() || isBefore(cleared.time, history_.front().from)) break;
            std::lock_guard lock(mutex_);
            owns_ = false;
            current_.reset();
            break;
        }
        case XCB_PROPERTY_NOTIFY: {
            const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(event);
            if (notify.window == window_)
                timeReply_ = notify.time;
            else if (notify.state == XCB_PROPERTY_DELETE)
                sendPiece(notify);
            break;
        }
        default:
            break;
    }
}

xcb_timestamp_t X11SelectionOwner::serverTime() {
    timeReply_.reset();
    xcb_change_property(connection_->xcb(), XCB_PROP_MODE_APPEND, window_, XCB_ATOM_WM_NAME, XCB_ATOM_STRING,
                        8, 0, nullptr);
    if (!connection_->roundTrip()) return XCB_CURRENT_TIME;
    drainEvents();
    return timeReply_.value_or(XCB_CURRENT_TIME);
}

bool X11SelectionOwner::takeNow(const Offer& offer) {
    const xcb_timestamp_t time = serverTime();
    if (time == XCB_CURRENT_TIME) return false;
    history_.push_front({offer, time});
    while (history_.size() > historyLength)
        history_.pop_back();
    {
        std::lock_guard lock(mutex_);
        owns_ = true;
        current_ = offer;
    }
    xcb_connection_t* xcb = connection_->xcb();
    xcb_set_selection_owner(xcb, window_, selection_, time);
    auto* reply = xcb_get_selection_owner_reply(xcb, xcb_get_selection_owner(xcb, selection_), nullptr);
    const bool ours = reply != nullptr && reply->owner == window_;
    std::free(reply);
    drainEvents();
    if (!ours) {
        history_.pop_front();
        std::lock_guard lock(mutex_);
        owns_ = false;
        current_.reset();
    }
    return ours;
}

const X11SelectionOwner::Served* X11SelectionOwner::offerAt(xcb_timestamp_t time) const {
    if (history_.empty()) return nullptr;
    if (time == XCB_CURRENT_TIME || !isBefore(time, history_.front().from)) return &history_.front();
    for (const Served& served : history_) {
        if (isBefore(time, served.from)) continue;
        return history_.front().from - served.from <= historyMilliseconds ? &served : nullptr;
    }
    return nullptr;
}

void X11SelectionOwner::answer(const xcb_selection_request_event_t& request) {
    xcb_selection_notify_event_t notify{};
    notify.response_type = XCB_SELECTION_NOTIFY;
    notify.time = request.time;
    notify.requestor = request.requestor;
    notify.selection = request.selection;
    notify.target = request.target;
    // Obsolete clients name no property and mean the target's name.
    const xcb_atom_t property = request.property == XCB_ATOM_NONE ? request.target : request.property;
    const Served* served = request.selection == selection_ ? offerAt(request.time) : nullptr;
    if (served != nullptr) {
        const bool multiple = request.target == connection_->atom("MULTIPLE");
        const bool given = multiple ? convertMultiple(*served, request.requestor, request.property)
                                    : convert(*served, request.requestor, request.target, property);
        if (given) notify.property = property;
    }
    xcb_send_event(connection_->xcb(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&notify));
    connection_->flush();
}

std::vector<xcb_atom_t> X11SelectionOwner::targets(const Offer& offer) const {
    std::vector<xcb_atom_t> all{connection_->atom("TARGETS"), connection_->atom("TIMESTAMP"),
                                connection_->atom("MULTIPLE")};
    if (!offer.text) return all;
    for (const char* name : {"UTF8_STRING", "text/plain;charset=utf-8", "text/plain", "TEXT", "STRING"})
        all.push_back(connection_->atom(name));
    if (offer.isTemporary) all.push_back(connection_->atom("x-kde-passwordManagerHint"));
    return all;
}

bool X11SelectionOwner::convert(const Served& served, xcb_window_t requestor, xcb_atom_t target,
                                xcb_atom_t property) {
    const auto offered = targets(served.offer);
    if (std::find(offered.begin(), offered.end(), target) == offered.end()) return false;
    xcb_connection_t* xcb = connection_->xcb();
    if (target == connection_->atom("TARGETS")) {
        xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, requestor, property, XCB_ATOM_ATOM, 32,
                            static_cast<std::uint32_t>(offered.size()), offered.data());
        return true;
    }
    if (target == connection_->atom("TIMESTAMP")) {
        xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, requestor, property, XCB_ATOM_INTEGER, 32, 1,
                            &served.from);
        return true;
    }
    if (!served.offer.text) return false;
    if (target == connection_->atom("x-kde-passwordManagerHint"))
        return give(requestor, property, target, QByteArrayLiteral("secret"));
    if (target == XCB_ATOM_STRING) return give(requestor, property, target, served.offer.text->toLatin1());
    const bool anyText = target == connection_->atom("TEXT");
    return give(requestor, property, anyText ? connection_->atom("UTF8_STRING") : target,
                served.offer.text->toUtf8());
}

bool X11SelectionOwner::convertMultiple(const Served& served, xcb_window_t requestor, xcb_atom_t property) {
    if (property == XCB_ATOM_NONE) return false;
    const auto asked = connection_->property(requestor, property);
    if (!asked) return false;
    auto pairs = asked->words();
    for (std::size_t i = 0; i + 1 < pairs.size(); i += 2) {
        if (!convert(served, requestor, pairs[i], pairs[i + 1])) pairs[i + 1] = XCB_ATOM_NONE;
    }
    xcb_change_property(connection_->xcb(), XCB_PROP_MODE_REPLACE, requestor, property,
                        connection_->atom("ATOM_PAIR"), 32, static_cast<std::uint32_t>(pairs.size()),
                        pairs.data());
    return true;
}

bool X11SelectionOwner::give(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type, QByteArray bytes) {
    xcb_connection_t* xcb = connection_->xcb();
    const auto piece = static_cast<qsizetype>(xcb_get_maximum_request_length(xcb)) * 2;
    if (bytes.size() <= piece) {
        xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, requestor, property, type, 8,
                            static_cast<std::uint32_t>(bytes.size()), bytes.constData());
        return true;
    }
    // Too long for one request: the requestor deletes the property each time it wants the next piece.
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(xcb, requestor, XCB_CW_EVENT_MASK, &mask);
    const auto size = static_cast<std::uint32_t>(bytes.size());
    transfers_[{requestor, property}] = Transfer{std::move(bytes), 0, type, seconds()};
    xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, requestor, property, connection_->atom("INCR"), 32, 1,
                        &size);
    return true;
}

void X11SelectionOwner::sendPiece(const xcb_property_notify_event_t& event) {
    const auto found = transfers_.find({event.window, event.atom});
    if (found == transfers_.end()) return;
    Transfer& transfer = found->second;
    xcb_connection_t* xcb = connection_->xcb();
    const auto piece = static_cast<qsizetype>(xcb_get_maximum_request_length(xcb)) * 2;
    const qsizetype length = std::min(piece, transfer.bytes.size() - transfer.sent);
    xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, event.window, event.atom, transfer.type, 8,
                        static_cast<std::uint32_t>(length), transfer.bytes.constData() + transfer.sent);
    transfer.sent += length;
    transfer.lastProgress = seconds();
    // An empty piece is the end.
    if (length == 0) transfers_.erase(found);
    connection_->flush();
}

void X11SelectionOwner::dropStaleTransfers() {
    const double now = seconds();
    std::erase_if(transfers_,
                  [now](const auto& entry) { return now - entry.second.lastProgress > transferIdleSeconds; });
}

void X11SelectionOwner::handOver() {
    const auto offer = current();
    if (!offer || !offer->text || offer->isTemporary || connection_->isLost()) return;
    xcb_connection_t* xcb = connection_->xcb();
    const xcb_atom_t manager = connection_->atom("CLIPBOARD_MANAGER");
    auto* reply = xcb_get_selection_owner_reply(xcb, xcb_get_selection_owner(xcb, manager), nullptr);
    const bool hasManager = reply != nullptr && reply->owner != XCB_WINDOW_NONE;
    std::free(reply);
    if (!hasManager) return;
    xcb_convert_selection(xcb, window_, manager, connection_->atom("SAVE_TARGETS"),
                          connection_->atom("VELTRIN_SAVED"), serverTime());
    connection_->waitForEvent(handOverLimit, [this](const xcb_generic_event_t& event) {
        if (kind(event) == XCB_SELECTION_NOTIFY) return true;
        handle(event);
        connection_->flush();
        return false;
    });
}

}  // namespace veltrin

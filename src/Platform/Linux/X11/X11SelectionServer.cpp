#include "Platform/Linux/X11/X11SelectionServer.h"

#include <QString>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace veltrin {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr milliseconds ownershipLimit{1000};
/// How long, and how many, replaced offers are kept for requests that come late.
constexpr seconds keptFor{60};
constexpr std::size_t keptAtMost = 8;
/// A late requestor that gives no time in its further requests goes on getting what it was given first.
constexpr seconds requestorRemembered{2};
/// How long a posted paste may take to fetch its text, and how long after a change of the offer a request may
/// still be stamped by it.
constexpr seconds postedPatience{10};
constexpr xcb_timestamp_t changeSlack = 50;
/// So long a request of the client that was posted to counts as its paste, whatever it is stamped with: GDK
/// asks for the server's time when it gets to the key. Keys are handled in their order, so the user's own
/// paste comes second.
constexpr seconds timedPatience{3};
/// An application that hears of the offer looks at it, perhaps, before it handles the key: Qt Quick fetches
/// the whole text to know whether it could be pasted. The posted paste is over this long after the first such
/// fetch.
constexpr milliseconds afterFirstFetch{500};
constexpr seconds transferPatience{5};
/// Longer content goes in pieces of this size.
constexpr qsizetype pieceSize = qsizetype{192} * 1024;

bool isBefore(xcb_timestamp_t a, xcb_timestamp_t b) {
    return static_cast<std::int32_t>(a - b) < 0;
}

QByteArray bytesOf(const std::vector<std::uint32_t>& words) {
    return {reinterpret_cast<const char*>(words.data()), static_cast<qsizetype>(words.size() * 4)};
}

template <typename T>
const T& as(const xcb_generic_event_t& event) {
    return reinterpret_cast<const T&>(event);
}

}  // namespace

std::unique_ptr<X11SelectionServer> X11SelectionServer::start(const QByteArray& display) {
    auto connection = X11Connection::open(display);
    if (!connection) return nullptr;
    std::unique_ptr<X11SelectionServer> server(new X11SelectionServer(std::move(connection)));
    if (server->wake_ < 0) return nullptr;
    server->thread_ = std::thread([raw = server.get()] { raw->run(); });
    return server;
}

X11SelectionServer::X11SelectionServer(std::unique_ptr<X11Connection> connection)
    : connection_(std::move(connection)), wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    auto* xcb = connection_->xcb();
    window_ = xcb_generate_id(xcb);
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(xcb, 0, window_, connection_->root(), -10, -10, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    const auto atom = [this](const char* name) { return connection_->atom(name); };
    atoms_ = {atom("CLIPBOARD"),         atom("TARGETS"),
              atom("TIMESTAMP"),         atom("MULTIPLE"),
              atom("ATOM_PAIR"),         atom("INCR"),
              atom("UTF8_STRING"),       atom("TEXT"),
              atom("text/plain"),        atom("text/plain;charset=utf-8"),
              atom("SAVE_TARGETS"),      atom("x-kde-passwordManagerHint"),
              atom("CLIPBOARD_MANAGER"), atom("NULL"),
              atom("VELTRIN_TIME"),      atom("VELTRIN_TARGETS")};
}

X11SelectionServer::~X11SelectionServer() {
    stopping_ = true;
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(wake_, &one, sizeof one);
    if (thread_.joinable()) thread_.join();
    if (wake_ >= 0) close(wake_);
}

bool X11SelectionServer::offer(Offer offer) {
    {
        const std::lock_guard guard(mutex_);
        next_ = std::move(offer);
    }
    return runErrand(Errand::take, ownershipLimit);
}

std::optional<X11SelectionServer::Offer> X11SelectionServer::current() const {
    const std::lock_guard guard(mutex_);
    return held_.empty() ? std::nullopt : std::optional(held_.back().offer);
}

void X11SelectionServer::handOver(milliseconds limit) {
    const auto now = current();
    const bool isEmpty = !now || (!now->utf8 && now->kept.empty());
    if (isEmpty || now->content != PasteboardContent::lasting) return;
    runErrand(Errand::handOver, limit);
}

bool X11SelectionServer::runErrand(Errand errand, milliseconds limit) {
    std::unique_lock lock(mutex_);
    if (over_) return false;
    errand_ = errand;
    begun_ = Errand::none;
    done_ = false;
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(wake_, &one, sizeof one);
    finished_.wait_for(lock, limit, [this] { return errand_ == Errand::none || over_; });
    const bool done = errand_ == Errand::none && done_;
    errand_ = Errand::none;
    return done;
}

void X11SelectionServer::finishErrand(bool done) {
    const std::lock_guard guard(mutex_);
    errand_ = Errand::none;
    done_ = done;
    finished_.notify_all();
}

void X11SelectionServer::run() {
    while (!stopping_ && !connection_->isLost()) {
        while (const X11Reply<xcb_generic_event_t> event{xcb_poll_for_event(connection_->xcb())})
            handle(*event);
        beginErrand();
        dropOldTransfers();
        connection_->flush();
        // Events that came along with a reply lie in the queue, where the descriptor does not show them.
        if (const X11Reply<xcb_generic_event_t> event{xcb_poll_for_queued_event(connection_->xcb())}) {
            handle(*event);
            continue;
        }
        pollfd descriptors[] = {{xcb_get_file_descriptor(connection_->xcb()), POLLIN, 0}, {wake_, POLLIN, 0}};
        poll(descriptors, 2, transfers_.empty() ? -1 : 1000);
        if ((descriptors[1].revents & POLLIN) != 0) {
            std::uint64_t count = 0;
            [[maybe_unused]] const auto taken = read(wake_, &count, sizeof count);
        }
    }
    const std::lock_guard guard(mutex_);
    over_ = true;
    held_.clear();
    finished_.notify_all();
}

/// Starts what the main thread wants. To own a selection one needs the server's time, which a change of a
/// property of one's own window brings.
void X11SelectionServer::beginErrand() {
    Errand errand = Errand::none;
    Held held;
    {
        const std::lock_guard guard(mutex_);
        if (errand_ == begun_ || errand_ == Errand::none) return;
        errand = begun_ = errand_;
        if (!held_.empty()) held = held_.back();
    }
    if (errand == Errand::take) {
        xcb_change_property(connection_->xcb(), XCB_PROP_MODE_APPEND, window_, atoms_.stamp, XCB_ATOM_STRING,
                            8, 0, nullptr);
    } else {
        askManager(held.offer, held.since);
    }
}

/// Asks the clipboard manager to take over what is on offer.
void X11SelectionServer::askManager(const Offer& offer, xcb_timestamp_t since) {
    auto* xcb = connection_->xcb();
    const X11Reply<xcb_get_selection_owner_reply_t> manager(
        xcb_get_selection_owner_reply(xcb, xcb_get_selection_owner(xcb, atoms_.manager), nullptr));
    if (!manager || manager->owner == XCB_NONE) {
        finishErrand(false);
        return;
    }
    std::vector<xcb_atom_t> kept{atoms_.utf8, atoms_.plainUtf8, XCB_ATOM_STRING};
    if (!offer.kept.empty()) {
        kept.clear();
        kept.reserve(offer.kept.size());
        for (const auto& [target, content] : offer.kept)
            kept.push_back(target);
    }
    xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, window_, atoms_.list, XCB_ATOM_ATOM, 32,
                        static_cast<std::uint32_t>(kept.size()), kept.data());
    xcb_convert_selection(xcb, window_, atoms_.manager, atoms_.saveTargets, atoms_.list, since);
}

void X11SelectionServer::takeOwnership(xcb_timestamp_t time) {
    auto* xcb = connection_->xcb();
    Offer offer;
    {
        const std::lock_guard guard(mutex_);
        if (errand_ != Errand::take || begun_ != Errand::take) return;
        offer = next_;
    }
    xcb_set_selection_owner(xcb, window_, atoms_.clipboard, time);
    const X11Reply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(xcb, xcb_get_selection_owner(xcb, atoms_.clipboard), nullptr));
    const bool owned = owner && owner->owner == window_;
    if (owned) {
        const std::lock_guard guard(mutex_);
        const auto now = Clock::now();
        if (!held_.empty()) held_.back().replaced = now;
        held_.push_back({std::move(offer), time, ++lastNumber_, {}});
        while (held_.size() > 1 && (held_.size() > keptAtMost || now - held_.front().replaced > keptFor)) {
            held_.pop_front();
        }
    }
    finishErrand(owned);
}

void X11SelectionServer::handle(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7F) {
        case XCB_SELECTION_REQUEST:
            request(as<xcb_selection_request_event_t>(event));
            break;
        case XCB_SELECTION_CLEAR: {
            const auto& clear = as<xcb_selection_clear_event_t>(event);
            if (clear.selection != atoms_.clipboard) break;
            const std::lock_guard guard(mutex_);
            // One that was under way while we took the ownership again says nothing.
            if (!held_.empty() && !isBefore(clear.time, held_.back().since)) held_.clear();
            break;
        }
        case XCB_SELECTION_NOTIFY: {
            const auto& notify = as<xcb_selection_notify_event_t>(event);
            if (notify.selection == atoms_.manager) finishErrand(notify.property != XCB_NONE);
            break;
        }
        case XCB_PROPERTY_NOTIFY: {
            const auto& change = as<xcb_property_notify_event_t>(event);
            if (change.window == window_ && change.atom == atoms_.stamp)
                takeOwnership(change.time);
            else if (change.state == XCB_PROPERTY_DELETE)
                continueTransfer(change);
            break;
        }
        default:
            break;
    }
}

void X11SelectionServer::pastePosted(xcb_window_t window) {
    const std::lock_guard guard(mutex_);
    if (!held_.empty()) posted_ = Posted{clientOf(window), held_.back().number, Clock::now(), {}};
}

/// What all windows of one client have in common.
xcb_window_t X11SelectionServer::clientOf(xcb_window_t window) const {
    return window & ~xcb_get_setup(connection_->xcb())->resource_id_mask;
}

/// The offer that a posted paste was made with, when this request is the one it leads to.
std::optional<std::uint64_t> X11SelectionServer::offerOfPostedPaste(
    const xcb_selection_request_event_t& event, Clock::time_point now) const {
    if (!posted_ || posted_->client != clientOf(event.requestor)) return std::nullopt;
    const auto age = now - posted_->when;
    const bool isLate =
        age > postedPatience || (posted_->fetched && now - *posted_->fetched > afterFirstFetch);
    const bool isTrusted = posted_->fetched || age > timedPatience;
    const bool isTimed = isTrusted && event.time != XCB_CURRENT_TIME &&
                         !isBefore(event.time, held_.back().since + changeSlack);
    return isLate || isTimed ? std::nullopt : std::optional(posted_->number);
}

bool X11SelectionServer::isText(xcb_atom_t target) const {
    return target == atoms_.utf8 || target == atoms_.text || target == atoms_.plain ||
           target == atoms_.plainUtf8 || target == XCB_ATOM_STRING;
}

/// The offer that a request means; null when it means one from before our ownership.
const X11SelectionServer::Held* X11SelectionServer::heldFor(const xcb_selection_request_event_t& event) {
    const auto now = Clock::now();
    std::erase_if(late_, [&](const auto& entry) { return now - entry.second.when > requestorRemembered; });
    if (held_.empty()) return nullptr;
    auto wanted = offerOfPostedPaste(event, now);
    if (!wanted && event.time == XCB_CURRENT_TIME) {
        const auto before = late_.find(event.requestor);
        wanted = before != late_.end() ? before->second.number : held_.back().number;
    }
    const Held* found = nullptr;
    for (const auto& held : held_) {
        if (wanted ? held.number == *wanted : !isBefore(event.time, held.since)) found = &held;
    }
    if (found == nullptr && wanted) found = &held_.back();
    if (found != nullptr && posted_ && found->number == posted_->number && isText(event.target) &&
        posted_->client == clientOf(event.requestor) && !posted_->fetched) {
        posted_->fetched = now;
    }
    if (found != nullptr && found != &held_.back()) late_[event.requestor] = {found->number, now};
    return found;
}

void X11SelectionServer::request(const xcb_selection_request_event_t& event) {
    Offer offer;
    xcb_timestamp_t since = 0;
    bool answers = false;
    if (event.selection == atoms_.clipboard) {
        const std::lock_guard guard(mutex_);
        if (const Held* held = heldFor(event)) {
            offer = held->offer;
            since = held->since;
            answers = true;
        }
    }
    // Old clients name no property and mean the target's name.
    const xcb_atom_t property = event.property != XCB_NONE ? event.property : event.target;
    if (answers) {
        answers = event.target == atoms_.multiple
                      ? event.property != XCB_NONE && answerMultiple(event, offer)
                      : give(event.requestor, event.target, property, offer, since);
    }
    xcb_selection_notify_event_t notify{};
    notify.response_type = XCB_SELECTION_NOTIFY;
    notify.time = event.time;
    notify.requestor = event.requestor;
    notify.selection = event.selection;
    notify.target = event.target;
    notify.property = answers ? property : XCB_NONE;
    xcb_send_event(connection_->xcb(), 0, event.requestor, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&notify));
    connection_->flush();
}

bool X11SelectionServer::answerMultiple(const xcb_selection_request_event_t& event, const Offer& offer) {
    const auto pairs = connection_->property(event.requestor, event.property, atoms_.atomPair);
    if (!pairs) return false;
    auto words = pairs->words();
    for (std::size_t i = 0; i + 1 < words.size(); i += 2) {
        if (words[i] == atoms_.multiple || words[i + 1] == XCB_NONE ||
            !give(event.requestor, words[i], words[i + 1], offer, event.time)) {
            words[i + 1] = XCB_NONE;
        }
    }
    xcb_change_property(connection_->xcb(), XCB_PROP_MODE_REPLACE, event.requestor, event.property,
                        atoms_.atomPair, 32, static_cast<std::uint32_t>(words.size()), words.data());
    return true;
}

std::vector<std::uint32_t> X11SelectionServer::targetsOf(const Offer& offer) const {
    std::vector<std::uint32_t> list{atoms_.targets, atoms_.timestamp, atoms_.multiple};
    const bool isLasting = offer.content == PasteboardContent::lasting;
    for (const auto& [target, content] : offer.kept)
        list.push_back(target);
    if (offer.kept.empty() && offer.utf8) {
        list.insert(list.end(), {atoms_.utf8, atoms_.plainUtf8, atoms_.plain, atoms_.text, XCB_ATOM_STRING});
        if (!isLasting) list.push_back(atoms_.secretHint);
    }
    if (isLasting && (offer.utf8 || !offer.kept.empty())) list.push_back(atoms_.saveTargets);
    return list;
}

std::optional<X11SelectionServer::Content> X11SelectionServer::convert(xcb_atom_t target, const Offer& offer,
                                                                       xcb_timestamp_t since) const {
    if (target == atoms_.targets) return Content{XCB_ATOM_ATOM, 32, bytesOf(targetsOf(offer))};
    if (target == atoms_.timestamp) return Content{XCB_ATOM_INTEGER, 32, bytesOf({since})};
    if (!offer.utf8 && offer.kept.empty()) return std::nullopt;
    if (target == atoms_.saveTargets && offer.content == PasteboardContent::lasting)
        return Content{atoms_.null, 32, QByteArray()};
    return offer.kept.empty() ? convertText(target, offer) : convertKept(target, offer);
}

std::optional<X11SelectionServer::Content> X11SelectionServer::convertText(xcb_atom_t target,
                                                                           const Offer& offer) const {
    if (target == atoms_.utf8 || target == atoms_.text) return Content{atoms_.utf8, 8, *offer.utf8};
    if (target == atoms_.plainUtf8 || target == atoms_.plain) return Content{target, 8, *offer.utf8};
    if (target == XCB_ATOM_STRING) return Content{target, 8, QString::fromUtf8(*offer.utf8).toLatin1()};
    if (target == atoms_.secretHint && offer.content != PasteboardContent::lasting)
        return Content{target, 8, QByteArrayLiteral("secret")};
    return std::nullopt;
}

std::optional<X11SelectionServer::Content> X11SelectionServer::convertKept(xcb_atom_t target,
                                                                           const Offer& offer) {
    const auto found = std::find_if(offer.kept.begin(), offer.kept.end(),
                                    [target](const auto& entry) { return entry.first == target; });
    return found == offer.kept.end() ? std::nullopt : std::optional(found->second);
}

bool X11SelectionServer::give(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property,
                              const Offer& offer, xcb_timestamp_t since) {
    const auto content = convert(target, offer, since);
    if (!content) return false;
    auto* xcb = connection_->xcb();
    if (content->bytes.size() <= pieceSize) {
        xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, requestor, property, content->type, content->format,
                            static_cast<std::uint32_t>(content->bytes.size() / (content->format / 8)),
                            content->bytes.constData());
        return true;
    }
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(xcb, requestor, XCB_CW_EVENT_MASK, &events);
    const auto size = static_cast<std::uint32_t>(content->bytes.size());
    xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, requestor, property, atoms_.incr, 32, 1, &size);
    transfers_[{requestor, property}] = {content->bytes, 0, content->type, content->format, Clock::now()};
    return true;
}

/// The requestor has taken a piece: here is the next one, and after the last an empty one.
void X11SelectionServer::continueTransfer(const xcb_property_notify_event_t& event) {
    const auto found = transfers_.find({event.window, event.atom});
    if (found == transfers_.end()) return;
    auto& transfer = found->second;
    const auto size = std::min(pieceSize, transfer.bytes.size() - transfer.sent);
    xcb_change_property(connection_->xcb(), XCB_PROP_MODE_REPLACE, event.window, event.atom, transfer.type,
                        transfer.format, static_cast<std::uint32_t>(size / (transfer.format / 8)),
                        transfer.bytes.constData() + transfer.sent);
    transfer.sent += size;
    transfer.lastSign = Clock::now();
    if (size > 0) return;
    transfers_.erase(found);
    stopListening(event.window);
}

/// Nothing is wanted any more of a requestor's window that no transfer goes to.
void X11SelectionServer::stopListening(xcb_window_t requestor) {
    const auto next = transfers_.lower_bound({requestor, XCB_ATOM_NONE});
    if (next != transfers_.end() && next->first.first == requestor) return;
    const std::uint32_t nothing = XCB_EVENT_MASK_NO_EVENT;
    xcb_change_window_attributes(connection_->xcb(), requestor, XCB_CW_EVENT_MASK, &nothing);
}

void X11SelectionServer::dropOldTransfers() {
    const auto now = Clock::now();
    std::vector<xcb_window_t> dropped;
    std::erase_if(transfers_, [&](const auto& entry) {
        const bool isOld = now - entry.second.lastSign > transferPatience;
        if (isOld) dropped.push_back(entry.first.first);
        return isOld;
    });
    for (const xcb_window_t requestor : dropped)
        stopListening(requestor);
}

}  // namespace veltrin

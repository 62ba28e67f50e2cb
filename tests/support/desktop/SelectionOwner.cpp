#include "support/desktop/SelectionOwner.h"

#include "support/desktop/Waiting.h"

#include <poll.h>
#include <xcb/xfixes.h>

#include <ctime>
#include <stdexcept>

namespace veltrin {
namespace {

constexpr qsizetype pieceSize = 65536;
constexpr qsizetype longestWhole = 262144;

void sleepFor(double seconds) {
    const timespec time{
        static_cast<time_t>(seconds),
        static_cast<long>((seconds - static_cast<double>(static_cast<time_t>(seconds))) * 1e9)};
    clock_nanosleep(CLOCK_MONOTONIC, 0, &time, nullptr);
}

}  // namespace

ClipboardProbe::Owner::Owner(const QString& display, const QByteArray& selection) : x_(display) {
    xcb_connection_t* connection = x_.connection();
    selection_ = x_.atom(selection.constData());
    const XReply<xcb_xfixes_query_version_reply_t> version(
        xcb_xfixes_query_version_reply(connection, xcb_xfixes_query_version(connection, 5, 0), nullptr));
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(connection, &xcb_xfixes_id);
    if (!version || !extension || !extension->present) throw std::runtime_error("no XFixes");
    fixesEvent_ = extension->first_event;
    window_ = xcb_generate_id(connection);
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window_, x_.root(), -10, -10, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, x_.screen().root_visual, 0, nullptr);
    xcb_xfixes_select_selection_input(connection, x_.root(), selection_,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    x_.sync();
    thread_ = std::thread([this] { run(); });
}

ClipboardProbe::Owner::~Owner() {
    ends_ = true;
    thread_.join();
}

void ClipboardProbe::Owner::take(QMap<xcb_atom_t, QByteArray> offer, QList<xcb_atom_t> silent, bool answers,
                                 xcb_timestamp_t time) {
    const std::lock_guard lock(mutex_);
    offer_ = std::move(offer);
    silent_ = std::move(silent);
    answers_ = answers;
    since_ = time;
    requests_.clear();
    // No reply is waited for here: it would take events away from the thread that polls for them.
    xcb_set_selection_owner(x_.connection(), window_, selection_, time);
    xcb_flush(x_.connection());
}

void ClipboardProbe::Owner::giveUp(xcb_timestamp_t time) {
    xcb_set_selection_owner(x_.connection(), XCB_NONE, selection_, time);
    xcb_flush(x_.connection());
}

QList<ClipboardProbe::Request> ClipboardProbe::Owner::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

void ClipboardProbe::Owner::run() {
    pollfd readable{xcb_get_file_descriptor(x_.connection()), POLLIN, 0};
    while (!ends_ && xcb_connection_has_error(x_.connection()) == 0) {
        while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(x_.connection())}) {
            handle(*event);
        }
        xcb_flush(x_.connection());
        poll(&readable, 1, 20);
    }
}

void ClipboardProbe::Owner::handle(const xcb_generic_event_t& event) {
    const uint8_t type = event.response_type & 0x7F;
    if (type == fixesEvent_ + XCB_XFIXES_SELECTION_NOTIFY) {
        ++changes_;
    } else if (type == XCB_SELECTION_REQUEST) {
        answer(reinterpret_cast<const xcb_selection_request_event_t&>(event));
    } else if (type == XCB_PROPERTY_NOTIFY) {
        continueTransfer(reinterpret_cast<const xcb_property_notify_event_t&>(event));
    }
}

QString ClipboardProbe::Owner::nameOf(xcb_atom_t atom) {
    const XReply<xcb_get_atom_name_reply_t> reply(
        xcb_get_atom_name_reply(x_.connection(), xcb_get_atom_name(x_.connection(), atom), nullptr));
    if (!reply) return {};
    return QString::fromLatin1(xcb_get_atom_name_name(reply.get()),
                               xcb_get_atom_name_name_length(reply.get()));
}

void ClipboardProbe::Owner::answer(const xcb_selection_request_event_t& request) {
    const QString target = nameOf(request.target);
    {
        const std::lock_guard lock(mutex_);
        requests_.append({target, request.requestor, monotonicSeconds()});
        if (!answers_ || silent_.contains(request.target)) return;
    }
    sleepFor(delay_);
    // Old clients name no property; the target stands for it.
    const xcb_atom_t property = request.property != XCB_NONE ? request.property : request.target;
    xcb_selection_notify_event_t notify{};
    notify.response_type = XCB_SELECTION_NOTIFY;
    notify.time = request.time;
    notify.requestor = request.requestor;
    notify.selection = request.selection;
    notify.target = request.target;
    notify.property = deliver(request, property) ? property : static_cast<xcb_atom_t>(XCB_NONE);
    xcb_send_event(x_.connection(), 0, request.requestor, 0, reinterpret_cast<const char*>(&notify));
    xcb_flush(x_.connection());
}

bool ClipboardProbe::Owner::deliver(const xcb_selection_request_event_t& request, xcb_atom_t property) {
    xcb_connection_t* connection = x_.connection();
    const auto put = [&](xcb_atom_t type, uint8_t format, const void* data, qsizetype count) {
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, request.requestor, property, type, format,
                            static_cast<uint32_t>(count), data);
    };
    const std::lock_guard lock(mutex_);
    if (request.target == x_.atom("TARGETS")) {
        QList<xcb_atom_t> targets{x_.atom("TARGETS"), x_.atom("TIMESTAMP")};
        targets += offer_.keys() + silent_;
        put(XCB_ATOM_ATOM, 32, targets.constData(), targets.size());
        return true;
    }
    if (request.target == x_.atom("TIMESTAMP")) {
        put(XCB_ATOM_INTEGER, 32, &since_, 1);
        return true;
    }
    const auto found = offer_.constFind(request.target);
    if (found == offer_.constEnd()) return false;
    if (found->size() <= longestWhole) {
        put(request.target, 8, found->constData(), found->size());
        return true;
    }
    const uint32_t deletions = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection, request.requestor, XCB_CW_EVENT_MASK, &deletions);
    const auto size = static_cast<uint32_t>(found->size());
    put(x_.atom("INCR"), 32, &size, 1);
    transfers_[{request.requestor, property}] = {request.target, *found};
    return true;
}

void ClipboardProbe::Owner::continueTransfer(const xcb_property_notify_event_t& event) {
    const auto found = transfers_.find({event.window, event.atom});
    if (event.state != XCB_PROPERTY_DELETE || found == transfers_.end()) return;
    Transfer& transfer = found->second;
    const QByteArray piece = transfer.left.left(pieceSize);
    transfer.left.remove(0, piece.size());
    xcb_change_property(x_.connection(), XCB_PROP_MODE_REPLACE, event.window, event.atom, transfer.type, 8,
                        static_cast<uint32_t>(piece.size()), piece.constData());
    if (piece.isEmpty()) {  // that is the end
        transfers_.erase(found);
        const uint32_t nothing = XCB_EVENT_MASK_NO_EVENT;
        xcb_change_window_attributes(x_.connection(), event.window, XCB_CW_EVENT_MASK, &nothing);
    }
    xcb_flush(x_.connection());
}

}  // namespace veltrin

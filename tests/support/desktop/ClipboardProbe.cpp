#include "support/desktop/ClipboardProbe.h"

#include "support/desktop/SelectionOwner.h"
#include "support/desktop/Waiting.h"

#include <poll.h>

#include <cstring>
#include <stdexcept>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

/// Targets that describe the selection or act on it instead of giving its content.
bool isMeta(const QString& target) {
    return QStringList{u"TARGETS"_s, u"TIMESTAMP"_s, u"MULTIPLE"_s, u"SAVE_TARGETS"_s, u"DELETE"_s}.contains(
        target);
}

constexpr uint32_t wholeProperty = 1U << 28U;  // in units of four bytes

}  // namespace

ClipboardSnapshot ClipboardSnapshot::ofText(const QString& text) {
    const QByteArray utf8 = text.toUtf8();
    return {{{u"UTF8_STRING"_s, utf8}, {u"text/plain;charset=utf-8"_s, utf8}, {u"text/plain"_s, utf8}}, {}};
}

ClipboardProbe::ClipboardProbe(RealDesktop& desktop, const char* selection)
    : x_(desktop.display()),
      selection_(selection),
      window_(xcb_generate_id(x_.connection())),
      owner_(std::make_unique<Owner>(desktop.display(), selection_)) {
    const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(x_.connection(), XCB_COPY_FROM_PARENT, window_, x_.root(), -10, -10, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, x_.screen().root_visual, XCB_CW_EVENT_MASK, &events);
}

ClipboardProbe::~ClipboardProbe() = default;

XReply<xcb_generic_event_t> ClipboardProbe::nextEvent(double deadline) {
    pollfd readable{xcb_get_file_descriptor(x_.connection()), POLLIN, 0};
    for (;;) {
        xcb_flush(x_.connection());
        XReply<xcb_generic_event_t> event(xcb_poll_for_event(x_.connection()));
        const double left = deadline - monotonicSeconds();
        if (event || left <= 0 || xcb_connection_has_error(x_.connection()) != 0) return event;
        poll(&readable, 1, static_cast<int>(left * 1000) + 1);
    }
}

/// Selections are taken with a time of the server's, which it stamps on a change of a property.
xcb_timestamp_t ClipboardProbe::serverTime() {
    const xcb_atom_t property = x_.atom("VELTRIN_PROBE_TIME");
    xcb_change_property(x_.connection(), XCB_PROP_MODE_APPEND, window_, property, XCB_ATOM_INTEGER, 32, 0,
                        nullptr);
    while (const auto event = nextEvent(monotonicSeconds() + 5)) {
        const auto* change = reinterpret_cast<const xcb_property_notify_event_t*>(event.get());
        if ((event->response_type & 0x7F) == XCB_PROPERTY_NOTIFY && change->atom == property)
            return change->time;
    }
    throw std::runtime_error("the X server does not answer");
}

xcb_window_t ClipboardProbe::currentOwner() {
    const XReply<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
        x_.connection(), xcb_get_selection_owner(x_.connection(), x_.atom(selection_.constData())), nullptr));
    return reply ? reply->owner : static_cast<xcb_window_t>(XCB_NONE);
}

void ClipboardProbe::take(const ClipboardSnapshot& content, bool answers) {
    QMap<xcb_atom_t, QByteArray> offer;
    for (auto entry = content.contents.begin(); entry != content.contents.end(); ++entry) {
        offer.insert(x_.atom(entry.key().toLatin1().constData()), entry.value());
    }
    QList<xcb_atom_t> silent;
    for (const QString& target : content.unanswered)
        silent.append(x_.atom(target.toLatin1().constData()));
    owner_->take(offer, silent, answers, serverTime());
    if (!waitUntil(5, [this] { return isOwner(); }))
        throw std::runtime_error("the selection was not given to us");
}

void ClipboardProbe::own(const ClipboardSnapshot& content) {
    take(content, true);
}
void ClipboardProbe::ownSilently() {
    take({}, false);
}

void ClipboardProbe::disown() {
    if (!isOwner()) return;
    owner_->giveUp(serverTime());
    waitUntil(5, [this] { return !isOwner(); });
}

bool ClipboardProbe::isOwner() {
    return currentOwner() == owner_->window();
}
bool ClipboardProbe::hasOwner() {
    return currentOwner() != XCB_NONE;
}
void ClipboardProbe::setAnswerDelay(double seconds) {
    owner_->setAnswerDelay(seconds);
}
QList<ClipboardProbe::Request> ClipboardProbe::requests() const {
    return owner_->requests();
}
int ClipboardProbe::ownerChanges() const {
    return owner_->changes();
}

std::optional<QByteArray> ClipboardProbe::takeProperty(xcb_atom_t property, xcb_atom_t* type) {
    const auto cookie =
        xcb_get_property(x_.connection(), 1, window_, property, XCB_GET_PROPERTY_TYPE_ANY, 0, wholeProperty);
    const XReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(x_.connection(), cookie, nullptr));
    if (!reply || reply->type == XCB_NONE) return std::nullopt;
    *type = reply->type;
    return QByteArray(static_cast<const char*>(xcb_get_property_value(reply.get())),
                      xcb_get_property_value_length(reply.get()));
}

ClipboardProbe::Answer ClipboardProbe::receive(xcb_atom_t property, double deadline) {
    xcb_atom_t type = XCB_NONE;
    auto bytes = takeProperty(property, &type);
    if (!bytes) return {Answer::Status::refused, {}};
    if (type != x_.atom("INCR")) return {Answer::Status::value, *bytes};
    // Pieces come one by one, each after the one before was deleted; an empty one is the end.
    QByteArray whole;
    while (const auto event = nextEvent(deadline)) {
        const auto* change = reinterpret_cast<const xcb_property_notify_event_t*>(event.get());
        if ((event->response_type & 0x7F) != XCB_PROPERTY_NOTIFY || change->atom != property ||
            change->state != XCB_PROPERTY_NEW_VALUE) {
            continue;
        }
        bytes = takeProperty(property, &type);
        // The notice about the INCR property itself comes here too, after it was taken.
        if (!bytes) continue;
        if (bytes->isEmpty()) return {Answer::Status::value, whole};
        whole += *bytes;
    }
    return {};
}

ClipboardProbe::Answer ClipboardProbe::read(const QString& target, double seconds) {
    const double deadline = monotonicSeconds() + seconds;
    // A property of its own, so that an answer that comes too late is not taken for the next one's.
    const xcb_atom_t property = x_.atom(("VELTRIN_PROBE_" + QByteArray::number(++reads_ % 64)).constData());
    const xcb_timestamp_t now = serverTime();
    xcb_convert_selection(x_.connection(), window_, x_.atom(selection_.constData()),
                          x_.atom(target.toLatin1().constData()), property, now);
    while (const auto event = nextEvent(deadline)) {
        const auto* notify = reinterpret_cast<const xcb_selection_notify_event_t*>(event.get());
        if ((event->response_type & 0x7F) != XCB_SELECTION_NOTIFY) continue;
        if (notify->property == property) return receive(property, deadline);
        if (notify->property == XCB_NONE && notify->time == now) return {Answer::Status::refused, {}};
    }
    return {};
}

std::optional<QString> ClipboardProbe::text(double seconds) {
    const Answer answer = read(u"UTF8_STRING"_s, seconds);
    if (answer.status != Answer::Status::value) return std::nullopt;
    return QString::fromUtf8(answer.bytes);
}

QStringList ClipboardProbe::targets(double seconds) {
    const Answer answer = read(u"TARGETS"_s, seconds);
    QStringList names;
    for (qsizetype at = 0; at + 4 <= answer.bytes.size(); at += 4) {
        xcb_atom_t atom = 0;
        std::memcpy(&atom, answer.bytes.constData() + at, sizeof atom);
        const XReply<xcb_get_atom_name_reply_t> name(
            xcb_get_atom_name_reply(x_.connection(), xcb_get_atom_name(x_.connection(), atom), nullptr));
        if (!name) continue;
        names.append(QString::fromLatin1(xcb_get_atom_name_name(name.get()),
                                         xcb_get_atom_name_name_length(name.get())));
    }
    return names;
}

ClipboardSnapshot ClipboardProbe::snapshot(double secondsEach) {
    ClipboardSnapshot result;
    for (const QString& target : targets(secondsEach)) {
        if (isMeta(target)) continue;
        const Answer answer = read(target, secondsEach);
        if (answer.status == Answer::Status::value) result.contents.insert(target, answer.bytes);
        if (answer.status == Answer::Status::unanswered) result.unanswered.append(target);
    }
    return result;
}

}  // namespace veltrin

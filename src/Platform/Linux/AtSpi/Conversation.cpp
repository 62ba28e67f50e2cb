#include "Platform/Linux/AtSpi/Conversation.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QThread>

#include <algorithm>

namespace veltrin::AtSpi {
namespace {

constexpr Milliseconds untoldPatience{250};  // of calls whose reply is not awaited; nobody waits that long

AXError translated(const QDBusError& error, bool isOfEveryObject) {
    switch (error.type()) {
        case QDBusError::NoReply:
        case QDBusError::Timeout:
        case QDBusError::TimedOut:
            return AXError::cannotComplete;
        case QDBusError::Disconnected:
        case QDBusError::NoServer:
            return AXError::apiDisabled;
        case QDBusError::ServiceUnknown:
        case QDBusError::UnknownObject:
            return AXError::invalidUIElement;
        case QDBusError::UnknownMethod:
            // GTK 4 says so of objects that are gone.
            return isOfEveryObject ? AXError::invalidUIElement : AXError::attributeUnsupported;
        case QDBusError::UnknownInterface:
        case QDBusError::UnknownProperty:
        case QDBusError::InvalidArgs:
        case QDBusError::NotSupported:
            return AXError::attributeUnsupported;
        default:
            return error.name() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner")
                       ? AXError::invalidUIElement
                       : AXError::failure;
    }
}

}  // namespace

Conversation::Conversation(AtSpiBus& bus, QDeadlineTimer deadline) : bus_(bus), deadline_(deadline) {
}

Milliseconds Conversation::timeout(const QString& bus) {
    // An application that has stopped answering is given one short wait a conversation, not one a call.
    if (patientWith_ != bus) {
        patientWith_ = bus;
        patience_ = bus_.patience(bus);
    }
    return std::min(patience_, Milliseconds(deadline_.remainingTime()));
}

Pending Conversation::call(const ObjectAddress& to, const char* interface, const char* method,
                           const QVariantList& arguments) {
    Pending pending;
    if (!bus_.isReady()) {
        pending.error_ = AXError::apiDisabled;
        return pending;
    }
    if (hasGivenUp() || to.isNull()) return pending;
    const Milliseconds limit = timeout(to.bus);
    if (limit <= Milliseconds(0)) {
        hasGivenUp_ = true;
        return pending;
    }
    pending.bus_ = to.bus;
    pending.sentWith_ = QDeadlineTimer(limit);
    pending.call_ = bus_.send(to, interface, method, arguments, limit);
    pending.isOfEveryObject_ = qstrcmp(interface, Name::accessible) == 0;
    pending.isFullWait_ = limit == patience_;
    return pending;
}

Pending Conversation::property(const ObjectAddress& to, const char* interface, const char* name) {
    return call(to, Name::properties, "Get", {QString::fromLatin1(interface), QString::fromLatin1(name)});
}

Reply Conversation::reply(Pending pending) {
    Reply reply;
    if (!pending.call_) {
        reply.error = pending.error_;
        return reply;
    }
    if (hasGivenUp_) {
        reply.error = AXError::cannotComplete;
        return reply;
    }
    pending.call_->waitForFinished();  // bounded by the time-out it was sent with
    if (!pending.call_->isError()) {
        bus_.noteAnswer(pending.bus_);
        reply.error = AXError::success;
        reply.arguments = pending.call_->reply().arguments();
        return reply;
    }
    reply.error = translated(pending.call_->error(), pending.isOfEveryObject_);
    if (reply.error == AXError::cannotComplete) {
        // The daemon gives the same error at once when the application has just died.
        if (pending.sentWith_.remainingTime() > 20) {
            reply.error = AXError::invalidUIElement;
        } else {
            hasGivenUp_ = true;
            if (pending.isFullWait_) bus_.noteSilence(pending.bus_);
        }
    }
    return reply;
}

Reply Conversation::ask(const ObjectAddress& to, const char* interface, const char* method,
                        const QVariantList& arguments) {
    return reply(call(to, interface, method, arguments));
}

void Conversation::tell(const ObjectAddress& to, const char* interface, const char* method,
                        const QVariantList& arguments) {
    if (bus_.isReady() && !to.isNull()) bus_.send(to, interface, method, arguments, untoldPatience);
}

bool Conversation::pause(Milliseconds limit) {
    const Milliseconds left(deadline_.remainingTime());
    if (hasGivenUp_ || left <= Milliseconds(0)) return false;
    QThread::usleep(static_cast<unsigned long>(std::min(limit, left).count()) * 1000);
    return true;
}

}  // namespace veltrin::AtSpi

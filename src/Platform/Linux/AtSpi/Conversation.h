#pragma once

#include "Platform/Linux/AtSpi/AtSpiBus.h"

#include <QDBusPendingCall>
#include <QDeadlineTimer>

namespace veltrin::AtSpi {

/// A call that was sent. The reply is fetched by the conversation that sent it.
class Pending {
public:
    Pending() = default;

private:
    friend class Conversation;
    std::optional<QDBusPendingCall> call_;
    QString bus_;
    QDeadlineTimer sentWith_;
    AXError error_ = AXError::cannotComplete;  // when nothing was sent
    bool isOfEveryObject_ = false;             // a call that every accessible object understands
    bool isFullWait_ = false;                  // false when the deadline cuts it shorter than is fair
};

/// The calls of one question to applications, with a deadline for all of them. Calls are sent at once and
/// awaited when needed, so that several share one round trip. The first call that gets no answer in time ends
/// the conversation: everything after it fails with `cannotComplete` without waiting. Worker thread only.
class Conversation {
public:
    Conversation(AtSpiBus& bus, QDeadlineTimer deadline);

    Pending call(const ObjectAddress& to, const char* interface, const char* method,
                 const QVariantList& arguments = {});
    Pending property(const ObjectAddress& to, const char* interface, const char* name);
    Reply reply(Pending pending);
    /// `call` and `reply` in one.
    Reply ask(const ObjectAddress& to, const char* interface, const char* method,
              const QVariantList& arguments = {});
    /// Sends a call whose reply nobody will wait for, even after giving up.
    void tell(const ObjectAddress& to, const char* interface, const char* method,
              const QVariantList& arguments = {});

    bool hasGivenUp() const { return hasGivenUp_ || deadline_.hasExpired(); }
    /// Sleeps between calls, at most until the deadline; false when there is no time left.
    bool pause(Milliseconds limit);

private:
    Milliseconds timeout(const QString& bus);

    AtSpiBus& bus_;
    QDeadlineTimer deadline_;
    QString patientWith_;
    Milliseconds patience_{0};
    bool hasGivenUp_ = false;
};

}  // namespace veltrin::AtSpi

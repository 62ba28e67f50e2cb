#pragma once

#include "support/service/ServiceMessages.h"

/// Ready-made behaviours. Those about a text or an error answer in the shape of the wire that was asked, with
/// the further members that real services send.
namespace veltrin::ServiceBehaviours {

ServiceBehaviour success(QString text);
/// The error body of the wire's own service for that status (400, 401, 403, 404, 429, 500, 529, …). An empty
/// message takes the one such a service sends.
ServiceBehaviour error(int status, QString message = {});
/// The thought where the wire keeps thoughts, before the text: an own member, or blocks and parts of their
/// own.
ServiceBehaviour thinking(QString thought, QString text);
/// Success without a text: a loaded model, a spent limit, a blocked prompt.
ServiceBehaviour empty();
/// The text, stopped by the token limit.
ServiceBehaviour cutOff(QString text);
/// The model's instructions in place of a result.
ServiceBehaviour leaking();
/// The list of local models.
ServiceBehaviour models(QList<QString> names);

/// Body and status as given, whatever the wire.
ServiceBehaviour plain(int status, QByteArray body, QByteArray contentType = "application/json");
ServiceBehaviour redirect(int status, QByteArray location);
/// An HTTP answer whose body is no text in any encoding.
ServiceBehaviour garbage();
/// Another protocol's greeting.
ServiceBehaviour notHttp();
/// A body of that many bytes.
ServiceBehaviour huge(qsizetype bytes);

/// Closed with a reset before any byte.
ServiceBehaviour reset();
/// Closed in order before any byte.
ServiceBehaviour closed();
/// Never answers.
ServiceBehaviour silent();

/// The other behaviour's answer: later; in pieces; cut off after some bytes by a reset or a close; with
/// another length told than it has.
ServiceBehaviour slow(double seconds, ServiceBehaviour answer);
ServiceBehaviour trickling(qsizetype piece, double pause, ServiceBehaviour answer);
ServiceBehaviour cutAfter(qsizetype bytes, ServiceEnding ending, ServiceBehaviour answer);
ServiceBehaviour lengthOff(qint64 difference, ServiceBehaviour answer);

/// Answers with the second text of the first pair whose first text stands in the prompt, else with
/// `otherwise`.
ServiceBehaviour dictionary(std::vector<std::pair<QString, QString>> pairs, QString otherwise);

}  // namespace veltrin::ServiceBehaviours

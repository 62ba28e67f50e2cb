#pragma once

#include "support/service/ModelService.h"

namespace veltrin::ServiceScript {

/// Sets a service up from JSON text:
///   {"rules": [{"contains": TEXT, "answer": ANSWER}...],   the first whose text stands in the prompt
///    "queue": [ANSWER...],                                 before the rules, one request each
///    "models": [NAME...],                                  the local models
///    "default": ANSWER}                                    when nothing else fits
/// An ANSWER is a text, or an object with one of "text" (and "thinking" or "cutOff": true beside it),
/// "error": STATUS (and "message"), "behaviour": "empty" | "leaking" | "garbage" | "notHttp" | "reset" |
/// "closed" | "silent"; and "delay": SECONDS. Throws std::runtime_error for anything else.
void apply(ModelService& service, const QByteArray& script, double delay);

/// One line of JSON that holds the request whole.
QByteArray line(const ServiceRequest& request);

}  // namespace veltrin::ServiceScript

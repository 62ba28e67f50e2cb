#pragma once

#include "support/service/ServiceMessages.h"

namespace veltrin {

/// Takes HTTP/1.1 requests out of a stream of bytes, with their lengths told by Content-Length.
class RequestReader {
public:
    void feed(const QByteArray& bytes) { buffer_ += bytes; }

    /// The next request when it is there whole; its arrival and connection are left to fill in.
    std::optional<ServiceRequest> take();
    /// True once for a client that waits to be told to send its body.
    bool wantsContinue();
    /// The bytes are no request, or one past 64 KB of head or 64 MB of body; nothing will come out any more.
    bool failed() const { return failed_; }

private:
    /// Reads the head into `pending_` when it is there.
    void readHead();

    QByteArray buffer_;
    std::optional<ServiceRequest> pending_;
    qsizetype bodyLength_ = 0;
    bool continueTold_ = false;
    bool failed_ = false;
};

}  // namespace veltrin

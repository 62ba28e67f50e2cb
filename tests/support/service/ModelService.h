#pragma once

#include "support/service/ServiceMessages.h"

#include <memory>

namespace veltrin {

/// A stand-in for every model service: a real HTTP/1.1 server on 127.0.0.1 that records each request whole
/// and answers by script. It lives on a thread of its own, so a blocked main thread never stalls it. Callable
/// from any thread.
class ModelService {
public:
    /// Listens before it returns. Port 0 takes any free one. Throws std::runtime_error when it cannot listen.
    explicit ModelService(quint16 port = 0);
    ~ModelService();
    ModelService(const ModelService&) = delete;
    ModelService& operator=(const ModelService&) = delete;

    quint16 port() const;
    /// "http://127.0.0.1:PORT" followed by `path`.
    QString url(const QString& path = {}) const;

    /// The answer to the next request that no queued behaviour is waiting for.
    void enqueue(ServiceBehaviour behaviour);
    /// The answer when none is queued; at first ServiceBehaviours::success("ok"), and the default model list
    /// for tags.
    void setDefault(ServiceBehaviour behaviour);
    /// Called on the service's thread for every request, before it is answered.
    void setObserver(std::function<void(const ServiceRequest&)> observer);

    /// Every request since the start or the last `forget`, in the order in which they were complete.
    std::vector<ServiceRequest> requests() const;
    void forget();
    /// Connections that are open now.
    int openConnections() const;

private:
    class Server;
    std::unique_ptr<Server> server_;
};

}  // namespace veltrin

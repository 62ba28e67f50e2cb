#pragma once

#include "AI/ModelTasks.h"
#include "support/fake/FakeRunLoop.h"
#include "wire/model/WireWorld.h"

namespace veltrin {

/// The real network, with a note of what the wire cannot show: the time-out of each request.
class NotingHttpClient : public HttpClient {
public:
    explicit NotingHttpClient(HttpClient& inner) : inner_(inner) {}

    QCoro::Task<HttpResponse> data(HttpRequest request) override {
        timeouts.push_back(request.timeout);
        return inner_.data(std::move(request));
    }

    std::vector<double> timeouts;

private:
    HttpClient& inner_;
};

/// The model's tasks against the stand-in service.
class TaskWorldOnTheWire : public WireWorld {
public:
    OllamaClient notedClient() { return OllamaClient(noting, settings); }
    /// The tasks of a user who has neither agents nor a dictionary.
    ModelTasks tasks() { return ModelTasks(notedClient(), settings, runLoop, material()); }
    ModelTaskMaterial material() {
        return {[](const QString&, std::optional<int>) { return QString(); }, [](int) { return QString(); },
                [](const QString&, const QString&, const QString&) {}};
    }

    FakeRunLoop runLoop;
    NotingHttpClient noting{http};
};

}  // namespace veltrin

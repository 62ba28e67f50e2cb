#include "Platform/Linux/Pulse/PulseServer.h"

#include "Foundation/MVPLog.h"
#include "Platform/Linux/Pulse/PulseStream.h"

#include <utility>

namespace veltrin {
namespace {

/// A sound that comes later than this belongs to nothing that the user still sees.
constexpr pa_usec_t longestWait = 300 * PA_USEC_PER_MSEC;

}  // namespace

PulseServer::PulseServer() : loop_(pa_threaded_mainloop_new()) {
    if (!loop_ || pa_threaded_mainloop_start(loop_.get()) < 0) {
        loop_.reset();
        MVPLog::write("Sound output unavailable: no thread");
        return;
    }
    const Lock lock(*this);
    connect();
}

PulseServer::~PulseServer() {
    const Lock lock(*this);
    if (context_) pa_context_set_state_callback(context_.get(), nullptr, nullptr);
    context_.reset();
}

bool PulseServer::connect() {
    if (!loop_) return false;
    if (context_ && PA_CONTEXT_IS_GOOD(pa_context_get_state(context_.get()))) return true;
    if (context_) pa_context_set_state_callback(context_.get(), nullptr, nullptr);
    context_.reset(pa_context_new(pa_threaded_mainloop_get_api(loop_.get()), "Veltrin"));
    if (!context_) return false;
    pa_context_set_state_callback(context_.get(), &PulseServer::stateChanged, this);
    if (pa_context_connect(context_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) >= 0) return true;
    fail();
    return false;
}

void PulseServer::begin(PulseStream& stream) {
    if (pa_context_get_state(context_.get()) == PA_CONTEXT_READY) {
        stream.begin(context_.get());
    } else {
        waiting_.push_back({&stream, pa_rtclock_now()});
    }
}

void PulseServer::forget(PulseStream& stream) {
    std::erase_if(waiting_, [&](const Waiting& each) { return each.stream == &stream; });
}

void PulseServer::stateChanged(pa_context* context, void* server) {
    auto& self = *static_cast<PulseServer*>(server);
    const pa_context_state_t state = pa_context_get_state(context);
    if (state == PA_CONTEXT_READY) {
        self.isFailureTold_ = false;
        self.beginWaiting();
    } else if (!PA_CONTEXT_IS_GOOD(state)) {
        self.fail();
    }
}

void PulseServer::beginWaiting() {
    const pa_usec_t now = pa_rtclock_now();
    for (const Waiting& each : std::exchange(waiting_, {})) {
        if (now - each.since <= longestWait) each.stream->begin(context_.get());
    }
}

void PulseServer::fail() {
    waiting_.clear();
    if (std::exchange(isFailureTold_, true)) return;
    const auto reason = QString::fromUtf8(pa_strerror(pa_context_errno(context_.get())));
    MVPLog::write("Sound output unavailable:", reason);
}

}  // namespace veltrin

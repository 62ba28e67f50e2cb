#pragma once

#include <pulse/pulseaudio.h>

#include <memory>
#include <vector>

namespace veltrin {

class PulseStream;

struct PulseRelease {
    void operator()(pa_context* context) const {
        pa_context_disconnect(context);
        pa_context_unref(context);
    }
    void operator()(pa_operation* operation) const {
        pa_operation_cancel(operation);
        pa_operation_unref(operation);
    }
    void operator()(pa_stream* stream) const {
        pa_stream_disconnect(stream);
        pa_stream_unref(stream);
    }
    void operator()(pa_threaded_mainloop* loop) const {
        pa_threaded_mainloop_stop(loop);
        pa_threaded_mainloop_free(loop);
    }
};
template <typename Object>
using PulseOwned = std::unique_ptr<Object, PulseRelease>;

/// The connection to the sound server. All its operations, and those of its streams, want `Lock` held; the
/// callbacks of its thread hold it already.
class PulseServer {
public:
    /// Keeps the connection's thread out; held for memory accesses only, never while the server is waited
    /// for.
    class Lock {
    public:
        explicit Lock(PulseServer& server) : loop_(server.loop_.get()) {
            if (loop_ != nullptr) pa_threaded_mainloop_lock(loop_);
        }
        ~Lock() {
            if (loop_ != nullptr) pa_threaded_mainloop_unlock(loop_);
        }
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

    private:
        pa_threaded_mainloop* loop_;
    };

    PulseServer();
    ~PulseServer();
    PulseServer(const PulseServer&) = delete;
    PulseServer& operator=(const PulseServer&) = delete;

    /// Connects when there is no connection, nor one on its way. False when that can't even be tried.
    bool connect();
    /// Begins the stream now, or when the connection stands, unless it takes too long to come.
    void begin(PulseStream& stream);
    /// For a stream that goes away.
    void forget(PulseStream& stream);

    pa_context* context() const { return context_.get(); }

private:
    struct Waiting {
        PulseStream* stream;
        pa_usec_t since;
    };

    static void stateChanged(pa_context* context, void* server);
    void beginWaiting();
    void fail();

    PulseOwned<pa_threaded_mainloop> loop_;
    PulseOwned<pa_context> context_;
    std::vector<Waiting> waiting_;
    bool isFailureTold_ = false;
};

}  // namespace veltrin

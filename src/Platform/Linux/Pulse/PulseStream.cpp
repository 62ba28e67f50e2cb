#include "Platform/Linux/Pulse/PulseStream.h"

#include <limits>
#include <utility>

namespace veltrin {
namespace {

constexpr pa_usec_t latency = 20 * PA_USEC_PER_MSEC;
constexpr std::uint32_t serversChoice = std::numeric_limits<std::uint32_t>::max();

}  // namespace

PulseStream::PulseStream(PulseServer& server, const pa_sample_spec& format, QByteArray samples)
    : server_(server), format_(format), samples_(std::move(samples)) {
}

PulseStream::~PulseStream() {
    const PulseServer::Lock lock(server_);
    server_.forget(*this);
    if (stream_) end();
}

void PulseStream::begin(pa_context* context) {
    stream_.reset(pa_stream_new(context, "sound", &format_, nullptr));
    if (!stream_) return;
    pa_stream_set_state_callback(stream_.get(), &PulseStream::stateChanged, this);
    const pa_buffer_attr buffer{
        .maxlength = serversChoice,
        .tlength = static_cast<std::uint32_t>(pa_usec_to_bytes(latency, &format_)),
        .prebuf = 0,  // plays from the first sample, however short
        .minreq = serversChoice,
        .fragsize = serversChoice,
    };
    if (pa_stream_connect_playback(stream_.get(), nullptr, &buffer, PA_STREAM_ADJUST_LATENCY, nullptr,
                                   nullptr) < 0)
        end();
}

void PulseStream::stateChanged(pa_stream* stream, void* self) {
    if (pa_stream_get_state(stream) == PA_STREAM_READY) static_cast<PulseStream*>(self)->write();
}

void PulseStream::write() {
    pa_stream_write(stream_.get(), samples_.constData(), static_cast<std::size_t>(samples_.size()), nullptr,
                    0, PA_SEEK_RELATIVE);
    draining_.reset(pa_stream_drain(stream_.get(), &PulseStream::drained, this));
}

void PulseStream::drained(pa_stream*, int, void* self) {
    static_cast<PulseStream*>(self)->end();
}

void PulseStream::end() {
    pa_stream_set_state_callback(stream_.get(), nullptr, nullptr);
    draining_.reset();
    stream_.reset();
}

}  // namespace veltrin

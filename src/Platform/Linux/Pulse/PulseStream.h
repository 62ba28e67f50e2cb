#pragma once

#include "Platform/Linux/Pulse/PulseServer.h"
#include "Platform/SoundOutput.h"

#include <QByteArray>

namespace veltrin {

/// One sound: a stream of its own that is written whole as soon as the server takes it, and let go when it
/// was heard.
class PulseStream final : public PlayingSound {
public:
    /// `samples`: 16 bits, little-endian, whole frames.
    PulseStream(PulseServer& server, const pa_sample_spec& format, QByteArray samples);
    ~PulseStream() override;

    /// With the server's lock held and the connection standing.
    void begin(pa_context* context);

private:
    static void stateChanged(pa_stream* stream, void* self);
    static void drained(pa_stream* stream, int success, void* self);
    void write();
    void end();

    PulseServer& server_;
    pa_sample_spec format_;
    QByteArray samples_;
    PulseOwned<pa_stream> stream_;
    PulseOwned<pa_operation> draining_;
};

}  // namespace veltrin

#pragma once

#include <QByteArrayView>

#include <cstdint>
#include <optional>

namespace veltrin {

/// What a WAV file in memory holds; `samples` is a view of the file's bytes.
struct WavFile {
    std::uint32_t sampleRate = 0;  ///< hertz
    std::uint8_t channels = 0;
    QByteArrayView samples;  ///< 16 bits each, little-endian, whole frames only
};

/// Nothing unless the bytes are a RIFF/WAVE file of 16-bit PCM. A data chunk that says more than there is
/// ends with the file.
std::optional<WavFile> readWav(QByteArrayView bytes);

}  // namespace veltrin

#include "Platform/Linux/Pulse/WavFile.h"

#include <QtEndian>

#include <algorithm>

namespace veltrin {
namespace {

constexpr qsizetype chunkHeader = 8;
constexpr qsizetype formatSize = 16;
constexpr std::uint16_t pcm = 1;
constexpr std::uint16_t bitsPerSample = 16;
constexpr int mostChannels = 8;
constexpr std::uint32_t mostHertz = 192'000;

template <typename Number>
Number numberAt(QByteArrayView bytes, qsizetype offset) {
    return qFromLittleEndian<Number>(bytes.data() + offset);
}

/// Rate and channels of a format chunk that can be played.
std::optional<WavFile> readFormat(QByteArrayView chunk) {
    if (chunk.size() < formatSize || numberAt<std::uint16_t>(chunk, 0) != pcm ||
        numberAt<std::uint16_t>(chunk, 14) != bitsPerSample)
        return std::nullopt;
    const auto channels = numberAt<std::uint16_t>(chunk, 2);
    const auto rate = numberAt<std::uint32_t>(chunk, 4);
    if (channels < 1 || channels > mostChannels || rate < 1 || rate > mostHertz) return std::nullopt;
    return WavFile{rate, static_cast<std::uint8_t>(channels), {}};
}

}  // namespace

std::optional<WavFile> readWav(QByteArrayView bytes) {
    if (bytes.size() < 12 || bytes.first(4) != "RIFF" || bytes.sliced(8, 4) != "WAVE") return std::nullopt;
    std::optional<WavFile> file;
    for (qsizetype at = 12; at + chunkHeader <= bytes.size();) {
        const QByteArrayView name = bytes.sliced(at, 4);
        const qsizetype told = numberAt<std::uint32_t>(bytes, at + 4);
        const QByteArrayView chunk =
            bytes.sliced(at + chunkHeader, std::min(told, bytes.size() - at - chunkHeader));
        if (name == "fmt ") {
            file = readFormat(chunk);
        } else if (name == "data") {
            if (!file) return std::nullopt;
            const qsizetype frame = qsizetype{file->channels} * 2;
            file->samples = chunk.first(chunk.size() - chunk.size() % frame);
            return file;
        }
        at += chunkHeader + told + told % 2;  // chunks begin at even offsets
    }
    return std::nullopt;
}

}  // namespace veltrin

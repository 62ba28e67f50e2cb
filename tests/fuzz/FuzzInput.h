#pragma once

#include <QByteArray>
#include <QString>

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdio>
#include <cstdlib>

namespace veltrin::fuzz {

/// Ends the program, so that the fuzzer keeps the input.
inline void check(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

inline QByteArray bytes(const std::uint8_t* data, std::size_t size) {
    return QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
}

inline QByteArray rest(FuzzedDataProvider& input) {
    return QByteArray::fromStdString(input.ConsumeRemainingBytesAsString());
}

/// UTF-16 as foreign applications may give it, lone surrogates included: half the time from UTF-8, which
/// reaches more of the interesting characters.
inline QString text(FuzzedDataProvider& input, std::size_t maximum) {
    const bool utf8 = input.ConsumeBool();
    const std::string raw = input.ConsumeRandomLengthString(maximum);
    if (utf8) return QString::fromStdString(raw);
    QString units(static_cast<qsizetype>(raw.size() / 2), Qt::Uninitialized);
    for (qsizetype i = 0; i < units.size(); ++i) {
        const auto at = static_cast<std::size_t>(i) * 2;
        units[i] = QChar(static_cast<unsigned char>(raw[at]) << 8 | static_cast<unsigned char>(raw[at + 1]));
    }
    return units;
}

}  // namespace veltrin::fuzz

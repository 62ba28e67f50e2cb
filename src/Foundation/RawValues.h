#pragma once

#include <QString>
#include <QStringView>

#include <array>
#include <cstddef>
#include <optional>

namespace veltrin {

/// The raw text values of an enumeration, in the order of its cases. An enumeration whose cases are stored,
/// logged or put on the wire specialises this once; reading and writing both go through it.
template <typename E>
inline constexpr std::array<const char*, 0> rawValuesOf{};

template <typename E>
QString rawValue(E value) {
    return QString::fromUtf8(rawValuesOf<E>[static_cast<std::size_t>(value)]);
}

/// The case whose raw value is `text` exactly; none for any other text.
template <typename E>
std::optional<E> fromRawValue(QStringView text) {
    for (std::size_t i = 0; i < rawValuesOf<E>.size(); ++i) {
        if (text == QString::fromUtf8(rawValuesOf<E>[i])) return static_cast<E>(i);
    }
    return std::nullopt;
}

template <typename E>
inline constexpr std::size_t caseCount = rawValuesOf<E>.size();

template <typename E>
constexpr auto allCases() {
    std::array<E, rawValuesOf<E>.size()> cases{};
    for (std::size_t i = 0; i < cases.size(); ++i)
        cases[i] = static_cast<E>(i);
    return cases;
}

}  // namespace veltrin

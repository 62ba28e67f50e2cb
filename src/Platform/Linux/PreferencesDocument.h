#pragma once

#include "Foundation/Json.h"
#include "Platform/Preferences.h"

#include <QHash>

#include <optional>

namespace veltrin {

/// The preferences as one JSON object: a string as a string, a bool as a bool, a double as a real number even
/// when it is whole, data as {"data": base64}. Members keep their order; a member of any other shape reads as
/// absent and is written back as it came, so that a newer or a hand-edited file loses nothing.
class PreferencesDocument {
public:
    PreferencesDocument() = default;

    /// Nothing when the bytes are no JSON object in UTF-8.
    static std::optional<PreferencesDocument> decode(const QByteArray& utf8);
    /// Indented text with a new line at the end. A number that JSON cannot hold (NaN, infinity) becomes null
    /// and so is absent at the next decoding.
    QByteArray encode() const;

    /// A hash look-up; an integer in the text reads as a double.
    std::optional<PreferenceValue> value(const QString& key) const;
    /// False when the same value of the same type stood there already.
    bool set(const QString& key, const PreferenceValue& value);
    /// False when no member had that key.
    bool remove(const QString& key);

private:
    Json::Object members_;
    QHash<QString, PreferenceValue> values_;
};

}  // namespace veltrin

#pragma once

#include "Foundation/Observers.h"
#include "Foundation/RawValues.h"
#include "Platform/Preferences.h"

#include <QString>

#include <type_traits>
#include <utility>

namespace veltrin {

/// How a value of type T stands in the preferences: bools, doubles and strings as they are, an enumeration as
/// its raw value. A stored value of another type, or an unknown raw value, reads as absent.
template <typename T>
struct SettingCodec {
    static std::optional<T> read(const Preferences& preferences, const QString& key) {
        if constexpr (std::is_same_v<T, bool>) {
            return preferences.boolean(key);
        } else if constexpr (std::is_same_v<T, double>) {
            return preferences.real(key);
        } else if constexpr (std::is_enum_v<T>) {
            const auto raw = preferences.string(key);
            return raw ? fromRawValue<T>(*raw) : std::nullopt;
        } else {
            return preferences.string(key);
        }
    }
    static PreferenceValue stored(const T& value) {
        if constexpr (std::is_enum_v<T>) {
            return rawValue(value);
        } else {
            return value;
        }
    }
};

/// Readers that tell an absent key from a stored false or zero.
namespace SettingsKey {
inline bool boolean(const Preferences& preferences, const QString& key, bool fallback) {
    return preferences.boolean(key).value_or(fallback);
}
inline double real(const Preferences& preferences, const QString& key, double fallback) {
    return preferences.real(key).value_or(fallback);
}
}  // namespace SettingsKey

/// One preference: loaded when it is made, written through at every `set`, observable. `set` stores what it
/// is given; it validates nothing and tells observers also of an equal value.
template <typename T>
class Setting {
public:
    Setting(Preferences& preferences, const char* key, T fallback)
        : preferences_(preferences),
          key_(QString::fromUtf8(key)),
          value_(SettingCodec<T>::read(preferences, key_).value_or(std::move(fallback))) {}
    Setting(const Setting&) = delete;
    Setting& operator=(const Setting&) = delete;

    const T& operator()() const { return value_; }
    void set(T value) {
        value_ = std::move(value);
        preferences_.set(key_, SettingCodec<T>::stored(value_));
        changed.notify(value_);
    }
    const QString& key() const { return key_; }

    Observers<T> changed;

private:
    Preferences& preferences_;
    const QString key_;
    T value_;
};

}  // namespace veltrin

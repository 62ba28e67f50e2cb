#pragma once

#include "Foundation/Observers.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <variant>

namespace veltrin {

using PreferenceValue = std::variant<bool, double, QString, QByteArray>;

/// The user's preferences: one typed value a key, written through at once. An absent key is not a stored
/// false or zero, and a value keeps its type. Reading is cheap enough for the path of every key. Main thread.
class Preferences {
public:
    virtual ~Preferences() = default;

    virtual std::optional<PreferenceValue> object(const QString& key) const = 0;
    virtual void set(const QString& key, PreferenceValue value) = 0;
    virtual void remove(const QString& key) = 0;

    /// The stored string; none when the key is absent or holds another type. The same for the other types.
    std::optional<QString> string(const QString& key) const { return get<QString>(key); }
    std::optional<QByteArray> data(const QString& key) const { return get<QByteArray>(key); }
    std::optional<bool> boolean(const QString& key) const { return get<bool>(key); }
    std::optional<double> real(const QString& key) const { return get<double>(key); }

    /// Told after every change, with the key.
    Observers<QString> changed;

private:
    template <typename T>
    std::optional<T> get(const QString& key) const {
        const auto value = object(key);
        if (!value) return std::nullopt;
        const T* typed = std::get_if<T>(&*value);
        return typed ? std::optional<T>(*typed) : std::nullopt;
    }
};

namespace PreferenceKeys {
inline const QString gestureVerboseLogging = QStringLiteral("gesture_verbose_logging");
}  // namespace PreferenceKeys

inline bool isVerbose(const Preferences& preferences) {
    return preferences.boolean(PreferenceKeys::gestureVerboseLogging).value_or(false);
}

}  // namespace veltrin

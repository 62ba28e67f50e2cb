#pragma once

#include "Platform/Preferences.h"

#include <map>
#include <utility>
#include <vector>

namespace veltrin {

/// Preferences in memory. Remembers every write, so that a test can tell a value kept from a value written.
class FakePreferences : public Preferences {
public:
    std::optional<PreferenceValue> object(const QString& key) const override {
        const auto found = values.find(key);
        return found == values.end() ? std::nullopt : std::optional<PreferenceValue>(found->second);
    }
    void set(const QString& key, PreferenceValue value) override {
        writes.emplace_back(key, value);
        values.insert_or_assign(key, std::move(value));
        changed.notify(key);
    }
    void remove(const QString& key) override {
        if (values.erase(key) > 0) changed.notify(key);
    }

    /// What is stored. Filling it directly counts as no write and tells nobody.
    std::map<QString, PreferenceValue> values;
    /// Every `set`, in order.
    std::vector<std::pair<QString, PreferenceValue>> writes;
};

}  // namespace veltrin

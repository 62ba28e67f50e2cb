#include "Data/MemoryActionStore.h"

#include "Data/SeedRecords.h"
#include "Platform/Preferences.h"

#include <algorithm>

namespace veltrin {
namespace {

const QString voiceActionKey = QStringLiteral("memory_action_voice_action_id");
constexpr int lastSlot = 4;

std::optional<QUuid> storedVoiceActionID(const Preferences& preferences) {
    const auto text = preferences.string(voiceActionKey);
    return text ? uuidFrom(*text) : std::nullopt;
}

}  // namespace

MemoryActionStore::MemoryActionStore(const QString& folder, const RunLoop& runLoop, Preferences& preferences)
    : preferences_(preferences),
      records_(folder, QStringLiteral("memory_actions.json"), runLoop),
      voiceActionID_(storedVoiceActionID(preferences)) {
    // The actions that an identifier from before the defaults may name are gone, so it counts as none.
    const bool isNew = ensureDefaultActions(Date{runLoop.wallNow()});
    if (!voiceActionID_ || (isNew && !voiceAction())) takeFirstAsVoiceAction();
    clearMissingVoiceAction();
}

bool MemoryActionStore::ensureDefaultActions(Date now) {
    if (!actions().empty()) return false;
    records_.change([&](std::vector<MemoryActionPreset>& actions) {
        actions = seedRecords<MemoryActionPreset>(QStringLiteral("seeds/memory_actions.json"),
                                                  {{QStringLiteral("isQuickAction"), Json(true)}}, now);
    });
    return true;
}

void MemoryActionStore::takeFirstAsVoiceAction() {
    const auto quick = quickActions();
    if (!quick.empty()) {
        setVoiceActionID(quick.front().id);
    } else if (!actions().empty()) {
        setVoiceActionID(actions().front().id);
    }
}

void MemoryActionStore::clearMissingVoiceAction() {
    if (voiceActionID_ && !voiceAction()) setVoiceActionID(std::nullopt);
}

std::vector<MemoryActionPreset> MemoryActionStore::quickActions() const {
    std::vector<MemoryActionPreset> quick;
    for (const MemoryActionPreset& action : actions()) {
        if (action.isQuickAction && action.shortcutSlot && *action.shortcutSlot >= 1 &&
            *action.shortcutSlot <= lastSlot) {
            quick.push_back(action);
        }
    }
    std::stable_sort(quick.begin(), quick.end(),
                     [](const MemoryActionPreset& a, const MemoryActionPreset& b) {
                         return *a.shortcutSlot < *b.shortcutSlot;
                     });
    if (quick.size() > lastSlot) quick.resize(lastSlot);
    return quick;
}

void MemoryActionStore::setVoiceActionID(const std::optional<QUuid>& id) {
    voiceActionID_ = id;
    if (id) {
        preferences_.set(voiceActionKey, uuidText(*id));
    } else {
        preferences_.remove(voiceActionKey);
    }
    records_.changed.notify();
}

std::optional<MemoryActionPreset> MemoryActionStore::voiceAction() const {
    const MemoryActionPreset* action = voiceActionID_ ? records_.find(*voiceActionID_) : nullptr;
    return action == nullptr ? std::nullopt : std::optional(*action);
}

}  // namespace veltrin

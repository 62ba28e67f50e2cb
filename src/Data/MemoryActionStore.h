#pragma once

#include "Data/MemoryActionPreset.h"
#include "Data/StoredRecords.h"

#include <optional>
#include <vector>

namespace veltrin {

class Preferences;

/// The user's rewriting instructions, in "memory_actions.json". An empty file gets four quick actions, and
/// that is the only time it is written: nothing here edits them.
class MemoryActionStore {
public:
    /// `folder` is the data directory.
    MemoryActionStore(const QString& folder, const RunLoop& runLoop, Preferences& preferences);

    const std::vector<MemoryActionPreset>& actions() const { return records_.all(); }
    /// Told when the actions or the voice action change.
    Observers<>& changed() { return records_.changed; }

    /// At most four: the quick actions of the slots 1 to 4, by slot.
    std::vector<MemoryActionPreset> quickActions() const;

    const std::optional<QUuid>& voiceActionID() const { return voiceActionID_; }
    /// Written through to the preference "memory_action_voice_action_id"; none removes it.
    void setVoiceActionID(const std::optional<QUuid>& id);
    /// The action that dictation runs through; none when there is none.
    std::optional<MemoryActionPreset> voiceAction() const;

private:
    /// True when the defaults were put in.
    bool ensureDefaultActions(Date now);
    void takeFirstAsVoiceAction();
    void clearMissingVoiceAction();

    Preferences& preferences_;
    StoredRecords<MemoryActionPreset> records_;
    std::optional<QUuid> voiceActionID_;
};

}  // namespace veltrin

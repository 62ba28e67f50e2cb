#pragma once

#include "Data/ClipboardStore.h"
#include "Data/DictionaryStore.h"
#include "Data/HistoryStore.h"
#include "Data/MemoryActionStore.h"
#include "Data/PromptStore.h"
#include "Data/VoiceRecordStore.h"

namespace veltrin {

/// The user's small collections, one of each for the whole run.
struct DataStore {
    /// `folder` is the data directory.
    DataStore(const QString& folder, RunLoop& runLoop, Pasteboard& pasteboard, const Workspace& workspace,
              Preferences& preferences)
        : history(folder, runLoop),
          dictionary(folder, runLoop),
          clipboard(folder, runLoop, pasteboard, workspace),
          memoryActions(folder, runLoop, preferences),
          prompts(folder, runLoop),
          voiceRecords(folder, runLoop) {}

    HistoryStore history;
    DictionaryStore dictionary;
    ClipboardStore clipboard;
    MemoryActionStore memoryActions;
    PromptStore prompts;
    VoiceRecordStore voiceRecords;
};

}  // namespace veltrin

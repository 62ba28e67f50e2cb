#pragma once

#include "AI/OllamaClient.h"
#include "Foundation/RawValues.h"

#include <QUuid>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace veltrin {

class RunLoop;
struct DictionaryTerm;
struct MemoryActionPreset;
struct StoredPrompt;

/// What is to become of a prompt.
enum class OptimizeOption { refine, restructure, modelAdapt, outFmt };
template <>
inline constexpr auto rawValuesOf<OptimizeOption> =
    std::to_array<const char*>({"更精确", "重组结构", "适配模型", "输出格式"});

/// What the tasks take from the user's own material, and leave there. All three are set; they are called on
/// the main thread while a task runs, so what they reach outlives every task.
struct ModelTaskMaterial {
    /// The contract block of the agents bound to a shortcut, or to one of its slots; empty when there is
    /// none.
    std::function<QString(const QString& shortcut, std::optional<int> slot)> runtimeContractPromptFor;
    /// The first `limit` terms of the user's dictionary as prompt lines; empty when there are none.
    std::function<QString(int limit)> contextPrompt;
    std::function<void(const QString& type, const QString& snippet, const QString& appName)> recordHistory;
};

/// The named tasks that the pages ask of a model: each a fixed prompt, a token limit, a temperature and a way
/// to read the answer. The texts of the gestures go another road, through TransformEngine. Like the client it
/// has no state: copies are free, and an instance may go while its task is under way. Main thread.
///
/// Tasks throw what OllamaClient throws. One unit a family of tasks; what families share is `Parts`.
class ModelTasks {
public:
    ModelTasks(const OllamaClient& client, AppSettings& settings, RunLoop& runLoop,
               ModelTaskMaterial material);

    /// `text` in the target language of the settings. Throws `unusableTranslation` when the model echoes the
    /// source, or answers in another script, twice.
    QCoro::Task<QString> translate(QString text) const;
    /// The prompt `text`, rewritten. Leaves an entry in the history before it asks the model.
    QCoro::Task<QString> optimize(QString text, OptimizeOption option) const;

    /// A quick action, or a term, after the user's description; it is in no list yet. An answer that cannot
    /// be read gives one made of the description alone.
    QCoro::Task<MemoryActionPreset> draftMemoryAction(QString description) const;
    QCoro::Task<DictionaryTerm> draftDictionaryTerm(QString description) const;

    /// The ids of the prompts that fit `query`, best first; empty when the model finds none.
    QCoro::Task<std::vector<QUuid>> semanticSearch(QString query, std::vector<StoredPrompt> prompts) const;

    /// A new prompt after the user's description; it is in no list yet. Throws `invalidResponse` for an
    /// answer that holds none.
    QCoro::Task<StoredPrompt> generatePrompt(QString description) const;
    /// `prompt` with better words, led by the user's `instructions` unless they are blank. Throws
    /// `invalidResponse` for an empty answer.
    QCoro::Task<StoredPrompt> improvePrompt(StoredPrompt prompt, QString instructions) const;
    /// Tags that fit `prompt`; may be empty.
    QCoro::Task<QStringList> suggestTags(StoredPrompt prompt) const;

    /// What a task stands on; shared by the copies, and held by each task that is under way.
    struct Parts {
        OllamaClient client;
        AppSettings& settings;
        RunLoop& runLoop;
        ModelTaskMaterial material;

        /// The contract of the shortcut's agents as a block of its own in a prompt; empty when there is none.
        QString contractBlock(const QString& shortcut) const;
        /// The user's terms under `heading`; empty when there are none.
        QString dictionaryBlock(const QString& heading) const;
        /// Leaves an entry that names this program as the place.
        void record(const QString& type, const QString& snippet) const;
    };

private:
    std::shared_ptr<const Parts> parts_;
};

}  // namespace veltrin

#include "AI/ModelTasks.h"

#include <utility>

namespace veltrin {
namespace {

constexpr int dictionaryTerms = 16;

}  // namespace

ModelTasks::ModelTasks(const OllamaClient& client, AppSettings& settings, RunLoop& runLoop,
                       ModelTaskMaterial material)
    : parts_(std::make_shared<const Parts>(Parts{client, settings, runLoop, std::move(material)})) {
}

QString ModelTasks::Parts::contractBlock(const QString& shortcut) const {
    const QString contract = material.runtimeContractPromptFor(shortcut, std::nullopt);
    return contract.isEmpty() ? QString() : QStringLiteral("\n\n") + contract + u'\n';
}

QString ModelTasks::Parts::dictionaryBlock(const QString& heading) const {
    const QString terms = material.contextPrompt(dictionaryTerms);
    return terms.isEmpty() ? QString() : QStringLiteral("\n\n") + heading + u'\n' + terms + u'\n';
}

void ModelTasks::Parts::record(const QString& type, const QString& snippet) const {
    material.recordHistory(type, snippet, QStringLiteral("Veltrin"));
}

}  // namespace veltrin

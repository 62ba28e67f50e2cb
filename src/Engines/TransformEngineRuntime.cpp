#include "Engines/TransformEngineRuntime.h"

#include "AI/GenerationTokenBudget.h"
#include "Foundation/MVPLog.h"

#include <utility>

namespace veltrin::TransformEngineRuntime {
namespace {

constexpr double temperature = 0.2;

QCoro::Task<QString> generateByRecipe(OllamaClient client, QString prompt, QString sourceText, int limit) {
    const int retryLimit = GenerationTokenBudget::retryLimit(limit);
    auto generation = client.generateNonEmpty(prompt, temperature, limit, retryLimit);
    const QString output = co_await generation;
    auto repair =
        client.repairMetaInstructionLeakIfNeeded(output, sourceText, prompt, temperature, retryLimit);
    const QString result = co_await repair;
    co_return result;
}

}  // namespace

TransformEngine::Generate generation(const OllamaClient& client) {
    return [client](QString prompt, QString sourceText, int limit) {
        return generateByRecipe(client, std::move(prompt), std::move(sourceText), limit);
    };
}

TransformEngine engine(const OllamaClient& client, const QString& source) {
    TransformEngine engine;
    engine.generate = generation(client);
    engine.logger = [](const QString& line) { MVPLog::write(line); };
    engine.source = source;
    return engine;
}

}  // namespace veltrin::TransformEngineRuntime

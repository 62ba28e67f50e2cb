#include "AI/AIJSONExtractor.h"
#include "AI/OllamaError.h"
#include "AI/Wires/ModelWire.h"
#include "AI/Wires/OllamaService.h"
#include "Foundation/Characters.h"
#include "Foundation/MVPLog.h"
#include "Foundation/Text.h"
#include "fuzz/FuzzInput.h"

using namespace veltrin;

namespace {

const QString key = QStringLiteral("sk-0123456789abcdef");

/// The rule of cleaning as it is told, step by step.
QString cleanedStepByStep(QString text) {
    for (;;) {
        const qsizetype open = text.indexOf(QStringLiteral("<think>"));
        if (open < 0) break;
        const qsizetype close = text.indexOf(QStringLiteral("</think>"), open);
        if (close < 0) break;
        text.remove(open, close + 8 - open);
    }
    return Text::trimmed(text);
}

void parse(const ModelWire& wire, ModelProvider provider, const HttpResponse& response) {
    ModelTarget target;
    target.provider = provider;
    target.model = QStringLiteral("m");
    target.apiKey = key;
    try {
        wire.parseAnswer(target, GenerationRequest(), response);
    } catch (const OllamaError& error) {
        fuzz::check(!error.errorDescription().contains(key), "an error never holds the key");
    } catch (const Json::ParseError&) {
        // a body that is no JSON
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    MVPLog::setPrinting(false);
    MVPLog::setLogURL(QStringLiteral("/dev/null"));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    HttpResponse response;
    response.status = input.PickValueInArray({200, 200, 200, 204, 400, 401, 429, 500, -1});
    const bool echoes = input.ConsumeBool();
    response.body = fuzz::rest(input);
    if (echoes) response.body.insert(response.body.size() / 2, key.toUtf8());

    parse(ollamaWire, ModelProvider::ollama, response);
    parse(openAICompatibleWire, ModelProvider::deepseek, response);
    parse(anthropicWire, ModelProvider::anthropic, response);
    parse(googleWire, ModelProvider::google, response);
    OllamaService::modelNames(response);

    const QString text = QString::fromUtf8(response.body);
    fuzz::check(Wire::cleaned(text) == cleanedStepByStep(text), "cleaning keeps to its rule");
    const QString preview = Wire::bodyPreview(response.body, key);
    fuzz::check(!preview.contains(key) && !preview.contains(u'\n') && !preview.contains(u'\t'),
                "a preview is one line without the key");
    fuzz::check(Characters::count(preview) <= 123, "a preview is short");
    if (const auto object = AIJSONExtractor::object(text))
        fuzz::check(object->isObject(), "an object is extracted");
    return 0;
}

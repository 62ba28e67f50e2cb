#include "AI/PromptDiagnosis.h"

#include "Foundation/Resource.h"
#include "Foundation/Text.h"
#include "Platform/RunLoop.h"

#include <utility>

namespace veltrin {
namespace {

constexpr double temperature = 0.3;
constexpr double timeout = 30;

QString request(const QString& prompt) {
    static const QString form = Resource::text(QStringLiteral("prompts/diagnosis.txt"));
    return Text::filled(form, {{QStringLiteral("prompt"), prompt}});
}

}  // namespace

PromptDiagnosis::PromptDiagnosis(const OllamaClient& client, RunLoop& runLoop, ModelTaskMaterial material)
    : client_(client), runLoop_(&runLoop), material_(std::move(material)) {
}

QCoro::Task<DiagnosisResult> PromptDiagnosis::diagnose(QString prompt) const {
    return diagnosing(*this, std::move(prompt));
}

QCoro::Task<DiagnosisResult> PromptDiagnosis::diagnosing(PromptDiagnosis self, QString prompt) {
    auto task = self.client_.generate(request(prompt), temperature, std::nullopt, timeout);
    const QString response = co_await task;
    self.material_.recordHistory(QStringLiteral("diagnose"), prompt, QStringLiteral("Veltrin"));
    co_return DiagnosisResult(PromptDiagnosisReport::parse(response, prompt, Date{self.runLoop_->wallNow()}));
}

}  // namespace veltrin

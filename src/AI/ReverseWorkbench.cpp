#include "AI/ReverseWorkbench.h"

#include "Foundation/Resource.h"
#include "Foundation/Text.h"
#include "Platform/RunLoop.h"

#include <utility>

namespace veltrin {
namespace {

constexpr double temperature = 0.3;
constexpr double timeout = 30;

QString iterationPrompt(const QString& original, const QString& direction) {
    return QStringLiteral("你之前帮用户生成了以下提示词：\n\n") + original +
           QStringLiteral("\n\n用户的调整方向是：") + direction +
           QStringLiteral("\n\n请根据用户的方向修改提示词，直接输出修改后的完整提示词。");
}

QString projectPrompt(const QString& contract, const QStringList& intents, const QString& material) {
    static const QString form = Resource::text(QStringLiteral("prompts/reverse_workbench.txt"));
    return Text::filled(form, {{QStringLiteral("contract"), contract.isEmpty() ? contract : contract + u'\n'},
                               {QStringLiteral("intents"), intents.join(u'、')},
                               {QStringLiteral("material"), material}});
}

}  // namespace

ReverseWorkbench::ReverseWorkbench(const OllamaClient& client, RunLoop& runLoop, ModelTaskMaterial material)
    : client_(client), runLoop_(&runLoop), material_(std::move(material)) {
}

QCoro::Task<WorkbenchProject> ReverseWorkbench::reverseEngineerProject(
    QString material, const QStringList& intents, const std::optional<QString>& shortcut) const {
    const QString contract =
        material_.runtimeContractPromptFor(shortcut.value_or(QStringLiteral("optimize")), std::nullopt);
    QString request = projectPrompt(contract, intents, material);
    return reversing(*this, std::move(material), std::move(request));
}

QCoro::Task<WorkbenchProject> ReverseWorkbench::reversing(ReverseWorkbench self, QString material,
                                                          QString request) {
    auto task = self.client_.generate(std::move(request), temperature, std::nullopt, timeout);
    const QString response = co_await task;
    self.material_.recordHistory(QStringLiteral("reverse"), material, QStringLiteral("Veltrin"));
    const WorkbenchSource source{QStringLiteral("mixed"), QStringLiteral("辅助工作台输入"), material};
    co_return WorkbenchProject::parse(response, source, Date{self.runLoop_->wallNow()});
}

QCoro::Task<QString> ReverseWorkbench::iteratePrompt(const QString& original,
                                                     const QString& direction) const {
    return client_.generate(iterationPrompt(original, direction), temperature, std::nullopt, timeout);
}

}  // namespace veltrin

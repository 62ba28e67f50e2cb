#include "AI/ModelTasks.h"
#include "AI/TaskAnswers.h"
#include "Data/DictionaryStore.h"
#include "Data/MemoryActionStore.h"
#include "Platform/RunLoop.h"

#include <utility>

namespace veltrin {
namespace {

using Parts = std::shared_ptr<const ModelTasks::Parts>;

QString memoryActionPrompt(const QString& description) {
    return QStringLiteral(
               "用户想创建一个 Veltrin 外部文本快捷动作。请根据用户描述生成 JSON，不要解释，不要 Markdown。"
               "\n\n用户描述：\n") +
           description +
           QStringLiteral(
               "\n\nJSON 格式：\n{\n"
               "  \"title\": \"不超过 8 个中文字\",\n"
               "  \"description\": \"不超过 18 个中文字\",\n"
               "  \"instruction\": \"可执行改写规则，说明如何处理文本、边界和禁止事项\",\n"
               "  \"icon\": \"SF Symbol 名称，例如 wand.and.stars\",\n"
               "  \"colorHex\": \"#FFE066\"\n}");
}

QString dictionaryTermPrompt(const QString& description) {
    return QStringLiteral(
               "用户正在给 Veltrin 私有词典添加专有名词。请根据用户描述生成 JSON，不要解释，不要 Markdown。"
               "\n\n用户描述：\n") +
           description +
           QStringLiteral(
               "\n\nJSON 格式：\n{\n"
               "  \"term\": \"词条或缩写\",\n"
               "  \"meaning\": \"它在用户语境中的准确含义\",\n"
               "  \"context\": \"适用场景，简短一句\",\n"
               "  \"aliases\": [\"可能的别名或大小写变体\"]\n}");
}

QCoro::Task<MemoryActionPreset> draftingAction(Parts parts, QString description) {
    auto task = parts->client.generateNonEmpty(memoryActionPrompt(description), 0.25, 260, 420);
    const QString answer = co_await task;
    co_return TaskAnswers::memoryAction(answer, description, Date{parts->runLoop.wallNow()});
}

QCoro::Task<DictionaryTerm> draftingTerm(Parts parts, QString description) {
    auto task = parts->client.generateNonEmpty(dictionaryTermPrompt(description), 0.15, 220, 360);
    const QString answer = co_await task;
    co_return TaskAnswers::dictionaryTerm(answer, description, Date{parts->runLoop.wallNow()});
}

}  // namespace

QCoro::Task<MemoryActionPreset> ModelTasks::draftMemoryAction(QString description) const {
    return draftingAction(parts_, std::move(description));
}

QCoro::Task<DictionaryTerm> ModelTasks::draftDictionaryTerm(QString description) const {
    return draftingTerm(parts_, std::move(description));
}

}  // namespace veltrin

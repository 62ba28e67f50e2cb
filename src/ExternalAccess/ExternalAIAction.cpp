#include "ExternalAccess/ExternalAIAction.h"

namespace veltrin {

ExternalGestureAIAction ExternalGestureAIAction::optimize(ExternalOptimizeMode mode) {
    return ExternalGestureAIAction(Optimize{mode});
}

ExternalGestureAIAction ExternalGestureAIAction::memoryAction(MemoryActionPreset preset, int agentSlot) {
    return ExternalGestureAIAction(MemoryAction{std::move(preset), agentSlot});
}

ExternalGestureAIAction ExternalGestureAIAction::translate() {
    return ExternalGestureAIAction(Translate{});
}

ExternalGestureAIAction ExternalGestureAIAction::commandRecommend() {
    return ExternalGestureAIAction(CommandRecommend{});
}

QString ExternalGestureAIAction::logName() const {
    if (const auto* optimize = std::get_if<Optimize>(&payload_))
        return QStringLiteral("optimize(%1)").arg(static_cast<int>(optimize->mode));
    // Put together by hand: a title may hold the marks that QString::arg looks for.
    if (const auto* memory = std::get_if<MemoryAction>(&payload_))
        return QStringLiteral("memoryAction(") + memory->preset.title + QStringLiteral(",slot:") +
               QString::number(memory->agentSlot + 1) + u')';
    return isTranslate() ? QStringLiteral("translate") : QStringLiteral("commandRecommend");
}

QString ExternalGestureAIAction::failureTitle() const {
    if (isTranslate()) return QStringLiteral("翻译失败");
    return isCommandRecommend() ? QStringLiteral("推荐失败") : QStringLiteral("优化失败");
}

QString ExternalGestureAIAction::copiedResultLabel() const {
    if (isTranslate()) return QStringLiteral("翻译后的内容");
    return isCommandRecommend() ? QStringLiteral("推荐内容") : QStringLiteral("优化后的内容");
}

QString statusText(ExternalAIActionState state) {
    return state == ExternalAIActionState::translating ? QStringLiteral("正在翻译")
                                                       : QStringLiteral("正在优化");
}

QString ExternalAIActionError::errorDescription() const {
    return kind_ == Kind::emptyInput ? QStringLiteral("emptyInput") : QStringLiteral("emptyOutput");
}

}  // namespace veltrin

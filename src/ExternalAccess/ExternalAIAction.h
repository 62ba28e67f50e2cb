#pragma once

#include "AI/CommandRecommendation.h"
#include "Data/MemoryActionPreset.h"
#include "Expression/ExpressionIntentEngine.h"
#include "Foundation/Error.h"

#include <QCoro/QCoroTask>
#include <QString>

#include <functional>
#include <optional>
#include <utility>
#include <variant>

namespace veltrin {

enum class ExternalOptimizeMode { refine = 1, restructure = 2, modelAdapt = 3, outputFormat = 4 };

/// What is to be done to a piece of foreign text.
class ExternalGestureAIAction {
public:
    struct Optimize {
        ExternalOptimizeMode mode = ExternalOptimizeMode::refine;
    };
    struct MemoryAction {
        MemoryActionPreset preset;
        int agentSlot = 0;  ///< counted from zero
    };
    struct Translate {};
    struct CommandRecommend {};
    using Payload = std::variant<Optimize, MemoryAction, Translate, CommandRecommend>;

    static ExternalGestureAIAction optimize(ExternalOptimizeMode mode);
    static ExternalGestureAIAction memoryAction(MemoryActionPreset preset, int agentSlot);
    static ExternalGestureAIAction translate();
    static ExternalGestureAIAction commandRecommend();

    const Payload& payload() const { return payload_; }
    bool isTranslate() const { return std::holds_alternative<Translate>(payload_); }
    bool isCommandRecommend() const { return std::holds_alternative<CommandRecommend>(payload_); }

    QString logName() const;
    /// Title of the card when the action fails.
    QString failureTitle() const;
    /// What kind of result it is, for the panel that says it was copied.
    QString copiedResultLabel() const;

private:
    template <typename Kind>
    explicit ExternalGestureAIAction(Kind kind) : payload_(std::in_place_type<Kind>, std::move(kind)) {}

    Payload payload_;
};

/// What the busy panel says: `translating` for a translation, `optimizing` for everything else.
enum class ExternalAIActionState { translating, optimizing };
template <>
inline constexpr auto rawValuesOf<ExternalAIActionState> =
    std::to_array<const char*>({"translating", "optimizing"});
/// The words of the busy panel.
QString statusText(ExternalAIActionState state);

class ExternalAIActionError : public Error {
public:
    enum class Kind { emptyInput, emptyOutput };
    explicit ExternalAIActionError(Kind kind) : kind_(kind) {}
    Kind kind() const { return kind_; }
    QString errorDescription() const override;

private:
    Kind kind_;
};

struct ExternalAIActionOutput {
    QString title;
    QString sourceLine;
    QString input;
    QString text;  ///< trimmed
    std::optional<ExpressionResult> expressionResult;
};

/// Plain model tasks that travel with the pipeline's dependencies; its stages do not call them.
struct ExternalAIActionRunner {
    std::function<QCoro::Task<QString>(QString)> translateHandler;
    std::function<QCoro::Task<QString>(QString, ExternalOptimizeMode)> optimizeHandler;
};

}  // namespace veltrin

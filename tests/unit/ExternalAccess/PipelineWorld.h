#pragma once

#include "ExternalAccess/ExternalActionPipeline.h"
#include "support/fake/LogCapture.h"

#include <gtest/gtest.h>

#include <coroutine>
#include <exception>
#include <utility>

namespace veltrin::test {

using Action = ExternalGestureAIAction;

class SomeElement final : public AXElement {
public:
    std::optional<qint32> processIdentifier() const override { return 42; }
    bool isEqual(const AXElement& other) const override { return this == &other; }
};

/// A model that answers when it is told to.
struct Gate {
    std::coroutine_handle<> waiting;
    void open() { std::exchange(waiting, nullptr).resume(); }
};

/// By pointer, since the compiler may copy what is awaited.
struct GateWait {
    Gate* gate;
    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> handle) const noexcept { gate->waiting = handle; }
    void await_resume() const noexcept {}
};

/// What the closures of a run are told and what they answer.
struct World {
    QStringList events;
    std::vector<ExpressionRequest> requests;
    std::vector<ExternalActionFeedback> cards;
    QString answer = QStringLiteral("  Hello \n");
    std::exception_ptr failure;
    Gate* gate = nullptr;
    bool targetMoved = false;
    bool force = false;
    ExternalTextWritebackResult written{true, WritebackStrategy::clipboardPaste,
                                        QStringLiteral("Applied via paste"), std::nullopt};
    std::vector<CommandRecommendation> recommendations;
    std::optional<ExternalAppContext> recommendedFor;
    QString recommendedContext;
    std::optional<QString> windowTitle = QStringLiteral("notes");
};

inline QCoro::Task<ExpressionResult> express(World* world, ExpressionRequest request) {
    world->requests.push_back(request);
    if (world->gate != nullptr) {
        GateWait wait{world->gate};
        co_await wait;
    }
    if (world->failure) std::rethrow_exception(world->failure);
    ExpressionResult result;
    result.sourceText = request.context.text;
    result.outputText = world->answer;
    co_return result;
}

inline QCoro::Task<std::vector<CommandRecommendation>> recommendations(World* world, QString context,
                                                                       ExternalAppContext application) {
    world->recommendedContext = context;
    world->recommendedFor = application;
    if (world->failure) std::rethrow_exception(world->failure);
    co_return world->recommendations;
}

inline const QRectF anchor(10, 20, 30, 40);

inline ExternalActionPipeline::Dependencies dependencies(World& world) {
    const auto channel = [&world](const char* what) {
        return [&world, what](InteractionSoundChannel on) {
            world.events << QString::fromUtf8(what) + u' ' + rawValue(on);
        };
    };
    ExternalActionPipeline::Dependencies outside;
    outside.showState = [&world](ExternalAIActionState state, std::optional<QRectF> at) {
        EXPECT_EQ(at, anchor);
        world.events << QStringLiteral("state ") + rawValue(state);
    };
    outside.showFeedback = [&world](const ExternalActionFeedback& card, std::optional<QRectF> at) {
        EXPECT_EQ(at, anchor);
        world.cards.push_back(card);
        world.events << QStringLiteral("card");
    };
    outside.dismissOverlay = [&world] { world.events << QStringLiteral("dismiss"); };
    outside.showCopiedResult = [&world](const QString& text, const Action& action) {
        world.events << QStringLiteral("copied '%1' %2").arg(text, action.logName());
    };
    outside.shouldCopyInstead = [&world](const WritebackTargetSnapshot& snapshot) {
        world.events << QStringLiteral("check ") +
                            snapshot.focusedWindowTitle.value_or(QStringLiteral("nil"));
        return world.targetMoved;
    };
    outside.writeback = [&world](const QString& text, const ExternalTextReadResult&, bool force) {
        world.events << QStringLiteral("write '%1' %2").arg(text, force ? u"all" : u"part");
        return world.written;
    };
    outside.forceReplaceAll = [&world](const Action&, const ExternalTextReadResult&) { return world.force; };
    outside.recordSuccess = [&world](const Action& action, const ExternalTextReadResult&) {
        world.events << QStringLiteral("behaviour ") + action.logName();
    };
    outside.runExpression = [&world](ExpressionRequest request) {
        return express(&world, std::move(request));
    };
    outside.focusedWindowTitle = [&world](std::optional<qint32>) { return world.windowTitle; };
    outside.translationTargetLanguage = [] { return QStringLiteral("ja"); };
    outside.recordMemoryEvent = [&world](const ExpressionResult& result, bool succeeded) {
        world.events
            << QStringLiteral("memory '%1' %2").arg(result.outputText.trimmed(), succeeded ? u"yes" : u"no");
    };
    outside.recommendCommands = [&world](QString context, ExternalAppContext application) {
        return recommendations(&world, std::move(context), std::move(application));
    };
    outside.recordCommandUsed = [&world](const CommandRecommendation& each, const QString& appName) {
        world.events << QStringLiteral("used ") + each.command + u' ' + appName;
    };
    outside.startThinking = channel("thinking");
    outside.playCompletion = channel("completed");
    outside.playCancel = channel("cancelled");
    return outside;
}

inline ExternalTextSession session(const QString& text) {
    ExternalTextSession session;
    session.readResult.source = ExternalTextReadResult::Source::value;
    session.readResult.text = text;
    session.readResult.fullText = text;
    session.readResult.frontmostAppName = QStringLiteral("Editor");
    session.readResult.bundleIdentifier = QStringLiteral("org.editor");
    session.readResult.processIdentifier = 42;
    session.readResult.element = std::make_shared<SomeElement>();
    session.readResult.textContext =
        ExternalTextContext::build(text, std::nullopt, std::nullopt, ExternalTextContext::standardBudget);
    session.anchor = anchor;
    return session;
}

/// Runs to the end; with a gate, to the gate.
inline void run(World& world, const Action& action, const ExternalTextSession& of) {
    const ExternalActionPipeline pipeline(dependencies(world));
    auto task = pipeline.run(action, of);
}

inline const QString source = QStringLiteral("你好");

inline QStringList list(std::initializer_list<const char*> items) {
    QStringList all;
    for (const char* item : items)
        all << QString::fromUtf8(item);
    return all;
}

}  // namespace veltrin::test

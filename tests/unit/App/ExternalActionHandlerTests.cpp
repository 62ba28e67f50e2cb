#include "App/ExternalActionHandler.h"
#include "Debug/MVPDebugPanel.h"
#include "Engines/ExpressionRunner.h"
#include "Expression/ExpressionMemoryStore.h"
#include "ExternalAccess/ExternalTextInputReader.h"
#include "ExternalAccess/WritebackTargetValidator.h"
#include "Foundation/Json.h"
#include "Gesture/SpaceGestureEngine.h"
#include "Session/UserBehaviorTracker.h"
#include "support/fake/FakeDesktop.h"
#include "support/fake/LogCapture.h"
#include "support/fake/TaskWorld.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using Action = ExternalGestureAIAction;
using Type = TrackedBehavior::BehaviorType;

/// The handler with everything it is bound to, on the simulated desktop.
class ExternalActionHandlerTest : public testing::Test {
protected:
    ExternalActionHandlerTest() { desktop.focus(field); }

    void run(const Action& action) {
        ExternalTextSession session;
        session.readResult =
            ExternalTextInputReader(desktop.accessibility, desktop.workspace, desktop.preferences)
                .readFocusedText();
        auto task = handler.handleExternalAIAction(action, session);
        desktop.advance(1);  // for the paste and the return of the clipboard
    }
    void modelAnswers(const QString& text) {
        Json body;
        body.set(u"response"_s, text);
        desktop.httpClient.answer(200, body.serialized());
    }
    /// What the tracker holds, newest first.
    QStringList behaviors() const {
        QStringList texts;
        for (const TrackedBehavior& each : tracker.recentBehaviors()) {
            texts << rawValue(each.type) + u'|' + each.detail + u'|' + each.context + u'|' + each.category +
                         QString(each.accepted ? u"|yes"_s : u"|no"_s);
        }
        return texts;
    }

    LogCapture log;
    FakeDesktop desktop;
    FakeApplication& editor = desktop.launch(u"Editor"_s, u"org.example.Editor"_s);
    FakeTextField& field = editor.addField(u"Hallo Welt"_s);
    NotificationCenter notifications;
    AppSettings settings{desktop.preferences, notifications, desktop.environment};
    OllamaClient client{desktop.httpClient, settings};
    ExpressionMemoryStore memory{desktop.preferences};
    QTemporaryDir folder;
    UserBehaviorTracker tracker{folder.path(), desktop.runLoop};
    SpaceGestureEngine engine{desktop.runLoop, desktop.keyEventTaps, desktop.preferences, desktop.pasteboard};
    MVPDebugPanel panel{desktop.runLoop, desktop.floatingPanels, desktop.screens, desktop.pasteboard,
                        desktop.preferences};
    PasteboardLoan loan{desktop.pasteboard, desktop.runLoop};
    ExternalTextWriteback writeback{desktop.accessibility, desktop.workspace, loan, desktop.keyPoster,
                                    desktop.runLoop};
    WritebackTargetValidator validator{desktop.accessibility, desktop.workspace, settings};
    ExpressionRunner expressions{client};
    TaskMaterial material;
    ModelTasks tasks{client, settings, desktop.runLoop, material.closures()};
    ExternalActionHandler handler{{desktop.runLoop, desktop.accessibility, settings, engine, panel, writeback,
                                   validator, expressions, memory, tracker, client, tasks}};
};

TEST_F(ExternalActionHandlerTest, theTrackerShowsWhatWasDone) {
    modelAnswers(u"Hello world."_s);
    run(Action::translate());
    EXPECT_EQ(field.value, u"Hello world."_s);
    EXPECT_EQ(behaviors(), QStringList{u"optimizeAction|translate|Editor|optimize|yes"_s});
    ASSERT_EQ(memory.load().size(), 1U);

    modelAnswers(u"Guten Tag, Welt."_s);
    run(Action::optimize(ExternalOptimizeMode::modelAdapt));
    EXPECT_EQ(behaviors().constFirst(), u"optimizeAction|3|Editor|optimize|yes"_s);

    MemoryActionPreset shorter;
    shorter.title = u"更简洁"_s;
    shorter.description = u"压缩"_s;
    shorter.instruction = u"把文本改写得更简洁。"_s;
    modelAnswers(u"Guten Tag."_s);
    run(Action::memoryAction(shorter, 3));
    EXPECT_EQ(behaviors().constFirst(), u"memoryAction|更简洁|Editor|memory-action|yes"_s);
    EXPECT_EQ(behaviors().size(), 3);
    EXPECT_EQ(memory.load().size(), 3U);
    EXPECT_EQ(tracker.profile().totalSessions, 3);
}

TEST_F(ExternalActionHandlerTest, aFailureIsNoBehaviour) {
    desktop.httpClient.answer(500, "no");
    run(Action::translate());
    EXPECT_EQ(field.value, u"Hallo Welt"_s);
    EXPECT_TRUE(behaviors().isEmpty());
}

TEST_F(ExternalActionHandlerTest, eachRecommendationShownCountsAsUsed) {
    modelAnswers(
        u"[{\"command\":\"loop\",\"category\":\"skill\",\"explanation\":\"e\",\"confidence\":\"high\"},"
        "{\"command\":\"onboard\",\"category\":\"tool\",\"explanation\":\"f\",\"confidence\":\"low\"}]"_s);
    run(Action::commandRecommend());
    EXPECT_EQ(field.value, u"★ loop — e\n· onboard — f"_s);
    EXPECT_EQ(behaviors(), (QStringList{u"commandUsed|onboard|Editor|tool|yes"_s,
                                        u"commandUsed|loop|Editor|skill|yes"_s}));
    EXPECT_TRUE(memory.load().empty());
    const Json body = Json::parse(desktop.httpClient.requests.back().body);
    EXPECT_TRUE(body.find(u"prompt")->toString()->contains(u"活跃应用：Editor"_s));
    EXPECT_EQ(body.find(u"options")->serialized(), QByteArray(R"({"temperature":0.1,"num_predict":600})"));

    modelAnswers(u"我不知道"_s);
    run(Action::commandRecommend());
    EXPECT_EQ(behaviors().constFirst(), u"commandUsed|—|Editor|raw|yes"_s)
        << "the row that holds an unreadable answer counts too";
}

TEST_F(ExternalActionHandlerTest, aFailedRecommendationSaysSoAndRecordsNothing) {
    desktop.httpClient.answer(500, "no");
    run(Action::commandRecommend());
    EXPECT_EQ(field.value, u"Hallo Welt"_s);
    EXPECT_TRUE(behaviors().isEmpty());
    EXPECT_TRUE(desktop.floatingPanels.shownText().value_or(QString()).startsWith(u"推荐失败"_s));
}

}  // namespace
}  // namespace veltrin

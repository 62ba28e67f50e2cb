#include "unit/App/HandlerWorld.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using Action = ExternalGestureAIAction;
using Type = TrackedBehavior::BehaviorType;

class ExternalActionHandlerTest : public testing::Test, protected HandlerWorld {
protected:
    ExternalActionHandlerTest() { desktop.focus(field); }

    void run(const Action& action) {
        ExternalTextSession session;
        session.readResult = reader.readFocusedText();
        auto task = handler.handleExternalAIAction(action, session);
        desktop.advance(1);  // for the paste and the return of the clipboard
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

    FakeApplication& editor = desktop.launch(u"Editor"_s, u"org.example.Editor"_s);
    FakeTextField& field = editor.addField(u"Hallo Welt"_s);
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

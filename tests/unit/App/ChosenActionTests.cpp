#include "App/ChosenAction.h"
#include "unit/App/HandlerWorld.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

const QString suspended = u"SpaceGestureEngine event tap suspended reason: external text read"_s;

class ChosenActionTest : public testing::Test, protected HandlerWorld {
protected:
    ChosenActionTest() {
        desktop.focus(field);
        engine.start();
        modelAnswers(
            uR"([{"command":"/review","category":"slash-command",)"
            uR"("explanation":"要合并了","confidence":"high"}])"_s);
    }
    QString prompt(std::size_t request) const {
        return *Json::parse(desktop.httpClient.requests.at(request).body).find(u"prompt")->toString();
    }

    FakeApplication& terminal = desktop.launch(u"Konsole"_s, u"org.kde.konsole"_s);
    FakeTextField& field = terminal.addField(u"git push"_s);
    std::optional<ChosenAction> chosen{std::in_place, desktop.runLoop, engine, reader, handler};
};

TEST_F(ChosenActionTest, theSearchForACommandEndsInTheField) {
    chosen->start(ExternalGestureAIAction::commandRecommend(), std::nullopt);
    desktop.advance(2);
    EXPECT_EQ(field.value, u"★ /review — 要合并了"_s);
    EXPECT_TRUE(prompt(0).contains(u"- 活跃应用：Konsole\n"_s));
    EXPECT_TRUE(prompt(0).contains(u"git push"_s));
}

TEST_F(ChosenActionTest, readsOnlyWhenTheFieldHasTheFocusAgain) {
    chosen->start(ExternalGestureAIAction::commandRecommend(), std::nullopt);
    desktop.advance(0.049);
    EXPECT_TRUE(desktop.httpClient.requests.empty());
    EXPECT_FALSE(log.lines().contains(suspended));
    field.value = u"git rebase"_s;
    desktop.advance(0.002);
    ASSERT_EQ(desktop.httpClient.requests.size(), 1U);
    EXPECT_TRUE(prompt(0).contains(u"git rebase"_s));
    EXPECT_FALSE(prompt(0).contains(u"git push"_s));
}

TEST_F(ChosenActionTest, suspendsTheTapForTheRead) {
    chosen->start(ExternalGestureAIAction::commandRecommend(), std::nullopt);
    desktop.advance(2);
    EXPECT_TRUE(log.lines().contains(suspended));
    EXPECT_TRUE(
        log.lines().contains(u"SpaceGestureEngine event tap resumed reason: external text read finished"_s));
}

TEST_F(ChosenActionTest, doesNothingWhenItsOwnerIsGone) {
    chosen->start(ExternalGestureAIAction::commandRecommend(), std::nullopt);
    chosen.reset();
    desktop.advance(2);
    EXPECT_TRUE(desktop.httpClient.requests.empty());
    EXPECT_EQ(field.value, u"git push"_s);
}

TEST_F(ChosenActionTest, showsTheBusyStateWhereThePanelStood) {
    desktop.httpClient.holding = true;
    const QRectF anchor(200, 300, 20, 16);
    chosen->start(ExternalGestureAIAction::commandRecommend(), anchor);
    desktop.advance(0.06);
    EXPECT_TRUE(log.lines().contains(u"AI action state: optimizing"_s));
    EXPECT_EQ(desktop.floatingPanels.shownText(PanelKind::statusPill), u"正在优化"_s);
    ASSERT_TRUE(desktop.httpClient.release());
    desktop.advance(2);
}

TEST_F(ChosenActionTest, anUnreadableFieldGetsItsCardWithoutAQuestion) {
    field.value = u"  "_s;
    chosen->start(ExternalGestureAIAction::commandRecommend(), std::nullopt);
    desktop.advance(2);
    EXPECT_TRUE(desktop.httpClient.requests.empty());
    EXPECT_TRUE(desktop.floatingPanels.shownText().value_or(QString()).startsWith(u"没有读到可处理的文本"_s));
}

}  // namespace
}  // namespace veltrin

#include "Debug/MVPDebugPanel.h"
#include "support/fake/FakeDesktop.h"
#include "support/fake/LogCapture.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

class MVPDebugPanelTest : public testing::Test {
protected:
    LogCapture log;
    FakeDesktop desktop;
    MVPDebugPanel panel{desktop.runLoop, desktop.floatingPanels, desktop.screens, desktop.pasteboard,
                        desktop.preferences};

    void text(const char* words, std::optional<double> autoDismiss = std::nullopt,
              std::optional<QRectF> anchor = std::nullopt) {
        panel.showPanel(QString::fromUtf8(words), anchor, autoDismiss);
    }
    void pill(std::optional<QRectF> anchor, std::optional<double> autoDismiss = std::nullopt) {
        panel.showStatusPill(QStringLiteral("正在优化"), anchor, autoDismiss);
    }
    void choice(
        std::optional<QRectF> anchor, const std::function<void(int)>& onSelectSlot = [](int) {},
        const std::function<void()>& onClosed = {}) {
        panel.showOptimizeChoicePanel({action("更专业", 3)}, {agent("Writer"), std::nullopt}, anchor,
                                      onSelectSlot, onClosed);
    }
    static MemoryActionPreset action(const char* title, std::optional<int> slot) {
        MemoryActionPreset preset;
        preset.title = QString::fromUtf8(title);
        preset.description = QStringLiteral("a line");
        preset.icon = QStringLiteral("scope");
        preset.colorHex = QStringLiteral("#FFE066");
        preset.shortcutSlot = slot;
        return preset;
    }
    static std::optional<AgentProfile> agent(const char* name) {
        AgentProfile profile = AgentProfile::made({});
        profile.name = QString::fromUtf8(name);
        profile.icon = QStringLiteral("wand.and.stars");
        profile.colorHex = QStringLiteral("#B5D8FF");
        return profile;
    }
    bool choiceShown() const { return desktop.floatingPanels.shownText(PanelKind::choice).has_value(); }
    const FakeFloatingPanels::Record& last() const { return desktop.floatingPanels.last(); }
    std::optional<QString> shownText() const { return desktop.floatingPanels.shownText(); }
    bool logged(const QString& start) const {
        for (const QString& line : log.lines()) {
            if (line.startsWith(start)) return true;
        }
        return false;
    }
};

TEST_F(MVPDebugPanelTest, aTextPanelStandsInTheMiddleOfTheMainScreenWhateverItsAnchor) {
    text("Veltrin Ready", std::nullopt, QRectF(10, 10, 50, 20));
    EXPECT_EQ(last().spec.kind, PanelKind::text);
    EXPECT_EQ(last().spec.size, QSizeF(300, 84));
    EXPECT_FALSE(last().spec.takesMouseEvents);
    EXPECT_EQ(last().origin, QPointF(960 - 150, 525 - 42));
    EXPECT_EQ(last().animatedScale, 0.965);
    EXPECT_EQ(last().animatedDuration, 0.17);
    EXPECT_TRUE(logged(
        QStringLiteral("UI showPanel requested: Veltrin Ready anchor: (10, 10, 50, 20) visible frame:")));
}

TEST_F(MVPDebugPanelTest, withoutAScreenThePlatformFindsTheMiddle) {
    desktop.screens.list.clear();
    text("a");
    EXPECT_TRUE(last().centered);
    pill(QRectF(10, 10, 50, 20));
    EXPECT_TRUE(last().centered);
    pill(std::nullopt);
    EXPECT_TRUE(last().centered);
}

TEST_F(MVPDebugPanelTest, aSecondPanelReplacesTheFirstAndItsTime) {
    text("first", 1.0);
    desktop.advance(0.5);
    text("second", 1.0);
    EXPECT_TRUE(desktop.floatingPanels.records[0]->closed);
    EXPECT_FALSE(desktop.floatingPanels.records[0]->fading);
    desktop.advance(0.9);
    EXPECT_EQ(shownText(), QStringLiteral("second"));
    desktop.advance(0.11);
    EXPECT_EQ(shownText(), std::nullopt);
    desktop.advance(1);
    EXPECT_EQ(desktop.floatingPanels.openCount(), 0);
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0u);
}

TEST_F(MVPDebugPanelTest, withoutATimeAPanelStays) {
    text("a");
    pill(std::nullopt, 0);
    desktop.advance(3600);
    EXPECT_EQ(desktop.floatingPanels.shown().size(), 2u);
}

TEST_F(MVPDebugPanelTest, theSlotsAreIndependent) {
    text("message");
    pill(std::nullopt);
    panel.dismissOverlay();
    EXPECT_EQ(shownText(), QStringLiteral("message"));
    EXPECT_FALSE(desktop.floatingPanels.shownText(PanelKind::statusPill));
    panel.dismissPanel();
    desktop.advance(1);
    EXPECT_EQ(desktop.floatingPanels.openCount(), 0);
}

TEST_F(MVPDebugPanelTest, dismissingFadesThePanelAndThenClosesIt) {
    text("a", 5.0);
    panel.dismissPanel();
    EXPECT_TRUE(last().fading);
    EXPECT_FALSE(last().closed);
    desktop.advance(0.2);
    EXPECT_TRUE(last().closed);
    panel.dismissPanel();
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0u);
}

TEST_F(MVPDebugPanelTest, goneInTheMiddleOfAFadeLeavesNothing) {
    {
        MVPDebugPanel other(desktop.runLoop, desktop.floatingPanels, desktop.screens, desktop.pasteboard,
                            desktop.preferences);
        other.showPanel(QStringLiteral("a"), std::nullopt, 1.0);
        other.dismissPanel();
    }
    EXPECT_TRUE(last().closed);
    desktop.advance(5);
}

TEST_F(MVPDebugPanelTest, aPillStandsInTheMiddleOfItsAnchor) {
    pill(QRectF(400, 300, 200, 100));
    EXPECT_EQ(last().spec.kind, PanelKind::statusPill);
    EXPECT_EQ(last().spec.size, QSizeF(72, 40));
    EXPECT_EQ(last().origin, QPointF(500 - 36, 350 - 20));
    EXPECT_TRUE(logged(QStringLiteral("UI showStatusPill requested: 正在优化 anchor: (400, 300, 200, 100)")));
}

TEST_F(MVPDebugPanelTest, aPillNeverLeavesTheVisibleFrame) {
    pill(QRectF(-50, -50, 10, 10));
    EXPECT_EQ(last().origin, QPointF(12, 12));
    pill(QRectF(1910, 1060, 10, 20));
    EXPECT_EQ(last().origin, QPointF(1920 - 72 - 12, 1050 - 40 - 12));
}

TEST_F(MVPDebugPanelTest, withoutAnAnchorAPillStandsAboveThePointer) {
    desktop.screens.mouse = {700, 400};
    pill(std::nullopt);
    EXPECT_EQ(last().origin, QPointF(700 - 36, 424));
    desktop.screens.mouse = {1919, 1079};
    pill(std::nullopt);
    EXPECT_EQ(last().origin, QPointF(1920 - 72 - 12, 1050 - 40 - 12));
}

TEST_F(MVPDebugPanelTest, anAnchorOnASecondDisplayKeepsThePillThereAndTheTextOnTheMainOne) {
    desktop.screens.list.push_back({QRectF(1920, 0, 1280, 720), QRectF(1920, 0, 1280, 720)});
    const QRectF anchor(2000, 20, 100, 20);
    pill(anchor);
    EXPECT_EQ(last().origin, QPointF(2050 - 36, 30 - 20 + 2));
    text("a", std::nullopt, anchor);
    EXPECT_EQ(last().origin, QPointF(810, 483));
}

TEST_F(MVPDebugPanelTest, anAnchorOutsideEveryScreenGoesToTheMainOne) {
    desktop.screens.list.push_back({QRectF(1920, 0, 1280, 720), QRectF(1920, 0, 1280, 720)});
    pill(QRectF(9000, 9000, 10, 10));
    EXPECT_EQ(last().origin, QPointF(1920 - 72 - 12, 1050 - 40 - 12));
}

TEST_F(MVPDebugPanelTest, theOverlayFollowsItsAnchorBelowItWithoutAnimation) {
    pill(QRectF(400, 300, 200, 100));
    const auto shownOnce = last().animatedScale;
    panel.repositionPanel(QRectF(400, 500, 200, 100));
    EXPECT_EQ(last().origin, QPointF(500 - 36, 500 - 40 - 10));
    EXPECT_EQ(last().animatedScale, shownOnce);
    panel.repositionPanel(QRectF(400, 5, 200, 20));  // at the bottom it covers its anchor
    EXPECT_EQ(last().origin, QPointF(500 - 36, 12));
    panel.repositionPanel(std::nullopt);
    EXPECT_EQ(last().origin, QPointF(960 - 36, 564));
    panel.dismissOverlay();
    const int moves = last().moves;
    panel.repositionPanel(QRectF(0, 0, 10, 10));
    EXPECT_EQ(last().moves, moves);
}

TEST_F(MVPDebugPanelTest, placingIsLoggedOnlyWhenAskedFor) {
    pill(QRectF(400, 300, 200, 100));
    panel.repositionPanel(QRectF(400, 500, 200, 100));
    EXPECT_FALSE(logged(QStringLiteral("UI status pill positioning:")));
    EXPECT_FALSE(logged(QStringLiteral("UI positioning source:")));
    desktop.preferences.set(PreferenceKeys::gestureVerboseLogging, true);
    pill(QRectF(400, 300, 200, 100));
    panel.repositionPanel(QRectF(400, 500, 200, 100));
    panel.repositionPanel(std::nullopt);
    EXPECT_TRUE(logged(QStringLiteral("UI status pill positioning: preferred: (464, 330)")));
    EXPECT_TRUE(logged(QStringLiteral("UI positioning source: anchor rect")));
    EXPECT_TRUE(logged(QStringLiteral("UI anchor positioning: preferred: (464, 450) result: (464, 450)")));
    EXPECT_TRUE(logged(QStringLiteral("UI positioning source: mouse fallback")));
    EXPECT_TRUE(logged(QStringLiteral("UI mouse fallback positioning: preferred: (924, 564)")));
}

TEST_F(MVPDebugPanelTest, aCopiedResultIsOnThePasteboardWhenItsPanelShows) {
    desktop.pasteboard.put(QStringLiteral("former"));
    panel.showCopiedResult(QStringLiteral("result 😀"), QStringLiteral("优化后的内容"), 2.4);
    EXPECT_EQ(desktop.pasteboard.peek(), QStringLiteral("result 😀"));
    EXPECT_EQ(desktop.pasteboard.current().content, PasteboardContent::lasting);
    EXPECT_TRUE(shownText().value_or(QString()).contains(QStringLiteral("优化后的内容")));
    EXPECT_TRUE(logged(QStringLiteral("UI copied result panel shown: length: 8")));
    desktop.advance(2.5);
    EXPECT_FALSE(shownText());
}

TEST_F(MVPDebugPanelTest, anEmptyResultNeverTouchesThePasteboard) {
    desktop.pasteboard.put(QStringLiteral("former"));
    const auto count = desktop.pasteboard.changeCount();
    panel.showCopiedResult({}, QStringLiteral("优化后的内容"), 2.4);
    EXPECT_EQ(desktop.pasteboard.changeCount(), count);
    EXPECT_EQ(shownText(), QStringLiteral("没有生成结果\n请重试或切换模型"));
    EXPECT_TRUE(logged(QStringLiteral("UI showCopiedResult requested: empty generated text")));
}

TEST_F(MVPDebugPanelTest, aPasteboardThatCannotBeTakenIsSaid) {
    desktop.pasteboard.refusesOwnership = true;
    panel.showCopiedResult(QStringLiteral("result"), QStringLiteral("优化后的内容"), 2.4);
    EXPECT_EQ(shownText(), QStringLiteral("复制失败\n请手动复制结果"));
}

TEST_F(MVPDebugPanelTest, aFailureCardShowsItsCompactMessageForAWhile) {
    panel.showFailureCard(QStringLiteral("优化失败"), QStringLiteral("API Key"), QStringLiteral("go"),
                          std::nullopt, std::nullopt, std::nullopt);
    EXPECT_TRUE(shownText().value_or(QString()).startsWith(QStringLiteral("优化失败")));
    EXPECT_EQ(last().spec.size, QSizeF(300, 84));
    desktop.advance(2.19);
    EXPECT_TRUE(shownText());
    desktop.advance(0.02);
    EXPECT_FALSE(shownText());
    EXPECT_TRUE(logged(QStringLiteral("UI showFailureCard requested:")));
}

TEST_F(MVPDebugPanelTest, aMessageTellsHowItWent) {
    panel.showPanel(QStringLiteral("Veltrin Ready"), std::nullopt, std::nullopt);
    EXPECT_EQ(last().spec.tone, PanelTone::plain);
    panel.showCopiedResult(QStringLiteral("text"), QStringLiteral("结果"), std::nullopt);
    EXPECT_EQ(last().spec.tone, PanelTone::success);
    panel.showCopiedResult({}, QStringLiteral("结果"), std::nullopt);
    EXPECT_EQ(last().spec.tone, PanelTone::failure);
    panel.showFailureCard(QStringLiteral("优化失败"), {}, {}, std::nullopt, std::nullopt, std::nullopt);
    EXPECT_EQ(last().spec.tone, PanelTone::failure);
}

// MARK: The choice

TEST_F(MVPDebugPanelTest, theChoiceTakesTheMouseAndStandsBelowItsAnchor) {
    choice(QRectF(600, 500, 2, 20));
    EXPECT_EQ(last().spec.kind, PanelKind::choice);
    EXPECT_EQ(last().spec.size, QSizeF(310, 248));
    EXPECT_TRUE(last().spec.takesMouseEvents);
    EXPECT_EQ(last().origin, QPointF(601 - 155, 500 - 248 - 10));
    EXPECT_EQ(last().animatedScale, 0.965);
    EXPECT_EQ(last().animatedDuration, 0.17);
    EXPECT_TRUE(logged(QStringLiteral(
        "UI showOptimizeChoicePanel requested: 优化提示词 anchor: (600, 500, 2, 20) visible frame:")));
    desktop.advance(3600);
    EXPECT_TRUE(choiceShown());
}

TEST_F(MVPDebugPanelTest, anAnchorAtTheBottomIsCoveredByTheChoiceThatKeepsItsMargin) {
    const QRectF anchor(600, 40, 2, 20);
    choice(anchor);
    EXPECT_EQ(last().origin, QPointF(601 - 155, 12));
    EXPECT_TRUE(QRectF(*last().origin, last().spec.size).contains(anchor));
    choice(QRectF(-300, 1040, 2, 20));
    EXPECT_EQ(last().origin, QPointF(12, 1040 - 248 - 10));
    choice(QRectF(1915, 500, 2, 20));
    EXPECT_EQ(last().origin, QPointF(1920 - 310 - 12, 500 - 248 - 10));
}

TEST_F(MVPDebugPanelTest, withoutAnAnchorTheChoiceStandsAboveThePointer) {
    desktop.screens.mouse = {700, 400};
    choice(std::nullopt);
    EXPECT_EQ(last().origin, QPointF(700 - 155, 424));
    EXPECT_TRUE(logged(QStringLiteral("UI showOptimizeChoicePanel requested: 优化提示词 anchor: nil")));
}

TEST_F(MVPDebugPanelTest, anAnchorOnASecondDisplayKeepsTheChoiceThereWhileATextGoesToTheMainScreen) {
    desktop.screens.list.push_back({QRectF(1920, 0, 1280, 720), QRectF(1920, 0, 1280, 720)});
    const QRectF anchor(1925, 600, 2, 20);
    choice(anchor);
    EXPECT_EQ(last().origin, QPointF(1920 + 12, 600 - 248 - 10));
    text("a", std::nullopt, anchor);
    EXPECT_EQ(last().origin, QPointF(810, 483));
}

TEST_F(MVPDebugPanelTest, aScreenThatIsUnpluggedGivesTheChoiceToTheMainOneAtTheNextMove) {
    desktop.screens.list.push_back({QRectF(1920, 0, 1280, 720), QRectF(1920, 0, 1280, 720)});
    const QRectF anchor(2500, 600, 2, 20);
    choice(anchor);
    desktop.screens.list.pop_back();
    panel.repositionPanel(anchor);
    EXPECT_EQ(last().origin, QPointF(1920 - 310 - 12, 600 - 248 - 10));
    desktop.screens.list.clear();
    panel.repositionPanel(anchor);
    EXPECT_TRUE(last().centered);
}

TEST_F(MVPDebugPanelTest, aScreenSmallerThanTheChoiceLeavesItAtTheLowerLeftMargin) {
    desktop.screens.list = {{QRectF(0, 0, 200, 100), QRectF(0, 0, 200, 100)}};
    choice(QRectF(100, 50, 2, 20));
    EXPECT_EQ(last().origin, QPointF(12, 12));
}

TEST_F(MVPDebugPanelTest, whereTheDesktopEnlargesPanelsTheyStandByTheirSizeOnTheScreen) {
    desktop.floatingPanels.scale = 2;
    choice(QRectF(600, 700, 2, 20));
    EXPECT_EQ(last().origin, QPointF(601 - 310, 700 - 496 - 10));
    panel.repositionPanel(QRectF(1900, 100, 2, 20));
    EXPECT_EQ(last().origin, QPointF(1920 - 620 - 12, 12));
    desktop.screens.mouse = {700, 400};
    panel.repositionPanel(std::nullopt);
    EXPECT_EQ(last().origin, QPointF(700 - 310, 424));
    pill(QRectF(500, 300, 100, 50));
    EXPECT_EQ(last().origin, QPointF(550 - 72, 325 - 40));
    text("a");
    EXPECT_EQ(last().origin, QPointF(960 - 300, 525 - 84));
}

TEST_F(MVPDebugPanelTest, aThirdScreenIsAsGoodAsTheSecond) {
    desktop.screens.list.push_back({QRectF(1920, 0, 1280, 720), QRectF(1920, 0, 1280, 720)});
    desktop.screens.list.push_back({QRectF(-1024, 200, 1024, 768), QRectF(-1024, 200, 1024, 740)});
    choice(QRectF(-10, 900, 2, 20));
    EXPECT_EQ(last().origin, QPointF(-310 - 12, 900 - 248 - 10));
    pill(QRectF(-1020, 210, 2, 20));
    EXPECT_EQ(last().origin, QPointF(-1024 + 12, 212));
}

TEST_F(MVPDebugPanelTest, theChoiceListsAgentsBySlotAndThenThePresets) {
    choice(std::nullopt);
    const ChoiceContent& content = last().spec.choice;
    EXPECT_EQ(content.title, QStringLiteral("优化提示词"));
    EXPECT_EQ(content.presetMark, QStringLiteral("预设"));
    const std::vector<ChoiceRow> agents{
        {1, QStringLiteral("Writer"), {}, QStringLiteral("wand.and.stars"), QStringLiteral("#B5D8FF"), false},
        {2, QStringLiteral("未设置优化 Agent"), QStringLiteral("前往 Agent Studio 配置"), {}, {}, true}};
    EXPECT_EQ(content.agents, agents);
    const std::vector<ChoiceRow> presets{{3, QStringLiteral("更专业"), QStringLiteral("a line"),
                                          QStringLiteral("scope"), QStringLiteral("#FFE066"), false}};
    EXPECT_EQ(content.presets, presets);
}

TEST_F(MVPDebugPanelTest, theChoiceSpeaksEnglishWhenTheInterfaceDoes) {
    panel.showOptimizeChoicePanel({action("x", std::nullopt)}, {std::nullopt}, std::nullopt, {}, {}, true);
    const ChoiceContent& content = last().spec.choice;
    EXPECT_EQ(content.title, QStringLiteral("Optimize Prompt"));
    EXPECT_EQ(content.presetMark, QStringLiteral("Preset"));
    EXPECT_EQ(content.agents[0].title, QStringLiteral("No agent set"));
    EXPECT_EQ(content.presets[0].slot, 1);  // without a slot of its own, its position
}

TEST_F(MVPDebugPanelTest, whatTheUsersFilesCallThingsIsOneLineOfTheChoice) {
    panel.showOptimizeChoicePanel({action("two\nlines", 1)}, {agent("A\r\nB\tC")}, std::nullopt, {});
    const ChoiceContent& content = last().spec.choice;
    EXPECT_EQ(content.agents[0].title, QStringLiteral("A B C"));
    EXPECT_EQ(content.presets[0].title, QStringLiteral("two lines"));
}

TEST_F(MVPDebugPanelTest, aClickOnARowGivesItsNumber) {
    std::vector<int> chosen;
    choice(std::nullopt, [&](int slot) { chosen.push_back(slot); });
    EXPECT_TRUE(desktop.floatingPanels.clickRow(2));
    EXPECT_TRUE(desktop.floatingPanels.clickRow(3));
    EXPECT_FALSE(desktop.floatingPanels.clickRow(4));
    EXPECT_EQ(chosen, (std::vector<int>{2, 3}));
}

TEST_F(MVPDebugPanelTest, theChoiceSendsThePillAwayBeforeIt) {
    pill(std::nullopt, 5.0);
    choice(std::nullopt);
    EXPECT_TRUE(desktop.floatingPanels.records[0]->fading);
    desktop.advance(10);
    EXPECT_TRUE(desktop.floatingPanels.records[0]->closed);
    EXPECT_TRUE(choiceShown());
}

TEST_F(MVPDebugPanelTest, dismissingThePanelClosesMessageAndChoiceButNoPill) {
    text("message");
    choice(std::nullopt);
    panel.dismissPanel();
    EXPECT_FALSE(choiceShown());
    EXPECT_FALSE(shownText());
    pill(std::nullopt);
    panel.dismissPanel();
    EXPECT_TRUE(desktop.floatingPanels.shownText(PanelKind::statusPill));
}

TEST_F(MVPDebugPanelTest, theEndOfAChoiceIsToldOnceByWhateverWay) {
    int closed = 0;
    const auto count = [&] { ++closed; };
    choice(std::nullopt, {}, count);
    EXPECT_EQ(closed, 0);
    panel.dismissPanel();
    EXPECT_EQ(closed, 1);
    panel.dismissPanel();
    panel.dismissOverlay();
    EXPECT_EQ(closed, 1);
    choice(std::nullopt, {}, count);
    pill(std::nullopt);
    EXPECT_EQ(closed, 2);
    choice(std::nullopt, {}, count);
    choice(std::nullopt, {}, count);
    EXPECT_EQ(closed, 3);
    panel.dismissOverlay();
    EXPECT_EQ(closed, 4);
    desktop.floatingPanels.available = false;
    choice(std::nullopt, {}, count);
    EXPECT_EQ(closed, 5);
}

TEST_F(MVPDebugPanelTest, theChoiceFollowsItsAnchorWithoutAnimation) {
    choice(QRectF(600, 500, 2, 20));
    panel.repositionPanel(QRectF(700, 600, 2, 20));
    EXPECT_EQ(last().origin, QPointF(701 - 155, 600 - 248 - 10));
    EXPECT_EQ(desktop.floatingPanels.records.size(), 1u);
}

TEST_F(MVPDebugPanelTest, tenThousandTogglesLeaveNothingBehind) {
    for (int i = 0; i < 10'000; ++i) {
        choice(QRectF(600, 500, 2, 20));
        panel.dismissPanel();
        desktop.advance(0.2);
        desktop.forgetRecords();
    }
    EXPECT_EQ(desktop.floatingPanels.openCount(), 0);
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0u);
}

TEST_F(MVPDebugPanelTest, offTheMainThreadEveryOperationWaitsForTheMainLoop) {
    desktop.runLoop.mainThread = false;
    text("a");
    pill(std::nullopt);
    panel.showCopiedResult(QStringLiteral("r"), QStringLiteral("l"), std::nullopt);
    EXPECT_TRUE(desktop.floatingPanels.records.empty());
    EXPECT_FALSE(desktop.pasteboard.peek());
    desktop.runLoop.mainThread = true;
    desktop.runLoop.runDue();
    EXPECT_EQ(desktop.floatingPanels.shown().size(), 2u);
    EXPECT_EQ(desktop.pasteboard.peek(), QStringLiteral("r"));
    desktop.runLoop.mainThread = false;
    choice(std::nullopt);
    EXPECT_FALSE(choiceShown());
    desktop.runLoop.mainThread = true;
    desktop.runLoop.runDue();
    EXPECT_TRUE(choiceShown());
    desktop.runLoop.mainThread = false;
    panel.dismissPanel();
    panel.dismissOverlay();
    panel.repositionPanel(std::nullopt);
    EXPECT_EQ(desktop.floatingPanels.shown().size(), 2u);
    desktop.runLoop.mainThread = true;
    desktop.runLoop.runDue();
    EXPECT_TRUE(desktop.floatingPanels.shown().empty());
}

TEST_F(MVPDebugPanelTest, withoutWindowsNothingIsShownAndNothingBreaks) {
    desktop.floatingPanels.available = false;
    text("a", 1.0);
    pill(std::nullopt, 1.0);
    panel.repositionPanel(std::nullopt);
    panel.dismissPanel();
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0u);
}

}  // namespace
}  // namespace veltrin

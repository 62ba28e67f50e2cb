#include "unit/App/SmartSelectWorld.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

const QString text = u"明天下午三点可以开会吗？"_s;

class SmartSelectOverlayTest : public testing::Test, protected SmartSelectWorld {
protected:
    qsizetype soundsPlayed() const { return static_cast<qsizetype>(desktop.soundOutput.played.size()); }
};

// MARK: The icon

TEST_F(SmartSelectOverlayTest, theIconStandsCentredBelowThePoint) {
    overlay->showIcon({600, 500}, text);
    ASSERT_NE(icon(), nullptr);
    EXPECT_EQ(icon()->spec.size, QSizeF(58, 58));
    EXPECT_TRUE(icon()->spec.takesMouseEvents);
    EXPECT_EQ(icon()->origin, QPointF(600 - 29, 500 - 58 - 12));
    EXPECT_EQ(icon()->animatedScale, 0.965);
    EXPECT_EQ(icon()->animatedDuration, 0.17);
    EXPECT_EQ(overlay->iconFrame(), QRectF(571, 430, 58, 58));
    EXPECT_EQ(overlay->popupFrame(), std::nullopt);
}

TEST_F(SmartSelectOverlayTest, aPointOfAccessibilityIsTakenAsItComes) {
    // The right upper corner of a selection near the top of the screen, counted from there.
    overlay->showIcon({400, 120}, text);
    EXPECT_EQ(icon()->origin, QPointF(371, 50)) << "which is near the bottom: not converted";
}

TEST_F(SmartSelectOverlayTest, anUntouchedIconLeavesAfterThreeSecondsAndTheNextSelectionIsFree) {
    overlay->showIcon({600, 500}, text);
    desktop.advance(2.99);
    EXPECT_NE(icon(), nullptr);
    EXPECT_TRUE(overlay->iconFrame());
    desktop.advance(0.02);
    EXPECT_EQ(icon(), nullptr);
    EXPECT_FALSE(overlay->iconFrame());
    EXPECT_FALSE(overlay->popupFrame());
    desktop.advance(1);
    EXPECT_EQ(desktop.floatingPanels.openCount(), 0) << "closed at the end of its way out";
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0U);
}

TEST_F(SmartSelectOverlayTest, aSecondIconTakesTheFirstsPlaceAndItsTime) {
    overlay->showIcon({600, 500}, text);
    desktop.advance(2);
    overlay->showIcon({900, 700}, u"other"_s);
    desktop.advance(2);
    ASSERT_NE(icon(), nullptr) << "the first one's time is over, its own is not";
    EXPECT_EQ(icon()->origin, QPointF(871, 630));
    EXPECT_EQ(desktop.floatingPanels.openCount(), 1);
    click(PanelAction::open);
    EXPECT_EQ(content().text, u"other"_s);
}

TEST_F(SmartSelectOverlayTest, anIconOnItsWayOutOpensNothing) {
    overlay->showIcon({600, 500}, text);
    const auto onAction = icon()->spec.onAction;
    overlay->dismissIcon();
    onAction(PanelAction::open);
    EXPECT_FALSE(overlay->popupFrame());
    EXPECT_EQ(popup(), nullptr);
}

TEST_F(SmartSelectOverlayTest, withoutWindowsNothingIsShownAndNothingWaits) {
    desktop.floatingPanels.available = false;
    overlay->showIcon({600, 500}, text);
    overlay->showPopup();
    EXPECT_FALSE(overlay->iconFrame());
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0U);
    desktop.floatingPanels.available = true;
    overlay->showIcon({600, 500}, text);
    desktop.floatingPanels.available = false;
    click(PanelAction::open);
    EXPECT_FALSE(overlay->iconFrame());
    EXPECT_FALSE(overlay->popupFrame());
    EXPECT_EQ(overlay->popupView(), nullptr);
}

// MARK: Places

TEST_F(SmartSelectOverlayTest, aSelectionAtTheVeryBottomHasIconAndPopupInTheVisibleFrame) {
    desktop.screens.list = {{QRectF(0, 0, 1920, 1080), QRectF(0, 40, 1920, 1000)}};
    overlay->showIcon({600, 3}, text);
    EXPECT_EQ(icon()->origin, QPointF(571, 40));
    click(PanelAction::open);
    EXPECT_EQ(popup()->origin, QPointF(600 - 150, 40));
}

TEST_F(SmartSelectOverlayTest, everyEdgeKeepsThemOnTheScreen) {
    desktop.screens.list = {{QRectF(0, 0, 1920, 1080), QRectF(60, 40, 1800, 1000)}};
    struct Row {
        QPointF point, icon, popup;
    };
    const Row rows[] = {
        {{2, 500}, {60, 430}, {60, 178}},      {{1919, 500}, {1802, 430}, {1560, 178}},
        {{600, 1079}, {571, 982}, {450, 730}}, {{1919, 1079}, {1802, 982}, {1560, 730}},
        {{0, 0}, {60, 40}, {60, 40}},
    };
    for (const Row& row : rows) {
        overlay->showIcon(row.point, text);
        EXPECT_EQ(icon()->origin, row.icon) << row.point.x() << ' ' << row.point.y();
        click(PanelAction::open);
        EXPECT_EQ(popup()->origin, row.popup) << row.point.x() << ' ' << row.point.y();
    }
}

TEST_F(SmartSelectOverlayTest, theScreenIsThatOfTheLowerLeftCorner) {
    const Screen left{QRectF(0, 0, 1000, 800), QRectF(0, 0, 1000, 780)};
    const Screen right{QRectF(1000, 0, 1000, 800), QRectF(1000, 30, 1000, 770)};
    desktop.screens.list = {left, right};
    overlay->showIcon({1500, 60}, text);
    EXPECT_EQ(icon()->origin, QPointF(942, 0)) << "a corner below every screen belongs to the main one";
    overlay->showIcon({1029, 400}, text);
    EXPECT_EQ(icon()->origin, QPointF(1000, 330)) << "where two screens meet it is the right one's";
    overlay->showIcon({1028, 400}, text);
    EXPECT_EQ(icon()->origin, QPointF(942, 330));
}

TEST_F(SmartSelectOverlayTest, whereTheDesktopEnlargesThemTheyStandByTheirSizeOnTheScreen) {
    desktop.floatingPanels.scale = 2;
    overlay->showIcon({600, 900}, text);
    EXPECT_EQ(icon()->origin, QPointF(600 - 58, 900 - 116 - 12));
    click(PanelAction::open);
    EXPECT_EQ(popup()->origin, QPointF(600 - 300, 772 - 488 - 8));
}

TEST_F(SmartSelectOverlayTest, withoutAScreenThePlaceStays) {
    desktop.screens.list.clear();
    overlay->showIcon({-400, -300}, text);
    EXPECT_EQ(icon()->origin, QPointF(-429, -370));
}

// MARK: The popup

TEST_F(SmartSelectOverlayTest, aClickOnTheIconOpensThePopupInItsPlace) {
    open(text);
    EXPECT_EQ(icon(), nullptr);
    ASSERT_NE(popup(), nullptr);
    EXPECT_EQ(popup()->spec.size, QSizeF(300, 244));
    EXPECT_TRUE(popup()->spec.takesMouseEvents);
    EXPECT_EQ(popup()->origin, QPointF(600 - 150, 430 - 244 - 8));
    EXPECT_EQ(popup()->animatedScale, 0.965);
    EXPECT_EQ(popup()->animatedDuration, 0.17);
    EXPECT_FALSE(overlay->iconFrame());
    EXPECT_EQ(overlay->popupFrame(), QRectF(450, 178, 300, 244));
    EXPECT_GT(soundsPlayed(), 0);
    desktop.advance(3600);
    EXPECT_NE(popup(), nullptr) << "it does not leave of itself";
}

TEST_F(SmartSelectOverlayTest, theRecogniserTakesAMoment) {
    open(text);
    EXPECT_EQ(content().recognizerName, u"识别中"_s);
    EXPECT_EQ(content().title, u"已选中"_s);
    EXPECT_EQ(content().subtitle, u"文本 · 12 字"_s);
    EXPECT_EQ(content().tone, PanelTone::plain);
    desktop.advance(0.23);
    EXPECT_EQ(content().recognizerName, u"识别中"_s);
    desktop.advance(0.02);
    EXPECT_EQ(content().recognizerName, u"文本识别"_s);
    open(u"  func a() { return }\n"_s);
    EXPECT_EQ(content().subtitle, u"代码 · Swift · 19 字"_s);
    desktop.advance(0.3);
    EXPECT_EQ(content().recognizerName, u"代码解释"_s);
}

TEST_F(SmartSelectOverlayTest, itSpeaksTheInterfacesLanguage) {
    settings.interfaceLanguage.set(AppLanguage::english);
    ASSERT_TRUE(settings.usesEnglishInterface());
    open(u"x"_s);
    EXPECT_EQ(content().title, u"Selected"_s);
    EXPECT_EQ(content().subtitle, u"Text · 1 character"_s);
    EXPECT_EQ(content().recognizerName, u"Recognizing"_s);
    desktop.advance(0.3);
    EXPECT_EQ(content().recognizerName, u"Text reader"_s);
}

TEST_F(SmartSelectOverlayTest, theUsersAgentIsThatOfTheSlotAtWork) {
    assign(0, u"评论回复"_s);
    assign(1, u"聊天整理"_s);
    open(text);
    EXPECT_EQ(content().agentName, u"评论回复"_s);
    EXPECT_EQ(content().agentSymbol, u"bubble.left.fill"_s);
    EXPECT_EQ(content().agentColorHex, u"#FDDC8A"_s);
    desktop.httpClient.holding = true;
    modelAnswers(u"好的"_s);
    click(PanelAction::organize);
    EXPECT_EQ(content().agentName, u"聊天整理"_s);
    ASSERT_TRUE(desktop.httpClient.release());
}

TEST_F(SmartSelectOverlayTest, anAgentsNameIsOneLineThatEndsSomewhere) {
    assign(0, u" first\nsecond\tthird\r\n"_s);
    open(text);
    EXPECT_EQ(content().agentName, u"first second third"_s);
    assign(0, QString(2000, u'长'));
    open(text);
    EXPECT_EQ(content().agentName, QString(80, u'长') + u"..."_s);
}

TEST_F(SmartSelectOverlayTest, aNewSelectionClosesThePopup) {
    open(text);
    overlay->showIcon({900, 700}, u"other"_s);
    EXPECT_EQ(popup(), nullptr);
    EXPECT_FALSE(overlay->popupFrame());
    EXPECT_TRUE(overlay->iconFrame());
}

TEST_F(SmartSelectOverlayTest, itsCloseButtonCloses) {
    open(text);
    EXPECT_TRUE(click(PanelAction::close));
    EXPECT_EQ(popup(), nullptr);
    EXPECT_FALSE(overlay->popupFrame());
    desktop.advance(1);
    EXPECT_EQ(desktop.floatingPanels.openCount(), 0);
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0U);
}

TEST_F(SmartSelectOverlayTest, aPopupOnItsWayOutDoesNothing) {
    open(text);
    const auto onAction = popup()->spec.onAction;
    overlay->dismissPopup();
    onAction(PanelAction::save);
    open(u"other"_s);
    onAction(PanelAction::save);
    onAction(PanelAction::close);
    EXPECT_TRUE(overlay->popupFrame()) << "the click was not meant for this popup";
    desktop.advance(1);
    EXPECT_TRUE(overlay->popupFrame());
    EXPECT_NE(prompts.prompts().front().content, text);
}

// MARK: Dragging

TEST_F(SmartSelectOverlayTest, theMouseDragsThePopupAlong) {
    open(text);
    desktop.floatingPanels.drag(PanelKind::selectionPopup, {500, 400}, {{501, 399}, {530, 350}});
    EXPECT_EQ(popup()->origin, QPointF(450 + 30, 178 - 50));
    EXPECT_EQ(overlay->popupFrame(), QRectF(480, 128, 300, 244));
    desktop.floatingPanels.drag(PanelKind::selectionPopup, {600, 200}, {{600, 210}});
    EXPECT_EQ(popup()->origin, QPointF(480, 138)) << "from where it stands by now";
}

TEST_F(SmartSelectOverlayTest, aDismissedPopupIsNotDragged) {
    open(text);
    const auto record = desktop.floatingPanels.records.back();
    ASSERT_TRUE(record->mouseMonitor);
    overlay->dismissPopup();
    EXPECT_FALSE(record->mouseMonitor);
    overlay->showIcon({600, 500}, text);
    EXPECT_FALSE(icon()->mouseMonitor) << "nor is the icon";
}

// MARK: Saving

TEST_F(SmartSelectOverlayTest, savingPutsThePromptAtTheHeadOfTheLibrary) {
    const auto before = prompts.prompts().size();
    open(u" \n第一行\n第二行：一二三四五六七八九十一二三四五六 \n"_s);
    click(PanelAction::save);
    ASSERT_EQ(prompts.prompts().size(), before + 1);
    const StoredPrompt& saved = prompts.prompts().front();
    EXPECT_EQ(saved.title, u"第一行 第二行：一二三四五六七八九十"_s);
    EXPECT_EQ(saved.content, u"第一行\n第二行：一二三四五六七八九十一二三四五六"_s);
    EXPECT_EQ(saved.tags, QStringList{u"智能选中"_s});
    EXPECT_EQ(saved.categoryTag, u"writing"_s);
    EXPECT_EQ(saved.source, u"manual"_s);
    EXPECT_FALSE(saved.isFavorite);
    EXPECT_FALSE(saved.id.isNull());
    EXPECT_EQ(saved.createdAt, Date{desktop.runLoop.wallNow()});
    EXPECT_TRUE(log.has(u"SmartSelect saved to prompt library: "_s + saved.title));
    const PromptStore again(folder.path(), desktop.runLoop);
    EXPECT_EQ(again.prompts().front(), saved) << "it is on the disk";
}

TEST_F(SmartSelectOverlayTest, theAcknowledgementClosesThePopupAfterAMoment) {
    open(text);
    click(PanelAction::save);
    EXPECT_EQ(content().title, u"已入库"_s);
    desktop.advance(0.64);
    EXPECT_NE(popup(), nullptr);
    desktop.advance(0.02);
    EXPECT_EQ(popup(), nullptr);
    EXPECT_FALSE(overlay->popupFrame());
}

TEST_F(SmartSelectOverlayTest, anAcknowledgementClosesItsOwnPopupOnly) {
    open(text);
    click(PanelAction::save);
    desktop.advance(0.4);
    open(u"other"_s);
    desktop.advance(1);
    EXPECT_NE(popup(), nullptr);
}

TEST_F(SmartSelectOverlayTest, savingBlanksDoesNothingThoughItClosesThePopup) {
    const auto before = prompts.prompts().size();
    open(u" \n\t "_s);
    EXPECT_EQ(content().subtitle, u"文本 · 0 字"_s);
    click(PanelAction::save);
    EXPECT_EQ(prompts.prompts().size(), before);
    EXPECT_FALSE(log.hasStartingWith(u"SmartSelect saved"_s));
    EXPECT_EQ(content().title, u"已入库"_s);
    desktop.advance(0.7);
    EXPECT_EQ(popup(), nullptr);
}

TEST_F(SmartSelectOverlayTest, aHugeSelectionIsShownInParts) {
    const QString huge = u"行\n"_s.repeated(500'000);
    open(huge);
    EXPECT_LT(content().text.size(), 500);
    EXPECT_EQ(content().subtitle, u"文本 · 999999 字"_s);
    click(PanelAction::save);
    EXPECT_EQ(prompts.prompts().front().content.size(), huge.size() - 1) << "but kept whole";
    EXPECT_EQ(prompts.prompts().front().title, u"行 行 行 行 行 行 行 行 行 "_s);
}

TEST_F(SmartSelectOverlayTest, anIconShownAgainWhileTheFirstFadesKeepsItsTime) {
    overlay->showIcon({600, 500}, text);
    overlay->dismissIcon();
    desktop.advance(0.05);
    overlay->showIcon({600, 500}, text);
    desktop.advance(2.9);
    EXPECT_NE(icon(), nullptr) << "the end of the first one's fade is nothing to it";
    EXPECT_EQ(desktop.floatingPanels.openCount(), 1);
}

// MARK: The end

TEST_F(SmartSelectOverlayTest, itGoesWhileIconAndPopupFade) {
    open(text);
    overlay->dismissPopup();
    ASSERT_EQ(desktop.floatingPanels.openCount(), 2);
    overlay.reset();
    EXPECT_EQ(desktop.floatingPanels.openCount(), 0);
    desktop.advance(5);
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0U);
}

TEST_F(SmartSelectOverlayTest, itGoesWithThePopupOpen) {
    open(text);
    click(PanelAction::save);
    overlay.reset();
    EXPECT_EQ(desktop.floatingPanels.openCount(), 0);
    desktop.advance(5);
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0U);
}

}  // namespace
}  // namespace veltrin

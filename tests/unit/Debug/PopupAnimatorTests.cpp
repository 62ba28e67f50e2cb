#include "Debug/PopupAnimator.h"
#include "support/fake/FakeDesktop.h"
#include "support/fake/LogCapture.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

class PopupAnimatorTest : public testing::Test {
protected:
    LogCapture log;
    FakeDesktop desktop;
    std::optional<PopupAnimator> animator{std::in_place};

    std::unique_ptr<FloatingPanel> shown() {
        auto panel = desktop.floatingPanels.create({PanelKind::text, {300, 84}, false, {}});
        PopupAnimator::animateIn(*panel);
        return panel;
    }
    const FakeFloatingPanels::Record& record(size_t index) const {
        return *desktop.floatingPanels.records.at(index);
    }
};

TEST_F(PopupAnimatorTest, aPanelComesByTheUsualMotion) {
    const auto panel = shown();
    EXPECT_EQ(record(0).animatedScale, 0.965);
    EXPECT_EQ(record(0).animatedDuration, 0.17);
    PopupAnimator::animateIn(*panel, 0.5, 1.0);
    EXPECT_EQ(record(0).animatedScale, 0.5);
    EXPECT_EQ(record(0).animatedDuration, 1.0);
}

TEST_F(PopupAnimatorTest, aPanelThatLeavesFadesAndIsClosedAtTheEnd) {
    animator->animateOut(shown());
    EXPECT_TRUE(record(0).fading);
    desktop.advance(0.11);
    EXPECT_FALSE(record(0).closed);
    EXPECT_EQ(animator->leavingCount(), 1);
    desktop.advance(0.02);
    EXPECT_TRUE(record(0).closed);
    EXPECT_EQ(animator->leavingCount(), 0);
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0U);
}

TEST_F(PopupAnimatorTest, noPanelIsNothingToSendAway) {
    animator->animateOut(nullptr);
    EXPECT_EQ(animator->leavingCount(), 0);
}

TEST_F(PopupAnimatorTest, eachPanelEndsItsOwnFade) {
    for (int number = 0; number < 3; ++number) {
        animator->animateOut(shown());
        desktop.advance(0.05);
    }
    EXPECT_TRUE(record(0).closed);
    EXPECT_FALSE(record(1).closed);
    EXPECT_FALSE(record(2).closed);
    desktop.advance(0.05);
    EXPECT_TRUE(record(1).closed);
    EXPECT_FALSE(record(2).closed);
    desktop.advance(1);
    EXPECT_TRUE(record(2).closed);
}

TEST_F(PopupAnimatorTest, theEndClosesWhatStillFades) {
    animator->animateOut(shown());
    animator->animateOut(shown());
    desktop.advance(0.05);
    animator.reset();
    EXPECT_EQ(desktop.floatingPanels.openCount(), 0);
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0U);
    desktop.advance(1);
}

TEST_F(PopupAnimatorTest, aPanelShownAgainWhileAnotherFadesStays) {
    animator->animateOut(shown());
    desktop.advance(0.05);
    const auto again = shown();
    desktop.advance(1);
    EXPECT_TRUE(record(0).closed);
    EXPECT_TRUE(record(1).isShown());
}

TEST_F(PopupAnimatorTest, tenThousandTogglesLeaveNothingBehind) {
    int most = 0;
    for (int toggle = 0; toggle < 10'000; ++toggle) {
        animator->animateOut(shown());
        desktop.advance(0.05);
        most = std::max(most, desktop.floatingPanels.openCount());
    }
    EXPECT_LE(most, 3) << "as many as fade within their 0.12 s";
    desktop.advance(1);
    EXPECT_EQ(animator->leavingCount(), 0);
    EXPECT_EQ(desktop.floatingPanels.openCount(), 0);
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0U);
}

/// Where the desktop does not blend windows a panel's fade ends before it has begun.
TEST_F(PopupAnimatorTest, aFadeThatEndsAtOnceClosesAtOnce) {
    class Instant final : public FloatingPanel {
    public:
        explicit Instant(int& alive) : alive_(alive) { ++alive_; }
        ~Instant() override { --alive_; }
        void setFrameOrigin(QPointF) override {}
        void center() override {}
        QRectF frame() const override { return {}; }
        void setSelection(const SelectionContent&) override {}
        void setMouseMonitor(std::function<void(const PanelMouse&)>) override {}
        void animateIn(double, double) override {}
        void animateOut(std::function<void()> completion) override { completion(); }

    private:
        int& alive_;
    };
    int alive = 0;
    animator->animateOut(std::make_unique<Instant>(alive));
    EXPECT_EQ(alive, 0);
    EXPECT_EQ(animator->leavingCount(), 0);
}

}  // namespace
}  // namespace veltrin

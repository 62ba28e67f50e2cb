#include "Gesture/SpaceGesturePolicy.h"
#include "unit/Gesture/GestureFixture.h"

namespace veltrin {
namespace {

class SpaceTaps : public GestureTest {
protected:
    /// One letter, then that much silence before the next key.
    void letterAndSilence(double seconds) {
        press(FakeKeyCode::k);
        desktop.advance(0.02);
        release(FakeKeyCode::k);
        desktop.advance(seconds - 0.02);
    }
};

TEST_F(SpaceTaps, aDoubleTapFiresTheTailIntervalAfterTheSecondReleaseAndLeavesItsSpaces) {
    letterAndSilence(1);
    desktop.keyboard.tapSpaces(2, 0.30);
    const double released = desktop.now();
    desktop.advance(0.219);
    EXPECT_EQ(doubles, 0);
    desktop.advance(0.1);
    EXPECT_EQ(doubles, 1);
    EXPECT_NEAR(doubleAt - released, 0.22, 1e-9);
    EXPECT_EQ(field.value, QStringLiteral("k  "));
    EXPECT_TRUE(
        logged(QStringLiteral("Double space safety gate: allowed: true interval: 0.3 idleBeforeFirst: 1 "
                              "previousChar: nil")));
}

TEST_F(SpaceTaps, aDoubleTapTooSoonAfterTypingIsRefusedAndTheFullIntervalIsWaited) {
    letterAndSilence(0.20);
    desktop.keyboard.tapSpaces(2, 0.30);
    desktop.advance(0.33);
    EXPECT_FALSE(logged(QStringLiteral("Double space rejected by safety gate")));
    desktop.advance(0.02);
    EXPECT_TRUE(logged(QStringLiteral("Double space rejected by safety gate")));
    desktop.advance(1);
    EXPECT_EQ(doubles, 0);
    EXPECT_EQ(field.value, QStringLiteral("k  "));
}

TEST_F(SpaceTaps, anIntervalOfExactlyTheMaximumIsRefused) {
    desktop.keyboard.tapSpaces(2, 0.34, 0.05);
    desktop.advance(1);
    EXPECT_EQ(doubles, 0);
    EXPECT_TRUE(loggedStart(QStringLiteral("Double space safety gate: allowed: false interval: 0.34 ")));
    desktop.keyboard.tapSpaces(2, 0.339, 0.05);
    desktop.advance(1);
    EXPECT_EQ(doubles, 1);
}

TEST_F(SpaceTaps, anIdleTimeOfExactlyTheGuardPasses) {
    letterAndSilence(0.45);
    desktop.keyboard.tapSpaces(2);
    desktop.advance(1);
    EXPECT_EQ(doubles, 1);
    letterAndSilence(0.449);
    desktop.keyboard.tapSpaces(2);
    desktop.advance(1);
    EXPECT_EQ(doubles, 1);
}

TEST_F(SpaceTaps, limitsAreExactWhateverTheClockReads) {
    for (const double start : {0.1, 12345.678, 1e6 + 0.001, 7654321.987}) {
        desktop.advance(std::max(0.0, start - desktop.now()));
        const int before = doubles;
        letterAndSilence(0.45);
        desktop.keyboard.tapSpaces(2, 0.33);
        desktop.advance(2);
        EXPECT_EQ(doubles, before + 1) << "at " << start;
        desktop.keyboard.tapSpaces(2, 0.34);
        desktop.advance(2);
        EXPECT_EQ(doubles, before + 1) << "at " << start;
    }
}

TEST_F(SpaceTaps, aTripleFiresOnTheThirdReleaseAtOnceAndNoDoubleFollows) {
    desktop.keyboard.tapSpaces(2, 0.34 - 0.001);
    desktop.advance(0.21 - 0.05);
    desktop.keyboard.tapSpace();
    EXPECT_EQ(triples, 1);
    EXPECT_DOUBLE_EQ(tripleAt, desktop.now());
    desktop.advance(2);
    EXPECT_EQ(doubles, 0);
    EXPECT_EQ(field.value, QStringLiteral("   "));
}

TEST_F(SpaceTaps, aThirdTapTooLateAfterTheSecondIsNeitherATripleNorADouble) {
    // The third press comes 0.23 s after the second, still before the pending double is settled.
    desktop.keyboard.tapSpaces(2, 0.2);
    desktop.advance(0.18);
    desktop.keyboard.tapSpace();
    EXPECT_TRUE(
        loggedStart(QStringLiteral("Triple space safety gate: allowed: false firstToSecond: 0.2 "
                                   "secondToThird: 0.23 firstToThird: 0.43 idleBeforeFirst: -1")));
    EXPECT_TRUE(logged(QStringLiteral("Triple space rejected by safety gate")));
    desktop.advance(2);
    EXPECT_EQ(triples, 0);
    EXPECT_EQ(doubles, 0);
}

TEST_F(SpaceTaps, aTripleNeedsLessSilenceThanADouble) {
    letterAndSilence(0.20);
    desktop.keyboard.tapSpaces(3);
    EXPECT_EQ(triples, 1);
    letterAndSilence(0.14);
    desktop.keyboard.tapSpaces(3);
    EXPECT_EQ(triples, 1);
    desktop.advance(1);
    EXPECT_EQ(doubles, 0);
}

TEST_F(SpaceTaps, theTriplesSilenceIsNotTheConfigurableGuard) {
    engine.doubleSpaceIdleGuard = [] { return 2.0; };
    letterAndSilence(0.15);
    desktop.keyboard.tapSpaces(3);
    EXPECT_EQ(triples, 1);
}

TEST_F(SpaceTaps, aHeldSpaceIsOneTapAndItsRepeatsAreIgnored) {
    desktop.keyboard.hold(KeyCode::space, 0.8);
    EXPECT_TRUE(logged(QStringLiteral("Space keyDown ignored: key repeat")));
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 1u);
    desktop.advance(1);
    EXPECT_EQ(doubles, 0);
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0u);
}

TEST_F(SpaceTaps, aHeldSpaceCountsAsTheFirstOfTwo) {
    engine.doubleSpaceMaximumInterval = [] { return 0.5; };
    desktop.keyboard.hold(KeyCode::space, 0.4);
    desktop.advance(0.05);
    desktop.keyboard.tapSpace();
    desktop.advance(1);
    EXPECT_EQ(doubles, 1);
}

TEST_F(SpaceTaps, aLetterBetweenTheTapsEndsTheSequenceAndRestartsTheSilence) {
    desktop.keyboard.tapSpace();
    desktop.advance(0.05);
    letterAndSilence(0.05);
    desktop.keyboard.tapSpaces(2);
    desktop.advance(1);
    EXPECT_EQ(doubles, 0);
    EXPECT_TRUE(logged(QStringLiteral("Double space rejected by safety gate")));
}

TEST_F(SpaceTaps, aRepeatingLetterEndsASequenceToo) {
    press(FakeKeyCode::k);
    desktop.keyboard.tapSpaces(1);
    desktop.keyboard.repeat(FakeKeyCode::k);
    desktop.keyboard.tapSpace();
    desktop.advance(1);
    EXPECT_EQ(doubles, 0);
    EXPECT_FALSE(loggedStart(QStringLiteral("Double space safety gate:")));
}

TEST_F(SpaceTaps, modifiersDoNotMatterToATap) {
    desktop.keyboard.heldModifiers = KeyFlags::shift;
    desktop.keyboard.tapSpace();
    desktop.keyboard.heldModifiers = KeyFlags::command;
    desktop.advance(0.1);
    desktop.keyboard.tapSpace();
    desktop.advance(1);
    EXPECT_EQ(doubles, 1);
    EXPECT_EQ(editor.pressesOf(KeyCode::space), 2);
    EXPECT_EQ(editor.releasesOf(KeyCode::space), 2);
}

TEST_F(SpaceTaps, withoutAnyEarlierKeyTheIdleRulesPass) {
    desktop.keyboard.tapSpaces(2);
    desktop.advance(1);
    EXPECT_EQ(doubles, 1);
    EXPECT_TRUE(
        loggedStart(QStringLiteral("Double space safety gate: allowed: true interval: 0.15 "
                                   "idleBeforeFirst: -1 ")));
}

TEST_F(SpaceTaps, theIdleTimeIsMeasuredToTheFirstTapAndNotToTheSecond) {
    letterAndSilence(0.40);
    desktop.keyboard.tapSpaces(2, 0.3);
    desktop.advance(1);
    EXPECT_EQ(doubles, 0);
}

TEST_F(SpaceTaps, oneTapAloneDoesNothing) {
    desktop.keyboard.tapSpace();
    desktop.advance(5);
    EXPECT_EQ(doubles + triples, 0);
    EXPECT_FALSE(loggedStart(QStringLiteral("Double")));
}

TEST_F(SpaceTaps, aLongGapBeginsANewSequence) {
    engine.doubleSpaceMaximumInterval = [] { return 0.34; };
    for (int i = 0; i < 6; ++i) {
        desktop.keyboard.tapSpace();
        desktop.advance(0.5);
    }
    EXPECT_EQ(doubles + triples, 0);
}

TEST_F(SpaceTaps, aThirdPressStopsThePendingDouble) {
    desktop.keyboard.tapSpaces(2);
    desktop.advance(0.1);
    press(KeyCode::space);
    desktop.advance(3);
    EXPECT_EQ(doubles, 0);
    release(KeyCode::space);
    EXPECT_EQ(triples, 1);
}

TEST_F(SpaceTaps, aPressThatCameBeforeTheCommitButWaitedInTheQueueStillCounts) {
    desktop.keyboard.tapSpaces(2);
    // The program is busy; meanwhile the third tap comes and the time of the double runs out.
    desktop.later(0.1, [&] { press(KeyCode::space); });
    desktop.later(0.15, [&] { release(KeyCode::space); });
    desktop.runLoop.sleepFor(1);
    desktop.advance(1);
    EXPECT_EQ(doubles, 0);
    EXPECT_EQ(triples, 1);
}

TEST_F(SpaceTaps, theApplicationIsAskedOnTheSecondAndOnTheThirdTap) {
    int asked = 0;
    bool allowed = false;
    engine.isFrontmostAppAllowedForDouble = [&] {
        ++asked;
        return allowed;
    };
    desktop.keyboard.tapSpaces(1);
    EXPECT_EQ(asked, 0);
    desktop.advance(0.1);
    desktop.keyboard.tapSpace();
    EXPECT_EQ(asked, 1);
    allowed = true;
    desktop.advance(0.1);
    desktop.keyboard.tapSpace();
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(triples, 1);
}

TEST_F(SpaceTaps, inAnApplicationThatIsNotAllowedNothingFires) {
    engine.isFrontmostAppAllowedForDouble = [] { return false; };
    desktop.keyboard.tapSpaces(2);
    desktop.advance(1);
    desktop.keyboard.tapSpaces(3);
    desktop.advance(1);
    EXPECT_EQ(doubles + triples, 0);
    EXPECT_TRUE(logged(QStringLiteral("Double space rejected by safety gate")));
    EXPECT_TRUE(logged(QStringLiteral("Triple space rejected by safety gate")));
}

TEST_F(SpaceTaps, theCharacterBeforeTheCursorIsAskedOnceAndDecidesNothing) {
    int asked = 0;
    engine.characterBeforeCursorProvider = [&] {
        ++asked;
        return std::optional<QString>(QStringLiteral("👨‍👩‍👧‍👦"));
    };
    desktop.keyboard.tapSpaces(2);
    desktop.advance(1);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(doubles, 1);
    EXPECT_TRUE(
        loggedStart(QStringLiteral("Double space safety gate: allowed: true interval: 0.15 "
                                   "idleBeforeFirst: -1 previousChar: 👨‍👩‍👧‍👦")));
}

TEST_F(SpaceTaps, intervalsAreAskedAnewAtEveryUse) {
    double maximum = 0.1;
    engine.doubleSpaceMaximumInterval = [&] { return maximum; };
    desktop.keyboard.tapSpaces(2);
    desktop.advance(1);
    EXPECT_EQ(doubles, 0);
    maximum = 0.5;
    desktop.keyboard.tapSpaces(2);
    desktop.advance(1);
    EXPECT_EQ(doubles, 1);
}

TEST_F(SpaceTaps, theWaitIsTheSmallerOfTailAndMaximum) {
    engine.tripleSpaceMaximumTailInterval = [] { return 0.3; };
    engine.doubleSpaceMaximumInterval = [] { return 0.2; };
    desktop.keyboard.tapSpaces(2);
    const double released = desktop.now();
    desktop.advance(1);
    EXPECT_NEAR(doubleAt - released, 0.2, 1e-9);
}

TEST_F(SpaceTaps, aReleaseWhosePressWasNeverSeenIsIgnored) {
    release(KeyCode::space);
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0u);
    desktop.keyboard.tapSpaces(2);
    desktop.advance(1);
    EXPECT_EQ(doubles, 1);
}

TEST_F(SpaceTaps, aReleaseLostWhileSuspendedCostsTheNextTapAndNoMore) {
    press(KeyCode::space);
    engine.setEventTapEnabled(false, QStringLiteral("external text read"));
    release(KeyCode::space);
    engine.setEventTapEnabled(true, QStringLiteral("external text read finished"));
    desktop.advance(1);
    desktop.keyboard.tapSpace();  // dropped, and clears the flag
    desktop.advance(1);
    desktop.keyboard.tapSpaces(2);
    desktop.advance(1);
    EXPECT_EQ(doubles, 1);
}

TEST(TripleSpaceSafetyGateTest, everyLimitIsStrictAndTheIdleTimeIsNot) {
    TripleSpaceSafetyGate gate;
    gate.firstSpaceDownAt = 10;
    gate.secondSpaceDownAt = 10.34;
    gate.thirdSpaceDownAt = 10.55;
    gate.lastKeyInputBeforeFirstSpaceAt = 9.85;
    gate.maximumFirstToSecondInterval = 0.35;
    gate.maximumFirstToThirdInterval = 0.56;
    gate.maximumSecondToThirdInterval = 0.22;
    gate.minimumIdleBeforeFirstSpace = 0.15;
    const TripleSpaceSafetyGate good = gate;
    EXPECT_TRUE(good.allowsTripleSpace());

    gate.maximumFirstToSecondInterval = 0.34;
    EXPECT_FALSE(gate.allowsTripleSpace());
    gate = good;
    gate.maximumFirstToThirdInterval = 0.55;
    EXPECT_FALSE(gate.allowsTripleSpace());
    gate = good;
    gate.maximumSecondToThirdInterval = 0.21;
    EXPECT_FALSE(gate.allowsTripleSpace());
    gate = good;
    gate.lastKeyInputBeforeFirstSpaceAt = 9.851;
    EXPECT_FALSE(gate.allowsTripleSpace());
    gate.lastKeyInputBeforeFirstSpaceAt.reset();
    EXPECT_TRUE(gate.allowsTripleSpace());
    gate.isKeyRepeat = true;
    EXPECT_FALSE(gate.allowsTripleSpace());
    gate = good;
    gate.frontmostAppAllowed = false;
    EXPECT_FALSE(gate.allowsTripleSpace());
    gate = good;
    gate.characterBeforeCursor = QStringLiteral("x");
    EXPECT_TRUE(gate.allowsTripleSpace());
}

}  // namespace
}  // namespace veltrin

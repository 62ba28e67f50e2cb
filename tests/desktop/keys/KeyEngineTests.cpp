#include "Gesture/SpaceGestureEngine.h"
#include "Platform/Linux/FilePreferences.h"
#include "Platform/Linux/X11/X11Pasteboard.h"
#include "desktop/x11/KeyTapTest.h"

#include <thread>

namespace veltrin {
namespace {

/// The gesture engine on real keys.
class KeyEngine : public KeyTapTest {
protected:
    KeyEngine()
        : preferences(desktop.file(QStringLiteral("key-engine.json"))),
          pasteboard(desktop.display().toLatin1()),
          engine(loop, taps, preferences, pasteboard) {
        engine.onDouble = [this] { ++doubles; };
        engine.onTriple = [this] { ++triples; };
        engine.doubleSpaceMaximumInterval = [this] { return interval; };
        engine.tripleSpaceMaximumTailInterval = [this] { return interval; };
        engine.tripleSpaceMaximumTotalInterval = [this] { return 3 * interval; };
    }
    ~KeyEngine() override { engine.stop(); }

    double interval = 0.5;
    int doubles = 0;
    int triples = 0;
    FilePreferences preferences;
    X11Pasteboard pasteboard;
    SpaceGestureEngine engine;
};

TEST_F(KeyEngine, keysThatWaitInTheQueueGoBeforeACommitThatIsDue) {
    ASSERT_TRUE(engine.start());
    runEventLoopFor(0.01);
    for (int attempt = 0; attempt < 5; ++attempt) {
        doubles = triples = 0;
        Typist::Moments taken;
        type([&](Typist& t) { taken = t.tapSpace(2, 0.08); });
        // The first two are handled and the commit is scheduled; now the main thread is busy for longer than
        // that, and the third tap comes meanwhile.
        std::thread hands([&] {
            const auto last = typist.tapSpace(1, 0.1);
            taken.insert(taken.end(), last.begin(), last.end());
        });
        hands.join();
        ASSERT_TRUE(client.waitForKeys(6));
        std::this_thread::sleep_for(std::chrono::duration<double>(interval + 0.2));
        runEventLoopFor(interval + 0.3);
        // Judged by when the keys were really pressed: a busy machine may have typed no triple.
        if (taken.size() == 3 && taken[2] - taken[1] < 0.8 * interval &&
            taken[1] - taken[0] < 0.8 * interval) {
            EXPECT_EQ(triples, 1);
            EXPECT_EQ(doubles, 0);
            return;
        }
        client.clear();
    }
    FAIL() << "the machine never typed three taps in time";
}

TEST_F(KeyEngine, whatWasTypedDuringASuspensionIsNoTap) {
    ASSERT_TRUE(engine.start());
    runEventLoopFor(0.01);
    engine.setEventTapEnabled(false, QStringLiteral("test"));
    std::thread([&] { typist.tapSpace(3, 0.08); }).join();
    ASSERT_TRUE(client.waitForKeys(6));
    engine.setEventTapEnabled(true, QStringLiteral("test"));
    runEventLoopFor(interval + 0.2);
    EXPECT_EQ(triples, 0);
    EXPECT_EQ(doubles, 0);
}

TEST_F(KeyEngine, storedShortcutsAreAlwaysClaimedAndPanelKeysOnlyWhileAnInteractionIsOpen) {
    preferences.set(QStringLiteral("shortcut_translation"),
                    PreferenceValue(QStringLiteral("\u2325\u21E7|T")));  // Option Shift T
    std::vector<CustomShortcutAction> actions;
    engine.onCustomShortcut = [&](CustomShortcutAction action) { actions.push_back(action); };
    bool isOpen = false;
    engine.onKeyDownEvent = [&](qint64 keyCode, bool) { return isOpen && keyCode == KeyCode::returnKey; };
    engine.onKeyUpEvent = [&](qint64 keyCode) { return isOpen && keyCode == KeyCode::returnKey; };
    ASSERT_TRUE(engine.start());
    runEventLoopFor(0.01);
    const auto typeBoth = [&] {
        client.clear();
        type([](Typist& t) {
            t.chord(QStringLiteral("Alt+Shift+T"));
            t.tap(QStringLiteral("Return"));
            t.tap(QStringLiteral("x"));
        });
        EXPECT_TRUE(waitUntil(5, [&] { return client.text().ends_with("+x -x"); })) << client.text();
        return client.text();
    };
    std::string seen = typeBoth();
    EXPECT_EQ(seen.find("+t"), std::string::npos) << seen;
    EXPECT_NE(seen.find("+Return -Return"), std::string::npos) << seen;
    EXPECT_TRUE(eventually(3, [&] { return actions.size() == 1; }));

    isOpen = true;
    engine.setInteractionKeys({{KeyCode::returnKey, 0, false}});
    seen = typeBoth();
    EXPECT_EQ(seen.find("+t"), std::string::npos) << seen;
    EXPECT_EQ(seen.find("Return"), std::string::npos) << seen;
    EXPECT_TRUE(eventually(3, [&] { return actions.size() == 2; }));

    engine.setInteractionKeys({});
    seen = typeBoth();
    EXPECT_NE(seen.find("+Return -Return"), std::string::npos) << "no interaction claims it: " << seen;
}

}  // namespace
}  // namespace veltrin

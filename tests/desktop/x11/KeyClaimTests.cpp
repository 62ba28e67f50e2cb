#include "Foundation/MVPLog.h"
#include "Platform/Linux/X11/X11Connection.h"
#include "Platform/Linux/X11/X11Keymap.h"
#include "desktop/x11/KeyTapTest.h"
#include "desktop/x11/RivalClient.h"

#include <QFile>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <sstream>

namespace veltrin {
namespace {

constexpr qint64 down = 125;
constexpr quint16 alt = XCB_MOD_MASK_1;

/// The tap among other programs that want the same keys.
class KeyClaim : public KeyTapTest {
protected:
    KeyClaim() : rival(desktop) {}

    quint8 key(qint64 code) const {
        const auto connection = X11Connection::open(desktop.display().toLatin1());
        return X11Keymap::load(*connection)->keys(code, 0).at(0);
    }
    void swallow(qint64 code) {
        answer = [code](const KeyEvent& event) { return event.keyCode != code; };
    }
    /// What the application was sent, without the silent key that stands in for a swallowed one.
    std::string seen() const {
        std::string text = client.text();
        for (const char* silent : {"+? ", "-? "}) {
            for (std::size_t at = 0; (at = text.find(silent)) != std::string::npos;)
                text.erase(at, 3);
        }
        return text;
    }
    /// Types it and waits until the application and the tap have the plain letter that follows.
    void chordThenLetter(const QString& chord) {
        client.clear();
        type([&](Typist& t) {
            t.chord(chord);
            t.tap(QStringLiteral("x"));
        });
        ASSERT_TRUE(waitUntil(10, [&] { return seen().ends_with("+x -x"); })) << client.text();
        ASSERT_TRUE(eventually(10, [&] { return words(events).ends_with("+7 -7"); })) << words(events);
    }
    bool clientSaw(const std::string& symbol) const {
        return client.text().find(symbol) != std::string::npos;
    }

    RivalClient rival;
};

TEST_F(KeyClaim, aShortcutIsClaimedOverAWindowManagerThatHoldsTheSameKeys) {
    ASSERT_TRUE(rival.take(key(KeyCode::space), alt));
    start({{KeyCode::space, KeyFlags::option, false}});
    swallow(KeyCode::space);
    chordThenLetter(QStringLiteral("Alt+space"));
    EXPECT_EQ(words(events), "+49 -49 +7 -7");
    EXPECT_EQ(rival.presses(), 0);
    EXPECT_FALSE(clientSaw("space"));
}

TEST_F(KeyClaim, keysThatAWindowManagerTakesLaterAreToldAndThenClaimedAgain) {
    start({{KeyCode::space, KeyFlags::option, false}});
    swallow(KeyCode::space);
    ASSERT_TRUE(rival.take(key(KeyCode::space), alt));
    chordThenLetter(QStringLiteral("Alt+space"));
    EXPECT_EQ(rival.presses(), 1) << "the newest claim wins";
    EXPECT_EQ(words(events), "+49 -49 +7 -7") << "what is not ours is still listened to";
    chordThenLetter(QStringLiteral("Alt+space"));
    EXPECT_EQ(rival.presses(), 1);
    EXPECT_FALSE(clientSaw("space"));
}

TEST_F(KeyClaim, keysHeldByAnotherListenerAreToldAndClaimedOnceTheyAreFree) {
    const QString former = MVPLog::logURL();
    const QString log = desktop.file(QStringLiteral("claims.log"));
    QFile::remove(log);
    MVPLog::setLogURL(log);
    ASSERT_TRUE(rival.takeByXInput(key(KeyCode::space), alt));
    start({{KeyCode::space, KeyFlags::option, false}, {KeyCode::c, KeyFlags::option, false}});
    answer = [](const KeyEvent& event) {
        return event.keyCode != KeyCode::space && event.keyCode != KeyCode::c;
    };
    chordThenLetter(QStringLiteral("Alt+space"));
    EXPECT_EQ(rival.presses(), 1);
    EXPECT_EQ(words(events), "+49 -49 +7 -7");
    chordThenLetter(QStringLiteral("Alt+c"));
    EXPECT_FALSE(clientSaw("+c")) << "the other shortcuts stay claimed";
    chordThenLetter(QStringLiteral("Alt+space"));
    EXPECT_EQ(rival.presses(), 2);
    rival.giveBackByXInput(key(KeyCode::space), alt);
    // Asked for when Alt goes down; a busy machine may be late for the space that follows at once.
    ASSERT_TRUE(waitUntil(30, [&] {
        events.clear();
        chordThenLetter(QStringLiteral("Alt+space"));
        return HasFatalFailure() || !clientSaw("space");
    }));
    EXPECT_EQ(words(events), "+49 -49 +7 -7");
    EXPECT_EQ(rival.presses(), 2);
    MVPLog::setLogURL(former);
    QFile file(log);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll().count("held by another program"), 1);
}

TEST_F(KeyClaim, oneTakenCombinationDoesNotCostTheOthersOfItsKey) {
    ASSERT_TRUE(rival.takeByXInput(key(KeyCode::escape), alt));
    start({{KeyCode::escape, 0, true}});
    swallow(KeyCode::escape);
    type([](Typist& t) { t.tap(QStringLiteral("Escape")); });
    chordThenLetter(QStringLiteral("Shift+Escape"));
    EXPECT_EQ(words(events), "+53 -53 +53 -53 +7 -7");
    EXPECT_FALSE(clientSaw("Escape")) << client.text();
}

TEST_F(KeyClaim, panelKeysAreClaimedOnlyWhileTheyAreNamedAndNoGrabStaysBehind) {
    const std::vector<ClaimableKey> shortcuts = {{KeyCode::space, KeyFlags::option, false}};
    auto withPanel = shortcuts;
    withPanel.push_back({KeyCode::returnKey, 0, false});
    start(shortcuts);
    answer = [](const KeyEvent&) { return false; };
    chordThenLetter(QStringLiteral("Return"));
    EXPECT_TRUE(clientSaw("+Return -Return"));
    tap->setClaimable(withPanel);
    EXPECT_FALSE(rival.takeByXInput(key(KeyCode::returnKey), 0)) << "claimed";
    client.clear();
    chordThenLetter(QStringLiteral("Return"));
    EXPECT_FALSE(clientSaw("Return"));
    tap->setClaimable(shortcuts);
    ASSERT_TRUE(rival.takeByXInput(key(KeyCode::returnKey), 0)) << "not claimed any more";
    rival.giveBackByXInput(key(KeyCode::returnKey), 0);
    client.clear();
    chordThenLetter(QStringLiteral("Return"));
    EXPECT_TRUE(clientSaw("+Return -Return"));
    tap->setEnabled(false);
    EXPECT_TRUE(rival.takeByXInput(key(KeyCode::space), alt)) << "suspension claims nothing";
    rival.giveBackByXInput(key(KeyCode::space), alt);
    tap->setEnabled(true);
    EXPECT_FALSE(rival.takeByXInput(key(KeyCode::space), alt));
}

TEST_F(KeyClaim, claimsHoldWhenTheUserChangesToAnotherKeyboard) {
    start({{KeyCode::space, KeyFlags::option, false}});
    swallow(KeyCode::space);
    Typist other(desktop, Typist::Device::xtest);  // another device: the master keyboard follows it
    for (int round = 0; round < 3; ++round) {
        chordThenLetter(QStringLiteral("Alt+space"));
        other.whileLoopRuns([](Typist& t) {
            t.chord(QStringLiteral("Alt+space"));
            t.tap(QStringLiteral("x"));
        });
        ASSERT_TRUE(eventually(5, [&] { return events.size() >= static_cast<std::size_t>(round + 1) * 8; }));
    }
    EXPECT_FALSE(clientSaw("space")) << client.text();
    EXPECT_EQ(words(events),
              "+49 -49 +7 -7 +49 -49 +7 -7 +49 -49 +7 -7 +49 -49 +7 -7 +49 -49 +7 -7 "
              "+49 -49 +7 -7");
}

TEST_F(KeyClaim, claimsHoldWhenAKeyIsGivenAnotherMeaning) {
    // As xmodmap does it: one key at a time, by the core protocol.
    start({{KeyCode::space, KeyFlags::option, false}});
    swallow(KeyCode::space);
    auto* x = desktop.x().connection();
    const quint8 spare = key(101);  // F9
    const xcb_keysym_t symbols[] = {0x20, 0x20};
    xcb_change_keyboard_mapping(x, 1, spare, 2, symbols);
    desktop.x().sync();
    runEventLoopFor(0.3);
    chordThenLetter(QStringLiteral("Alt+space"));
    EXPECT_FALSE(clientSaw("space")) << client.text();
    EXPECT_EQ(words(events), "+49 -49 +7 -7");
}

TEST_F(KeyClaim, anOpenMenuGetsItsKeysAndTheTapIsToldOfThem) {
    start({{KeyCode::returnKey, 0, false}});
    swallow(KeyCode::returnKey);
    ASSERT_TRUE(rival.holdKeyboard());
    type([](Typist& t) { t.tap(QStringLiteral("Return")); });
    ASSERT_TRUE(waitForEvents(2));
    EXPECT_EQ(words(events), "+36 -36");
    EXPECT_EQ(rival.presses(), 1) << "a menu's key is never taken from it";
    rival.freeKeyboard();
    events.clear();
    chordThenLetter(QStringLiteral("Return"));
    EXPECT_EQ(words(events), "+36 -36 +7 -7");
    EXPECT_FALSE(clientSaw("Return")) << client.text();
}

TEST_F(KeyClaim, aMenuThatOpensWhileASwallowedKeyIsHeldLeavesNothingStuck) {
    start({{KeyCode::returnKey, 0, false}});
    swallow(KeyCode::returnKey);
    type([](Typist& t) { t.press(QStringLiteral("Return")); });
    ASSERT_TRUE(waitForEvents(1));
    EXPECT_FALSE(rival.holdKeyboard()) << "the swallowed key is ours until it is up";
    type([](Typist& t) { t.release(QStringLiteral("Return")); });
    ASSERT_TRUE(waitForEvents(2));
    EXPECT_TRUE(waitUntil(3, [&] { return rival.holdKeyboard(); }));
    rival.freeKeyboard();
    chordThenLetter(QStringLiteral("a"));
    EXPECT_EQ(seen(), "+a -a +x -x");
}

TEST_F(KeyClaim, aLockedScreenIsNotListenedTo) {
    start({{KeyCode::returnKey, 0, false}});
    swallow(KeyCode::returnKey);
    rival.coverScreen();
    ASSERT_TRUE(rival.holdKeyboard());
    type([](Typist& t) { t.type(QStringLiteral("secret\n")); });
    ASSERT_EQ(rival.presses(), 7);
    rival.freeKeyboard();
    rival.uncoverScreen();
    // Only what is typed a while after the unlocking.
    ASSERT_TRUE(waitUntil(20, [&] {
        type([](Typist& t) { t.tap(QStringLiteral("a")); });
        return eventually(0.5, [&] { return events.size() >= 2; });
    }));
    for (const auto& event : events)
        EXPECT_EQ(event.keyCode, KeyCode::a) << words(events);
}

TEST_F(KeyClaim, theKeypadsDigitsAreOtherKeysThanTheDigitRow) {
    start({{18, 0, false}});  // 1
    swallow(18);
    type([](Typist& t) {
        t.tap(QStringLiteral("KP_End"));
        t.tap(QStringLiteral("Num_Lock"));
        t.tap(QStringLiteral("KP_End"));
        t.tap(QStringLiteral("1"));
        t.tap(QStringLiteral("Num_Lock"));
    });
    ASSERT_TRUE(waitForEvents(6));
    EXPECT_EQ(words(events), "+83 -83 +83 -83 +18 -18");
    ASSERT_TRUE(waitUntil(3, [&] { return client.presses() >= 4; }));
    EXPECT_FALSE(clientSaw("+1"));
}

/// Any order of overlapping keys, some of them swallowed: the application sees whole keys in the order they
/// were pressed, and the tap every event once.
TEST_F(KeyClaim, overlappingKeysInAnyOrderAreNeverHalvedLostOrSwapped) {
    start({{KeyCode::returnKey, 0, false}, {down, 0, false}, {KeyCode::tab, 0, false}});
    answer = [](const KeyEvent& event) {
        return event.keyCode != KeyCode::returnKey && event.keyCode != down;  // Tab is asked and passed
    };
    const std::vector<QString> names = {
        QStringLiteral("a"),      QStringLiteral("b"),    QStringLiteral("c"),  QStringLiteral("d"),
        QStringLiteral("Return"), QStringLiteral("Down"), QStringLiteral("Tab")};
    std::mt19937 random(20240611);
    for (int round = 0; round < 12; ++round) {
        client.clear();
        events.clear();
        std::string expectedPresses;
        int pressed = 0;
        type([&](Typist& t) {
            std::vector<QString> held;
            for (int step = 0; step < 40 || !held.empty(); ++step) {
                const bool canPress = step < 40 && held.size() < 3;
                if (canPress && (held.empty() || random() % 2 == 0)) {
                    const QString name = names[random() % names.size()];
                    if (std::find(held.begin(), held.end(), name) != held.end()) continue;
                    t.press(name);
                    held.push_back(name);
                    ++pressed;
                    if (name != QStringLiteral("Return") && name != QStringLiteral("Down"))
                        expectedPresses += '+' + name.toStdString() + ' ';
                } else if (!held.empty()) {
                    const std::size_t which = random() % held.size();
                    t.release(held[which]);
                    held.erase(held.begin() + static_cast<std::ptrdiff_t>(which));
                }
                if (random() % 3 != 0) t.pause(0.001 * static_cast<double>(random() % 12));
            }
            t.tap(QStringLiteral("x"));
        });
        ASSERT_TRUE(waitUntil(5, [&] { return client.text().ends_with("+x -x"); })) << client.text();
        ASSERT_TRUE(eventually(5, [&] { return words(events).ends_with("-7"); })) << words(events);
        // A release of a swallowed key that waited right behind a passed one slips through: the server plays
        // both in one go. Everything else is whole.
        const std::set<int> mayBeLoneReleases = {key(KeyCode::returnKey), key(down)};
        std::string presses;
        std::map<int, int> open;
        for (const auto& each : client.keys()) {
            open[each.code] += each.isPress ? 1 : -1;
            if (open[each.code] < 0 && mayBeLoneReleases.contains(each.code)) open[each.code] = 0;
            EXPECT_GE(open[each.code], 0) << "a release without its press: " << client.text();
            EXPECT_LE(open[each.code], 1) << "a press without its release: " << client.text();
        }
        for (const auto& [code, count] : open)
            EXPECT_EQ(count, 0) << "a press without its release: " << client.text();
        std::istringstream text(client.text());
        for (std::string word; text >> word;) {
            if (word.front() == '+' && word != "+x") presses += word + ' ';
        }
        EXPECT_EQ(presses, expectedPresses) << "round " << round;
        int told = 0;
        for (const auto& event : events)
            told += event.type == KeyEventType::keyDown && !event.isAutoRepeat ? 1 : 0;
        EXPECT_EQ(told, pressed + 1) << words(events);
    }
}

}  // namespace
}  // namespace veltrin

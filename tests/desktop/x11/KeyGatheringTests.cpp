#include "desktop/x11/KeyTapTest.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <thread>

namespace veltrin {
namespace {

/// How often the thread that listens went to sleep; -1 when there is none.
qint64 sleepsOfTheListener() {
    const QDir threads(QStringLiteral("/proc/self/task"));
    for (const QString& thread : threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile name(threads.filePath(thread + QStringLiteral("/comm")));
        if (!name.open(QIODevice::ReadOnly) || name.readAll().trimmed() != "veltrin-keys") continue;
        QFile status(threads.filePath(thread + QStringLiteral("/status")));
        if (!status.open(QIODevice::ReadOnly)) continue;
        const QByteArray field("\nvoluntary_ctxt_switches:");
        const QByteArray text = status.readAll();
        const auto from = text.indexOf(field) + field.size();
        return text.mid(from, text.indexOf('\n', from) - from).trimmed().toLongLong();
    }
    return -1;
}

class KeyGathering : public KeyTapTest {
protected:
    /// From here on the listener takes it that a person types.
    void beginTyping() {
        type([](Typist& t) { t.tap(QStringLiteral("a")); });
        ASSERT_TRUE(waitForEvents(2));
        ASSERT_TRUE(client.waitForKeys(2));
        events.clear();
        client.clear();
    }
};

TEST_F(KeyGathering, whilePlainTextIsTypedTheListenerDoesNotWakeForEachKey) {
    start({{KeyCode::space, KeyFlags::option, false}});
    beginTyping();
    constexpr int keys = 200;
    const qint64 before = sleepsOfTheListener();
    ASSERT_GE(before, 0);
    const double begin = monotonicSeconds();
    type([](Typist& t) { t.type(QString(keys, u'a'), 0.002); });
    const double took = monotonicSeconds() - begin;
    const qint64 sleeps = sleepsOfTheListener() - before;
    ASSERT_TRUE(waitForEvents(2 * keys));
    EXPECT_LT(static_cast<double>(sleeps), took / 0.008 + 20) << "in " << took << " s";
    EXPECT_EQ(events.size(), 2U * keys);
}

TEST_F(KeyGathering, afterATapOfTheSpaceBarTheListenerWaits) {
    start();
    beginTyping();
    type([](Typist& t) { t.tap(QStringLiteral("space")); });
    ASSERT_TRUE(waitForEvents(2));
    const qint64 before = sleepsOfTheListener();
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_LT(sleepsOfTheListener() - before, 10);
}

TEST_F(KeyGathering, keysThatAreFetchedTogetherKeepTheirOwnTimesAndOrder) {
    start();
    beginTyping();
    type([](Typist& t) {
        for (const auto* key : {"a", "c", "v"}) {
            t.press(QString::fromLatin1(key));
            t.pause(0.002);
            t.release(QString::fromLatin1(key));
            t.pause(0.002);
        }
    });
    ASSERT_TRUE(waitForEvents(6));
    EXPECT_EQ(words(events), "+0 -0 +8 -8 +9 -9");
    for (std::size_t i = 1; i < events.size(); ++i)
        EXPECT_GE(events[i].timestamp, events[i - 1].timestamp + 1'000'000);
}

TEST_F(KeyGathering, aCombinationInTheMiddleOfTypingIsSwallowed) {
    start({{KeyCode::space, KeyFlags::option | KeyFlags::command, false}});
    answer = [](const KeyEvent& event) { return event.flags == 0; };
    for (int round = 0; round < 10; ++round) {
        beginTyping();
        type([](Typist& t) {
            t.tap(QStringLiteral("c"));
            t.chord(QStringLiteral("Ctrl+Alt+space"));
            t.tap(QStringLiteral("v"));
        });
        ASSERT_TRUE(waitUntil(3, [&] { return client.text().ends_with("+v -v"); })) << client.text();
        EXPECT_EQ(client.text().find("space"), std::string::npos) << client.text();
        ASSERT_TRUE(waitForEvents(5)) << words(events);
        events.clear();
        client.clear();
    }
}

TEST_F(KeyGathering, aPlainKeyCanBeClaimedAsSoonAsItIsClaimable) {
    start();
    answer = [](const KeyEvent& event) { return event.keyCode != KeyCode::returnKey; };
    beginTyping();
    tap->setClaimable({{KeyCode::returnKey, 0, false}});
    type([](Typist& t) { t.type(QStringLiteral("\nc")); });
    ASSERT_TRUE(waitUntil(3, [&] { return client.text().ends_with("+c -c"); })) << client.text();
    EXPECT_EQ(client.text(), "+c -c");
}

}  // namespace
}  // namespace veltrin

#include "desktop/x11/RecordingClient.h"
#include "support/desktop/DesktopTest.h"

#include <signal.h>

#include <functional>

namespace veltrin {
namespace {

/// Whatever becomes of a program that claims keys, the keyboard belongs to the user.
class KeyGuard : public DesktopTest {
protected:
    void start(const QStringList& arguments = {}) {
        client_ = std::make_unique<RecordingClient>(desktop());
        holder_ = std::make_unique<Program>(
            desktop(), QStringList{QStringLiteral(VELTRIN_BINARY_DIR "/bin/veltrin_key_holder")} + arguments);
        ASSERT_TRUE(waitUntil(20, [&] { return holder().output().contains("ready"); }));
    }
    void TearDown() override {
        holder_.reset();
        EXPECT_TRUE(waitUntil(20, [&] { return desktop().programs().empty(); })) << "a process stayed behind";
        client_.reset();
        DesktopTest::TearDown();
    }
    RecordingClient& client() { return *client_; }
    Program& holder() { return *holder_; }
    int swallowed() { return static_cast<int>(holder().output().count("swallowed")); }

    void expectFreeKeyboard() {
        typist().type(QStringLiteral("abc"));
        EXPECT_TRUE(waitUntil(20, [&] { return client().text().ends_with("+a -a +b -b +c -c"); }))
            << client().text();
    }
    /// Types it until it was swallowed; a busy machine may pass the key on a few times.
    void expectSwallowed(const std::function<void()>& work) {
        EXPECT_TRUE(waitUntil(30, [&] {
            const int before = swallowed();
            work();
            return waitUntil(1, [&] { return swallowed() > before; });
        })) << holder().output().toStdString();
    }

private:
    std::unique_ptr<RecordingClient> client_;
    std::unique_ptr<Program> holder_;
};

TEST_F(KeyGuard, aStoppedProgramFreezesNoShortcutAndClaimsAgainWhenItGoesOn) {
    start();
    const auto shortcut = [&] { typist().chord(QStringLiteral("Alt+space")); };
    expectSwallowed(shortcut);
    for (int round = 0; round < 2; ++round) {
        holder().stop();
        shortcut();
        expectFreeKeyboard();
        holder().resume();
        expectSwallowed(shortcut);
    }
}

TEST_F(KeyGuard, aStoppedProgramFreezesNoKeyWithoutAModifier) {
    start();
    const auto key = [&] { typist().tap(QStringLiteral("Return")); };
    expectSwallowed(key);
    holder().stop();
    key();
    expectFreeKeyboard();
    holder().resume();
    expectSwallowed(key);
}

TEST_F(KeyGuard, stoppedWithASwallowedKeyDownItLeavesTheKeyboardFree) {
    start();
    expectSwallowed([&] {
        typist().releaseAll();
        typist().press(QStringLiteral("Alt"));
        typist().press(QStringLiteral("space"));
    });
    holder().stop();
    typist().releaseAll();
    expectFreeKeyboard();
    holder().resume();
    expectSwallowed([&] { typist().chord(QStringLiteral("Alt+space")); });
}

TEST_F(KeyGuard, killedWithASwallowedKeyDownItLeavesTheKeyboardFree) {
    start();
    expectSwallowed([&] {
        typist().releaseAll();
        typist().press(QStringLiteral("Alt"));
        typist().press(QStringLiteral("space"));
    });
    holder().kill();
    typist().releaseAll();
    expectFreeKeyboard();
}

TEST_F(KeyGuard, aCrashWhileAKeyWaitsForItsAnswerLeavesTheKeyboardFree) {
    start({QStringLiteral("--abort")});
    typist().chord(QStringLiteral("Alt+space"));
    EXPECT_TRUE(holder().waitForExit(30));
    expectFreeKeyboard();
}

TEST_F(KeyGuard, withoutItsGuardAProgramGoesOnListening) {
    start();
    const auto own = holder().pid();
    for (const pid_t process : desktop().programs()) {
        if (process != own) kill(process, SIGKILL);
    }
    EXPECT_TRUE(waitUntil(20, [&] { return holder().output().contains("Key guard ended"); }));
    expectSwallowed([&] { typist().chord(QStringLiteral("Alt+space")); });
    expectFreeKeyboard();
}

}  // namespace
}  // namespace veltrin

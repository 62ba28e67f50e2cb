#include "App/AuthLinks.h"
#include "support/fake/FakePreferences.h"
#include "support/fake/LogCapture.h"

#include <gtest/gtest.h>

#include <coroutine>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

/// Keeps whoever awaits it until the test lets him go on. Copied into the one who waits.
struct Gate {
    std::coroutine_handle<>& waiting;
    bool await_ready() const { return false; }
    void await_suspend(std::coroutine_handle<> handle) { waiting = handle; }
    void await_resume() const {}
};

class AuthLinksTest : public testing::Test {
protected:
    AuthLinksTest() {
        links->account.exchangeCode = [this](QString code) -> QCoro::Task<void> {
            asked << u"code "_s + code;
            co_return;
        };
        links->account.restoreSession = [this](QString token) -> QCoro::Task<void> {
            asked << u"token "_s + token;
            co_return;
        };
        links->account.isAuthenticated = [this] { return authenticated; };
    }
    void open(const QStringList& urls) {
        std::vector<QUrl> list;
        for (const QString& url : urls)
            list.emplace_back(url);
        links->open(list);
    }
    bool webAuthDone() const { return preferences.boolean(u"veltrin_web_auth_done"_s).value_or(false); }

    LogCapture log;
    FakePreferences preferences;
    int shown = 0;
    bool authenticated = true;
    QStringList asked;
    std::optional<AuthLinks> links{std::in_place, preferences, [this] { ++shown; }};
};

TEST_F(AuthLinksTest, aCodeIsExchangedAndTheWindowShown) {
    open({u"veltrin://auth?code=a%2Fb%20c&token=t"_s});
    EXPECT_EQ(asked, QStringList(u"code a/b c"_s));
    EXPECT_TRUE(webAuthDone());
    EXPECT_FALSE(preferences.string(u"veltrin_auth_token"_s));
    EXPECT_EQ(shown, 1);
}

TEST_F(AuthLinksTest, aTokenIsStoredBeforeItsSessionIsRestored) {
    links->account.restoreSession = [this](QString token) -> QCoro::Task<void> {
        EXPECT_EQ(preferences.string(u"veltrin_auth_token"_s), token);
        EXPECT_TRUE(webAuthDone());
        asked << token;
        co_return;
    };
    open({u"veltrin://auth?token=t1"_s});
    EXPECT_EQ(asked, QStringList(u"t1"_s));
    EXPECT_EQ(shown, 1);
}

TEST_F(AuthLinksTest, anAccountThatSaysNoShowsNothing) {
    authenticated = false;
    open({u"veltrin://auth?code=a"_s, u"veltrin://auth?token=b"_s});
    EXPECT_EQ(asked.size(), 2);
    EXPECT_EQ(shown, 0);
}

TEST_F(AuthLinksTest, withNeitherItemNothingHappens) {
    open({u"veltrin://auth"_s, u"veltrin://auth?"_s, u"veltrin://auth?state=x"_s, u"veltrin://auth?code="_s,
          u"veltrin://auth?token"_s});
    EXPECT_TRUE(asked.isEmpty());
    EXPECT_FALSE(webAuthDone());
    EXPECT_EQ(shown, 0);
}

TEST_F(AuthLinksTest, severalAddressesAreEachHandledInTheirOrder) {
    open({u"veltrin://auth?code=1"_s, u"https://auth?code=2"_s, u"veltrin://open?code=3"_s,
          u"not an address"_s, QString(), u"veltrin://auth?token=4"_s, u"VELTRIN://AUTH?code=5"_s});
    EXPECT_EQ(asked, QStringList({u"code 1"_s, u"token 4"_s, u"code 5"_s}));
    EXPECT_EQ(shown, 3);
}

TEST_F(AuthLinksTest, withoutAnAccountACodeIsIgnoredAndATokenWaits) {
    links->account = {};
    open({u"veltrin://auth?code=secret"_s});
    EXPECT_FALSE(webAuthDone());
    open({u"veltrin://auth?token=t"_s});
    EXPECT_EQ(preferences.string(u"veltrin_auth_token"_s), u"t"_s);
    EXPECT_TRUE(webAuthDone());
    EXPECT_EQ(shown, 0);
    EXPECT_EQ(log.lines(), QStringList(u"Auth link ignored: no account service"_s));
}

TEST_F(AuthLinksTest, anAnswerThatComesAfterItsEndTouchesNothing) {
    std::coroutine_handle<> waiting;
    links->account.exchangeCode = [&waiting](QString) -> QCoro::Task<void> { co_await Gate{waiting}; };
    open({u"veltrin://auth?code=a"_s});
    links.reset();
    ASSERT_TRUE(waiting);
    waiting.resume();
    EXPECT_FALSE(webAuthDone());
    EXPECT_EQ(shown, 0);
}

}  // namespace
}  // namespace veltrin

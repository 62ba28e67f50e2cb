#include "support/fake/FakeHttpClient.h"
#include "support/fake/FakePreferences.h"
#include "support/fake/FakeSystemEnvironment.h"
#include "support/fake/TaskRunner.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

TEST(FakeHttpClient, answersFromItsScriptInOrderAndThenFails) {
    FakeHttpClient http;
    http.answer(200, "a");
    http.fail(UrlError::timedOut, QStringLiteral("late"));
    EXPECT_EQ(valueOf(http.data(HttpRequest())).body, QByteArray("a"));
    EXPECT_EQ(follow(http.data(HttpRequest()))->errorDescription(), QStringLiteral("late"));
    EXPECT_TRUE(follow(http.data(HttpRequest()))->failedWith<UrlError>());
    EXPECT_EQ(http.requests.size(), 3U);
}

TEST(FakeHttpClient, holdsARequestUntilItIsReleased) {
    FakeHttpClient http;
    http.holding = true;
    http.answer(204, {});
    const auto outcome = follow(http.data(HttpRequest()));
    EXPECT_FALSE(outcome->finished());
    EXPECT_TRUE(http.release());
    EXPECT_EQ(outcome->value.value_or(HttpResponse()).status, 204);
    EXPECT_FALSE(http.release());
}

}  // namespace
}  // namespace veltrin

#include "Data/AppSettings.h"
#include "System/Analytics.h"
#include "System/CrashReporter.h"
#include "support/fake/FakeDesktop.h"
#include "support/fake/FakeSystemLog.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

class AnalyticsTest : public testing::Test {
protected:
    AnalyticsTest() {
        std::vector<std::unique_ptr<AnalyticsBackend>> backends;
        backends.push_back(std::make_unique<OSLogAnalyticsBackend>(log, QStringLiteral("com.veltrin.app"),
                                                                   QStringLiteral("analytics")));
        analytics.setBackends(std::move(backends));
    }

    FakeDesktop desktop;
    NotificationCenter notifications;
    AppSettings settings{desktop.preferences, notifications, desktop.environment};
    FakeSystemLog log;
    Analytics analytics{settings};
};

TEST_F(AnalyticsTest, anEventIsALineOfTheDesktopsLog) {
    analytics.track(QStringLiteral("launch"));
    EXPECT_EQ(log.lines, QStringList{QStringLiteral("com.veltrin.app analytics: launch")});
}

TEST_F(AnalyticsTest, whoeverSwitchedItOffIsNotWrittenAbout) {
    settings.analyticsEnabled.set(false);
    analytics.track(QStringLiteral("launch"));
    EXPECT_EQ(log.lines, QStringList());
    settings.analyticsEnabled.set(true);
    analytics.track(QStringLiteral("launch"));
    EXPECT_EQ(log.lines.size(), 1);
}

TEST_F(AnalyticsTest, withoutABackendNothingHappens) {
    analytics.setBackends({});
    analytics.track(QStringLiteral("launch"));
    EXPECT_EQ(log.lines, QStringList());
}

TEST(CrashReporterTest, itWatchesBeforeItSaysSo) {
    FakeSystemLog log;
    CrashReporter(log).start();
    EXPECT_TRUE(log.isWatching);
    EXPECT_EQ(log.lines, QStringList{QStringLiteral("com.veltrin.app crash: CrashReporter started")});
}

}  // namespace
}  // namespace veltrin

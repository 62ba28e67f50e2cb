#include "desktop/selection/SelectionTest.h"

#include <algorithm>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

}  // namespace

void SelectionTest::SetUp() {
    DesktopTest::SetUp();
    log_ = std::make_unique<LogCapture>();
    clipboard().ownText(usersClipboard);
    world_ = std::make_unique<SelectionDesktop>(desktop());
    ASSERT_EQ(logged(u"SmartSelect mouse event tap created"_s), 1);
}

void SelectionTest::TearDown() {
    if (HasFailure()) std::printf("%s\n", qPrintable(log_->lines().join(u'\n')));
    if (keepsClipboard_) {
        const auto now = clipboard().text();
        EXPECT_EQ(now.value_or(u"nothing"_s), usersClipboard);
    }
    application_.reset();
    world_->settings.smartSelectBlacklistedBundleIDsText.set({});
    world_.reset();
    DesktopTest::TearDown();
    log_.reset();
}

FieldApplication& SelectionTest::startApplication(const QString& name) {
    application_ = std::make_unique<FieldApplication>(name, world_->text, desktop(), atspi());
    return *application_;
}

void SelectionTest::dragAcross(const QRect& place) {
    drag({{place.left() + 1, place.center().y()}, {place.right(), place.center().y()}});
}

void SelectionTest::click(QPoint at, int count) {
    typist().whileLoopRuns([at, count](Typist& hand) { hand.click(at, count); });
}

QString SelectionTest::shownText(double seconds) {
    if (!eventually(seconds, [this] { return !surface().shown.empty(); })) return {};
    return surface().shown.back().text;
}

int SelectionTest::loggedStarting(const QString& start) const {
    const QStringList lines = log_->lines();
    return static_cast<int>(std::count_if(lines.begin(), lines.end(),
                                          [&](const QString& line) { return line.startsWith(start); }));
}

bool SelectionTest::waitForNothing(int times, double seconds) {
    return eventually(seconds, [&] { return loggedStarting(u"SmartSelect no selected text:"_s) >= times; });
}

void SelectionTest::forget() {
    surface().dismissIcon();
    surface().dismissPopup();
    surface().shown.clear();
    runEventLoopFor(0.85);
}

}  // namespace veltrin

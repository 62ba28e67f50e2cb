#include "desktop/app/ChoiceTest.h"

#include <QFile>

#include <functional>

namespace veltrin {
namespace {

/// What happens to an application while the choice stands over it, in applications of three kinds.
class ChoiceOver : public Choice, public testing::WithParamInterface<const char*> {
protected:
    void SetUp() override {
        Choice::SetUp();
        startProgram();
        const std::string name = GetParam();
        if (name == "mousepad") startMousepad();
        if (name == "chromium") startChromium();
        if (name == "lxterminal") startTerminal();
        x().moveResize(application_->window(), QRect(300, 60, 640, 300));
        typeSentence(QStringLiteral("words"));
        ASSERT_TRUE(waitForText(QStringLiteral("words"))) << qPrintable(text());
    }
    void TearDown() override {
        application_.reset();
        Choice::TearDown();
    }

    Program& application() { return *application_; }
    /// What the application has been given, blanks at the ends and rows of them left out.
    bool waitForText(const QString& wanted) {
        return waitUntil(10, [&] { return text() == wanted; });
    }
    QString text() const { return text_().simplified(); }

private:
    void startMousepad() {
        application_.emplace(Program::mousepad(desktop()));
        text_ = [this, field = atspi().waitForField(*application_)] { return atspi().text(field); };
    }
    void startChromium() {
        // The page tells what stands in its field by its title.
        const QString page = QStringLiteral(
            "data:text/html,<textarea autofocus rows=8 cols=60 oninput='document.title=this.value'>"
            "</textarea>");
        application_.emplace(
            desktop(),
            QStringList{QStringLiteral("chromium"), QStringLiteral("--no-sandbox"),
                        QStringLiteral("--user-data-dir=") + desktop().file(QStringLiteral("chromium")),
                        QStringLiteral("--no-first-run"), QStringLiteral("--no-default-browser-check"),
                        QStringLiteral("--disable-gpu"), QStringLiteral("--disable-background-networking"),
                        QStringLiteral("--disable-component-update"), QStringLiteral("--disable-sync"),
                        QStringLiteral("--disable-dev-shm-usage"), QStringLiteral("--password-store=basic"),
                        QStringLiteral("--window-size=700,500"), QStringLiteral("--window-position=40,40"),
                        QStringLiteral("--force-renderer-accessibility"), QStringLiteral("--app=") + page});
        application_->waitForWindow(30, QStringLiteral("chromium"));
        typist().pause(1);
        text_ = [this] { return x().title(application_->window()); };
    }
    void startTerminal() {
        const QString received = desktop().file(QStringLiteral("received-meanwhile"));
        QFile::remove(received);
        application_.emplace(
            desktop(),
            QStringList{QStringLiteral("lxterminal"), QStringLiteral("--no-remote"), QStringLiteral("-e"),
                        QStringLiteral("sh -c 'stty -icanon; cat -u > ") + received + QStringLiteral("'")});
        application_->waitForWindow(20, QStringLiteral("lxterminal"));
        typist().pause(0.5);
        text_ = [received] {
            QFile file(received);
            return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
        };
    }

    std::optional<Program> application_;
    std::function<QString()> text_;
};

TEST_P(ChoiceOver, typingGoesOnAndTheChoiceStays) {
    FocusWatch focus(desktop(), application().window());
    tapOptimize();
    typist().type(QStringLiteral("abc5"));
    EXPECT_TRUE(waitForText(QStringLiteral("words abc5"))) << qPrintable(text());
    EXPECT_FALSE(choice().isNull());
    press(QStringLiteral("Escape"));
    EXPECT_TRUE(waitForNoChoice());
    EXPECT_EQ(focus.losses(), QStringList());
    EXPECT_TRUE(generations().empty());
}

TEST_P(ChoiceOver, itFollowsTheWindow) {
    tapOptimize();
    // Until the application has told where its caret is, the choice may still find its place.
    QPoint before = choice().topLeft();
    EXPECT_TRUE(waitUntil(5, [&] {
        typist().pause(0.5);
        const QPoint last = std::exchange(before, choice().topLeft());
        return before == last;
    }));
    x().moveResize(application().window(), QRect(340, 120, 640, 300));
    EXPECT_TRUE(waitUntil(5, [&] { return isNear(choice().topLeft(), before + QPoint(40, 60), 3); }))
        << choice().x() << "," << choice().y() << " after " << before.x() << "," << before.y();
    press(QStringLiteral("Escape"));
    EXPECT_TRUE(waitForNoChoice());
}

TEST_P(ChoiceOver, closedUnderItTheApplicationLeavesItToEscape) {
    tapOptimize();
    application().kill();
    EXPECT_TRUE(waitUntil(5, [&] { return application().windows().isEmpty(); }));
    typist().pause(0.5);
    EXPECT_FALSE(choice().isNull());
    press(QStringLiteral("Escape"));
    EXPECT_TRUE(waitForNoChoice());
    EXPECT_TRUE(waitUntil(5, [&] { return panels().isEmpty(); }));
    EXPECT_EQ(x().keysDown(), 0);
    EXPECT_TRUE(generations().empty());
}

INSTANTIATE_TEST_SUITE_P(Applications, ChoiceOver, testing::Values("mousepad", "chromium", "lxterminal"),
                         [](const auto& test) { return std::string(test.param); });

}  // namespace
}  // namespace veltrin

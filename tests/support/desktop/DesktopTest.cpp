#include "support/desktop/DesktopTest.h"

#include <cstdio>

namespace veltrin {

void expectNothingHeld(RealDesktop& desktop) {
    XDesktop& x = desktop.x();
    waitUntil(0.3, [&] { return x.keysDown() == 0 && x.modifiers() == 0; });
    EXPECT_EQ(x.keysDown(), 0) << "a key stayed down";
    EXPECT_EQ(x.modifiers(), 0) << "a modifier or a lock stayed on";
    EXPECT_EQ(x.buttonsDown(), 0) << "a mouse button stayed down";
}

void DesktopTest::SetUp() {
    desktop().applyToThisProcess();
    typist().moveMouse({x().screen().width_in_pixels - 1, x().screen().height_in_pixels - 1});
}

void DesktopTest::TearDown() {
    if (HasFailure()) {
        // What the screen looked like says more than the line that failed.
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        const QString path =
            QStringLiteral("%1/failed-%2.%3.png")
                .arg(QStringLiteral(VELTRIN_BINARY_DIR), QString::fromLatin1(test->test_suite_name()),
                     QString::fromLatin1(test->name()).replace(u'/', u'-'));
        if (x().screenshot(path)) std::printf("screen at the failure: %s\n", qPrintable(path));
    }
    expectNothingHeld(desktop());
    typist_.reset();
    atspi_.reset();
    clipboard_.reset();
    desktop().endPrograms();
}

}  // namespace veltrin

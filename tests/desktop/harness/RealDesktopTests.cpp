#include "support/desktop/Program.h"
#include "support/desktop/RealDesktop.h"
#include "support/desktop/Typist.h"
#include "support/desktop/Waiting.h"

#include <QFile>

#include <gtest/gtest.h>

namespace veltrin {
namespace {

TEST(RealDesktop, startsQuickly) {
    const double begin = monotonicSeconds();
    RealDesktop desktop;
    const double took = monotonicSeconds() - begin;
    RecordProperty("milliseconds", static_cast<int>(took * 1000));
    std::printf("desktop up in %.0f ms\n", took * 1000);
    EXPECT_LT(took, 2.0);
    EXPECT_TRUE(desktop.x().hasWindowManager());
    EXPECT_EQ(desktop.x().keysDown(), 0);
}

TEST(RealDesktop, typedTextArrivesInAForeignWindow) {
    RealDesktop desktop;
    Program terminal = Program::xterm(
        desktop,
        {QStringLiteral("sh"), QStringLiteral("-c"),
         QStringLiteral("read -r line; echo \"$line\" > %1").arg(desktop.file(QStringLiteral("typed")))});
    Typist typist(desktop);
    typist.type(QStringLiteral("Hello, World? {42}\n"));
    ASSERT_TRUE(terminal.waitForExit(5));
    QFile typed(desktop.file(QStringLiteral("typed")));
    ASSERT_TRUE(typed.open(QIODevice::ReadOnly));
    EXPECT_EQ(typed.readAll(), QByteArray("Hello, World? {42}\n"));
    EXPECT_EQ(typist.keysDown(), 0);
}

}  // namespace
}  // namespace veltrin

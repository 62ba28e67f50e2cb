#include "support/desktop/PanelHost.h"
#include "support/desktop/RealDesktop.h"
#include "support/desktop/Waiting.h"

#include <QFile>

#include <gtest/gtest.h>

namespace veltrin {
namespace {

constexpr QSize choiceSize(310, 248);

DesktopOptions plainOptions(const QList<QRect>& monitors = {}) {
    DesktopOptions options;
    options.accessibility = false;
    options.monitors = monitors;
    return options;
}

bool tool(RealDesktop& desktop, const QStringList& command) {
    ChildProcess process({command, desktop.environment(), desktop.file(QStringLiteral("tool.log"))});
    return process.waitForExit(10) && process.exitStatus() == 0;
}

// MARK: Three screens

class ThreeScreens : public testing::Test {
protected:
    RealDesktop desktop_{
        plainOptions({QRect(1024, 0, 1280, 800), QRect(0, 0, 1024, 768), QRect(2304, 0, 800, 600)})};
    PanelHost host_{desktop_};
};

TEST_F(ThreeScreens, theChoiceStaysOnEachAndTheMessageOnTheMainOne) {
    host_.ask("choice 1020 400 2 20");
    EXPECT_EQ(host_.place(), QRect(QPoint(1024 - 12 - 310, 410), choiceSize));
    host_.ask("choice 1640 400 2 20");
    EXPECT_EQ(host_.place(), QRect(QPoint(1641 - 155, 410), choiceSize));
    host_.ask("choice 3100 700 2 20");
    EXPECT_EQ(host_.place(), QRect(QPoint(2304 + 800 - 12 - 310, 110), choiceSize));
    // The smallest ends at 600 from the top, which is 200 from the bottom of the desktop.
    host_.ask("choice 2700 210 2 20");
    EXPECT_EQ(host_.place().bottom() + 1, 600 - 12);
    host_.ask("dismissOverlay");
    EXPECT_TRUE(waitUntil(5, [&] { return host_.windows().isEmpty(); }));
    host_.ask("text Veltrin Ready");
    EXPECT_EQ(host_.place(), QRect(1024 + 490, 358, 300, 84));
}

TEST_F(ThreeScreens, whenAllButOneGoTheChoiceIsOnTheOneThatIsLeft) {
    host_.ask("choice 2700 500 2 20");
    for (const char* name : {"SCREEN-2", "SCREEN-1"})
        ASSERT_TRUE(tool(
            desktop_, {QStringLiteral("xrandr"), QStringLiteral("--delmonitor"), QString::fromLatin1(name)}));
    EXPECT_TRUE(waitUntil(10, [&] { return host_.ask("screens") == "1"; }));
    EXPECT_TRUE(waitUntil(5, [&] { return QRect(1024, 0, 1280, 800).contains(host_.place()); }))
        << host_.place().x();
}

// MARK: No screens

/// A server that cannot tell its screens has the whole desktop for one.
TEST(DesktopWithoutScreens, panelsStandOnTheWholeOfIt) {
    DesktopOptions options = plainOptions();
    options.serverArguments = {QStringLiteral("-extension"), QStringLiteral("RANDR"),
                               QStringLiteral("-extension"), QStringLiteral("XINERAMA")};
    RealDesktop desktop(options);
    PanelHost host(desktop);
    host.ask("choice 600 400 2 20");
    EXPECT_EQ(host.place(), QRect(QPoint(446, 410), choiceSize));
    host.ask("move 1279 20 2 20");
    EXPECT_TRUE(host.waitForPlace(QRect(QPoint(1280 - 12 - 310, 800 - 12 - 248), choiceSize)));
    host.ask("dismissOverlay");
    EXPECT_TRUE(waitUntil(5, [&] { return host.windows().isEmpty(); }));
    host.ask("text Veltrin Ready");
    EXPECT_EQ(host.place(), QRect(490, 358, 300, 84));
}

// MARK: Fonts

/// A desktop without a single font, and one without any of those that the design asks for.
TEST(MissingFonts, panelsShowAllTheSame) {
    RealDesktop desktop(plainOptions());
    for (const char* folder : {"/nonexistent", "/usr/share/fonts/truetype/dejavu"}) {
        SCOPED_TRACE(folder);
        const QString configuration = desktop.file(QStringLiteral("fonts.conf"));
        QFile file(configuration);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(QByteArray("<?xml version=\"1.0\"?><fontconfig><dir>") + folder + "</dir><cachedir>" +
                   desktop.file(QStringLiteral("font-cache")).toUtf8() + "</cachedir></fontconfig>");
        file.close();
        PanelHost host(desktop, {{QStringLiteral("FONTCONFIG_FILE"), configuration}});
        host.ask("choice 600 400 2 20");
        EXPECT_EQ(host.place(), QRect(QPoint(446, 410), choiceSize));
        host.ask("dismissOverlay");
        EXPECT_TRUE(waitUntil(5, [&] { return host.windows().isEmpty(); }));
        host.ask("failure 优化失败");
        EXPECT_EQ(host.place(), QRect(490, 358, 300, 84));
    }
}

}  // namespace
}  // namespace veltrin

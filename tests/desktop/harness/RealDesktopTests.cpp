#include "support/desktop/DesktopTest.h"
#include "support/desktop/ProcessSweep.h"
#include "support/desktop/XWithoutXInput.h"

#include <QFile>
#include <QFileInfo>
#include <QTimer>

#include <xcb/randr.h>
#include <xcb/xinput.h>

#include <csignal>
#include <cstdio>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

TEST(RealDesktop, startsQuicklyAndLeavesNothingBehind) {
    QString folder;
    QString socket;
    const double begin = monotonicSeconds();
    {
        RealDesktop desktop;
        const double took = monotonicSeconds() - begin;
        std::printf("desktop up in %.0f ms\n", took * 1000);
        EXPECT_LT(took, 2.0);
        EXPECT_TRUE(desktop.x().hasWindowManager());
        EXPECT_TRUE(desktop.programs().empty());
        Program::qtEditor(desktop).stop();
        Program program = Program::xterm(desktop);
        program.stop();  // a stopped program must not survive either
        folder = desktop.folder();
        socket = u"/tmp/.X11-unix/X"_s + desktop.display().mid(1);
        EXPECT_TRUE(QFileInfo::exists(socket));
    }
    EXPECT_TRUE(processesMarked(folder.toStdString()).empty());
    EXPECT_FALSE(QFileInfo::exists(folder));
    EXPECT_FALSE(QFileInfo::exists(socket));
}

/// Not a test: what the next one runs in another test program, which then ends without destructors.
TEST(RealDesktop, DISABLED_diesBySignal) {
    RealDesktop desktop;
    const Program program = Program::xterm(desktop);
    std::printf("\nfolder %s\n", qPrintable(desktop.folder()));
    std::fflush(stdout);
    // The sanitizers' handlers would turn it into a plain exit.
    std::signal(SIGABRT, SIG_DFL);
    raise(qEnvironmentVariableIntValue("TEST_SIGNAL"));
}

TEST(RealDesktop, isEndedByItsKeeperWhenTheTestProgramDies) {
    for (const int signalNumber : {SIGTERM, SIGKILL, SIGABRT}) {
        SCOPED_TRACE(signalNumber);
        Pipe told;
        ChildProcess program({.command = {u"/proc/self/exe"_s, u"--gtest_also_run_disabled_tests"_s,
                                          u"--gtest_filter=RealDesktop.DISABLED_diesBySignal"_s},
                              .environment = {{u"TEST_SIGNAL"_s, QString::number(signalNumber)},
                                              {u"PATH"_s, qEnvironmentVariable("PATH")}},
                              .output = told.write});
        told.closeWrite();
        QString folder;
        QByteArray pending;
        const QByteArray end = "(end)";
        for (QByteArray line; line != end; line = readLine(told.read, pending, 20).value_or(end)) {
            if (line.startsWith("folder ")) folder = QString::fromLatin1(line.mid(7));
        }
        EXPECT_TRUE(program.waitForExit(5));
        EXPECT_EQ(program.exitStatus(), -signalNumber);
        ASSERT_FALSE(folder.isEmpty());
        EXPECT_TRUE(waitUntil(10, [&] { return !QFileInfo::exists(folder); }));
        EXPECT_TRUE(processesMarked(folder.toStdString()).empty());
    }
}

TEST(RealDesktop, doesWithoutAWindowManager) {
    RealDesktop desktop({.windowManager = false, .accessibility = false});
    EXPECT_FALSE(desktop.x().hasWindowManager());
    Program first = Program::xterm(desktop);
    Program second = Program::qtEditor(desktop);
    EXPECT_EQ(desktop.x().activeWindow(), second.window());
    EXPECT_TRUE(desktop.x().activate(first.window()));
    desktop.startWindowManager();
    EXPECT_TRUE(waitUntil(5, [&] { return desktop.x().windows().size() == 2; }));
    EXPECT_TRUE(desktop.x().activate(second.window()));
    desktop.stopWindowManager();
    EXPECT_FALSE(desktop.x().hasWindowManager());
}

TEST(RealDesktop, hasTheMonitorsItWasGiven) {
    RealDesktop desktop(
        {.monitors = {QRect(0, 0, 800, 600), QRect(800, 100, 1024, 768)}, .accessibility = false});
    XDesktop& x = desktop.x();
    EXPECT_EQ(x.screen().width_in_pixels, 1824);
    EXPECT_EQ(x.screen().height_in_pixels, 868);
    const XReply<xcb_randr_get_monitors_reply_t> reply(xcb_randr_get_monitors_reply(
        x.connection(), xcb_randr_get_monitors(x.connection(), x.root(), 1), nullptr));
    ASSERT_TRUE(reply);
    std::vector<QRect> found;
    for (auto each = xcb_randr_get_monitors_monitors_iterator(reply.get()); each.rem > 0;
         xcb_randr_monitor_info_next(&each)) {
        EXPECT_EQ(each.data->primary != 0, found.empty());
        found.emplace_back(each.data->x, each.data->y, each.data->width, each.data->height);
    }
    EXPECT_EQ(found, (std::vector<QRect>{{0, 0, 800, 600}, {800, 100, 1024, 768}}));
}

TEST(RealDesktop, givesThisProcessItsEnvironmentForAWhile) {
    const QByteArray before = qgetenv("HOME");
    {
        RealDesktop desktop({.windowManager = false, .accessibility = false});
        desktop.applyToThisProcess();
        EXPECT_EQ(qgetenv("HOME"), desktop.home().toLatin1());
        EXPECT_EQ(qgetenv("DISPLAY"), desktop.display().toLatin1());
        EXPECT_EQ(QFileInfo(desktop.runtimeDirectory()).permissions() & 0x77, QFile::Permissions());
    }
    EXPECT_EQ(qgetenv("HOME"), before);
}

TEST(RealDesktop, takesPicturesOfItsScreen) {
    RealDesktop desktop({.windowManager = false, .accessibility = false});
    XDesktop& x = desktop.x();
    const xcb_window_t window = xcb_generate_id(x.connection());
    const uint32_t colour = 0x3366CC;
    xcb_create_window(x.connection(), XCB_COPY_FROM_PARENT, window, x.root(), 100, 50, 200, 100, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, x.screen().root_visual, XCB_CW_BACK_PIXEL, &colour);
    xcb_map_window(x.connection(), window);
    EXPECT_TRUE(waitUntil(2, [&] { return x.pixel({100, 50}) == QColor(0x33, 0x66, 0xCC); }));
    EXPECT_EQ(x.pixel({99, 50}), QColor(Qt::black));
    EXPECT_EQ(x.pixel({299, 149}), QColor(0x33, 0x66, 0xCC));
    EXPECT_EQ(x.rootChildren(), QList<xcb_window_t>{window});
    const QString path = desktop.file(u"screen.png"_s);
    ASSERT_TRUE(x.screenshot(path));
    const QImage read(path);
    EXPECT_EQ(read.size(), QSize(1280, 800));
    EXPECT_EQ(read.pixelColor(150, 75), QColor(0x33, 0x66, 0xCC));
    EXPECT_FALSE(x.screenshot(desktop.file(u"no/such/folder.png"_s)));
}

bool offersXInput(const QString& display) {
    XDesktop x(display);
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(x.connection(), &xcb_input_id);
    return extension && extension->present;
}

TEST(RealDesktop, survivesTheDeathOfItsServer) {
    RealDesktop desktop;
    ClipboardProbe clipboard(desktop);
    Typist typist(desktop);
    typist.press(u"a"_s);
    desktop.killServer();
    EXPECT_EQ(desktop.x().keysDown(), -1);
    EXPECT_TRUE(desktop.x().image().isNull());
    EXPECT_FALSE(clipboard.hasOwner());
}

TEST(XWithoutXInput, isTheSameServerWithoutTheExtension) {
    RealDesktop desktop;
    const XWithoutXInput proxy(desktop.display());
    EXPECT_TRUE(offersXInput(desktop.display()));
    EXPECT_FALSE(offersXInput(proxy.display()));

    // A program works through it, and moves megabytes.
    XDesktop through(proxy.display());
    EXPECT_EQ(through.image().size(), QSize(1280, 800));
    Program program(desktop, {QStringLiteral(VELTRIN_BINARY_DIR "/bin/veltrin_test_editor")},
                    {{u"DISPLAY"_s, proxy.display()}});
    EXPECT_NE(program.waitForWindow(), 0U);
}

TEST(XWithoutXInput, cutsItsConnectionsWhenTold) {
    RealDesktop desktop({.windowManager = false, .accessibility = false});
    XWithoutXInput proxy(desktop.display());
    XDesktop first(proxy.display());
    proxy.cutConnections();
    EXPECT_TRUE(waitUntil(2, [&] {
        first.sync();
        return xcb_connection_has_error(first.connection()) != 0;
    }));
    EXPECT_EQ(XDesktop(proxy.display()).root(), desktop.x().root());
}

TEST(Waiting, runsTheEventLoopUntilTheConditionHolds) {
    bool happened = false;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&happened] { happened = true; });
    timer.start(0);
    EXPECT_TRUE(eventually(1, [&] { return happened; }));
    const double begin = monotonicSeconds();
    EXPECT_FALSE(eventually(0.1, [] { return false; }));
    EXPECT_GE(monotonicSeconds() - begin, 0.1);
}

}  // namespace
}  // namespace veltrin

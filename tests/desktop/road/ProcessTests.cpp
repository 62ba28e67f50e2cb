#include "desktop/road/RoadTest.h"
#include "support/desktop/XWithoutXInput.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace veltrin {
namespace {

/// The process as a whole: what it is given to live in, how it starts a second time, how it ends.
class Process : public RoadTest {
protected:
    struct Ended {
        int code = -1;
        QString errors;
    };

    /// Runs the program to its end with this environment alone.
    static Ended run(const QProcessEnvironment& environment, const QStringList& arguments = {}) {
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(VELTRIN_BINARY_DIR "/bin/veltrin"), arguments);
        if (!process.waitForFinished(10'000)) {
            process.kill();
            process.waitForFinished();
            return {};
        }
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                QString::fromUtf8(process.readAllStandardError())};
    }

    QProcessEnvironment bareEnvironment() const {
        QProcessEnvironment environment;
        environment.insert(QStringLiteral("HOME"), desktop().home());
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), desktop().configHome());
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), desktop().runtimeDirectory());
        return environment;
    }

    QString preferencesText() const {
        QFile file(preferencesFile());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
};

TEST_F(Process, withoutADisplayItSaysSoAndEnds) {
    const Ended ended = run(bareEnvironment());
    EXPECT_EQ(ended.code, 1);
    EXPECT_TRUE(ended.errors.contains(u"DISPLAY is not set")) << qPrintable(ended.errors);
}

TEST_F(Process, inAWaylandOnlySessionItSaysWhatToDo) {
    auto environment = bareEnvironment();
    environment.insert(QStringLiteral("WAYLAND_DISPLAY"), QStringLiteral("wayland-0"));
    const Ended ended = run(environment);
    EXPECT_EQ(ended.code, 1);
    EXPECT_TRUE(ended.errors.contains(u"Wayland-only session")) << qPrintable(ended.errors);
}

TEST_F(Process, withADisplayThatDoesNotAnswerItSaysSoAndEnds) {
    auto environment = bareEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), QStringLiteral(":54321"));
    const Ended ended = run(environment);
    EXPECT_EQ(ended.code, 1);
    EXPECT_TRUE(ended.errors.contains(u"cannot open the display \":54321\"")) << qPrintable(ended.errors);
}

TEST_F(Process, withoutXInputItRunsAndAsksForTheRightToListen) {
    const XWithoutXInput display(desktop().display());
    startProgramUnready({}, {{QStringLiteral("DISPLAY"), display.display()}});
    EXPECT_TRUE(waitForLog(QStringLiteral("SpaceGestureEngine failed to start"), 20)) << qPrintable(log());
    EXPECT_TRUE(log().contains(u"Event tap could not be created."));
    EXPECT_TRUE(waitForLog(QStringLiteral("UI showPanel requested: Input Monitoring Required")));
    EXPECT_TRUE(program().isRunning());
}

TEST_F(Process, withoutTheAccessibilityBusItRuns) {
    startProgramUnready(
        {}, {{QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("unix:path=/nonexistent")},
             {QStringLiteral("AT_SPI_BUS_ADDRESS"), QString()}});
    EXPECT_TRUE(waitForLog(QStringLiteral("SpaceGestureEngine started successfully"), 20))
        << qPrintable(log());
    EXPECT_TRUE(log().contains(u"AXIsProcessTrusted: false"));
    Program editor = Program::mousepad(desktop());
    atspi().waitForField(editor);
    typeSentence(QStringLiteral("x"));
    tapTranslate();
    EXPECT_TRUE(waitForLog(QStringLiteral("AX text read unavailable: AXIsProcessTrusted false")))
        << qPrintable(log());
    EXPECT_TRUE(waitForLog(QStringLiteral("UI showFailureCard requested:")));
}

TEST_F(Process, aLogFileThatIsALinkIsLeftAlone) {
    const QString target = desktop().file(QStringLiteral("precious"));
    {
        QFile file(target);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("keep");
    }
    startProgramUnready();
    program().terminate();
    ASSERT_TRUE(program().waitForExit(10));
    QFile::remove(logFile());
    ASSERT_TRUE(QFile::link(target, logFile()));
    const Program again(desktop(), {QStringLiteral(VELTRIN_BINARY_DIR "/bin/veltrin"),
                                    QStringLiteral("--log-file"), logFile()});
    EXPECT_TRUE(
        waitUntil(20, [&] { return again.output().contains("SpaceGestureEngine started successfully"); }));
    EXPECT_TRUE(again.output().contains("cannot be written; lines go to standard output only"));
    QFile file(target);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "keep");
}

TEST_F(Process, theLogAndThePreferencesAreForTheUserAlone) {
    startProgram();
    struct stat info {};
    ASSERT_EQ(stat(QFile::encodeName(logFile()).constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777U, 0600U);
    ASSERT_EQ(stat(QFile::encodeName(preferencesFile()).constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777U, 0600U);
}

TEST_F(Process, corruptPreferencesAreKeptAsideAndTheDefaultsHold) {
    QDir().mkpath(desktop().configHome() + QStringLiteral("/Veltrin"));
    {
        QFile file(preferencesFile());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("{\"gesture_triple_space\": fal");
    }
    const Program veltrin(desktop(), {QStringLiteral(VELTRIN_BINARY_DIR "/bin/veltrin"),
                                      QStringLiteral("--log-file"), logFile()});
    EXPECT_TRUE(waitForLog(QStringLiteral("SpaceGestureEngine started successfully"), 20))
        << qPrintable(log());
    EXPECT_EQ(logCount(QStringLiteral("Preferences unreadable; kept aside as:")), 1);
    QFile aside(preferencesFile() + QStringLiteral(".unreadable"));
    ASSERT_TRUE(aside.open(QIODevice::ReadOnly));
    EXPECT_EQ(aside.readAll(), "{\"gesture_triple_space\": fal");
}

TEST_F(Process, aSecondStartBringsTheFirstToFrontAndEnds) {
    startProgram();
    Program second(desktop(), {QStringLiteral(VELTRIN_BINARY_DIR "/bin/veltrin"),
                               QStringLiteral("--log-file"), desktop().file(QStringLiteral("second.log"))});
    ASSERT_TRUE(second.waitForExit(10));
    EXPECT_EQ(second.exitStatus(), 0);
    EXPECT_TRUE(second.output().contains("Veltrin is already running; brought it to front"));
    EXPECT_TRUE(waitUntil(3, [&] { return logCount(QStringLiteral("Main window requested")) == 2; }));
    EXPECT_TRUE(program().isRunning());
}

TEST_F(Process, aSecondStartHandsItsAddressesOverAndEnds) {
    startProgram();
    Program second(desktop(), {QStringLiteral(VELTRIN_BINARY_DIR "/bin/veltrin"),
                               QStringLiteral("--log-file"), desktop().file(QStringLiteral("second.log")),
                               QStringLiteral("veltrin://auth?token=first"), QStringLiteral("veltrin://auth"),
                               QStringLiteral("veltrin://auth?token=second")});
    ASSERT_TRUE(second.waitForExit(10));
    EXPECT_EQ(second.exitStatus(), 0);
    EXPECT_TRUE(second.output().contains("Veltrin is already running; handed over addresses: 3"));
    EXPECT_FALSE(second.output().contains("token"));
    EXPECT_TRUE(waitUntil(3, [&] {
        return preferencesText().contains(u"\"veltrin_auth_token\": \"second\"");
    })) << qPrintable(preferencesText());
    EXPECT_EQ(logCount(QStringLiteral("Main window requested")), 1);
    EXPECT_FALSE(log().contains(u"token"));
}

TEST_F(Process, theAddressItIsStartedWithIsOpened) {
    writePreferences({});
    const Program veltrin(desktop(),
                          {QStringLiteral(VELTRIN_BINARY_DIR "/bin/veltrin"), QStringLiteral("--log-file"),
                           logFile(), QStringLiteral("veltrin://auth?token=own")});
    EXPECT_TRUE(waitUntil(20, [&] { return preferencesText().contains(u"veltrin_web_auth_done"); }));
    EXPECT_TRUE(preferencesText().contains(u"\"own\""));
}

class EndedBySignal : public Process, public testing::WithParamInterface<int> {};

TEST_P(EndedBySignal, itGivesTheClipboardBackAndLeavesNoKeyDown) {
    startProgram();
    clipboard().ownText(QStringLiteral("the user's"));
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    typeSentence(QStringLiteral("hello"));
    tapTranslate();
    ASSERT_TRUE(waitForLog(QStringLiteral("Writeback success: strategy: clipboardPaste"), 8))
        << qPrintable(log());
    EXPECT_EQ(atspi().waitForText(field, answer), answer);
    // The restore is due 0.6 s after the paste; the program is told to go before.
    ASSERT_EQ(kill(program().pid(), GetParam()), 0);
    ASSERT_TRUE(program().waitForExit(10));
    EXPECT_EQ(program().exitStatus(), 0);
    EXPECT_TRUE(log().contains(u"Writeback clipboard restored")) << qPrintable(log());
    EXPECT_EQ(x().keysDown(), 0);
    // Nothing of the program holds the keyboard.
    typist().type(QStringLiteral("ok"));
    EXPECT_EQ(atspi().waitForText(field, answer + QStringLiteral("ok")), answer + QStringLiteral("ok"));
}

INSTANTIATE_TEST_SUITE_P(Signals, EndedBySignal, testing::Values(SIGTERM, SIGINT));

TEST_F(Process, aCrashLeavesNoGrabAndNoKeyDown) {
    startProgram({{QStringLiteral("shortcut_translation"), QStringLiteral("⌥⇧|T")}});
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    typist().press(QStringLiteral("Alt"));
    typist().press(QStringLiteral("Shift"));
    typist().press(QStringLiteral("t"));
    ASSERT_TRUE(waitForGeneration(0) && waitForLog(QStringLiteral("ActionPipeline"), 5)) << qPrintable(log());
    // The swallowed key is still held when the program dies.
    kill(program().pid(), SIGKILL);
    ASSERT_TRUE(program().waitForExit(5));
    typist().releaseAll();
    typist().type(QStringLiteral("free"));
    EXPECT_EQ(atspi().waitForTextContaining(field, QStringLiteral("free")), QStringLiteral("free"));
    EXPECT_EQ(x().keysDown(), 0);
}

TEST_F(Process, controlQEndsItAndDoesNotReachTheApplication) {
    startProgram();
    Program editor = Program::mousepad(desktop(), QStringLiteral("text"));
    atspi().waitForField(editor);
    typist().chord(QStringLiteral("Ctrl+Shift+q"));
    ASSERT_TRUE(program().waitForExit(5)) << "Ctrl+Shift+Q did not end the program";
    EXPECT_EQ(program().exitStatus(), 0);
    EXPECT_TRUE(editor.isRunning());
    EXPECT_EQ(x().activeWindow(), editor.window());
}

}  // namespace
}  // namespace veltrin

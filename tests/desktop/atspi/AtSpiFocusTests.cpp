#include "Platform/Linux/AtSpi/AtSpiElement.h"
#include "desktop/atspi/AtSpiFixture.h"
#include "support/Slowdown.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>

#include <csignal>
#include <thread>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

using AtSpiFocus = AtSpiTest;

TEST_F(AtSpiFocus, followsASwitchBetweenApplications) {
    const Program pad = Program::mousepad(desktop(), u"pad"_s);
    const Program entry = Program::zenityEntry(desktop(), u"entry"_s);
    const auto inEntry = waitForFocus(entry);
    ASSERT_TRUE(desktop().x().activate(pad.window()));
    const auto inPad = waitForFocus(pad);
    EXPECT_FALSE(inPad->isEqual(*inEntry));
    for (int i = 0; i < 5; ++i) {
        for (const auto& [program, element] : {std::pair(&entry, inEntry), std::pair(&pad, inPad)}) {
            ASSERT_TRUE(desktop().x().activate(program->window()));
            const double taken = milliseconds([&] {
                EXPECT_TRUE(waitUntil(1, [&, p = program, e = element] {
                    const auto now = focused(*p);
                    return now && now->isEqual(*e) && accessibility().inspect(now).isFocused;
                }));
            });
            EXPECT_LT(taken, 100);
        }
    }
}

TEST_F(AtSpiFocus, followsTheKeyboardInsideAnApplication) {
    const Program program = Program::qtEditor(
        desktop(), {u"--text"_s, u"text"_s, u"--line"_s, u"line"_s, u"--focus"_s, u"line"_s});
    const auto line = waitForFocus(program);
    EXPECT_EQ(value(line), u"line"_s);
    Typist(desktop()).chord(u"Shift+Tab"_s);
    AXElementRef text;
    EXPECT_TRUE(waitUntil(1, [&] { return (text = focused(program)) && !text->isEqual(*line); }));
    EXPECT_EQ(value(text), u"text"_s);
    EXPECT_FALSE(get<bool>(line, AXAttribute::focused));

    EXPECT_EQ(set(line, AXAttribute::focused, true), AXError::success);
    EXPECT_TRUE(get<bool>(line, AXAttribute::focused));
    EXPECT_TRUE(focused(program)->isEqual(*line));
}

TEST_F(AtSpiFocus, findsTheFocusThatWasThereBeforeItListened) {
    const Program programs[] = {Program::mousepad(desktop(), u"pad"_s),
                                Program::qtEditor(desktop(), {u"--text"_s, u"qt"_s}),
                                Program::gnomeTextEditor(desktop(), u"gnome"_s)};
    for (const Program& program : programs) {
        waitForFocus(program);
        accessibility_.reset();
        AXElementRef element;
        accessibility();
        const double taken = milliseconds([&] { element = focused(program); });
        ASSERT_TRUE(element);
        EXPECT_LT(taken, 300);
        EXPECT_TRUE(accessibility().inspect(element).isEditable);
    }
}

TEST_F(AtSpiFocus, remembersTheFocusOfAnApplicationInTheBackground) {
    const Program pad = Program::mousepad(desktop(), u"pad"_s);
    const auto inPad = waitForFocus(pad);
    const Program entry = Program::zenityEntry(desktop(), u"entry"_s);
    waitForFocus(entry);
    const auto still = focused(pad);
    ASSERT_TRUE(still);
    EXPECT_TRUE(still->isEqual(*inPad));
    EXPECT_EQ(value(still), u"pad"_s);
}

TEST_F(AtSpiFocus, elementsAreEqualByWhatTheyStandFor) {
    const Program program = Program::zenityEntry(desktop(), u"x"_s);
    const auto element = waitForFocus(program);
    EXPECT_TRUE(element->isEqual(*focused(program)));
    const auto application = accessibility().applicationElement(program.pid());
    EXPECT_TRUE(application->isEqual(*accessibility().applicationElement(program.pid())));
    EXPECT_FALSE(application->isEqual(*accessibility().applicationElement(1)));
    EXPECT_FALSE(application->isEqual(*element));
}

TEST_F(AtSpiFocus, aStoppedApplicationCostsABoundedWait) {
    Program program = Program::mousepad(desktop(), u"text"_s);
    const auto element = waitForFocus(program);
    program.stop();
    const double whole = milliseconds([&] {
        EXPECT_EQ(
            read(accessibility().applicationElement(program.pid()), AXAttribute::focusedUIElement).error,
            AXError::cannotComplete);
        for (const auto attribute : {AXAttribute::role, AXAttribute::subrole, AXAttribute::selectedTextRange,
                                     AXAttribute::selectedText, AXAttribute::value}) {
            EXPECT_EQ(read(element, attribute).error, AXError::cannotComplete);
        }
        EXPECT_EQ(set(element, AXAttribute::value, u"x"_s), AXError::cannotComplete);
        EXPECT_FALSE(accessibility().inspect(element).isAnswered);
    });
    std::printf("eight questions to a stopped application: %.0f ms\n", whole);
    EXPECT_LT(whole, 600);

    program.resume();
    EXPECT_TRUE(waitUntil(1, [&] { return read(element, AXAttribute::value).ok(); }));
    EXPECT_EQ(value(element), u"text"_s) << "the refused write never lands";
}

TEST_F(AtSpiFocus, aStoppedApplicationDoesNotSlowOthers) {
    Program stopped = Program::mousepad(desktop(), u"stopped"_s);
    waitForFocus(stopped);
    const Program program = Program::qtEditor(desktop(), {u"--text"_s, u"running"_s});
    const auto element = waitForFocus(program);
    stopped.stop();
    EXPECT_FALSE(focused(stopped) && read(focused(stopped), AXAttribute::role).ok());
    EXPECT_LT(timed(21, [&] { EXPECT_EQ(value(element), u"running"_s); }).undisturbed, 10);
}

TEST_F(AtSpiFocus, anApplicationThatDiesIsGone) {
    Program program = Program::zenityEntry(desktop(), u"x"_s);
    const auto element = waitForFocus(program);
    program.kill();
    const double taken = milliseconds([&] {
        EXPECT_EQ(read(element, AXAttribute::value).error, AXError::invalidUIElement);
        EXPECT_EQ(set(element, AXAttribute::value, u"y"_s), AXError::invalidUIElement);
        EXPECT_EQ(
            read(accessibility().applicationElement(program.pid()), AXAttribute::focusedUIElement).error,
            AXError::invalidUIElement);
    });
    EXPECT_LT(taken, 100);
}

TEST_F(AtSpiFocus, survivesApplicationsThatComeAndGoWhileTheyAreRead) {
    for (int round = 0; round < 4; ++round) {
        Program program(desktop(), {u"zenity"_s, u"--entry"_s, u"--entry-text"_s, u"here"_s});
        const auto application = accessibility().applicationElement(program.pid());
        double longest = 0;
        const auto readsField = [&] {
            bool isRead = false;
            longest = std::max(longest, milliseconds([&] {
                                   const auto element = focused(program);
                                   isRead = element &&
                                            read(element, AXAttribute::value).value == AXValue(u"here"_s);
                               }));
            return isRead;
        };
        EXPECT_TRUE(waitUntil(20 * patience, readsField)) << "it never came";
        // It ends in the middle of one reading or another.
        std::thread killer([&program, round] {
            std::this_thread::sleep_for(std::chrono::milliseconds(3 * round));
            ::kill(program.pid(), SIGKILL);
        });
        const bool isGone = waitUntil(10 * patience, [&] { return !readsField(); });
        killer.join();
        EXPECT_TRUE(isGone);
        program.kill();
        EXPECT_EQ(read(application, AXAttribute::focusedUIElement).error, AXError::invalidUIElement);
        EXPECT_LT(longest, 1200 * patience) << "two questions, each bounded";
    }
}

TEST_F(AtSpiFocus, hasNothingToSayOfItsOwnProcess) {
    const auto self =
        accessibility().applicationElement(static_cast<qint32>(QCoreApplication::applicationPid()));
    EXPECT_LT(
        milliseconds([&] { EXPECT_EQ(read(self, AXAttribute::focusedUIElement).error, AXError::noValue); }),
        5);
}

TEST_F(AtSpiFocus, hasNothingToSayOfAnApplicationWithoutAccessibility) {
    const Program program = Program::xterm(desktop());
    const auto application = accessibility().applicationElement(program.pid());
    EXPECT_EQ(read(application, AXAttribute::focusedUIElement).error, AXError::noValue);
    const auto nobody = accessibility().applicationElement(0x7FFFFFF0);
    EXPECT_EQ(read(nobody, AXAttribute::focusedUIElement).error, AXError::invalidUIElement);
    EXPECT_FALSE(accessibility().inspectFocused(program.pid()).isAnswered);
}

TEST(AtSpiBusAbsence, everythingFailsQuicklyWithoutASessionBus) {
    RealDesktop::shared().applyToThisProcess();
    const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    for (const char* bad : {"", "unix:path=/nonexistent/bus"}) {
        qputenv("DBUS_SESSION_BUS_ADDRESS", bad);
        const double taken = milliseconds([] {
            AtSpiAccessibility accessibility(nullptr);
            EXPECT_FALSE(accessibility.isProcessTrusted());
            EXPECT_FALSE(accessibility.promptForTrust());
            const auto init = accessibility.applicationElement(1);
            const auto own =
                accessibility.applicationElement(static_cast<qint32>(QCoreApplication::applicationPid()));
            EXPECT_EQ(accessibility.copyAttributeValue(init, AXAttribute::focusedUIElement).error,
                      AXError::apiDisabled);
            EXPECT_EQ(accessibility.copyAttributeValue(own, AXAttribute::focusedUIElement).error,
                      AXError::noValue);
            EXPECT_EQ(accessibility.copyAttributeValue(init, AXAttribute::focusedWindow).error,
                      AXError::noValue);
        });
        EXPECT_LT(taken, 300) << '"' << bad << '"';
    }
    qputenv("DBUS_SESSION_BUS_ADDRESS", address);
}

TEST(AtSpiBusAbsence, aDesktopWithoutAccessibilityIsNotTrusted) {
    DesktopOptions options;
    options.accessibility = false;
    RealDesktop desktop(options);
    desktop.applyToThisProcess();
    AtSpiAccessibility accessibility(nullptr);
    EXPECT_LT(milliseconds([&] { EXPECT_FALSE(accessibility.isProcessTrusted()); }), 600);
    EXPECT_EQ(
        accessibility.copyAttributeValue(accessibility.applicationElement(1), AXAttribute::focusedUIElement)
            .error,
        AXError::apiDisabled);
}

TEST(AtSpiBusAbsence, turnsAccessibilityOnWhereItIsOff) {
    RealDesktop desktop;
    desktop.applyToThisProcess();
    const QString name = u"accessibility-switch"_s;
    const auto status = [&](const char* method, const QVariantList& arguments) {
        auto bus = QDBusConnection::connectToBus(desktop.sessionBusAddress(), name);
        auto message =
            QDBusMessage::createMethodCall(u"org.a11y.Bus"_s, u"/org/a11y/bus"_s,
                                           u"org.freedesktop.DBus.Properties"_s, QString::fromLatin1(method));
        message.setArguments(QVariantList{u"org.a11y.Status"_s, u"IsEnabled"_s} + arguments);
        return bus.call(message).arguments().value(0).value<QDBusVariant>().variant().toBool();
    };
    status("Set", {QVariant::fromValue(QDBusVariant(false))});
    ASSERT_FALSE(status("Get", {}));
    AtSpiAccessibility accessibility(nullptr);
    EXPECT_TRUE(waitUntil(5 * patience, [&] { return accessibility.isProcessTrusted(); }));
    EXPECT_TRUE(status("Get", {})) << "applications that start from now on are accessible";
    QDBusConnection::disconnectFromBus(name);
}

TEST(AtSpiBusAbsence, survivesTheBusComingLateAndGoing) {
    DesktopOptions options;
    options.accessibility = false;
    RealDesktop desktop(options);
    desktop.applyToThisProcess();
    AtSpiAccessibility accessibility(nullptr);
    ASSERT_FALSE(accessibility.isProcessTrusted());

    const Program launcher(desktop, {u"/usr/libexec/at-spi-bus-launcher"_s, u"--launch-immediately"_s});
    EXPECT_TRUE(waitUntil(10, [&] { return accessibility.isProcessTrusted(); }));
    const auto init = accessibility.applicationElement(1);
    EXPECT_EQ(accessibility.copyAttributeValue(init, AXAttribute::focusedUIElement).error, AXError::noValue);

    desktop.endPrograms();
    EXPECT_TRUE(waitUntil(5, [&] { return !accessibility.isProcessTrusted(); }));
    EXPECT_LT(milliseconds([&] {
                  EXPECT_EQ(accessibility.copyAttributeValue(init, AXAttribute::focusedUIElement).error,
                            AXError::apiDisabled);
              }),
              50);
    const Program again(desktop, {u"/usr/libexec/at-spi-bus-launcher"_s, u"--launch-immediately"_s});
    EXPECT_TRUE(waitUntil(10, [&] { return accessibility.isProcessTrusted(); }));
}

}  // namespace
}  // namespace veltrin

// Shows the main job on a desktop of its own: a person types a sentence into an editor, taps the space bar
// three times, and the model's translation stands there; two taps open the choice, and its first action
// rewrites another sentence. Says what it saw, and ends with 0 only when that is true.
//
//   veltrin_demo --program FILE [--screenshots FOLDER]
#include "support/desktop/AtSpiProbe.h"
#include "support/desktop/ClipboardProbe.h"
#include "support/desktop/Program.h"
#include "support/desktop/RealDesktop.h"
#include "support/desktop/Typist.h"
#include "support/desktop/Waiting.h"
#include "support/service/ModelService.h"
#include "support/service/ServiceBehaviours.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <cstdio>
#include <exception>

namespace veltrin {
namespace {

const QString sentence = QStringLiteral("The meeting moves to Thursday, please bring the report.");
const QString translation = QStringLiteral("会议改到星期四，请带上报告。");
const QString rough = QStringLiteral("write me something about our new coffee grinder");
const QString rewritten = QStringLiteral(
    "Write a product text of 120 words about our new coffee grinder, for people who brew at home.");
const QString clipboardText = QStringLiteral("something the user copied");

void say(const char* what, const QString& value = {}) {
    std::printf("%-24s %s\n", what, qPrintable(value));
    std::fflush(stdout);
}

class Demo {
public:
    Demo(QString program, QString screenshots)
        : program_(std::move(program)), screenshots_(std::move(screenshots)) {
        QDir().mkpath(screenshots_);
    }

    bool run() {
        RealDesktop desktop;
        ModelService service;
        service.setDefault(ServiceBehaviours::slow(
            1.2, ServiceBehaviours::dictionary({{sentence, translation}, {rough, rewritten}},
                                               QStringLiteral("OK."))));
        writePreferences(desktop, service);

        Program veltrin(
            desktop, {program_, QStringLiteral("--log-file"), desktop.file(QStringLiteral("veltrin.log"))});
        if (!waitUntil(
                20, [&] { return veltrin.output().contains("SpaceGestureEngine started successfully"); })) {
            say("Veltrin did not start:", QString::fromUtf8(veltrin.output()));
            return false;
        }
        ClipboardProbe clipboard(desktop);
        clipboard.ownText(clipboardText);
        Program editor = Program::mousepad(desktop);
        AtSpiProbe atspi(desktop);
        const ProbedField field = atspi.waitForField(editor);
        Typist typist(desktop);

        typist.type(sentence, 0.03);
        typist.pause(0.7);
        const QString before = atspi.text(field);
        say("Typed into mousepad:", before);
        shoot(desktop, "1-typed");

        typist.tapSpace(3, 0.13);
        const double tapped = monotonicSeconds();
        waitUntil(5, [&] { return veltrin.output().contains("UI showStatusPill requested:"); });
        typist.pause(0.4);
        shoot(desktop, "2-translating");

        const QString after = atspi.waitForText(field, translation, 10);
        say("After three spaces:", after);
        say("Seconds, model's 1.2 in:", QString::number(monotonicSeconds() - tapped, 'f', 2));
        shoot(desktop, "3-translated");

        const auto isRestored = [&](int times) {
            return waitUntil(
                       5, [&] { return veltrin.output().count("Writeback clipboard restored") == times; }) &&
                   clipboard.text() == clipboardText;
        };
        bool restored = isRestored(1);
        const bool chosen = choose(desktop, veltrin, typist, atspi, field);
        restored = isRestored(2) && restored;
        say("Clipboard afterwards:", clipboard.text().value_or(QStringLiteral("(empty)")));
        say("Keys still down:", QString::number(typist.keysDown()));
        veltrin.terminate();
        const bool ended = veltrin.waitForExit(5);
        say("Ended when asked:", ended ? QStringLiteral("yes") : QStringLiteral("no"));
        say("Screenshots:", screenshots_);
        return before == sentence && after == translation && restored && chosen && typist.keysDown() == 0 &&
               ended;
    }

private:
    /// Two taps, the choice beside the caret, and the key of its first action.
    bool choose(RealDesktop& desktop, Program& veltrin, Typist& typist, AtSpiProbe& atspi,
                const ProbedField& field) {
        typist.chord(QStringLiteral("Ctrl+a"));
        typist.type(rough, 0.03);
        typist.pause(0.7);
        say("Typed over it:", atspi.text(field));
        typist.tapSpace(2, 0.13);
        waitUntil(5, [&] { return veltrin.output().contains("UI showOptimizeChoicePanel requested:"); });
        typist.pause(0.4);
        shoot(desktop, "4-choice");
        typist.chord(QStringLiteral("1"));
        const QString after = atspi.waitForText(field, rewritten, 10);
        say("Two spaces and a 1:", after);
        shoot(desktop, "5-rewritten");
        return after == rewritten;
    }

    static void writePreferences(const RealDesktop& desktop, const ModelService& service) {
        const QString folder = desktop.configHome() + QStringLiteral("/Veltrin");
        QDir().mkpath(folder);
        QFile file(folder + QStringLiteral("/preferences.json"));
        if (!file.open(QIODevice::WriteOnly)) return;
        file.write(Json(Json::Object{{QStringLiteral("ollama_endpoint"), service.url()},
                                     {QStringLiteral("translation_target_lang"), QStringLiteral("zh")},
                                     {QStringLiteral("hasCompletedOnboarding"), true}})
                       .serialized(2));
    }

    void shoot(RealDesktop& desktop, const char* name) {
        desktop.x().screenshot(screenshots_ + QStringLiteral("/") + QString::fromUtf8(name) +
                               QStringLiteral(".png"));
    }

    QString program_;
    QString screenshots_;
};

}  // namespace
}  // namespace veltrin

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption program(QStringLiteral("program"), QStringLiteral("The program to show."),
                                     QStringLiteral("file"));
    const QCommandLineOption screenshots(QStringLiteral("screenshots"), QStringLiteral("Where pictures go."),
                                         QStringLiteral("folder"), QStringLiteral("demo"));
    parser.addOptions({program, screenshots});
    parser.process(application);
    try {
        const bool worked = veltrin::Demo(parser.value(program), parser.value(screenshots)).run();
        std::printf("%s\n", worked ? "It works." : "It does NOT work.");
        return worked ? 0 : 1;
    } catch (const std::exception& error) {
        std::printf("The demo could not run: %s\n", error.what());
        return 1;
    }
}

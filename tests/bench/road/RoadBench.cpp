// The whole program on a desktop of its own, measured from outside: from the last tap to the request on the
// wire, from the answer to the text in the field, from two taps to the choice on the screen and from its key
// to the request, from the end of a selection to its icon on the screen, and the program's processor time and
// memory at rest.
//
//   veltrin_road_bench --program FILE [--rounds N] [--check]
//
// With --check it ends with 1 when a limit is exceeded.
#include "support/desktop/AtSpiProbe.h"
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

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <optional>
#include <sstream>
#include <vector>

namespace veltrin {
namespace {

constexpr double tapHold = 0.03;
/// How long two taps wait for a third one, by the stored default.
constexpr double tailInterval = 0.22;
constexpr QSize choiceSize(310, 248);
/// How long a selection by a drag is left alone before it is looked at.
constexpr double dragDelay = 0.5;
constexpr QSize iconSize(58, 58);
constexpr QSize popupSize(300, 244);
constexpr QPoint replyButton(150, 216);  ///< from the popup's upper left corner
/// How long the model takes where it is watched, of which the middle is measured.
constexpr double thinkingSeconds = 8;
/// Beside the rounds in which something is chosen.
constexpr int openings = 80;

struct Limit {
    const char* name;
    double value;
    double limit;
    const char* unit;
};

double percentile(std::vector<double> values, double part) {
    if (values.empty()) return 1e9;
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1,
                           static_cast<std::size_t>(static_cast<double>(values.size()) * part))];
}
double median(const std::vector<double>& values) {
    return percentile(values, 0.5);
}

/// Processor seconds that a process has used so far.
double processorSeconds(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    std::istringstream rest(text.substr(text.rfind(')') + 2));
    std::string skipped;
    for (int i = 0; i < 11; ++i)
        rest >> skipped;
    double user = 0;
    double system = 0;
    rest >> user >> system;
    return (user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

double residentMegabytes(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(file, line);) {
        if (line.rfind("VmRSS:", 0) == 0) return std::stod(line.substr(6)) / 1024;
    }
    return 1e9;
}

class Bench {
public:
    explicit Bench(QString program) : program_(std::move(program)) {}

    std::vector<Limit> run(int rounds) {
        service_.setDefault(ServiceBehaviours::success(QStringLiteral("Done.")));
        writePreferences();
        letThingsMove();
        Program veltrin(desktop_,
                        {program_, QStringLiteral("--log-file"), desktop_.file(QStringLiteral("log"))});
        if (!waitUntil(20,
                       [&] { return veltrin.output().contains("SpaceGestureEngine started successfully"); }))
            throw std::runtime_error("the program did not start");
        Program editor = Program::mousepad(desktop_);
        AtSpiProbe atspi(desktop_);
        const ProbedField field = atspi.waitForField(editor);
        Typist typist(desktop_);

        typist.type(QStringLiteral("a sentence"));
        const double firstFrame = openChoice(veltrin.pid(), typist);
        closeChoice(veltrin.pid(), typist);
        std::vector<double> toFrame;
        std::vector<double> toChoiceWire;
        for (int round = 0; round < rounds; ++round)
            choiceRound(round, veltrin.pid(), field, atspi, typist, toFrame, toChoiceWire);
        typist.type(QStringLiteral("a sentence"));
        for (int round = 0; round < openings; ++round) {
            toFrame.push_back(openChoice(veltrin.pid(), typist));
            closeChoice(veltrin.pid(), typist);
        }
        const double standing = standingChoice(veltrin.pid(), typist);

        std::vector<double> toIcon;
        for (int round = 0; round < rounds; ++round)
            toIcon.push_back(iconRound(round, veltrin.pid(), field, atspi, typist));
        const double replying = thinkingPopup(veltrin.pid(), field, atspi, typist);
        std::vector<double> toWire;
        std::vector<double> toText;
        for (int round = 0; round < rounds; ++round)
            oneRound(round, atspi, field, typist, toWire, toText);
        const double thinking = thinkingPill(veltrin.pid(), typist);

        // At rest: the last pill is gone and the clipboard is back.
        typist.pause(3);
        const double used = processorSeconds(veltrin.pid());
        typist.pause(5);
        const double idle = (processorSeconds(veltrin.pid()) - used) / 5 * 100;
        return {{"third key-up to the request on the wire, median", median(toWire) * 1000, 100, "ms"},
                {"answer to the text visible in the field, median", median(toText) * 1000, 60, "ms"},
                {"first choice of the process on the screen", firstFrame * 1000, 120, "ms"},
                {"decision to the choice on the screen, median", median(toFrame) * 1000, 20, "ms"},
                {"decision to the choice on the screen, 99th percentile", percentile(toFrame, 0.99) * 1000,
                 45, "ms"},
                {"chosen key to the request on the wire, median", median(toChoiceWire) * 1000, 110, "ms"},
                {"selection's end to its icon on the screen, median", median(toIcon) * 1000, 40, "ms"},
                {"processor while the choice stands", standing, 2, "% of a core"},
                {"processor while the model is waited for", thinking, 5, "% of a core"},
                {"processor while a selection's popup thinks", replying, 5, "% of a core"},
                {"processor at rest", idle, 1, "% of a core"},
                {"resident memory, the panels made", residentMegabytes(veltrin.pid()), 75, "MB"}};
    }

private:
    void oneRound(int round, AtSpiProbe& atspi, const ProbedField& field, Typist& typist,
                  std::vector<double>& toWire, std::vector<double>& toText) {
        const QString answer = QStringLiteral("Round %1 is translated.").arg(round);
        double answered = 0;
        service_.setDefault([&answered, answer](const ServiceRequest& request) {
            answered = monotonicSeconds();
            return ServiceBehaviours::success(answer)(request);
        });
        service_.forget();
        typist.chord(QStringLiteral("Ctrl+a"));
        typist.type(QStringLiteral("sentence %1").arg(round));
        typist.pause(0.5);
        const auto taps = typist.tapSpace(3, 0.1, tapHold);
        const QString shown = atspi.waitForText(field, answer, 5);
        const double visible = monotonicSeconds();
        if (shown != answer) throw std::runtime_error("a round was not translated: " + shown.toStdString());
        toWire.push_back(service_.requests().front().arrival - (taps.back() + tapHold));
        toText.push_back(visible - answered);
        typist.pause(0.8);
    }

    std::optional<QRect> choice(pid_t program) { return panel(program, choiceSize); }
    /// The program's window of that size when it is on the screen.
    std::optional<QRect> panel(pid_t program, QSize size) {
        for (const xcb_window_t window : desktop_.x().rootChildren()) {
            if (desktop_.x().processOf(window) != program) continue;
            const QRect geometry = desktop_.x().geometry(window);
            if (geometry.size() == size) return geometry;
        }
        return std::nullopt;
    }
    /// Its first frame: what lies where its title stands is no longer one colour.
    bool isDrawn(const QRect& panel) {
        const QImage title = desktop_.x().image(QRect(panel.x() + 12, panel.y() + 12, 120, 24));
        for (int y = 0; y < title.height(); ++y) {
            for (int x = 0; x < title.width(); ++x) {
                if (title.pixel(x, y) != title.pixel(0, 0)) return true;
            }
        }
        return false;
    }
    double openChoice(pid_t program, Typist& typist) {
        typist.pause(0.5);
        const auto taps = typist.tapSpace(2, 0.1, tapHold);
        if (!waitUntil(5, [&] {
                const auto panel = choice(program);
                return panel && isDrawn(*panel);
            }))
            throw std::runtime_error("no choice came");
        return monotonicSeconds() - (taps.back() + tapHold + tailInterval);
    }
    void choiceRound(int round, pid_t program, const ProbedField& field, AtSpiProbe& atspi, Typist& typist,
                     std::vector<double>& toFrame, std::vector<double>& toWire) {
        const QString answer = QStringLiteral("Round %1 is better.").arg(round);
        service_.setDefault(ServiceBehaviours::success(answer));
        service_.forget();
        typist.chord(QStringLiteral("Ctrl+a"));
        typist.type(QStringLiteral("sentence %1").arg(round));
        toFrame.push_back(openChoice(program, typist));
        typist.pause(0.3);
        const auto pressed = typist.tap(QStringLiteral("1"));
        if (atspi.waitForText(field, answer, 5) != answer)
            throw std::runtime_error("a round was not rewritten");
        toWire.push_back(service_.requests().front().arrival - pressed.back());
        typist.pause(0.8);
    }
    /// Selects some words; seconds from the button's release to the icon's first frame, beyond the delay that
    /// is meant.
    double showIcon(const QRect& words, pid_t program, Typist& typist) {
        typist.moveMouse({words.left() + 1, words.center().y()});
        typist.pressButton();
        typist.pause(0.05);
        typist.moveMouse(words.center());
        typist.pause(0.02);
        typist.moveMouse({words.right(), words.center().y()});
        typist.pause(0.05);
        const double released = monotonicSeconds();
        typist.releaseButton();
        if (!waitUntil(10, [&] {
                const auto icon = panel(program, iconSize);
                return icon && desktop_.x().pixel(icon->topLeft() + QPoint(29, 12)).saturation() > 100;
            }))
            throw std::runtime_error("no icon came");
        return monotonicSeconds() - released - dragDelay;
    }
    QRect typeWords(int length, const ProbedField& field, AtSpiProbe& atspi, Typist& typist) {
        typist.chord(QStringLiteral("Ctrl+a"));
        typist.type(QStringLiteral("alpha bravo charlie delta"));
        typist.pause(0.5);
        return atspi.rangeExtents(field, 0, length);
    }
    double iconRound(int round, pid_t program, const ProbedField& field, AtSpiProbe& atspi, Typist& typist) {
        const QRect words = typeWords(12 + round % 8, field, atspi, typist);
        const double shown = showIcon(words, program, typist);
        // Outside, which sends it away.
        typist.click({words.left() + 1, words.center().y()});
        typist.pause(0.9);
        return shown;
    }
    /// What the popup over a selection costs while it shows that the model thinks.
    double thinkingPopup(pid_t program, const ProbedField& field, AtSpiProbe& atspi, Typist& typist) {
        service_.forget();
        service_.setDefault(
            ServiceBehaviours::slow(thinkingSeconds, ServiceBehaviours::success(QStringLiteral("At last."))));
        const QRect words = typeWords(20, field, atspi, typist);
        showIcon(words, program, typist);
        typist.click(panel(program, iconSize).value_or(QRect()).center());
        std::optional<QRect> popup;
        if (!waitUntil(5, [&] { return (popup = panel(program, popupSize)).has_value(); }))
            throw std::runtime_error("no popup came");
        typist.pause(0.5);
        typist.click(popup->topLeft() + replyButton);
        if (!waitUntil(5, [&] { return !service_.requests().empty(); }))
            throw std::runtime_error("no reply was asked for");
        const double thinking = thinkingCost(program, typist);
        typist.click({words.left() + 1, words.center().y()});
        typist.pause(0.9);
        return thinking;
    }
    /// Percent of a core that the program takes in the middle of the model's thinking, whose end it awaits.
    static double thinkingCost(pid_t program, Typist& typist) {
        typist.pause(1);
        const double used = processorSeconds(program);
        typist.pause(5);
        const double thinking = (processorSeconds(program) - used) / 5 * 100;
        typist.pause(thinkingSeconds - 6 + 2);
        return thinking;
    }
    double standingChoice(pid_t program, Typist& typist) {
        openChoice(program, typist);
        typist.pause(1);
        const double used = processorSeconds(program);
        typist.pause(5);
        const double standing = (processorSeconds(program) - used) / 5 * 100;
        closeChoice(program, typist);
        return standing;
    }
    void closeChoice(pid_t program, Typist& typist) {
        typist.pause(0.3);
        typist.chord(QStringLiteral("Escape"));
        if (!waitUntil(5, [&] { return !choice(program); })) throw std::runtime_error("the choice stays");
    }
    /// What is shown while the model thinks.
    double thinkingPill(pid_t program, Typist& typist) {
        service_.forget();
        service_.setDefault(
            ServiceBehaviours::slow(thinkingSeconds, ServiceBehaviours::success(QStringLiteral("At last."))));
        typist.chord(QStringLiteral("Ctrl+a"));
        typist.type(QStringLiteral("a sentence"));
        typist.pause(0.5);
        typist.tapSpace(3, 0.1, tapHold);
        if (!waitUntil(5, [&] { return !service_.requests().empty(); }))
            throw std::runtime_error("nothing was asked");
        return thinkingCost(program, typist);
    }

    /// A desktop of the tests' own asks for no animations, and then nothing of what thinks would move.
    void letThingsMove() {
        for (const char* version : {"gtk-3.0", "gtk-4.0"}) {
            QFile file(desktop_.configHome() + u'/' + QLatin1String(version) +
                       QStringLiteral("/settings.ini"));
            if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
                file.write("[Settings]\ngtk-enable-animations=1\ngtk-cursor-blink=0\n") < 0)
                throw std::runtime_error("no settings");
        }
    }
    void writePreferences() {
        const QString folder = desktop_.configHome() + QStringLiteral("/Veltrin");
        QDir().mkpath(folder);
        QFile file(folder + QStringLiteral("/preferences.json"));
        if (!file.open(QIODevice::WriteOnly)) throw std::runtime_error("no preferences");
        file.write(Json(Json::Object{{QStringLiteral("ollama_endpoint"), service_.url()}}).serialized(2));
    }

    QString program_;
    RealDesktop desktop_;
    ModelService service_;
};

}  // namespace
}  // namespace veltrin

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption program(QStringLiteral("program"), {}, QStringLiteral("file"));
    const QCommandLineOption rounds(QStringLiteral("rounds"), {}, QStringLiteral("count"),
                                    QStringLiteral("20"));
    const QCommandLineOption check(QStringLiteral("check"));
    parser.addOptions({program, rounds, check});
    parser.process(application);
    try {
        bool kept = true;
        for (const auto& [name, value, limit, unit] :
             veltrin::Bench(parser.value(program)).run(parser.value(rounds).toInt())) {
            std::printf("%-56s %8.2f %s (limit %g)\n", name, value, unit, limit);
            kept = kept && value <= limit;
        }
        return kept || !parser.isSet(check) ? 0 : 1;
    } catch (const std::exception& error) {
        std::printf("The benchmark could not run: %s\n", error.what());
        return 1;
    }
}

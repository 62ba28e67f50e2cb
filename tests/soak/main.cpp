// Reading and writing, or selecting with the mouse, at random in real applications, with everything checked
// after every round.
//
//   veltrin_soak [--rounds N | --selections N] [--each N] [--seconds N] [--seed N] [--first SESSION]
//   [APPLICATION...]
//
// It ends after so many rounds or so much time, whichever comes first, and with 1 when something was broken.
// The same seed leads through the same rounds; --first begins with a later session of them, --each gives
// every session so many rounds.
#include "Foundation/MVPLog.h"
#include "soak/ResourceCount.h"
#include "soak/SelectionSession.h"
#include "soak/SoakSession.h"
#include "support/desktop/Waiting.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTemporaryDir>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

constexpr int mostFailures = 10;
constexpr double transferSeconds = 10;
constexpr int underWay = 2;        // X resources of a transfer or a question that an ended program left open
constexpr double mostGrowth = 64;  // megabytes beyond those of the warm-up

struct Limits {
    int rounds = 2000;
    int roundsOfSession = 20;
    double seconds = 1e9;
    quint64 seed = 1;
    int firstSession = 0;
    QStringList applications;
};

/// Sessions of one kind, one after the other.
template <typename Session>
class Soak {
public:
    explicit Soak(Limits limits) : limits_(std::move(limits)), count_(world_.desktop.x()) {
        if (limits_.applications.isEmpty()) limits_.applications = Session::applications();
    }

    bool run() {
        const double begin = monotonicSeconds();
        const auto isOver = [&] {
            return total_.rounds >= limits_.rounds || monotonicSeconds() - begin >= limits_.seconds ||
                   failures_ >= mostFailures;
        };
        for (int session = limits_.firstSession; !isOver(); ++session) {
            play(session, isOver);
            if (!isOver() || session > limits_.firstSession) account(session - limits_.firstSession);
        }
        std::printf("%d rounds in %.0f s: %s; %d failures\n", total_.rounds, monotonicSeconds() - begin,
                    qPrintable(total_.told()), failures_);
        return failures_ == 0 && total_.isEnough();
    }

private:
    template <typename Condition>
    void play(int number, const Condition& isOver) {
        std::mt19937_64 random(limits_.seed * 1000003 + static_cast<quint64>(number));
        const auto size = static_cast<quint64>(limits_.applications.size());
        const QString name =
            limits_.applications[static_cast<qsizetype>(static_cast<quint64>(number) % size)];
        std::unique_ptr<Session> session;
        try {
            session = std::make_unique<Session>(world_, name, random());
            for (int i = 0; i < limits_.roundsOfSession && !isOver(); ++i)
                session->round();
        } catch (const std::exception& error) {
            ++failures_;
            std::printf("FAILED  seed %llu session %d: %s\n", static_cast<unsigned long long>(limits_.seed),
                        number, error.what());
            world_.desktop.x().screenshot(u"/tmp/veltrin-soak-%1.png"_s.arg(number));
        }
        world_.text.loan.giveBackPending();
        if (session) {
            std::printf("session %d, %s: %d rounds\n", number, qPrintable(name), session->tally().rounds);
            total_.add(session->tally());
        }
        std::fflush(stdout);
        session.reset();
        endPrograms();
    }

    /// All but the probe.
    void endPrograms() {
        for (const pid_t program : world_.desktop.programs()) {
            if (program != world_.probe.process()) kill(program, SIGKILL);
        }
    }

    void account(int sessions) {
        Resources now = count_.now();
        if (sessions < Session::warmUpSessions) {
            first_ = now;
            return;
        }
        // A transfer under way holds something until the other side has taken everything or is given up.
        waitUntil(transferSeconds, [&] {
            world_.text.pasteboard.changeCount();
            now = count_.now();
            return now.xResources <= first_.xResources && now.descriptors <= first_.descriptors;
        });
        const auto check = [&](const char* what, double then, double is, double most) {
            if (is - then <= most) return;
            ++failures_;
            std::printf("FAILED  %s grew from %g to %g\n", what, then, is);
        };
        check("D-Bus match rules", first_.matchRules, now.matchRules, 0);
        check("X resources", first_.xResources, now.xResources, underWay);
        if (now.xResources > first_.xResources + underWay)
            std::printf("        from %s\n        to   %s\n", qPrintable(first_.xKinds.join(u", "_s)),
                        qPrintable(now.xKinds.join(u", "_s)));
        check("open files", first_.descriptors, now.descriptors, 0);
        check("memory in MB", first_.megabytes, now.megabytes, mostGrowth);
    }

    Limits limits_;
    typename Session::World world_;
    ResourceCount count_;
    typename Session::Tally total_;
    Resources first_;
    int failures_ = 0;
};

int run() {
    QCommandLineParser parser;
    const QCommandLineOption rounds(u"rounds"_s, {}, u"N"_s, u"2000"_s);
    const QCommandLineOption selections(u"selections"_s, {}, u"N"_s);
    const QCommandLineOption each(u"each"_s, {}, u"N"_s, u"20"_s);
    const QCommandLineOption seconds(u"seconds"_s, {}, u"N"_s, u"1000000"_s);
    const QCommandLineOption seed(u"seed"_s, {}, u"N"_s, u"1"_s);
    const QCommandLineOption first(u"first"_s, {}, u"SESSION"_s, u"0"_s);
    parser.addOptions({rounds, selections, each, seconds, seed, first});
    parser.process(*QCoreApplication::instance());
    const bool isSelecting = parser.isSet(selections);
    const Limits limits{.rounds = parser.value(isSelecting ? selections : rounds).toInt(),
                        .roundsOfSession = parser.value(each).toInt(),
                        .seconds = parser.value(seconds).toDouble(),
                        .seed = parser.value(seed).toULongLong(),
                        .firstSession = parser.value(first).toInt(),
                        .applications = parser.positionalArguments()};
    const bool isGood = isSelecting ? Soak<SelectionSession>(limits).run() : Soak<SoakSession>(limits).run();
    return isGood ? 0 : 1;
}

}  // namespace
}  // namespace veltrin

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    veltrin::MVPLog::setPrinting(false);
    const QTemporaryDir folder;
    veltrin::MVPLog::setLogURL(folder.filePath(QStringLiteral("soak.log")));
    try {
        return veltrin::run();
    } catch (const std::exception& error) {
        std::printf("The soak could not run: %s\n", error.what());
        return 1;
    }
}

// The stores at their caps: how long all of them load together, how long one change takes until it has
// reached the disk, and the search of the prompts at each key stroke.
//
//   veltrin_stores_bench [--check]
//
// A change is compared with the disk itself: the same bytes, written into a new file, synced and renamed. The
// limits are for what the store takes beyond that. With --check it ends with 1 when a limit is exceeded.
#include "Data/DataStore.h"
#include "Data/PromptStore.h"
#include "Session/UserBehaviorTracker.h"
#include "support/fake/FakeDesktop.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace veltrin {
namespace {

constexpr int rounds = 15;

struct Limit {
    std::string name;
    double value;
    double limit;
};

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// What the work takes of the processor: reading files that the system has in its memory waits for nothing,
/// and a busy machine would count otherwise.
double processorMilliseconds(const std::function<void()>& work) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
    };
    const double start = now();
    work();
    return now() - start;
}

double milliseconds(const std::function<void()>& work) {
    QElapsedTimer clock;
    clock.start();
    work();
    return static_cast<double>(clock.nsecsElapsed()) / 1e6;
}

double medianOf(const std::function<void()>& work, double (*measure)(const std::function<void()>&)) {
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i)
        times.push_back(measure(work));
    return median(std::move(times));
}

/// Text as people write it here, `characters` long and different for each number.
QString text(int number, int characters) {
    const QString piece = QStringLiteral("第%1条：请把 the following text 改写得更清晰。\n").arg(number);
    return piece.repeated(characters / static_cast<int>(piece.size()) + 1).left(characters);
}

/// What every store holds at its cap, written as a start reads it.
class Caps {
public:
    explicit Caps(const QString& folder) : folder_(folder) {
        put<HistoryEntry>("history.json", 500, [](HistoryEntry& entry, int i) {
            entry.type = QStringLiteral("optimize");
            entry.snippet = text(i, 80);
            entry.appName = QStringLiteral("Veltrin");
        });
        put<ClipboardEntry>("clipboard.json", 200, [](ClipboardEntry& entry, int i) {
            entry.text = text(i, 600);
            entry.sourceApp = QStringLiteral("Editor");
        });
        put<VoiceRecord>("voice_records.json", 100,
                         [](VoiceRecord& record, int i) { record.transcript = text(i, 300); });
        put<DictionaryTerm>("dictionary_terms.json", 2000, [](DictionaryTerm& term, int i) {
            term.term = QStringLiteral("term %1").arg(i);
            term.meaning = text(i, 40);
            term.context = text(i, 20);
            term.aliases = {QStringLiteral("alias %1").arg(i)};
            term.source = QStringLiteral("manual");
        });
        put<StoredPrompt>("prompts.json", 5000, [](StoredPrompt& prompt, int i) {
            prompt.title = text(i, 16);
            prompt.content = text(i, 300);
            prompt.tags = {QStringLiteral("写作"), QStringLiteral("Review")};
        });
        put<TrackedBehavior>(
            "user_behaviors.json", 1000,
            [](TrackedBehavior& behavior, int i) {
                behavior.detail = text(i, 20);
                behavior.context = QStringLiteral("Editor");
                behavior.category = QStringLiteral("optimize");
            },
            DateStrategy::referenceDate);
    }

    /// Bytes of the file.
    QByteArray bytes(const char* name) const {
        QFile file(folder_ + u'/' + QString::fromUtf8(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    template <Record R, typename Fill>
    void put(const char* name, int count, const Fill& fill, DateStrategy dates = DateStrategy::iso8601) {
        std::vector<R> records(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) {
            records[static_cast<std::size_t>(i)].id = QUuid::createUuid();
            fill(records[static_cast<std::size_t>(i)], i);
        }
        JSONStore<R>(folder_, QString::fromUtf8(name), {.written = dates}).persist(records);
    }

    QString folder_;
};

/// What the disk takes for these bytes: write, sync, rename, sync the folder.
double diskMilliseconds(const QString& folder, const QByteArray& bytes) {
    const QByteArray path = QFile::encodeName(folder) + "/disk";
    const QByteArray next = path + ".next";
    const auto work = [&] {
        const int file = open(next.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        const bool written =
            write(file, bytes.constData(), static_cast<std::size_t>(bytes.size())) == bytes.size();
        fsync(file);
        close(file);
        if (!written || rename(next.constData(), path.constData()) != 0) std::abort();
        const int directory = open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        fsync(directory);
        close(directory);
    };
    return medianOf(work, milliseconds);
}

class Bench {
public:
    std::vector<Limit> run() {
        std::vector<Limit> limits;
        limits.push_back({"load all stores", medianOf([&] { Stores(*this); }, processorMilliseconds), 60});
        Stores stores(*this);
        int number = 0;
        const auto change = [&](const char* file, const char* name, double limit,
                                const std::function<void()>& work) {
            const double disk = diskMilliseconds(folder_.path(), caps_.bytes(file));
            const double whole = medianOf(work, milliseconds);
            std::printf("%-28s %8.2f ms, of these the disk %.2f ms\n", name, whole, disk);
            limits.push_back({std::string(name) + " beyond the disk", whole - disk, limit});
        };
        change("history.json", "one history entry", 10,
               [&] { stores.data.history.record(QStringLiteral("send"), text(++number, 80), {}); });
        change("clipboard.json", "one clipboard entry", 10,
               [&] { stores.data.clipboard.add(text(++number, 600), {}); });
        change("voice_records.json", "one voice record", 10,
               [&] { stores.data.voiceRecords.add(text(++number, 300), std::nullopt, 1); });
        change("dictionary_terms.json", "one dictionary term", 10, [&] {
            ++number;
            stores.data.dictionary.addManual(text(number, 10), text(number, 40));
        });
        change("user_behaviors.json", "one behaviour", 10, [&] {
            stores.behaviors.record(TrackedBehavior::BehaviorType::optimizeAction, text(++number, 20), {}, {},
                                    true);
        });
        change("prompts.json", "one prompt", 60, [&] {
            StoredPrompt prompt = stores.data.prompts.prompts().front();
            prompt.content = text(++number, 300);
            stores.data.prompts.update(prompt);
        });
        limits.push_back(
            {"the slowest key stroke of a prompt search", slowestKeyStroke(stores.data.prompts), 5});
        return limits;
    }

private:
    struct Stores {
        explicit Stores(Bench& bench)
            : data(bench.folder_.path(), bench.desktop_.runLoop, bench.desktop_.pasteboard,
                   bench.desktop_.workspace, bench.desktop_.preferences),
              behaviors(bench.folder_.path(), bench.desktop_.runLoop) {}
        DataStore data;
        UserBehaviorTracker behaviors;
    };

    static double slowestKeyStroke(const PromptStore& prompts) {
        prompts.prepareSearch();
        double slowest = 0;
        const QString typed = QStringLiteral("第4999条：改写 following");
        for (qsizetype i = 1; i <= typed.size(); ++i)
            slowest = std::max(slowest, medianOf([&] { prompts.matches(typed.left(i)); }, milliseconds));
        return slowest;
    }

    QTemporaryDir folder_{QStringLiteral("veltrin-stores-XXXXXX")};
    FakeDesktop desktop_;
    Caps caps_{folder_.path()};
};

}  // namespace
}  // namespace veltrin

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const bool checks = QCoreApplication::arguments().contains(QStringLiteral("--check"));
    bool exceeded = false;
    for (const auto& [name, value, limit] : veltrin::Bench().run()) {
        exceeded |= value > limit;
        std::printf("%-44s %8.2f ms (limit %.0f)%s\n", name.c_str(), value, limit,
                    value > limit ? "  EXCEEDED" : "");
    }
    return checks && exceeded ? 1 : 0;
}

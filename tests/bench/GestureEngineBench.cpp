#include "Foundation/MVPLog.h"
#include "Gesture/SpaceGestureEngine.h"
#include "support/fake/FakeKeyCodes.h"
#include "support/fake/FakePasteboard.h"
#include "support/fake/FakePreferences.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace veltrin {
namespace {

/// Hands out the engine's handler, so that nothing but the engine is measured.
class BareTaps final : public KeyEventTaps {
public:
    std::unique_ptr<KeyEventTap> create(KeyEventMask, KeyEventTap::Handler made) override {
        handler = std::move(made);
        return std::make_unique<Tap>();
    }
    bool preflightListenEventAccess() const override { return true; }
    bool requestListenEventAccess() override { return true; }

    KeyEventTap::Handler handler;

private:
    class Tap final : public KeyEventTap {
        bool addToRunLoop() override { return true; }
        void removeFromRunLoop() override {}
        void setEnabled(bool) override {}
        void setClaimable(std::vector<ClaimableKey>) override {}
    };
};

/// An engine as the program wires it, with five stored shortcuts among some forty other preferences.
class Bench {
public:
    Bench() {
        MVPLog::setPrinting(false);
        MVPLog::setLogURL(folder_.filePath(QStringLiteral("log")));
        for (int i = 0; i < 40; ++i)
            preferences_.values[QStringLiteral("other_preference_%1").arg(i)] = true;
        const char* const stored[] = {"⌘⇧|K", "⌘⌥|T", "⌃|S", "⌥|Space", "⌘⌃|D"};
        for (const auto action : allCases<CustomShortcutAction>())
            preferences_.values[rawValue(action)] = QString::fromUtf8(stored[static_cast<int>(action)]);
        engine_.onKeyDownEvent = [](qint64, bool) { return false; };
        engine_.onKeyDown = [](qint64) { return false; };
        engine_.onKeyUpEvent = [](qint64) { return false; };
        engine_.start();
    }

    bool send(KeyEventType type, qint64 keyCode, quint64 flags) {
        event_.type = type;
        event_.keyCode = keyCode;
        event_.flags = flags;
        event_.timestamp += 50'000'000;
        return taps_.handler(event_);
    }

private:
    QTemporaryDir folder_;
    FakeRunLoop loop_;
    FakeEventLog log_;
    FakePasteboard pasteboard_{loop_, log_};
    FakePreferences preferences_;
    BareTaps taps_;
    SpaceGestureEngine engine_{loop_, taps_, preferences_, pasteboard_};
    KeyEvent event_;
};

void letterDown(benchmark::State& state) {
    Bench bench;
    for (auto _ : state)
        benchmark::DoNotOptimize(bench.send(KeyEventType::keyDown, FakeKeyCode::k, 0));
}
BENCHMARK(letterDown);

void letterUp(benchmark::State& state) {
    Bench bench;
    for (auto _ : state)
        benchmark::DoNotOptimize(bench.send(KeyEventType::keyUp, FakeKeyCode::k, 0));
}
BENCHMARK(letterUp);

void chordDown(benchmark::State& state) {
    Bench bench;
    for (auto _ : state)
        benchmark::DoNotOptimize(bench.send(KeyEventType::keyDown, KeyCode::v, KeyFlags::command));
}
BENCHMARK(chordDown);

/// One space among letters: its press, its release and the timer that settles it.
void spaceTap(benchmark::State& state) {
    Bench bench;
    for (auto _ : state) {
        bench.send(KeyEventType::keyDown, FakeKeyCode::k, 0);
        bench.send(KeyEventType::keyDown, KeyCode::space, 0);
        benchmark::DoNotOptimize(bench.send(KeyEventType::keyUp, KeyCode::space, 0));
    }
}
BENCHMARK(spaceTap);

}  // namespace
}  // namespace veltrin

BENCHMARK_MAIN();

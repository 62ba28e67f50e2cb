#include "AI/PromptStructureAnalyzer.h"

#include <benchmark/benchmark.h>

#include <ctime>

namespace veltrin {
namespace {

constexpr qsizetype length = 10'000;
constexpr double limit = 0.001;  // seconds
constexpr double judgedRounds = 50;

/// `piece` over and over, and at the very end the words that everything is searched for.
QString content(const QString& piece, const QString& end) {
    return piece.repeated(length / piece.size()).left(length - end.size()) + end;
}

void analyze(benchmark::State& state, const QString& text) {
    // The processor's time, so that a busy machine does not fail it; the first rounds are too short to tell.
    const std::clock_t start = std::clock();
    for (auto _ : state)
        benchmark::DoNotOptimize(PromptStructureAnalyzer::analyze(QStringLiteral("标题"), text));
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    const auto rounds = static_cast<double>(state.iterations());
    if (rounds >= judgedRounds && seconds / rounds > limit)
        state.SkipWithError("a prompt of 10,000 characters takes more than 1 ms");
}

const QString words = QStringLiteral("act as 必须 json");

void analyzeProse(benchmark::State& state) {
    analyze(state, content(QStringLiteral("把这段文字改写得更清楚，保留事实与语气。"), words));
}
BENCHMARK(analyzeProse);

void analyzeShortLines(benchmark::State& state) {
    analyze(state, content(QStringLiteral("- x\n"), words));
}
BENCHMARK(analyzeShortLines);

void analyzeLabels(benchmark::State& state) {
    analyze(state, content(QStringLiteral("## 要求：短\n## 要做什么：长\n"), words));
}
BENCHMARK(analyzeLabels);

void analyzeEmptySentences(benchmark::State& state) {
    analyze(state, content(QStringLiteral("。"), words));
}
BENCHMARK(analyzeEmptySentences);

}  // namespace
}  // namespace veltrin

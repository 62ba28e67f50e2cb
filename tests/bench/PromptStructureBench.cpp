#include "AI/PromptStructureAnalyzer.h"

#include <benchmark/benchmark.h>

#include <chrono>

namespace veltrin {
namespace {

constexpr qsizetype length = 10'000;
constexpr std::chrono::duration<double> limit = std::chrono::milliseconds(1);

/// `piece` over and over, and at the very end the words that everything is searched for.
QString content(const QString& piece, const QString& end) {
    return piece.repeated(length / piece.size()).left(length - end.size()) + end;
}

void analyze(benchmark::State& state, const QString& text) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    for (auto _ : state)
        benchmark::DoNotOptimize(PromptStructureAnalyzer::analyze(QStringLiteral("标题"), text));
    if ((Clock::now() - start) / static_cast<double>(state.iterations()) > limit)
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

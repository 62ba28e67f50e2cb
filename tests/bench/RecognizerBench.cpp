#include "AI/SmartSelectTextRecognizer.h"

#include <benchmark/benchmark.h>

#include <ctime>

namespace veltrin {
namespace {

constexpr qsizetype length = 100'000;
constexpr double limit = 0.002;  // seconds
constexpr double judgedRounds = 50;

QString of(const QString& piece) {
    return piece.repeated(length / piece.size() + 1).left(length);
}

void recognize(benchmark::State& state, const QString& text) {
    // The processor's time, so that a busy machine does not fail it; the first rounds are too short to tell.
    const std::clock_t start = std::clock();
    for (auto _ : state)
        benchmark::DoNotOptimize(SmartSelectTextRecognizer::recognize(text));
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    const auto rounds = static_cast<double>(state.iterations());
    if (rounds >= judgedRounds && seconds / rounds > limit)
        state.SkipWithError("a text of 100,000 characters takes more than 2 ms");
}

void recognizeProse(benchmark::State& state) {
    recognize(state, of(QStringLiteral("把这段文字改写得更清楚，保留事实与语气。")));
}
BENCHMARK(recognizeProse);

void recognizeCapitals(benchmark::State& state) {
    recognize(state, of(QStringLiteral("ÄÖÜ THE QUICK BROWN FOX ÉÈ ")));
}
BENCHMARK(recognizeCapitals);

/// Every word of the rules but for its last letter.
void recognizeNearWords(benchmark::State& state) {
    recognize(state, of(QStringLiteral("importfuncclassstructenumletvarconstfunctionreturndefselectfromwhere"
                                       "asyncconsole.lotracebacexceptiostack traceerrorfatal erroruncaugh")));
}
BENCHMARK(recognizeNearWords);

void recognizeShortLines(benchmark::State& state) {
    recognize(state, of(QStringLiteral("a\n")));
}
BENCHMARK(recognizeShortLines);

void recognizeEmptyLines(benchmark::State& state) {
    recognize(state, QStringLiteral("a") + of(QStringLiteral("\n")) + QStringLiteral("b"));
}
BENCHMARK(recognizeEmptyLines);

void recognizeAddress(benchmark::State& state) {
    recognize(state, QStringLiteral("https://") + of(QStringLiteral("x")));
}
BENCHMARK(recognizeAddress);

void recognizeNumbersOfJson(benchmark::State& state) {
    recognize(state, u'[' + of(QStringLiteral("1,")).chopped(1) + u'0' + u']');
}
BENCHMARK(recognizeNumbersOfJson);

void recognizeObjectsOfJson(benchmark::State& state) {
    const QString record = QStringLiteral("{\"name\":\"值\\u0041\",\"n\":1.5e3,\"b\":[true,null]},");
    recognize(state, u'[' + record.repeated(length / record.size()).chopped(1) + u']');
}
BENCHMARK(recognizeObjectsOfJson);

void recognizeManyMembersOfJson(benchmark::State& state) {
    QString text = QStringLiteral("{");
    for (int i = 0; text.size() < length; ++i)
        text += QStringLiteral("\"k%1\":0,").arg(i);
    recognize(state, text.chopped(1) + u'}');
}
BENCHMARK(recognizeManyMembersOfJson);

void recognizeEmptyListsOfJson(benchmark::State& state) {
    recognize(state, u'[' + of(QStringLiteral("[],")).chopped(1) + QStringLiteral(",[]]"));
}
BENCHMARK(recognizeEmptyListsOfJson);

/// JSON to its last letter, and then nothing of the sort.
void recognizeBrokenJson(benchmark::State& state) {
    recognize(state, u'[' + of(QStringLiteral("{\"a\":[1,2]},")) + u']');
}
BENCHMARK(recognizeBrokenJson);

void recognizeDeepJson(benchmark::State& state) {
    recognize(state, QStringLiteral("[").repeated(length / 2) + QStringLiteral("]").repeated(length / 2));
}
BENCHMARK(recognizeDeepJson);

}  // namespace
}  // namespace veltrin

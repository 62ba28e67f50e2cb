#include "AI/GenerationTokenBudget.h"

#include "Foundation/Characters.h"
#include "Foundation/Text.h"

#include <algorithm>
#include <cmath>

namespace veltrin::GenerationTokenBudget {
namespace {

constexpr QStringView closingMarks = u"。！？.!?；;：:」』）)]}》>”\"'`…";
/// Below this a text may well be a heading or a name that needs no closing mark.
constexpr qsizetype shortestSuspect = 12;
constexpr int retryMaximum = 20000;

}  // namespace

bool shouldRetryLikelyTruncatedOutput(const QString& output, int requestedTokenLimit) {
    const QString text = Text::trimmed(output);
    const auto tenth = static_cast<qsizetype>(requestedTokenLimit * 0.1);
    if (Characters::count(text) < std::max(tenth, shortestSuspect)) return false;
    const QString last = Characters::suffix(text, 1);
    return last.size() != 1 || !closingMarks.contains(last);
}

int replacementOutputLimit(qsizetype inputCharacters, int minimum, double expansionMultiplier, int cushion,
                           int maximum) {
    const auto characters = static_cast<double>(std::max<qsizetype>(inputCharacters, 1));
    const double raw = std::ceil(characters * expansionMultiplier) + cushion;
    return static_cast<int>(std::min<double>(std::max<double>(raw, minimum), maximum));
}

int retryLimit(int primaryLimit) {
    return std::min(std::max(primaryLimit + 512, primaryLimit * 2), retryMaximum);
}

}  // namespace veltrin::GenerationTokenBudget

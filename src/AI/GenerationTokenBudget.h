#pragma once

#include <QString>

namespace veltrin {

/// The token arithmetic that all text-replacing tasks share. Lengths in characters, limits in tokens.
namespace GenerationTokenBudget {

/// Whether an output of a fair length stops without a closing mark, as one does that ran out of tokens.
bool shouldRetryLikelyTruncatedOutput(const QString& output, int requestedTokenLimit);

/// `inputCharacters` times `expansionMultiplier` plus `cushion`, kept from `minimum` to `maximum`.
int replacementOutputLimit(qsizetype inputCharacters, int minimum, double expansionMultiplier, int cushion,
                           int maximum);

/// The limit of the second attempt that goes with a first limit.
int retryLimit(int primaryLimit);

}  // namespace GenerationTokenBudget

}  // namespace veltrin

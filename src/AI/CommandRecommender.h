#pragma once

#include "AI/CommandRecommendation.h"

#include <QString>

#include <vector>

namespace veltrin {

/// Which developer command or skill fits what the user is doing: the question to the model, with the fixed
/// catalogue of commands, and the reader of its answer. Pure functions.
namespace CommandRecommender {

/// The whole prompt. `context` is the text around the caret and may be blank.
QString buildPrompt(const QString& context, const QString& appName);

/// At most five recommendations in the model's order. An answer that is no array of recommendations becomes
/// one recommendation that holds its beginning, so that the user sees it; an empty array gives none.
std::vector<CommandRecommendation> parse(const QString& answer);

}  // namespace CommandRecommender

}  // namespace veltrin

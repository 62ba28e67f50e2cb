#pragma once

#include "Platform/Accessibility.h"

#include <QString>

#include <optional>

namespace veltrin {

/// The passage under work and a budgeted piece of what stands around it, for the prompts.
struct ExternalTextContext {
    QString focusText;             ///< the passage to process
    qsizetype fullTextLength = 0;  ///< characters of the full text
    QString contextBefore;
    QString contextAfter;

    /// The reader's budget, in characters.
    static constexpr qsizetype standardBudget = 1200;

    /// `selectedRange` counts UTF-16 units of `fullText` and is clamped to it; `budget` counts characters.
    static ExternalTextContext build(const QString& fullText, const std::optional<QString>& selectedText,
                                     const std::optional<TextRange>& selectedRange, qsizetype budget);

    /// The passage and its surroundings as a block of a prompt.
    QString promptBlock() const;

    friend bool operator==(const ExternalTextContext&, const ExternalTextContext&) = default;
};

}  // namespace veltrin

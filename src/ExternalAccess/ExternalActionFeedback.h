#pragma once

#include <QString>

#include <exception>
#include <optional>

namespace veltrin {

/// What a failure card says.
struct ExternalActionFeedback {
    QString title;
    QString detail;
    QString suggestion;
    std::optional<QString> copyableText;
    std::optional<QString> primaryActionTitle;

    /// The title and, where there is one, a short second line: for small panels.
    QString compactMessage() const;

    /// The message that goes with a result that was put on the pasteboard; `label` says what kind of result
    /// it is.
    static QString copiedResultMessage(const QString& text, const QString& label);

    /// The card for any error; `fallbackTitle` is always its title.
    static ExternalActionFeedback message(const std::exception& error, const QString& fallbackTitle);

    friend bool operator==(const ExternalActionFeedback&, const ExternalActionFeedback&) = default;
};

}  // namespace veltrin

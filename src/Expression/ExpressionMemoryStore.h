#pragma once

#include "Platform/Preferences.h"

#include <QString>

#include <optional>
#include <vector>

namespace veltrin {

/// One past expression, as the memory keeps it. The previews are cut, so no long user text stays here.
struct ExpressionMemoryEvent {
    QString trigger;
    std::optional<QString> modeName;
    QString inputKind;
    QString domain;
    QString sourcePreview;
    QString outputPreview;
    std::optional<bool> writebackSucceeded;
    bool isHighValueCandidate = false;
    double createdAt = 0;  ///< seconds since 1970; stored as ISO 8601 with whole seconds
    friend bool operator==(const ExpressionMemoryEvent&, const ExpressionMemoryEvent&) = default;
};

/// The last 300 expressions, newest first, kept in the preferences. Main thread.
class ExpressionMemoryStore {
public:
    static const QString key;
    static constexpr int limit = 300;

    explicit ExpressionMemoryStore(Preferences& preferences) : preferences_(preferences) {}

    /// Absent or undecodable data reads as an empty list.
    std::vector<ExpressionMemoryEvent> load() const;
    void record(const ExpressionMemoryEvent& event);

private:
    Preferences& preferences_;
};

}  // namespace veltrin

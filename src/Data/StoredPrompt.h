#pragma once

#include "Foundation/Records.h"

#include <QLocale>

namespace veltrin {

/// A prompt that the user keeps.
struct StoredPrompt {
    QUuid id;
    QString title;
    QString content;
    QStringList tags;
    QString categoryTag = QStringLiteral("general");  ///< raw value of a category, or a custom tag
    Date createdAt;
    Date updatedAt;
    bool isFavorite = false;
    QString source = QStringLiteral("manual");  ///< origin word; `sourceLabel` knows them
    QString sourceReference;
    std::optional<QString> imageFilename;  ///< in the images directory
    std::optional<int> userRating;         ///< stars

    /// The origin as a card shows it.
    QString sourceLabel() const;
    /// The dates in the desktop's short form, in the local time zone.
    QString formattedDate(const QLocale& locale = QLocale::system()) const;
    QString formattedUpdated(const QLocale& locale = QLocale::system()) const;

    friend bool operator==(const StoredPrompt&, const StoredPrompt&) = default;
};
/// The format grew, so only the first three fields are required.
template <>
inline constexpr auto recordFields<StoredPrompt> = std::tuple{
    required(u"id", &StoredPrompt::id),
    required(u"title", &StoredPrompt::title),
    required(u"content", &StoredPrompt::content),
    defaulted(u"tags", &StoredPrompt::tags),
    defaulted(u"categoryTag", &StoredPrompt::categoryTag),
    defaultedToNow(u"createdAt", &StoredPrompt::createdAt),
    defaultedToNow(u"updatedAt", &StoredPrompt::updatedAt),
    defaulted(u"isFavorite", &StoredPrompt::isFavorite),
    defaulted(u"source", &StoredPrompt::source),
    defaulted(u"sourceReference", &StoredPrompt::sourceReference),
    optional(u"imageFilename", &StoredPrompt::imageFilename),
    optional(u"userRating", &StoredPrompt::userRating),
};

/// A saved snippet of the library's next step; no store keeps it yet.
struct StoredPreset {
    QUuid id;
    QString title;
    QString content;
    QString tag;
    Date createdAt;
    friend bool operator==(const StoredPreset&, const StoredPreset&) = default;
};
template <>
inline constexpr auto recordFields<StoredPreset> = std::tuple{
    required(u"id", &StoredPreset::id),
    required(u"title", &StoredPreset::title),
    required(u"content", &StoredPreset::content),
    required(u"tag", &StoredPreset::tag),
    required(u"createdAt", &StoredPreset::createdAt),
};

}  // namespace veltrin

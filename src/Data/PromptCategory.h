#pragma once

#include "Foundation/Records.h"

namespace veltrin {

class Preferences;

/// The filters on the left of the library. The first three are no categories: they take prompts from all of
/// them.
enum class PromptCategory { all, favorites, recent, painting, video, chat, code, writing, business };
template <>
inline constexpr auto rawValuesOf<PromptCategory> = std::to_array<const char*>(
    {"all", "favorites", "recent", "painting", "video", "chat", "code", "writing", "business"});

/// The word of a category's raw value; any other tag as it stands.
QString categoryLabel(const QString& categoryTag);

/// A category of the user's own.
struct CustomCategory {
    QUuid id;
    QString name;
    QString icon;
    QString accentHex;
    QString tag;  ///< the `categoryTag` of its prompts

    /// A new one, with a tag of its own and the icon of them all.
    static CustomCategory made(const QString& name, const QString& accentHex);

    friend bool operator==(const CustomCategory&, const CustomCategory&) = default;
};
template <>
inline constexpr auto recordFields<CustomCategory> = std::tuple{
    required(u"id", &CustomCategory::id),     required(u"name", &CustomCategory::name),
    required(u"icon", &CustomCategory::icon), required(u"accentHex", &CustomCategory::accentHex),
    required(u"tag", &CustomCategory::tag),
};

/// The user's categories, kept in the preferences as the text of a JSON array. A text that does not decode
/// reads as none.
namespace CustomCategories {
std::vector<CustomCategory> load(const Preferences& preferences);
void save(Preferences& preferences, const std::vector<CustomCategory>& categories);
}  // namespace CustomCategories

}  // namespace veltrin

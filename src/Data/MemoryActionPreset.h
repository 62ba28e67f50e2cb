#pragma once

#include "Foundation/Records.h"

#include <QString>

#include <optional>

namespace veltrin {

/// A rewriting instruction that can be offered as a quick action.
struct MemoryActionPreset {
    QUuid id;
    QString title;        ///< the word on its button
    QString description;  ///< one line
    QString instruction;  ///< what the model is told
    QString icon;         ///< symbol name
    QString colorHex;     ///< "#" and six hexadecimal digits
    bool isQuickAction = false;
    std::optional<int> shortcutSlot;  ///< position in the choice, from 1 to 4
    Date createdAt;
    Date updatedAt;
    friend bool operator==(const MemoryActionPreset&, const MemoryActionPreset&) = default;
};
template <>
inline constexpr auto recordFields<MemoryActionPreset> =
    std::tuple{required(u"id", &MemoryActionPreset::id),
               required(u"title", &MemoryActionPreset::title),
               required(u"description", &MemoryActionPreset::description),
               required(u"instruction", &MemoryActionPreset::instruction),
               required(u"icon", &MemoryActionPreset::icon),
               required(u"colorHex", &MemoryActionPreset::colorHex),
               required(u"isQuickAction", &MemoryActionPreset::isQuickAction),
               optional(u"shortcutSlot", &MemoryActionPreset::shortcutSlot),
               required(u"createdAt", &MemoryActionPreset::createdAt),
               required(u"updatedAt", &MemoryActionPreset::updatedAt)};

}  // namespace veltrin

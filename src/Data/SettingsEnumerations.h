#pragma once

#include "Foundation/RawValues.h"

#include <vector>

namespace veltrin {

/// Which part of a foreign text field a result replaces.
enum class TextReplaceMode { current, replaceAll, smart };
template <>
inline constexpr auto rawValuesOf<TextReplaceMode> = std::to_array<const char*>({"current", "replaceAll", "smart"});

enum class AppAppearanceMode { automatic, light, dark };
template <>
inline constexpr auto rawValuesOf<AppAppearanceMode> = std::to_array<const char*>({"automatic", "light", "dark"});

/// The language of the interface, not of translation.
enum class AppLanguage { automatic, simplifiedChinese, english };
template <>
inline constexpr auto rawValuesOf<AppLanguage> =
    std::to_array<const char*>({"automatic", "simplifiedChinese", "english"});

enum class PopupAppearance { automatic, light, invertedBlack };
template <>
inline constexpr auto rawValuesOf<PopupAppearance> =
    std::to_array<const char*>({"automatic", "light", "invertedBlack"});

enum class PopupSoundPreset { classic, soft, glass, crisp };
template <>
inline constexpr auto rawValuesOf<PopupSoundPreset> =
    std::to_array<const char*>({"classic", "soft", "glass", "crisp"});

/// `automatic` (raw value "auto") can be a source and never a target.
enum class TranslationLanguage {
    automatic, chinese, english, japanese, korean, french, german, spanish, portuguese, russian, arabic, italian,
    thai, vietnamese,
};
template <>
inline constexpr auto rawValuesOf<TranslationLanguage> = std::to_array<const char*>(
    {"auto", "zh", "en", "ja", "ko", "fr", "de", "es", "pt", "ru", "ar", "it", "th", "vi"});

/// A case's words in the two interface languages.
struct BilingualName {
    QString chinese;
    QString english;
};
QString hint(TextReplaceMode mode);
BilingualName name(AppAppearanceMode mode);
BilingualName name(AppLanguage language);
/// The line under the language's name in its sheet, in the interface language asked for.
QString subtitle(AppLanguage language, bool english);
BilingualName name(PopupAppearance appearance);
/// Chinese whatever the interface language: meant so.
QString word(PopupSoundPreset preset);
/// What the settings row of the sounds shows: the preset's word, or that they are off.
QString soundRowWord(bool soundEnabled, PopupSoundPreset preset, bool english);
/// The language's own name.
QString label(TranslationLanguage language);
/// The name that prompts use.
QString englishName(TranslationLanguage language);
/// Every language but `automatic`, in order.
std::vector<TranslationLanguage> targetLanguages();

}  // namespace veltrin

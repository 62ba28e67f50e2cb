#include "Data/SettingsEnumerations.h"

#include <cstddef>
#include <iterator>

namespace veltrin {
namespace {

struct LanguageNames {
    const char* label;
    const char* englishName;
};
/// In the order of TranslationLanguage.
constexpr LanguageNames languageNames[] = {
    {"自动检测", "auto-detect"},
    {"中文", "Chinese"},
    {"English", "English"},
    {"日本語", "Japanese"},
    {"한국어", "Korean"},
    {"Français", "French"},
    {"Deutsch", "German"},
    {"Español", "Spanish"},
    {"Português", "Portuguese"},
    {"Русский", "Russian"},
    {"العربية", "Arabic"},
    {"Italiano", "Italian"},
    {"ไทย", "Thai"},
    {"Tiếng Việt", "Vietnamese"},
};
static_assert(std::size(languageNames) == caseCount<TranslationLanguage>);

const LanguageNames& namesOf(TranslationLanguage language) {
    return languageNames[static_cast<std::size_t>(language)];
}

}  // namespace

QString hint(TextReplaceMode mode) {
    switch (mode) {
        case TextReplaceMode::current:
            return QStringLiteral("只替换当前选中内容");
        case TextReplaceMode::replaceAll:
            return QStringLiteral("默认替换整个文本框内容");
        case TextReplaceMode::smart:
            break;
    }
    return QStringLiteral("根据选区和上下文自动判断");
}

BilingualName name(AppAppearanceMode mode) {
    switch (mode) {
        case AppAppearanceMode::automatic:
            return {QStringLiteral("跟随系统"), QStringLiteral("System")};
        case AppAppearanceMode::light:
            return {QStringLiteral("浅色"), QStringLiteral("Light")};
        case AppAppearanceMode::dark:
            break;
    }
    return {QStringLiteral("深色"), QStringLiteral("Dark")};
}

BilingualName name(AppLanguage language) {
    switch (language) {
        case AppLanguage::automatic:
            return {QStringLiteral("跟随系统"), QStringLiteral("System")};
        case AppLanguage::simplifiedChinese:
            return {QStringLiteral("简体中文"), QStringLiteral("Simplified Chinese")};
        case AppLanguage::english:
            break;
    }
    return {QStringLiteral("English"), QStringLiteral("English")};
}

QString subtitle(AppLanguage language, bool english) {
    switch (language) {
        case AppLanguage::automatic:
            return english ? QStringLiteral("Matches the system language")
                           : QStringLiteral("根据系统语言自动切换");
        // A language introduces itself in its own words, whatever the interface speaks.
        case AppLanguage::simplifiedChinese:
            return QStringLiteral("简体中文界面");
        case AppLanguage::english:
            break;
    }
    return QStringLiteral("English interface");
}

BilingualName name(PopupAppearance appearance) {
    switch (appearance) {
        case PopupAppearance::automatic:
            return {QStringLiteral("跟随系统"), QStringLiteral("System")};
        case PopupAppearance::light:
            return {QStringLiteral("清透白"), QStringLiteral("Clear White")};
        case PopupAppearance::invertedBlack:
            break;
    }
    return {QStringLiteral("反转黑"), QStringLiteral("Inverted Black")};
}

QString word(PopupSoundPreset preset) {
    switch (preset) {
        case PopupSoundPreset::classic:
            return QStringLiteral("经典");
        case PopupSoundPreset::soft:
            return QStringLiteral("轻柔");
        case PopupSoundPreset::glass:
            return QStringLiteral("玻璃");
        case PopupSoundPreset::crisp:
            break;
    }
    return QStringLiteral("清脆");
}

QString soundRowWord(bool soundEnabled, PopupSoundPreset preset, bool english) {
    if (soundEnabled) return word(preset);
    return english ? QStringLiteral("Off") : QStringLiteral("关闭");
}

QString label(TranslationLanguage language) {
    return QString::fromUtf8(namesOf(language).label);
}

QString englishName(TranslationLanguage language) {
    return QString::fromUtf8(namesOf(language).englishName);
}

std::vector<TranslationLanguage> targetLanguages() {
    const auto cases = allCases<TranslationLanguage>();
    return {cases.begin() + 1, cases.end()};
}

}  // namespace veltrin

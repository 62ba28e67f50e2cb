#include "Data/AppSettings.h"
#include "support/fake/FakePreferences.h"
#include "support/fake/FakeSystemEnvironment.h"

#include <gtest/gtest.h>

#include <memory>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

class AppSettingsTest : public testing::Test {
protected:
    AppSettings& load() {
        settings = std::make_unique<AppSettings>(preferences, notifications, environment);
        return *settings;
    }

    FakePreferences preferences;
    NotificationCenter notifications;
    FakeSystemEnvironment environment;
    std::unique_ptr<AppSettings> settings;
};

TEST_F(AppSettingsTest, loadsTheDefaultsOfAnEmptyStore) {
    const AppSettings& s = load();
    EXPECT_EQ(s.selectedModelProvider(), ModelProvider::ollama);
    EXPECT_EQ(s.selectedModel(), u"qwen3:8b"_s);
    EXPECT_EQ(s.modelThinkingMode(), ModelThinkingMode::smart);
    EXPECT_EQ(s.ollamaEndpoint(), u"http://127.0.0.1:11434"_s);
    EXPECT_EQ(s.translationSourceLang(), TranslationLanguage::automatic);
    EXPECT_EQ(s.translationTargetLang(), TranslationLanguage::english);
    EXPECT_TRUE(s.spaceGesturesEnabled() && s.doubleSpaceGestureEnabled() && s.tripleSpaceGestureEnabled());
    EXPECT_TRUE(s.smartSelectEnabled() && s.voiceInteractionEnabled() && s.dragInteractionEnabled());
    EXPECT_EQ(s.doubleSpaceMaxIntervalMS(), 340);
    EXPECT_EQ(s.doubleSpaceIdleGuardMS(), 450);
    EXPECT_EQ(s.tripleSpaceTailIntervalMS(), 220);
    EXPECT_EQ(s.tripleSpaceTotalIntervalMS(), 560);
    EXPECT_EQ(s.gestureBlacklistedBundleIDsText(), QString());
    EXPECT_FALSE(s.gestureVerboseLogging());
    EXPECT_TRUE(s.analyticsEnabled() && s.popupSoundEnabled());
    EXPECT_EQ(s.appAppearance(), AppAppearanceMode::automatic);
    EXPECT_EQ(s.interfaceLanguage(), AppLanguage::automatic);
    EXPECT_EQ(s.popupAppearance(), PopupAppearance::automatic);
    EXPECT_EQ(s.popupSoundPreset(), PopupSoundPreset::classic);
    EXPECT_EQ(s.optimizeReplaceMode(), TextReplaceMode::replaceAll);
    EXPECT_EQ(s.translationReplaceMode(), TextReplaceMode::replaceAll);
    EXPECT_EQ(s.voiceReplaceMode(), TextReplaceMode::current) << "unlike the other two";
    EXPECT_FALSE(s.hasCompletedOnboarding());
}

TEST_F(AppSettingsTest, writesOnlyTheMigratedTimesAtLoad) {
    load();
    QStringList keys;
    for (const auto& [key, value] : preferences.writes)
        keys << key;
    EXPECT_EQ(keys, (QStringList{u"gesture_double_space_max_interval_ms"_s,
                                 u"gesture_double_space_idle_guard_ms"_s}));
    EXPECT_EQ(preferences.real(keys[0]), 340);
    EXPECT_EQ(preferences.real(keys[1]), 450);
}

TEST_F(AppSettingsTest, replacesTimesOfEarlierVersions) {
    const auto interval = [this](double value) {
        preferences.values[u"gesture_double_space_max_interval_ms"_s] = value;
        const double loaded = load().doubleSpaceMaxIntervalMS();
        EXPECT_EQ(preferences.real(u"gesture_double_space_max_interval_ms"_s), loaded);
        return loaded;
    };
    EXPECT_EQ(interval(260), 340);
    EXPECT_EQ(interval(261), 261);
    const auto guard = [this](double value) {
        preferences.values[u"gesture_double_space_idle_guard_ms"_s] = value;
        const double loaded = load().doubleSpaceIdleGuardMS();
        EXPECT_EQ(preferences.real(u"gesture_double_space_idle_guard_ms"_s), loaded);
        return loaded;
    };
    EXPECT_EQ(guard(800), 450);
    EXPECT_EQ(guard(799), 799);
}

TEST_F(AppSettingsTest, readsAStoredFalseOrZeroAsAValue) {
    preferences.values[u"gesture_smart_select"_s] = false;
    preferences.values[u"gesture_triple_space_tail_interval_ms"_s] = 0.0;
    EXPECT_FALSE(load().smartSelectEnabled());
    EXPECT_EQ(settings->tripleSpaceTailIntervalMS(), 0);
    EXPECT_FALSE(SettingsKey::boolean(preferences, u"gesture_smart_select"_s, true));
    EXPECT_TRUE(SettingsKey::boolean(preferences, u"absent"_s, true));
    EXPECT_EQ(SettingsKey::real(preferences, u"gesture_triple_space_tail_interval_ms"_s, 7), 0);
    EXPECT_EQ(SettingsKey::real(preferences, u"absent"_s, 7), 7);
}

TEST_F(AppSettingsTest, keepsAnAutomaticTargetLanguageAsRead) {
    preferences.values[u"translation_target_lang"_s] = u"auto"_s;
    EXPECT_EQ(load().translationTargetLang(), TranslationLanguage::automatic);
}

TEST_F(AppSettingsTest, readsAnUnknownRawValueAsTheDefaultAndLeavesItStored) {
    preferences.values[u"popup_sound_preset"_s] = u"loud"_s;
    EXPECT_EQ(load().popupSoundPreset(), PopupSoundPreset::classic);
    EXPECT_EQ(preferences.string(u"popup_sound_preset"_s), u"loud"_s);
}

TEST_F(AppSettingsTest, takesTheDefaultModelOfTheStoredProvider) {
    preferences.values[u"selectedModelProvider"_s] = u"zhipu"_s;
    EXPECT_EQ(load().selectedModel(), u"glm-4-flash"_s);
    preferences.values[u"selectedModel"_s] = u""_s;
    EXPECT_EQ(load().selectedModel(), QString(u""_s)) << "a stored empty text is a value";
}

TEST_F(AppSettingsTest, writesEachChangeThroughUnderItsKey) {
    AppSettings& s = load();
    s.voiceInteractionEnabled.set(false);
    s.doubleSpaceMaxIntervalMS.set(-1);
    s.popupAppearance.set(PopupAppearance::invertedBlack);
    s.dragBlacklistedBundleIDsText.set(u"a,b"_s);
    EXPECT_EQ(preferences.boolean(u"voice_interaction_enabled"_s), false);
    EXPECT_EQ(preferences.real(u"gesture_double_space_max_interval_ms"_s), -1) << "no setter validates";
    EXPECT_EQ(preferences.string(u"popup_appearance"_s), u"invertedBlack"_s);
    EXPECT_EQ(preferences.string(u"shortcut_drag_blacklisted_bundle_ids"_s), u"a,b"_s);
    EXPECT_EQ(load().popupAppearance(), PopupAppearance::invertedBlack);
}

TEST_F(AppSettingsTest, keepsTheSettledKeyNames) {
    const AppSettings& s = load();
    EXPECT_EQ(
        (QStringList{s.selectedModelProvider.key(),
                     s.selectedModel.key(),
                     s.modelThinkingMode.key(),
                     s.ollamaEndpoint.key(),
                     s.translationSourceLang.key(),
                     s.translationTargetLang.key(),
                     s.spaceGesturesEnabled.key(),
                     s.doubleSpaceGestureEnabled.key(),
                     s.tripleSpaceGestureEnabled.key(),
                     s.smartSelectEnabled.key(),
                     s.voiceInteractionEnabled.key(),
                     s.dragInteractionEnabled.key(),
                     s.doubleSpaceMaxIntervalMS.key(),
                     s.doubleSpaceIdleGuardMS.key(),
                     s.tripleSpaceTailIntervalMS.key(),
                     s.tripleSpaceTotalIntervalMS.key(),
                     s.gestureBlacklistedBundleIDsText.key(),
                     s.optimizeBlacklistedBundleIDsText.key(),
                     s.translationBlacklistedBundleIDsText.key(),
                     s.smartSelectBlacklistedBundleIDsText.key(),
                     s.voiceBlacklistedBundleIDsText.key(),
                     s.dragBlacklistedBundleIDsText.key(),
                     s.gestureVerboseLogging.key(),
                     s.analyticsEnabled.key(),
                     s.appAppearance.key(),
                     s.interfaceLanguage.key(),
                     s.popupAppearance.key(),
                     s.popupSoundEnabled.key(),
                     s.popupSoundPreset.key(),
                     s.optimizeReplaceMode.key(),
                     s.translationReplaceMode.key(),
                     s.voiceReplaceMode.key(),
                     s.hasCompletedOnboarding.key()}
             .join(u' ')),
        u"selectedModelProvider selectedModel modelThinkingMode ollama_endpoint translation_source_lang "
        u"translation_target_lang spaceGesturesEnabled gesture_double_space gesture_triple_space "
        u"gesture_smart_select voice_interaction_enabled gesture_drag_interaction "
        u"gesture_double_space_max_interval_ms gesture_double_space_idle_guard_ms "
        u"gesture_triple_space_tail_interval_ms gesture_triple_space_total_interval_ms "
        u"gesture_blacklisted_bundle_ids shortcut_optimize_blacklisted_bundle_ids "
        u"shortcut_translation_blacklisted_bundle_ids shortcut_smart_select_blacklisted_bundle_ids "
        u"shortcut_voice_blacklisted_bundle_ids shortcut_drag_blacklisted_bundle_ids gesture_verbose_logging "
        u"analytics_enabled app_appearance interface_language popup_appearance popup_sound_enabled "
        u"popup_sound_preset optimize_replace_mode translation_replace_mode voice_replace_mode "
        u"hasCompletedOnboarding"_s);
}

TEST_F(AppSettingsTest, tellsItsObservers) {
    AppSettings& s = load();
    QStringList told;
    const auto subscription = s.selectedModel.changed.subscribe(
        [&](const QString& model) { told << model + u'=' + s.selectedModel(); });
    s.selectedModel.set(u"m"_s);
    EXPECT_EQ(told, QStringList(u"m=m"_s));
}

TEST_F(AppSettingsTest, givesAProviderItsDefaultModelWhenNoneIsSelected) {
    AppSettings& s = load();
    s.selectedModelProvider.set(ModelProvider::openAI);
    EXPECT_EQ(s.selectedModel(), u"qwen3:8b"_s) << "a selected model stays";
    EXPECT_EQ(preferences.string(u"selectedModelProvider"_s), u"openAI"_s);
    s.selectedModel.set(u" \n"_s);
    s.selectedModelProvider.set(ModelProvider::google);
    EXPECT_EQ(s.selectedModel(), u"gemini-1.5-flash"_s);
    EXPECT_EQ(preferences.string(u"selectedModel"_s), u"gemini-1.5-flash"_s);
}

TEST_F(AppSettingsTest, showsTheOnboardingOnceItIsUndone) {
    AppSettings& s = load();
    int shown = 0;
    const auto subscription = notifications.observe(Notifications::showOnboarding, [&] { ++shown; });
    s.hasCompletedOnboarding.set(true);
    EXPECT_EQ(shown, 0);
    s.hasCompletedOnboarding.set(false);
    EXPECT_EQ(shown, 1);
    EXPECT_EQ(preferences.boolean(u"hasCompletedOnboarding"_s), false);
}

TEST_F(AppSettingsTest, speaksTheLanguageOfTheSystemUnlessToldOtherwise) {
    AppSettings& s = load();
    const auto english = [&](const QStringList& languages) {
        environment.languages = languages;
        return s.usesEnglishInterface();
    };
    EXPECT_TRUE(english({u"EN-gb"_s, u"zh-CN"_s}));
    EXPECT_FALSE(english({u"zh-CN"_s, u"en"_s}));
    EXPECT_FALSE(english({}));
    s.interfaceLanguage.set(AppLanguage::english);
    EXPECT_TRUE(english({u"zh-CN"_s}));
    s.interfaceLanguage.set(AppLanguage::simplifiedChinese);
    EXPECT_FALSE(english({u"en"_s}));
}

TEST_F(AppSettingsTest, isAsDarkAsTheDesktopUnlessToldOtherwise) {
    AppSettings& s = load();
    environment.dark = true;
    EXPECT_TRUE(s.resolvedAppAppearanceIsDark());
    s.appAppearance.set(AppAppearanceMode::light);
    EXPECT_FALSE(s.resolvedAppAppearanceIsDark());
    environment.dark = false;
    s.appAppearance.set(AppAppearanceMode::dark);
    EXPECT_TRUE(s.resolvedAppAppearanceIsDark());
    s.appAppearance.set(AppAppearanceMode::automatic);
    EXPECT_FALSE(s.resolvedAppAppearanceIsDark());
}

TEST_F(AppSettingsTest, readsTheActiveModelWhereItsProviderKeepsIt) {
    AppSettings& s = load();
    preferences.values[u"model_api_key_ollama"_s] = u"local key"_s;
    s.selectedModel.set(u"llama"_s);
    s.ollamaEndpoint.set(u"http://box"_s);
    auto active = s.activeModelConfiguration();
    EXPECT_EQ(active.provider, ModelProvider::ollama);
    EXPECT_EQ(active.model, u"llama"_s);
    EXPECT_EQ(active.endpoint, u"http://box"_s);
    EXPECT_EQ(active.apiKey, u"local key"_s);
    s.selectedModelProvider.set(ModelProvider::qwen);
    active = s.activeModelConfiguration();
    EXPECT_EQ(active.model, u"qwen-plus"_s) << "not the selected model";
    EXPECT_EQ(active.endpoint, ModelProviders::defaultEndpoint(ModelProvider::qwen));
    EXPECT_EQ(active.apiKey, QString());
}

TEST_F(AppSettingsTest, savesTheActiveModelInBothPlaces) {
    AppSettings& s = load();
    s.saveActiveModelConfiguration(ModelProvider::moonshot, u" kimi "_s, u" "_s, u"k"_s);
    EXPECT_EQ(preferences.string(u"model_name_moonshot"_s), u"kimi"_s);
    EXPECT_EQ(preferences.string(u"model_endpoint_moonshot"_s), u"https://api.moonshot.cn/v1"_s);
    EXPECT_EQ(preferences.string(u"model_api_key_moonshot"_s), u"k"_s);
    EXPECT_EQ(preferences.string(u"model_api_style_moonshot"_s), u"openAICompatible"_s);
    EXPECT_EQ(preferences.string(u"model_auth_field_moonshot"_s), u"authorizationBearer"_s);
    EXPECT_EQ(preferences.string(u"selectedModelProvider"_s), u"moonshot"_s);
    EXPECT_EQ(preferences.string(u"selectedModel"_s), u"kimi"_s);
    EXPECT_EQ(preferences.string(u"ollama_endpoint"_s), u"https://api.moonshot.cn/v1"_s);
    s.saveActiveModelConfiguration(ModelProvider::moonshot, {}, {}, std::nullopt,
                                   ModelAPIStyle::anthropicMessages, ModelAuthField::xAPIKey);
    EXPECT_EQ(s.selectedModel(), u"moonshot-v1-8k"_s);
    s.saveActiveModelConfiguration(ModelProvider::moonshot, {}, {}, std::nullopt);
    const ModelProviderConfiguration stored(preferences, ModelProvider::moonshot);
    EXPECT_EQ(stored.storedAPIStyle(), ModelAPIStyle::anthropicMessages) << "kept when none is given";
    EXPECT_EQ(stored.storedAuthField(), ModelAuthField::xAPIKey);
    EXPECT_EQ(stored.storedAPIKey(), u"k"_s);
}

TEST_F(AppSettingsTest, parsesABlacklistAtCommasAndLines) {
    EXPECT_EQ(AppSettings::parseBundleList(u"com.B, com.a\n\n  org.c \t"_s),
              (QStringList{u"com.B"_s, u"com.a"_s, u"org.c"_s}));
    EXPECT_TRUE(AppSettings::parseBundleList(QString()).isEmpty());
    EXPECT_TRUE(AppSettings::parseBundleList(u" ,\n, "_s).isEmpty());
    EXPECT_EQ(AppSettings::parseBundleList(u"a\r\nb;c"_s), (QStringList{u"a"_s, u"b;c"_s}));
}

TEST(SettingsEnumerations, nameEveryCaseInBothLanguages) {
    EXPECT_EQ(hint(TextReplaceMode::current), u"只替换当前选中内容"_s);
    EXPECT_EQ(hint(TextReplaceMode::replaceAll), u"默认替换整个文本框内容"_s);
    EXPECT_EQ(hint(TextReplaceMode::smart), u"根据选区和上下文自动判断"_s);
    EXPECT_EQ(name(AppAppearanceMode::automatic).chinese, u"跟随系统"_s);
    EXPECT_EQ(name(AppAppearanceMode::light).english, u"Light"_s);
    EXPECT_EQ(name(AppAppearanceMode::dark).chinese, u"深色"_s);
    EXPECT_EQ(name(AppLanguage::simplifiedChinese).english, u"Simplified Chinese"_s);
    EXPECT_EQ(name(AppLanguage::english).chinese, u"English"_s);
    EXPECT_EQ(subtitle(AppLanguage::automatic, true), u"Matches the system language"_s);
    EXPECT_EQ(subtitle(AppLanguage::automatic, false), u"根据系统语言自动切换"_s);
    EXPECT_EQ(subtitle(AppLanguage::simplifiedChinese, true), u"简体中文界面"_s);
    EXPECT_EQ(subtitle(AppLanguage::english, false), u"English interface"_s);
    EXPECT_EQ(name(PopupAppearance::light).chinese, u"清透白"_s);
    EXPECT_EQ(name(PopupAppearance::light).english, u"Clear White"_s);
    EXPECT_EQ(name(PopupAppearance::invertedBlack).chinese, u"反转黑"_s);
    EXPECT_EQ(name(PopupAppearance::invertedBlack).english, u"Inverted Black"_s);
}

TEST(SettingsEnumerations, nameASoundInChineseWhateverTheInterfaceLanguage) {
    EXPECT_EQ(soundRowWord(true, PopupSoundPreset::classic, true), u"经典"_s);
    EXPECT_EQ(soundRowWord(true, PopupSoundPreset::soft, false), u"轻柔"_s);
    EXPECT_EQ(word(PopupSoundPreset::glass), u"玻璃"_s);
    EXPECT_EQ(word(PopupSoundPreset::crisp), u"清脆"_s);
    EXPECT_EQ(soundRowWord(false, PopupSoundPreset::glass, true), u"Off"_s);
    EXPECT_EQ(soundRowWord(false, PopupSoundPreset::glass, false), u"关闭"_s);
}

TEST(SettingsEnumerations, listTheTranslationLanguagesWithTheirOwnNames) {
    QStringList rows;
    for (const auto language : allCases<TranslationLanguage>())
        rows << rawValue(language) + u'|' + label(language) + u'|' + englishName(language);
    EXPECT_EQ(
        rows.join(u' '),
        u"auto|自动检测|auto-detect zh|中文|Chinese en|English|English ja|日本語|Japanese ko|한국어|Korean "
        u"fr|Français|French de|Deutsch|German es|Español|Spanish pt|Português|Portuguese ru|Русский|Russian "
        u"ar|العربية|Arabic it|Italiano|Italian th|ไทย|Thai vi|Tiếng Việt|Vietnamese"_s);
    EXPECT_EQ(targetLanguages().size(), 13U);
    EXPECT_EQ(targetLanguages().front(), TranslationLanguage::chinese);
}

}  // namespace
}  // namespace veltrin

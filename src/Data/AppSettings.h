#pragma once

#include "AI/ModelConfiguration.h"
#include "Data/Setting.h"
#include "Data/SettingsEnumerations.h"
#include "Foundation/NotificationCenter.h"
#include "Platform/SystemEnvironment.h"

#include <QStringList>

namespace veltrin {

/// The user's preferences, held in memory and written through on every change. The one place that defines the
/// default and the migration of a preference. Main thread.
class AppSettings {
public:
    AppSettings(Preferences& preferences, NotificationCenter& notifications, SystemEnvironment& environment);
    AppSettings(const AppSettings&) = delete;
    AppSettings& operator=(const AppSettings&) = delete;
    ~AppSettings();

    /// The store this object mirrors, for keys that live outside it.
    Preferences& preferences() const { return preferences_; }

private:
    // First, so that every setting below can read it while it is made.
    Preferences& preferences_;
    NotificationCenter& notifications_;
    SystemEnvironment& environment_;

public:
    // In the order in which they are loaded; each line is the only place of its key and default.
    Setting<ModelProvider> selectedModelProvider{preferences_, "selectedModelProvider",
                                                 ModelProvider::ollama};
    Setting<QString> selectedModel;
    Setting<ModelThinkingMode> modelThinkingMode{preferences_, "modelThinkingMode", ModelThinkingMode::smart};
    Setting<QString> ollamaEndpoint;
    Setting<TranslationLanguage> translationSourceLang{preferences_, "translation_source_lang",
                                                       TranslationLanguage::automatic};
    Setting<TranslationLanguage> translationTargetLang{preferences_, "translation_target_lang",
                                                       TranslationLanguage::english};
    Setting<bool> spaceGesturesEnabled{preferences_, "spaceGesturesEnabled", true};
    Setting<bool> doubleSpaceGestureEnabled{preferences_, "gesture_double_space", true};
    Setting<bool> tripleSpaceGestureEnabled{preferences_, "gesture_triple_space", true};
    Setting<bool> smartSelectEnabled{preferences_, "gesture_smart_select", true};
    Setting<bool> voiceInteractionEnabled{preferences_, "voice_interaction_enabled", true};
    Setting<bool> dragInteractionEnabled{preferences_, "gesture_drag_interaction", true};
    Setting<double> doubleSpaceMaxIntervalMS{preferences_, "gesture_double_space_max_interval_ms", 340};
    Setting<double> doubleSpaceIdleGuardMS{preferences_, "gesture_double_space_idle_guard_ms", 450};
    Setting<double> tripleSpaceTailIntervalMS{preferences_, "gesture_triple_space_tail_interval_ms", 220};
    Setting<double> tripleSpaceTotalIntervalMS{preferences_, "gesture_triple_space_total_interval_ms", 560};
    Setting<QString> gestureBlacklistedBundleIDsText{preferences_, "gesture_blacklisted_bundle_ids", {}};
    Setting<QString> optimizeBlacklistedBundleIDsText{
        preferences_, "shortcut_optimize_blacklisted_bundle_ids", {}};
    Setting<QString> translationBlacklistedBundleIDsText{
        preferences_, "shortcut_translation_blacklisted_bundle_ids", {}};
    Setting<QString> smartSelectBlacklistedBundleIDsText{
        preferences_, "shortcut_smart_select_blacklisted_bundle_ids", {}};
    Setting<QString> voiceBlacklistedBundleIDsText{preferences_, "shortcut_voice_blacklisted_bundle_ids", {}};
    Setting<QString> dragBlacklistedBundleIDsText{preferences_, "shortcut_drag_blacklisted_bundle_ids", {}};
    Setting<bool> gestureVerboseLogging{preferences_, "gesture_verbose_logging", false};
    Setting<bool> analyticsEnabled{preferences_, "analytics_enabled", true};
    Setting<AppAppearanceMode> appAppearance{preferences_, "app_appearance", AppAppearanceMode::automatic};
    Setting<AppLanguage> interfaceLanguage{preferences_, "interface_language", AppLanguage::automatic};
    Setting<PopupAppearance> popupAppearance{preferences_, "popup_appearance", PopupAppearance::automatic};
    Setting<bool> popupSoundEnabled{preferences_, "popup_sound_enabled", true};
    Setting<PopupSoundPreset> popupSoundPreset{preferences_, "popup_sound_preset", PopupSoundPreset::classic};
    // Voice defaults to `current` while the others default to `replaceAll`: meant so.
    Setting<TextReplaceMode> optimizeReplaceMode{preferences_, "optimize_replace_mode",
                                                 TextReplaceMode::replaceAll};
    Setting<TextReplaceMode> translationReplaceMode{preferences_, "translation_replace_mode",
                                                    TextReplaceMode::replaceAll};
    Setting<TextReplaceMode> voiceReplaceMode{preferences_, "voice_replace_mode", TextReplaceMode::current};
    Setting<bool> hasCompletedOnboarding{preferences_, "hasCompletedOnboarding", false};

    /// Whether the interface speaks English; Chinese is the base language.
    bool usesEnglishInterface() const;
    bool resolvedAppAppearanceIsDark() const;

    struct ModelConfiguration {
        ModelProvider provider;
        QString model;
        QString endpoint;
        QString apiKey;
    };
    ModelConfiguration activeModelConfiguration() const;
    /// An absent `apiKey` keeps the stored key, an empty one clears it; an absent style or field keeps the
    /// stored one.
    void saveActiveModelConfiguration(ModelProvider provider, const QString& model, const QString& endpoint,
                                      const std::optional<QString>& apiKey,
                                      std::optional<ModelAPIStyle> apiStyle = std::nullopt,
                                      std::optional<ModelAuthField> authField = std::nullopt);

    /// The identifiers of a blacklist text: split at commas and line feeds, trimmed, empty ones dropped,
    /// order kept.
    static QStringList parseBundleList(const QString& text);

private:
    void migrate();

    // Made before anybody else can subscribe, so these effects come first.
    Subscription providerEffect_;
    Subscription onboardingEffect_;
};

}  // namespace veltrin

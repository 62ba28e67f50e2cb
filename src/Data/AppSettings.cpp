#include "Data/AppSettings.h"

#include "Foundation/Text.h"

namespace veltrin {
namespace {

// Earlier versions stored times that turned out too tight and too slow; their users get the present defaults.
constexpr double longestOutdatedMaxIntervalMS = 260;
constexpr double defaultMaxIntervalMS = 340;
constexpr double shortestOutdatedIdleGuardMS = 800;
constexpr double defaultIdleGuardMS = 450;

QString orIfBlank(const QString& text, const QString& fallback) {
    const QString trimmed = Text::trimmed(text);
    return trimmed.isEmpty() ? fallback : trimmed;
}

}  // namespace

AppSettings::AppSettings(Preferences& preferences, NotificationCenter& notifications,
                         SystemEnvironment& environment)
    : preferences_(preferences),
      notifications_(notifications),
      environment_(environment),
      selectedModel(preferences, "selectedModel", ModelProviders::defaultModel(selectedModelProvider())),
      ollamaEndpoint(preferences, "ollama_endpoint", ModelProviders::defaultEndpoint(ModelProvider::ollama)) {
    migrate();
    providerEffect_ = selectedModelProvider.changed.subscribe([this](ModelProvider provider) {
        if (Text::isBlank(selectedModel())) selectedModel.set(ModelProviders::defaultModel(provider));
    });
    onboardingEffect_ = hasCompletedOnboarding.changed.subscribe([this](bool completed) {
        if (!completed) notifications_.post(Notifications::showOnboarding);
    });
}

/// The two values are written back in any case; no other value is written at load.
AppSettings::~AppSettings() = default;

void AppSettings::migrate() {
    const double interval = doubleSpaceMaxIntervalMS();
    doubleSpaceMaxIntervalMS.set(interval <= longestOutdatedMaxIntervalMS ? defaultMaxIntervalMS : interval);
    const double guard = doubleSpaceIdleGuardMS();
    doubleSpaceIdleGuardMS.set(guard >= shortestOutdatedIdleGuardMS ? defaultIdleGuardMS : guard);
}

bool AppSettings::usesEnglishInterface() const {
    switch (interfaceLanguage()) {
        case AppLanguage::english:
            return true;
        case AppLanguage::simplifiedChinese:
            return false;
        case AppLanguage::automatic:
            break;
    }
    return environment_.preferredLanguages().value(0).toLower().startsWith(u"en");
}

bool AppSettings::resolvedAppAppearanceIsDark() const {
    switch (appAppearance()) {
        case AppAppearanceMode::light:
            return false;
        case AppAppearanceMode::dark:
            return true;
        case AppAppearanceMode::automatic:
            break;
    }
    return environment_.effectiveAppearanceIsDark();
}

AppSettings::ModelConfiguration AppSettings::activeModelConfiguration() const {
    const ModelProvider provider = selectedModelProvider();
    const ModelProviderConfiguration stored(preferences_, provider);
    if (provider == ModelProvider::ollama)
        return {provider, selectedModel(), ollamaEndpoint(), stored.storedAPIKey()};
    return {provider, stored.storedModel(), stored.storedEndpoint(), stored.storedAPIKey()};
}

void AppSettings::saveActiveModelConfiguration(ModelProvider provider, const QString& model,
                                               const QString& endpoint, const std::optional<QString>& apiKey,
                                               std::optional<ModelAPIStyle> apiStyle,
                                               std::optional<ModelAuthField> authField) {
    const QString activeModel = orIfBlank(model, ModelProviders::defaultModel(provider));
    const QString activeEndpoint = orIfBlank(endpoint, ModelProviders::defaultEndpoint(provider));
    ModelProviderConfiguration stored(preferences_, provider);
    stored.saveConfiguration(activeModel, activeEndpoint, apiKey);
    stored.saveRequestConfiguration(apiStyle.value_or(stored.storedAPIStyle()),
                                    authField.value_or(stored.storedAuthField()));
    // Both take a cloud provider's values too: they are read only while the local service is active.
    selectedModelProvider.set(provider);
    selectedModel.set(activeModel);
    ollamaEndpoint.set(activeEndpoint);
}

QStringList AppSettings::parseBundleList(const QString& text) {
    QStringList identifiers;
    qsizetype start = 0;
    for (qsizetype i = 0; i <= text.size(); ++i) {
        if (i < text.size() && text[i] != u',' && text[i] != u'\n') continue;
        const QString piece = Text::trimmed(QStringView(text).mid(start, i - start));
        if (!piece.isEmpty()) identifiers << piece;
        start = i + 1;
    }
    return identifiers;
}

}  // namespace veltrin

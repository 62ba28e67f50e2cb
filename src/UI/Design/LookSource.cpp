#include "UI/Design/LookSource.h"

#include "Data/AppSettings.h"
#include "Platform/DesktopAppearance.h"
#include "UI/Design/VtLook.h"

namespace veltrin {
namespace {

bool isDark(PopupAppearance popups, const DesktopAppearance& desktop) {
    switch (popups) {
        case PopupAppearance::light:
            return false;
        case PopupAppearance::invertedBlack:
            return true;
        case PopupAppearance::automatic:
            break;
    }
    return desktop.isDark();
}

}  // namespace

LookSource::LookSource(VtLook& look, AppSettings& settings, DesktopAppearance& appearance)
    : look_(look), settings_(settings), appearance_(appearance) {
    subscriptions_.push_back(appearance.changed.subscribe([this] { update(); }));
    subscriptions_.push_back(settings.appAppearance.changed.subscribe([this](const auto&) { update(); }));
    subscriptions_.push_back(settings.popupAppearance.changed.subscribe([this](const auto&) { update(); }));
    subscriptions_.push_back(settings.interfaceLanguage.changed.subscribe([this](const auto&) { update(); }));
    update();
}

void LookSource::update() {
    look_.setEnglish(settings_.usesEnglishInterface());
    look_.setWindowDark(settings_.resolvedAppAppearanceIsDark());
    look_.setPopupDark(isDark(settings_.popupAppearance(), appearance_));
    look_.setReducedMotion(appearance_.reducesMotion());
}

}  // namespace veltrin

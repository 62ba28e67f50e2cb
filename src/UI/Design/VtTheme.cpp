#include "UI/Design/VtTheme.h"

#include "UI/Design/VtLook.h"

#include <QEasingCurve>
#include <QQmlEngine>

namespace veltrin {
namespace {

QColor color(const char* name) {
    return QColor(QLatin1String(name));
}

/// What all appearances share: the accent and the marks.
PaletteColors common() {
    PaletteColors colors;
    colors.accent = color("#FFE066");
    colors.accentText = color("#1A1A1A");
    colors.success = color("#2E9E5B");
    colors.danger = color("#D9483B");
    colors.dangerFill = color("#C93F33");
    colors.dangerFillText = color("#FFFFFF");
    return colors;
}

PaletteColors light() {
    PaletteColors colors = common();
    colors.card = color("#FFFFFF");
    colors.surfaceAlt = color("#F3F3EF");
    colors.text = color("#1A1A1A");
    colors.textSub = color("#5A5A5F");
    colors.muted = color("#6B6B70");
    colors.outline = color("#80000000");
    colors.accentSoft = color("#FFF4C2");
    colors.successText = color("#1F7A45");
    colors.dangerText = color("#B93427");
    return colors;
}

PaletteColors dark() {
    PaletteColors colors = common();
    colors.dark = true;
    colors.text = color("#F5F5F5");
    colors.textSub = color("#B4B4BA");
    colors.muted = color("#A0A0A6");
    colors.outline = color("#80FFFFFF");
    colors.accentSoft = color("#3A3522");
    colors.successText = color("#6FD39B");
    colors.dangerText = color("#FF8A7D");
    return colors;
}

VtLook& lookOf(QQmlEngine& engine) {
    return *engine.singletonInstance<VtLook*>(qmlTypeId("Veltrin", 1, 0, "VtLook"));
}

}  // namespace

const PaletteColors& Tokens::windowLight() {
    static const PaletteColors colors = [] {
        PaletteColors own = light();
        own.surface = own.surfaceOpaque = color("#FAFAF7");
        own.stroke = color("#14000000");
        own.divider = color("#0F000000");
        own.shadow = color("#18000000");
        return own;
    }();
    return colors;
}

const PaletteColors& Tokens::windowDark() {
    static const PaletteColors colors = [] {
        PaletteColors own = dark();
        own.surface = own.surfaceOpaque = color("#1C1C1E");
        own.card = color("#2A2A2D");
        own.surfaceAlt = color("#343438");
        own.stroke = color("#1AFFFFFF");
        own.divider = color("#14FFFFFF");
        own.shadow = color("#4D000000");
        return own;
    }();
    return colors;
}

const PaletteColors& Tokens::popupLight() {
    static const PaletteColors colors = [] {
        PaletteColors own = light();
        own.surface = color("#F0FFFFFF");
        own.surfaceOpaque = color("#FFFFFF");
        own.stroke = color("#1F000000");
        own.divider = color("#12000000");
        own.shadow = color("#30000000");
        return own;
    }();
    return colors;
}

const PaletteColors& Tokens::popupInvertedBlack() {
    static const PaletteColors colors = [] {
        PaletteColors own = dark();
        own.surface = color("#F0161618");
        own.surfaceOpaque = own.card = color("#161618");
        own.surfaceAlt = color("#2B2B2F");
        own.stroke = color("#29FFFFFF");
        own.divider = color("#17FFFFFF");
        own.shadow = color("#73000000");
        return own;
    }();
    return colors;
}

// MARK: For windows

VtTheme* VtTheme::create(QQmlEngine* engine, QJSEngine*) {
    return new VtTheme(lookOf(*engine));
}

VtTheme::VtTheme(VtLook& look)
    : look_(look),
      light_(new VtPalette(Tokens::windowLight(), this)),
      dark_(new VtPalette(Tokens::windowDark(), this)),
      easing_(QEasingCurve::OutCubic) {
    connect(&look, &VtLook::windowDarkChanged, this, &VtTheme::windowChanged);
    connect(&look, &VtLook::reducedMotionChanged, this, &VtTheme::motionChanged);
}

VtPalette* VtTheme::window() const {
    return look_.windowDark() ? dark_ : light_;
}

int VtTheme::moving(int milliseconds) const {
    return look_.reducedMotion() ? 0 : milliseconds;
}

// MARK: For popups

PopupTheme* PopupTheme::create(QQmlEngine* engine, QJSEngine*) {
    return new PopupTheme(lookOf(*engine));
}

PopupTheme::PopupTheme(VtLook& look)
    : look_(look),
      light_(new VtPalette(Tokens::popupLight(), this)),
      invertedBlack_(new VtPalette(Tokens::popupInvertedBlack(), this)) {
    connect(&look, &VtLook::popupDarkChanged, this, &PopupTheme::currentChanged);
}

VtPalette* PopupTheme::current() const {
    return look_.popupDark() ? invertedBlack_ : light_;
}

}  // namespace veltrin

#include "UI/Design/VtTheme.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace veltrin {
namespace {

QColor blended(const QColor& over, const QColor& under) {
    const float alpha = over.alphaF();
    return QColor::fromRgbF(over.redF() * alpha + under.redF() * (1 - alpha),
                            over.greenF() * alpha + under.greenF() * (1 - alpha),
                            over.blueF() * alpha + under.blueF() * (1 - alpha));
}

double luminance(const QColor& color) {
    const auto linear = [](double channel) {
        return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor& one, const QColor& other) {
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

struct Appearance {
    const char* name;
    const PaletteColors& (*colors)();
};

class Palettes : public testing::TestWithParam<Appearance> {
protected:
    const PaletteColors& colors() { return GetParam().colors(); }
    /// What text stands on, with the worst that can shine through a translucent one.
    std::vector<QColor> grounds() {
        return {blended(colors().surface, Qt::black),
                blended(colors().surface, Qt::white),
                colors().surfaceOpaque,
                colors().card,
                colors().surfaceAlt,
                colors().accentSoft};
    }
};

TEST_P(Palettes, everyTextCanBeReadOnEveryGround) {
    for (const QColor& ground : grounds()) {
        for (const QColor& text :
             {colors().text, colors().textSub, colors().muted, colors().successText, colors().dangerText})
            EXPECT_GE(contrast(text, ground), 4.5)
                << text.name().toStdString() << " on " << ground.name().toStdString();
    }
}

TEST_P(Palettes, textOnFillsCanBeRead) {
    EXPECT_GE(contrast(colors().accentText, colors().accent), 4.5);
    EXPECT_GE(contrast(colors().dangerFillText, colors().dangerFill), 4.5);
}

TEST_P(Palettes, whatIsOperatedCanBeSeen) {
    for (const QColor& ground : {colors().surfaceOpaque, colors().card})
        EXPECT_GE(contrast(blended(colors().outline, ground), ground), 3) << ground.name().toStdString();
    for (const QColor& mark : {colors().success, colors().danger})
        EXPECT_GE(contrast(mark, colors().card), 3) << mark.name().toStdString();
}

TEST_P(Palettes, everyColourIsSet) {
    const PaletteColors& own = colors();
    for (const QColor& color :
         {own.surface, own.surfaceOpaque, own.card,       own.surfaceAlt,     own.text,
          own.textSub, own.muted,         own.stroke,     own.outline,        own.divider,
          own.accent,  own.accentText,    own.accentSoft, own.success,        own.successText,
          own.danger,  own.dangerText,    own.dangerFill, own.dangerFillText, own.shadow})
        EXPECT_TRUE(color.isValid());
}

INSTANTIATE_TEST_SUITE_P(Tokens, Palettes,
                         testing::Values(Appearance{"windowLight", Tokens::windowLight},
                                         Appearance{"windowDark", Tokens::windowDark},
                                         Appearance{"popupLight", Tokens::popupLight},
                                         Appearance{"popupInvertedBlack", Tokens::popupInvertedBlack}),
                         [](const auto& tested) { return std::string(tested.param.name); });

}  // namespace
}  // namespace veltrin

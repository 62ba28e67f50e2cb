#pragma once

#include "UI/Design/VtPalette.h"

class QJSEngine;
class QQmlEngine;

namespace veltrin {

class VtLook;

/// Every token of the look, in one place.
namespace Tokens {

const PaletteColors& windowLight();
const PaletteColors& windowDark();
const PaletteColors& popupLight();
const PaletteColors& popupInvertedBlack();

// Type, in pixels. The families stand in the application's font, so that Chinese takes the right forms
// everywhere.
inline constexpr int sizeCaption = 11;
inline constexpr int sizeSmall = 12;
inline constexpr int sizeBody = 13;
inline constexpr int sizeTitle = 15;
inline constexpr int sizeHeading = 20;
inline constexpr int sizeDisplay = 28;
inline constexpr int weightRegular = 400;
inline constexpr int weightMedium = 500;
inline constexpr int weightStrong = 600;

// Space, in fours
inline constexpr int space = 4;
inline constexpr int gap = 8;
inline constexpr int padding = 12;
inline constexpr int margin = 16;
inline constexpr int target = 28;  ///< the least side of what is pressed
inline constexpr int radiusControl = 8;
inline constexpr int radiusCard = 12;
inline constexpr int radiusPopup = 16;

// Motion, in milliseconds
inline constexpr int quick = 120;
inline constexpr int normal = 170;
inline constexpr int slow = 240;

}  // namespace Tokens

/// The tokens as QML sees them, for ordinary windows. Durations are 0 when the user asked for less motion.
class VtTheme : public QObject {
    Q_OBJECT
    Q_PROPERTY(veltrin::VtPalette* window READ window NOTIFY windowChanged)
    Q_PROPERTY(int sizeCaption MEMBER sizeCaption_ CONSTANT)
    Q_PROPERTY(int sizeSmall MEMBER sizeSmall_ CONSTANT)
    Q_PROPERTY(int sizeBody MEMBER sizeBody_ CONSTANT)
    Q_PROPERTY(int sizeTitle MEMBER sizeTitle_ CONSTANT)
    Q_PROPERTY(int sizeHeading MEMBER sizeHeading_ CONSTANT)
    Q_PROPERTY(int sizeDisplay MEMBER sizeDisplay_ CONSTANT)
    Q_PROPERTY(int weightRegular MEMBER weightRegular_ CONSTANT)
    Q_PROPERTY(int weightMedium MEMBER weightMedium_ CONSTANT)
    Q_PROPERTY(int weightStrong MEMBER weightStrong_ CONSTANT)
    Q_PROPERTY(int space MEMBER space_ CONSTANT)
    Q_PROPERTY(int gap MEMBER gap_ CONSTANT)
    Q_PROPERTY(int padding MEMBER padding_ CONSTANT)
    Q_PROPERTY(int margin MEMBER margin_ CONSTANT)
    Q_PROPERTY(int target MEMBER target_ CONSTANT)
    Q_PROPERTY(int radiusControl MEMBER radiusControl_ CONSTANT)
    Q_PROPERTY(int radiusCard MEMBER radiusCard_ CONSTANT)
    Q_PROPERTY(int radiusPopup MEMBER radiusPopup_ CONSTANT)
    Q_PROPERTY(int easing MEMBER easing_ CONSTANT)
    Q_PROPERTY(int quick READ quick NOTIFY motionChanged)
    Q_PROPERTY(int normal READ normal NOTIFY motionChanged)
    Q_PROPERTY(int slow READ slow NOTIFY motionChanged)
    QML_ELEMENT
    QML_SINGLETON
public:
    static VtTheme* create(QQmlEngine* engine, QJSEngine* scriptEngine);

    VtPalette* window() const;
    int quick() const { return moving(Tokens::quick); }
    int normal() const { return moving(Tokens::normal); }
    int slow() const { return moving(Tokens::slow); }

Q_SIGNALS:
    void windowChanged();
    void motionChanged();

private:
    explicit VtTheme(VtLook& look);
    int moving(int milliseconds) const;

    VtLook& look_;
    VtPalette* light_;
    VtPalette* dark_;
    // A property is no constant of the language.
    int sizeCaption_ = Tokens::sizeCaption;
    int sizeSmall_ = Tokens::sizeSmall;
    int sizeBody_ = Tokens::sizeBody;
    int sizeTitle_ = Tokens::sizeTitle;
    int sizeHeading_ = Tokens::sizeHeading;
    int sizeDisplay_ = Tokens::sizeDisplay;
    int weightRegular_ = Tokens::weightRegular;
    int weightMedium_ = Tokens::weightMedium;
    int weightStrong_ = Tokens::weightStrong;
    int space_ = Tokens::space;
    int gap_ = Tokens::gap;
    int padding_ = Tokens::padding;
    int margin_ = Tokens::margin;
    int target_ = Tokens::target;
    int radiusControl_ = Tokens::radiusControl;
    int radiusCard_ = Tokens::radiusCard;
    int radiusPopup_ = Tokens::radiusPopup;
    int easing_;
};

/// The appearances of everything that floats. `current` follows the user's choice.
class PopupTheme : public QObject {
    Q_OBJECT
    Q_PROPERTY(veltrin::VtPalette* light READ light CONSTANT)
    Q_PROPERTY(veltrin::VtPalette* invertedBlack READ invertedBlack CONSTANT)
    Q_PROPERTY(veltrin::VtPalette* current READ current NOTIFY currentChanged)
    QML_ELEMENT
    QML_SINGLETON
public:
    static PopupTheme* create(QQmlEngine* engine, QJSEngine* scriptEngine);

    VtPalette* light() const { return light_; }
    VtPalette* invertedBlack() const { return invertedBlack_; }
    VtPalette* current() const;

Q_SIGNALS:
    void currentChanged();

private:
    explicit PopupTheme(VtLook& look);

    VtLook& look_;
    VtPalette* light_;
    VtPalette* invertedBlack_;
};

}  // namespace veltrin

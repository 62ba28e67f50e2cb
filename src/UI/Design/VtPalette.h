#pragma once

#include <QColor>
#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace veltrin {

/// The colours of one appearance. Text colours keep 4.5:1 on each of its grounds: `surface`, `card`,
/// `surfaceAlt` and `accentSoft`.
struct PaletteColors {
    bool dark = false;
    QColor surface;  ///< a window's ground, or a popup's own card; the latter lets a little shine through
    QColor surfaceOpaque;  ///< the same, for where nothing can shine through
    QColor card;           ///< a card on a window; in a popup the card is the ground itself
    QColor surfaceAlt;     ///< a quiet second ground: what is pointed at, a field, a chip
    QColor text;
    QColor textSub;
    QColor muted;
    QColor stroke;
    QColor outline;  ///< around what is operated, where the outline alone tells where it is: 3:1 and more
    QColor divider;
    QColor accent;  ///< for fills and marks only: it is too pale to write with
    QColor accentText;
    QColor accentSoft;
    QColor success;  ///< marks; the texts of the same meaning have colours of their own
    QColor successText;
    QColor danger;
    QColor dangerText;
    QColor dangerFill;
    QColor dangerFillText;
    QColor shadow;
};

class VtPalette : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool dark READ dark CONSTANT)
    Q_PROPERTY(QColor surface READ surface CONSTANT)
    Q_PROPERTY(QColor surfaceOpaque READ surfaceOpaque CONSTANT)
    Q_PROPERTY(QColor card READ card CONSTANT)
    Q_PROPERTY(QColor surfaceAlt READ surfaceAlt CONSTANT)
    Q_PROPERTY(QColor text READ text CONSTANT)
    Q_PROPERTY(QColor textSub READ textSub CONSTANT)
    Q_PROPERTY(QColor muted READ muted CONSTANT)
    Q_PROPERTY(QColor stroke READ stroke CONSTANT)
    Q_PROPERTY(QColor outline READ outline CONSTANT)
    Q_PROPERTY(QColor divider READ divider CONSTANT)
    Q_PROPERTY(QColor accent READ accent CONSTANT)
    Q_PROPERTY(QColor accentText READ accentText CONSTANT)
    Q_PROPERTY(QColor accentSoft READ accentSoft CONSTANT)
    Q_PROPERTY(QColor success READ success CONSTANT)
    Q_PROPERTY(QColor successText READ successText CONSTANT)
    Q_PROPERTY(QColor danger READ danger CONSTANT)
    Q_PROPERTY(QColor dangerText READ dangerText CONSTANT)
    Q_PROPERTY(QColor dangerFill READ dangerFill CONSTANT)
    Q_PROPERTY(QColor dangerFillText READ dangerFillText CONSTANT)
    Q_PROPERTY(QColor shadow READ shadow CONSTANT)
    QML_ELEMENT
    QML_UNCREATABLE("VtTheme and PopupTheme have them")
public:
    explicit VtPalette(const PaletteColors& colors, QObject* parent = nullptr)
        : QObject(parent), colors_(colors) {}

    const PaletteColors& colors() const { return colors_; }
    bool dark() const { return colors_.dark; }
    QColor surface() const { return colors_.surface; }
    QColor surfaceOpaque() const { return colors_.surfaceOpaque; }
    QColor card() const { return colors_.card; }
    QColor surfaceAlt() const { return colors_.surfaceAlt; }
    QColor text() const { return colors_.text; }
    QColor textSub() const { return colors_.textSub; }
    QColor muted() const { return colors_.muted; }
    QColor stroke() const { return colors_.stroke; }
    QColor outline() const { return colors_.outline; }
    QColor divider() const { return colors_.divider; }
    QColor accent() const { return colors_.accent; }
    QColor accentText() const { return colors_.accentText; }
    QColor accentSoft() const { return colors_.accentSoft; }
    QColor success() const { return colors_.success; }
    QColor successText() const { return colors_.successText; }
    QColor danger() const { return colors_.danger; }
    QColor dangerText() const { return colors_.dangerText; }
    QColor dangerFill() const { return colors_.dangerFill; }
    QColor dangerFillText() const { return colors_.dangerFillText; }
    QColor shadow() const { return colors_.shadow; }

private:
    PaletteColors colors_;
};

}  // namespace veltrin

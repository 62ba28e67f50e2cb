#pragma once

#include <QHash>
#include <QPainterPath>
#include <QString>

namespace veltrin {

/// The one set of drawn icons, and which of them stands for each of the product's symbol names. Drawings are
/// lines on a square of 24 by 24 units, to be stroked with round ends. Main thread.
class IconSet {
public:
    static constexpr double unit = 24;
    /// What stands for a name that nobody knows: a model may have made it up.
    static constexpr const char16_t* fallbackGlyph = u"sparkles";

    static const IconSet& shared();

    /// The name of the drawing for a symbol. A name that the set does not list goes to a relative: the same
    /// symbol without its last words ("bolt.slash.fill" is a "bolt"), else the fallback. Never empty.
    QString glyph(const QString& symbol) const;
    /// The drawing for a symbol; never an empty one.
    const QPainterPath& path(const QString& symbol) const;
    /// Whether the set lists the symbol itself.
    bool lists(const QString& symbol) const { return symbols_.contains(symbol); }
    QStringList symbols() const;

private:
    IconSet();

    QHash<QString, QPainterPath> glyphs_;
    QHash<QString, QString> symbols_;
};

}  // namespace veltrin

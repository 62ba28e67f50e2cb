#include "UI/Icons/IconSet.h"

#include "Foundation/Resource.h"
#include "UI/Icons/IconPath.h"

#include <algorithm>

namespace veltrin {
namespace {

/// A broken drawing is an error of the build, which a test finds; on the screen it is a dot.
QPainterPath drawing(const QString& text) {
    if (auto path = IconPath::parse(text)) return *path;
    QPainterPath dot;
    dot.addEllipse(QPointF(IconSet::unit / 2, IconSet::unit / 2), 2, 2);
    return dot;
}

}  // namespace

const IconSet& IconSet::shared() {
    static const IconSet set;
    return set;
}

IconSet::IconSet() {
    const Json file = Resource::json(QStringLiteral("icons/icons.json"));
    if (const Json* glyphs = file.find(u"glyphs"); glyphs != nullptr && glyphs->isObject()) {
        for (const auto& [name, path] : *glyphs->object())
            glyphs_.insert(name, drawing(path.toString().value_or(QString())));
    }
    if (const Json* symbols = file.find(u"symbols"); symbols != nullptr && symbols->isObject()) {
        for (const auto& [symbol, glyph] : *symbols->object())
            symbols_.insert(symbol, glyph.toString().value_or(QString()));
    }
}

QString IconSet::glyph(const QString& symbol) const {
    for (QString name = symbol; !name.isEmpty();
         name.truncate(std::max<qsizetype>(0, name.lastIndexOf(u'.')))) {
        for (const QString& candidate : {name, name + QStringLiteral(".fill")}) {
            if (const auto found = symbols_.constFind(candidate); found != symbols_.constEnd()) return *found;
        }
        if (glyphs_.contains(name)) return name;
    }
    return QString::fromUtf16(fallbackGlyph);
}

const QPainterPath& IconSet::path(const QString& symbol) const {
    const auto found = glyphs_.constFind(glyph(symbol));
    static const QPainterPath dot = drawing({});
    return found == glyphs_.constEnd() ? dot : *found;
}

QStringList IconSet::symbols() const {
    QStringList names = symbols_.keys();
    names.sort();
    return names;
}

}  // namespace veltrin

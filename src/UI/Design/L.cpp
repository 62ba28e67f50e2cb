#include "UI/Design/L.h"

#include "UI/Design/VtLook.h"

#include <QQmlEngine>

namespace veltrin {

L* L::create(QQmlEngine* engine, QJSEngine*) {
    return new L(*engine);
}

L::L(QQmlEngine& engine)
    : look_(engine.singletonInstance<VtLook*>(qmlTypeId("Veltrin", 1, 0, "VtLook"))),
      chinese_(engine.evaluate(QStringLiteral("(function(zh, en) { return zh })"))),
      english_(engine.evaluate(QStringLiteral("(function(zh, en) { return en })"))) {
    if (const auto* look = qobject_cast<VtLook*>(look_)) connect(look, &VtLook::englishChanged, this, &L::changed);
}

bool L::english() const {
    const auto* look = qobject_cast<const VtLook*>(look_);
    return look != nullptr && look->english();
}

}  // namespace veltrin

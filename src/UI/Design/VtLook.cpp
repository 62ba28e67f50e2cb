#include "UI/Design/VtLook.h"

#include <QJSEngine>
#include <QQmlEngine>
#include <QVariant>

namespace veltrin {
namespace {

constexpr const char* propertyName = "veltrinLook";

}  // namespace

void VtLook::install(QQmlEngine& engine, VtLook& look) {
    engine.setProperty(propertyName, QVariant::fromValue<QObject*>(&look));
}

VtLook* VtLook::create(QQmlEngine* engine, QJSEngine*) {
    if (auto* look = qobject_cast<VtLook*>(engine->property(propertyName).value<QObject*>())) {
        QJSEngine::setObjectOwnership(look, QJSEngine::CppOwnership);
        return look;
    }
    return new VtLook(engine);
}

}  // namespace veltrin

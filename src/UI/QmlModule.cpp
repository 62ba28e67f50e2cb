#include "UI/QmlModule.h"

#include "UI/Design/VtFonts.h"
#include "UI/Design/VtLook.h"

#include <QQmlEngine>

extern void qml_register_types_Veltrin();

namespace veltrin {

std::unique_ptr<QQmlEngine> QmlModule::makeEngine(VtLook& look) {
    // The linker drops the registration of a static library's types, so it is called by name.
    qml_register_types_Veltrin();
    VtFonts::install();
    auto engine = std::make_unique<QQmlEngine>();
    engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
    VtLook::install(*engine, look);
    return engine;
}

QUrl QmlModule::url(const QString& element) {
    return QUrl(QStringLiteral("qrc:/qt/qml/Veltrin/%1.qml").arg(element));
}

}  // namespace veltrin

#include "UI/Gallery/Gallery.h"

#include "UI/Design/VtLook.h"
#include "UI/Icons/IconSet.h"
#include "UI/QmlModule.h"

#include <QImage>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>

#include <utility>

namespace veltrin {

Gallery::Gallery(VtLook& look, Preferences& preferences, KeyCodeOf keyCodeOf)
    : engine_(QmlModule::makeEngine(look)),
      shortcut_(preferences, *ShortcutCustomizer::row(CustomShortcutAction::voice), std::move(keyCodeOf)) {
    QQmlComponent component(engine_.get(), QmlModule::url(QStringLiteral("GalleryWindow")));
    if (component.isReady()) {
        root_.reset(component.createWithInitialProperties(
            {{QStringLiteral("symbols"), IconSet::shared().symbols()},
             {QStringLiteral("shortcut"), QVariant::fromValue(&shortcut_)}}));
    }
    problem_ = component.errorString();
}

Gallery::~Gallery() = default;

QQuickWindow* Gallery::window() const {
    return qobject_cast<QQuickWindow*>(root_.get());
}

bool Gallery::save(const QString& path) {
    if (window() == nullptr) return false;
    return window()->grabWindow().convertToFormat(QImage::Format_RGB32).save(path, "PNG");
}

}  // namespace veltrin

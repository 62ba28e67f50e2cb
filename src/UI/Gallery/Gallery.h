#pragma once

#include "UI/Shortcuts/ShortcutCaptureModel.h"

#include <QObject>

#include <memory>

class QQmlEngine;
class QQuickWindow;

namespace veltrin {

class VtLook;

/// The page of the developer mode that shows every element of the interface.
class Gallery : public QObject {
    Q_OBJECT
public:
    /// Null in `window()` when its QML is broken, which `problem()` then tells. `look` outlives the gallery.
    Gallery(VtLook& look, Preferences& preferences, KeyCodeOf keyCodeOf = keyCodeByMeaning);
    ~Gallery() override;

    QQuickWindow* window() const;
    QString problem() const { return problem_; }
    /// Writes the whole page as a picture; false when it cannot be written.
    bool save(const QString& path);

private:
    std::unique_ptr<QQmlEngine> engine_;
    ShortcutCaptureModel shortcut_;
    std::unique_ptr<QObject> root_;
    QString problem_;
};

}  // namespace veltrin

#pragma once

#include <QUrl>

#include <memory>

class QQmlEngine;

namespace veltrin {

class VtLook;

/// The QML of the program: how an engine for it is made, and where its elements are.
namespace QmlModule {

/// `look` must outlive the engine.
std::unique_ptr<QQmlEngine> makeEngine(VtLook& look);
/// Of an element by its name, "VtButton".
QUrl url(const QString& element);

}  // namespace QmlModule
}  // namespace veltrin

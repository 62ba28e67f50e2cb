#pragma once

#include <QJSValue>
#include <QObject>
#include <QtQml/qqmlregistration.h>

class QQmlEngine;

namespace veltrin {

/// The interface's two languages, at the point of use in QML: `L.t("设置", "Settings")`. `t` is a property that holds
/// a function, so that bindings follow the language; they would not see a method's reading of it.
class L : public QObject {
    Q_OBJECT
    Q_PROPERTY(QJSValue t READ t NOTIFY changed)
    Q_PROPERTY(bool english READ english NOTIFY changed)
    QML_ELEMENT
    QML_SINGLETON
public:
    static L* create(QQmlEngine* engine, QJSEngine* scriptEngine);

    QJSValue t() const { return english() ? english_ : chinese_; }
    bool english() const;

Q_SIGNALS:
    void changed();

private:
    explicit L(QQmlEngine& engine);

    QObject* look_ = nullptr;
    QJSValue chinese_;
    QJSValue english_;
};

}  // namespace veltrin

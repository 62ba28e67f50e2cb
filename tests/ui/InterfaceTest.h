#pragma once

#include "UI/Design/VtLook.h"
#include "UI/QmlModule.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QStringList>

#include <gtest/gtest.h>

#include <memory>

namespace veltrin {

/// Elements of the interface in a window that is drawn into memory. A test fails when QML warns.
class InterfaceTest : public testing::Test {
protected:
    InterfaceTest() {
        warnings_.clear();
        previous_ =
            qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
                if (type != QtDebugMsg && type != QtInfoMsg) warnings_.append(text);
            });
        engine_ = QmlModule::makeEngine(look_);
    }
    ~InterfaceTest() override {
        window_.reset();
        engine_.reset();
        qInstallMessageHandler(previous_);
        warnings_.removeIf([](const QString& text) { return text.startsWith(u"QStandardPaths: "); });
        EXPECT_EQ(warnings_.join(u'\n').toStdString(), "");
    }

    /// An element by name, or what a piece of QML makes, as a child of the window.
    QQuickItem* make(const QString& element, const QVariantMap& properties = {}) {
        QQmlComponent component(engine_.get(), QmlModule::url(element));
        return take(component, properties);
    }
    QQuickItem* makeFrom(const QByteArray& qml) {
        QQmlComponent component(engine_.get());
        component.setData("import QtQuick\nimport Veltrin\n" + qml, QUrl());
        return take(component, {});
    }
    QQuickWindow& window() {
        if (!window_) {
            window_ = std::make_unique<QQuickWindow>();
            window_->resize(400, 300);
        }
        return *window_;
    }

    void click(QQuickItem* item) {
        const QPointF place = item->mapToScene({item->width() / 2, item->height() / 2});
        QMouseEvent down(QEvent::MouseButtonPress, place, place, Qt::LeftButton, Qt::LeftButton,
                         Qt::NoModifier);
        QCoreApplication::sendEvent(&window(), &down);
        QMouseEvent up(QEvent::MouseButtonRelease, place, place, Qt::LeftButton, Qt::NoButton,
                       Qt::NoModifier);
        QCoreApplication::sendEvent(&window(), &up);
    }
    /// The window has to think that it is active before an item gets the focus.
    void show() {
        window().show();
        window().requestActivate();
        QCoreApplication::processEvents();
    }

    VtLook look_{nullptr};
    std::unique_ptr<QQmlEngine> engine_;

private:
    QQuickItem* take(QQmlComponent& component, const QVariantMap& properties) {
        std::unique_ptr<QObject> object(
            component.isReady() ? component.createWithInitialProperties(properties) : nullptr);
        auto* item = qobject_cast<QQuickItem*>(object.get());
        EXPECT_NE(item, nullptr) << component.errorString().toStdString();
        if (item == nullptr) return nullptr;
        static_cast<void>(object.release());
        item->setParent(window().contentItem());
        item->setParentItem(window().contentItem());
        return item;
    }

    static inline QStringList warnings_;
    QtMessageHandler previous_ = nullptr;
    std::unique_ptr<QQuickWindow> window_;
};

}  // namespace veltrin

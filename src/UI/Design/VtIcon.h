#pragma once

#include <QColor>
#include <QQuickPaintedItem>

namespace veltrin {

/// A drawn icon, by the product's symbol name. A name that nobody knows shows a stand-in, an empty one
/// nothing.
class VtIcon : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(QString symbol MEMBER symbol_ NOTIFY lookChanged)
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY lookChanged)
    /// In units of the drawing, which is 24 wide.
    Q_PROPERTY(qreal weight MEMBER weight_ NOTIFY lookChanged)
    QML_ELEMENT
public:
    explicit VtIcon(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) override;

Q_SIGNALS:
    void lookChanged();

private:
    QString symbol_;
    QColor color_ = Qt::black;
    qreal weight_ = 1.8;
};

}  // namespace veltrin

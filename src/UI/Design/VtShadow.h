#pragma once

#include <QColor>
#include <QQuickPaintedItem>

namespace veltrin {

/// The soft shadow under a rounded card. The item has the card's geometry grown by `spread` on every side;
/// what the card itself covers stays clear, so that a translucent card does not darken.
class VtShadow : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY lookChanged)
    Q_PROPERTY(qreal radius MEMBER radius_ NOTIFY lookChanged)
    Q_PROPERTY(qreal spread MEMBER spread_ NOTIFY lookChanged)
    /// How far the shadow falls downwards.
    Q_PROPERTY(qreal drop MEMBER drop_ NOTIFY lookChanged)
    QML_ELEMENT
public:
    explicit VtShadow(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) override;

Q_SIGNALS:
    void lookChanged();

private:
    QColor color_ = QColor(0, 0, 0, 46);
    qreal radius_ = 16;
    qreal spread_ = 20;
    qreal drop_ = 4;
};

}  // namespace veltrin

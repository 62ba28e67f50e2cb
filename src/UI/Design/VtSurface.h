#pragma once

#include <QColor>
#include <QQuickPaintedItem>

namespace veltrin {

/// The rounded card behind everything that floats: painted by QPainter, since the software scene graph has no
/// smooth corners of its own.
class VtSurface : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY lookChanged)
    Q_PROPERTY(QColor stroke MEMBER stroke_ NOTIFY lookChanged)
    Q_PROPERTY(qreal strokeWidth MEMBER strokeWidth_ NOTIFY lookChanged)
    Q_PROPERTY(qreal radius MEMBER radius_ NOTIFY lookChanged)
    QML_ELEMENT
public:
    explicit VtSurface(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) override;

Q_SIGNALS:
    void lookChanged();

private:
    QColor color_ = Qt::white;
    QColor stroke_ = Qt::transparent;
    qreal strokeWidth_ = 1;
    qreal radius_ = 16;
};

}  // namespace veltrin

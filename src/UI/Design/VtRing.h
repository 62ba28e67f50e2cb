#pragma once

#include <QColor>
#include <QQuickPaintedItem>

namespace veltrin {

/// A thin ring of which a part is drawn: how much of something is left, or, with a start that moves, that
/// something is going on.
class VtRing : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY lookChanged)
    Q_PROPERTY(QColor track MEMBER track_ NOTIFY lookChanged)
    Q_PROPERTY(qreal thickness MEMBER thickness_ NOTIFY lookChanged)
    /// Where the part begins, and how long it is; turns clockwise from the top.
    Q_PROPERTY(qreal start MEMBER start_ NOTIFY lookChanged)
    Q_PROPERTY(qreal length MEMBER length_ NOTIFY lookChanged)
    QML_ELEMENT
public:
    explicit VtRing(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) override;

Q_SIGNALS:
    void lookChanged();

private:
    QColor color_ = Qt::black;
    QColor track_ = Qt::transparent;
    qreal thickness_ = 2;
    qreal start_ = 0;
    qreal length_ = 1;
};

}  // namespace veltrin

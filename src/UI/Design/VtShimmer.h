#pragma once

#include <QColor>
#include <QQuickPaintedItem>

namespace veltrin {

/// Lines of a text that is still being written: quiet bars that a light runs over.
class VtShimmer : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY lookChanged)
    Q_PROPERTY(QColor light MEMBER light_ NOTIFY lookChanged)
    /// How far the light has come, from 0 (before the lines) to 1 (behind them).
    Q_PROPERTY(qreal phase MEMBER phase_ NOTIFY lookChanged)
    QML_ELEMENT
public:
    explicit VtShimmer(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) override;

Q_SIGNALS:
    void lookChanged();

private:
    QColor color_ = Qt::lightGray;
    QColor light_ = Qt::white;
    qreal phase_ = 0;
};

}  // namespace veltrin

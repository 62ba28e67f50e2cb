#pragma once

#include "App/SmartSelectSurface.h"

#include <QStringList>

#include <functional>
#include <vector>

namespace veltrin {

/// What would stand beside a selection: keeps what it was asked for, and shows an icon of 36 by 36 there.
class RecordingSurface final : public SmartSelectSurface {
public:
    std::optional<QRectF> iconFrame() const override { return icon; }
    std::optional<QRectF> popupFrame() const override { return popup; }
    void showIcon(QPointF point, const QString& selectedText) override {
        shown.push_back({point, selectedText});
        icon = QRectF(point, QSizeF(36, 36));
        popup.reset();
        if (onShown) onShown();
    }
    void dismissIcon() override {
        ++dismissals;
        icon.reset();
    }
    void dismissPopup() override { popup.reset(); }

    QStringList texts() const {
        QStringList texts;
        for (const Shown& one : shown)
            texts << one.text;
        return texts;
    }

    struct Shown {
        QPointF point;
        QString text;
    };
    std::vector<Shown> shown;
    std::optional<QRectF> icon;
    std::optional<QRectF> popup;
    int dismissals = 0;
    std::function<void()> onShown;
};

}  // namespace veltrin

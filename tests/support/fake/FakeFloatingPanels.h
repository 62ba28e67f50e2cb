#pragma once

#include "Platform/FloatingPanels.h"
#include "support/fake/FakeEventLog.h"
#include "support/fake/FakeRunLoop.h"

#include <optional>
#include <vector>

namespace veltrin {

/// Panels on paper. A panel is a record that stays after its panel is gone.
class FakeFloatingPanels final : public FloatingPanels {
public:
    FakeFloatingPanels(FakeRunLoop& loop, FakeEventLog& log) : loop_(loop), log_(log) {}

    struct Record {
        PanelSpec spec;
        double scale = 1;               ///< how much larger the desktop shows it
        std::optional<QPointF> origin;  ///< lower left corner; none while it was only centred
        bool centered = false;          ///< left to the platform's own idea of the middle
        std::optional<double> animatedScale;
        std::optional<double> animatedDuration;
        bool fading = false;  ///< on its way out
        bool closed = false;
        int moves = 0;
        std::function<void(const PanelMouse&)> mouseMonitor;

        QRectF frame() const { return {origin.value_or(QPointF()), spec.size * scale}; }
        bool isShown() const { return animatedScale.has_value() && !closed && !fading; }
    };

    std::unique_ptr<FloatingPanel> create(const PanelSpec& spec) override;

    /// The panels that are on the screen and not on their way out, oldest first.
    std::vector<const Record*> shown() const;
    /// The text of the latest panel of a kind that is shown; none when there is none.
    std::optional<QString> shownText(PanelKind kind = PanelKind::text) const;
    /// The user clicks a row of the choice that is shown; false when none is or it has no such row.
    bool clickRow(int slot);
    /// The user does something with the latest panel of a kind that is shown; false when none is.
    bool act(PanelKind kind, PanelAction action);
    /// The user presses the left button on such a panel and moves the pointer from there; false when none is
    /// shown.
    bool drag(PanelKind kind, QPointF from, const std::vector<QPointF>& over);
    /// The latest panel of a kind that is shown; null when none is.
    const Record* shownPanel(PanelKind kind) const;
    /// The latest panel ever made; must exist.
    const Record& last() const { return *records.back(); }
    /// Panels whose objects still exist.
    int openCount() const;

    std::vector<std::shared_ptr<Record>> records;
    bool available = true;
    double scale = 1;            ///< of the panels that are made from now on
    double fadeDuration = 0.12;  ///< seconds that `animateOut` takes

private:
    FakeRunLoop& loop_;
    FakeEventLog& log_;
};

}  // namespace veltrin

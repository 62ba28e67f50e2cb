#pragma once

#include <QPointF>
#include <QSizeF>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace veltrin {

/// What a floating panel shows.
enum class PanelKind { text, statusPill, choice };

/// How what a message tells went; it colours the message's mark.
enum class PanelTone { plain, success, failure };

/// One row of a choice. Its texts come from the user's own files and may be of any length.
struct ChoiceRow {
    int slot = 1;      ///< the number it shows; choosing it gives this
    QString title;     ///< an agent's name, an action's title, or that there is none
    QString detail;    ///< one line below or beside the title; may be empty
    QString symbol;    ///< the product's name of a symbol, which may be unknown; empty when there is none
    QString colorHex;  ///< "#RRGGBB", or anything else: then the row has no colour of its own
    bool isVacant = false;  ///< nobody has this slot; the row still gives its number
    friend bool operator==(const ChoiceRow&, const ChoiceRow&) = default;
};

/// What a choice panel shows: one row for each agent slot, then the actions that can be chosen.
struct ChoiceContent {
    QString title;
    QString presetMark;  ///< the word that marks the rows of actions
    std::vector<ChoiceRow> agents;
    std::vector<ChoiceRow> presets;
    friend bool operator==(const ChoiceContent&, const ChoiceContent&) = default;
};

struct PanelSpec {
    PanelKind kind = PanelKind::text;
    QSizeF size;
    bool takesMouseEvents = false;
    QString text;                                  ///< of a choice: its title
    ChoiceContent choice{};                        ///< of a choice only
    std::function<void(int slot)> onSelectSlot{};  ///< a row was clicked; the panel may be destroyed in it
    PanelTone tone = PanelTone::plain;             ///< of a message only
};

/// A panel that floats above every window on every desktop and never takes the keyboard focus. Coordinates
/// are the windowing layer's (origin at the bottom left). Destroying it closes it without animation. Main
/// thread.
class FloatingPanel {
public:
    virtual ~FloatingPanel() = default;

    /// What it covers of the screen, in the windowing layer's coordinates: more than its spec's size where
    /// the desktop enlarges what it shows.
    virtual QSizeF frameSize() const = 0;
    /// Moves the panel's lower left corner, without animation.
    virtual void setFrameOrigin(QPointF origin) = 0;
    /// The platform's own idea of the middle, for when no screen is known.
    virtual void center() = 0;
    /// Shows the panel: from transparent and scaled by `scale` to full in `duration` seconds.
    virtual void animateIn(double scale, double duration) = 0;
    /// Fades the panel out, then calls `completion`; the panel may be destroyed in it.
    virtual void animateOut(std::function<void()> completion) = 0;
};

class FloatingPanels {
public:
    virtual ~FloatingPanels() = default;
    /// A panel that does not show yet; null when the desktop offers no windows.
    virtual std::unique_ptr<FloatingPanel> create(const PanelSpec& spec) = 0;
};

}  // namespace veltrin

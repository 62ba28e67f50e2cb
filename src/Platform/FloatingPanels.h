#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace veltrin {

/// What a floating panel shows.
enum class PanelKind { text, statusPill, choice, selectionIcon, selectionPopup };

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

/// What the popup over a selection shows. Its texts come from anywhere; the long ones are cut already.
struct SelectionContent {
    enum class Stage { offer, thinking, result, failure };

    Stage stage = Stage::offer;
    QString title;
    QString subtitle;
    PanelTone tone = PanelTone::plain;  ///< of the subtitle
    QString recognizerName;             ///< what the text was recognised as, or that it is being looked at
    QString agentName;                  ///< the user's agent; empty when there is none
    QString agentSymbol;                ///< as a choice row's
    QString agentColorHex;
    QString text;  ///< the beginning of the selection, or of the result
    QString failureTitle;
    QString failureDetail;
    QString failureSuggestion;
    friend bool operator==(const SelectionContent&, const SelectionContent&) = default;
};

/// What the user does with the icon beside a selection (`open`) or with the popup over it.
enum class PanelAction { open, save, reply, organize, retry, copyOriginal, close };

/// The left mouse button on a panel.
struct PanelMouse {
    enum class Kind { down, dragged };
    Kind kind = Kind::down;
    QPointF location;  ///< of the pointer, in the windowing layer's coordinates
};

struct PanelSpec {
    PanelKind kind = PanelKind::text;
    QSizeF size;
    bool takesMouseEvents = false;
    QString text;                                  ///< of a choice: its title
    ChoiceContent choice{};                        ///< of a choice only
    std::function<void(int slot)> onSelectSlot{};  ///< a row was clicked; the panel may be destroyed in it
    PanelTone tone = PanelTone::plain;             ///< of a message only
    SelectionContent selection{};                  ///< of the popup over a selection only
    /// Of the icon and the popup: the panel may be sent away in it, but not destroyed.
    std::function<void(PanelAction)> onAction{};
};

/// A panel that floats above every window on every desktop and never takes the keyboard focus. Coordinates
/// are the windowing layer's (origin at the bottom left). Destroying it closes it without animation. Main
/// thread.
class FloatingPanel {
public:
    virtual ~FloatingPanel() = default;

    /// Moves the panel's lower left corner, without animation.
    virtual void setFrameOrigin(QPointF origin) = 0;
    /// The platform's own idea of the middle, for when no screen is known.
    virtual void center() = 0;
    /// Where the panel stands now, which is not where it was put when its screen has gone since. It covers
    /// more than its spec's size where the desktop enlarges what it shows.
    virtual QRectF frame() const = 0;
    /// What the popup over a selection shows from now on.
    virtual void setSelection(const SelectionContent& content) = 0;
    /// Tells of the mouse on this panel from now on; without a function no more. What is told happens to the
    /// panel's own parts all the same.
    virtual void setMouseMonitor(std::function<void(const PanelMouse&)> monitor) = 0;
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

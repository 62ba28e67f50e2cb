#pragma once

#include "App/SmartSelectPopupView.h"
#include "App/SmartSelectSurface.h"
#include "Debug/PopupAnimator.h"
#include "Engines/ExpressionRunner.h"
#include "Intent/IntentTaxonomy.h"
#include "Platform/Screens.h"

namespace veltrin {

class HistoryStore;
class PromptStore;

/// The icon beside a selection and the popup that a click on it opens: reply, organise, save. At most one of
/// each exists. The icon leaves after 3 seconds; the popup stays until it is dismissed. Main thread.
class SmartSelectOverlay final : public SmartSelectSurface {
public:
    struct Parts {
        RunLoop& runLoop;
        FloatingPanels& panels;
        const Screens& screens;
        Pasteboard& pasteboard;
        AgentTeamManager& agents;
        const AppSettings& settings;
        InteractionSoundPlayer& sounds;
        HistoryStore& history;
        PromptStore& prompts;
        ExpressionRunner expressions;
    };

    explicit SmartSelectOverlay(const Parts& parts) : parts_(parts) {}
    ~SmartSelectOverlay() override;
    SmartSelectOverlay(const SmartSelectOverlay&) = delete;
    SmartSelectOverlay& operator=(const SmartSelectOverlay&) = delete;

    std::optional<QRectF> iconFrame() const override;
    std::optional<QRectF> popupFrame() const override;
    void showIcon(QPointF point, const QString& selectedText) override;
    void dismissIcon() override;
    void dismissPopup() override;
    /// Opens the popup below the icon, in its place; nothing without an icon.
    void showPopup();

    /// Puts the text that was selected last at the head of the prompt library, trimmed; a blank one is passed
    /// over.
    void saveToKnowledge();
    // What a model makes of a text, with the help of the agent in that slot. They throw what the runner
    // throws.
    QCoro::Task<QString> smartReply(const QString& text, int agentSlot);
    QCoro::Task<QString> organizeContext(const QString& text, int agentSlot);

    /// What the popup shows; null when there is none.
    const SmartSelectPopupView* popupView() const { return popupView_.get(); }

private:
    QCoro::Task<QString> transform(const QString& text, SmartSelectCompileMode mode, int agentSlot);
    static QCoro::Task<QString> runSmartSelectTransform(ExpressionRunner expressions, QString text,
                                                        SmartSelectCompileMode mode,
                                                        std::optional<ExpressionMode> agent);
    std::shared_ptr<SmartSelectPopupView> makePopupView();
    PanelSpec popupSpec();
    void act(PanelAction action);
    void installDragMonitor(FloatingPanel& panel);
    void removeDragMonitor();
    QPointF clampToScreen(QPointF origin, QSizeF size) const;

    Parts parts_;
    std::unique_ptr<FloatingPanel> iconPanel_;
    std::unique_ptr<FloatingPanel> popupPanel_;
    PopupAnimator animator_;
    Timer iconDismissTimer_;
    QString pendingText_;
    QPointF dragInitialMouse_;
    QPointF dragInitialOrigin_;
    std::shared_ptr<SmartSelectPopupView> popupView_;
    Subscription popupChanges_;
    Lifetime lifetime_;
};

}  // namespace veltrin

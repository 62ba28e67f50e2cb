#include "App/SmartSelectOverlay.h"

#include "AI/AgentTeamManager.h"
#include "Data/AppSettings.h"
#include "Data/HistoryStore.h"
#include "Data/PromptStore.h"
#include "Foundation/Characters.h"
#include "Foundation/MVPLog.h"
#include "Foundation/Text.h"
#include "System/InteractionSoundPlayer.h"

#include <algorithm>
#include <utility>

namespace veltrin {
namespace {

constexpr QSizeF iconSize{58, 58};
constexpr QSizeF popupSize{300, 244};
constexpr double iconGap = 12;
constexpr double popupGap = 8;
constexpr double iconSeconds = 3.0;
constexpr qsizetype titleCharacters = 18;
/// More of a text than any title of 18 characters is made of, so that a huge one is not gone through.
constexpr qsizetype titleSource = 64;

/// Where two screens meet, a point belongs to the right or upper one alone.
bool holds(const QRectF& frame, QPointF point) {
    return point.x() >= ScreenRect::minX(frame) && point.x() < ScreenRect::maxX(frame) &&
           point.y() >= ScreenRect::minY(frame) && point.y() < ScreenRect::maxY(frame);
}

QString titleOf(const QString& text) {
    const QString line = Text::lineBreaksAsBlanks(Characters::prefix(text, titleSource));
    const QString title = Characters::prefix(line, titleCharacters);
    return title.isEmpty() ? QStringLiteral("智能选中片段") : title;
}

}  // namespace

/// A view that still waits for its answer outlives this, so its timers must not.
SmartSelectOverlay::~SmartSelectOverlay() {
    if (popupView_) popupView_->end();
}

// MARK: The icon

std::optional<QRectF> SmartSelectOverlay::iconFrame() const {
    return iconPanel_ ? std::optional<QRectF>(iconPanel_->frame()) : std::nullopt;
}

std::optional<QRectF> SmartSelectOverlay::popupFrame() const {
    return popupPanel_ ? std::optional<QRectF>(popupPanel_->frame()) : std::nullopt;
}

void SmartSelectOverlay::showIcon(QPointF point, const QString& selectedText) {
    dismissIcon();
    dismissPopup();
    pendingText_ = selectedText;
    PanelSpec spec{PanelKind::selectionIcon, iconSize, true,
                   parts_.settings.usesEnglishInterface() ? QStringLiteral("Work on the selected text")
                                                          : QStringLiteral("处理选中的文字")};
    spec.onAction = lifetime_.bind([this](PanelAction) { showPopup(); });
    iconPanel_ = parts_.panels.create(spec);
    if (!iconPanel_) return;
    // The point is taken as it comes, also one of accessibility, whose y goes downwards: meant so.
    const QSizeF size = iconPanel_->frame().size();
    iconPanel_->setFrameOrigin(
        clampToScreen({point.x() - size.width() * 0.5, point.y() - size.height() - iconGap}, size));
    PopupAnimator::animateIn(*iconPanel_);
    iconDismissTimer_ = parts_.runLoop.after(iconSeconds, [this] { dismissIcon(); });
}

void SmartSelectOverlay::dismissIcon() {
    iconDismissTimer_.invalidate();
    animator_.animateOut(std::move(iconPanel_));
}

// MARK: The popup

void SmartSelectOverlay::showPopup() {
    if (!iconPanel_) return;
    const QRectF icon = iconPanel_->frame();
    dismissIcon();
    popupView_ = makePopupView();
    popupView_->startRecognitionLabel();
    popupPanel_ = parts_.panels.create(popupSpec());
    if (!popupPanel_) return popupView_.reset();
    popupChanges_ = popupView_->changed.subscribe([this] {
        if (popupPanel_) popupPanel_->setSelection(popupView_->content());
    });
    const QSizeF size = popupPanel_->frame().size();
    popupPanel_->setFrameOrigin(clampToScreen({icon.x() + icon.width() * 0.5 - size.width() * 0.5,
                                               ScreenRect::minY(icon) - size.height() - popupGap},
                                              size));
    parts_.runLoop.post(
        lifetime_.bind([this] { parts_.sounds.playPopup(InteractionSoundChannel::smartSelect); }));
    PopupAnimator::animateIn(*popupPanel_);
    installDragMonitor(*popupPanel_);
}

void SmartSelectOverlay::dismissPopup() {
    removeDragMonitor();
    popupChanges_.cancel();
    if (const auto view = std::exchange(popupView_, nullptr)) view->end();
    animator_.animateOut(std::move(popupPanel_));
}

std::shared_ptr<SmartSelectPopupView> SmartSelectOverlay::makePopupView() {
    using Slot = int;
    SmartSelectPopupView::Callbacks callbacks;
    callbacks.onSaveToKnowledge = [this] { saveToKnowledge(); };
    callbacks.onReply = [this](const QString& text, Slot slot) { return smartReply(text, slot); };
    callbacks.onOrganize = [this](const QString& text, Slot slot) { return organizeContext(text, slot); };
    callbacks.onDismiss = [this] { dismissPopup(); };
    return std::make_shared<SmartSelectPopupView>(
        SmartSelectPopupView::Parts{parts_.runLoop, parts_.pasteboard, parts_.agents, parts_.settings,
                                    parts_.sounds},
        pendingText_, std::move(callbacks), lifetime_.token());
}

PanelSpec SmartSelectOverlay::popupSpec() {
    PanelSpec spec{PanelKind::selectionPopup, popupSize, true, {}};
    spec.selection = popupView_->content();
    // A popup that fades can still be clicked; by then its buttons do nothing, whichever popup has come
    // since.
    const std::weak_ptr<SmartSelectPopupView> view = popupView_;
    spec.onAction = lifetime_.bind([this, view](PanelAction action) {
        if (popupView_ && view.lock() == popupView_) act(action);
    });
    return spec;
}

void SmartSelectOverlay::act(PanelAction action) {
    const auto view = popupView_;  // it may be dismissed in what it does
    switch (action) {
        case PanelAction::save:
            return view->save();
        case PanelAction::reply:
            return view->reply();
        case PanelAction::organize:
            return view->organize();
        case PanelAction::retry:
            return view->retry();
        case PanelAction::copyOriginal:
            return view->copyOriginal();
        case PanelAction::close:
            return view->close();
        case PanelAction::open:
            break;
    }
}

void SmartSelectOverlay::installDragMonitor(FloatingPanel& panel) {
    panel.setMouseMonitor(lifetime_.bind([this, &panel](const PanelMouse& mouse) {
        if (mouse.kind == PanelMouse::Kind::down) {
            dragInitialMouse_ = mouse.location;
            dragInitialOrigin_ = panel.frame().topLeft();
        } else {
            panel.setFrameOrigin(dragInitialOrigin_ + mouse.location - dragInitialMouse_);
        }
    }));
}

void SmartSelectOverlay::removeDragMonitor() {
    if (popupPanel_) popupPanel_->setMouseMonitor(nullptr);
}

// MARK: Places

/// The screen is that of the lower left corner. A corner below or left of every screen belongs to the main
/// one, even when most of the panel would stand on another: meant so.
QPointF SmartSelectOverlay::clampToScreen(QPointF origin, QSizeF size) const {
    const auto screens = parts_.screens.screens();
    const auto found = std::find_if(screens.begin(), screens.end(),
                                    [origin](const Screen& screen) { return holds(screen.frame, origin); });
    const auto screen = found == screens.end() ? parts_.screens.mainScreen() : std::optional<Screen>(*found);
    if (!screen) return origin;
    const QRectF& visible = screen->visibleFrame;
    return {
        std::max(ScreenRect::minX(visible), std::min(origin.x(), ScreenRect::maxX(visible) - size.width())),
        std::max(ScreenRect::minY(visible), std::min(origin.y(), ScreenRect::maxY(visible) - size.height()))};
}

// MARK: What the buttons stand for

void SmartSelectOverlay::saveToKnowledge() {
    StoredPrompt prompt;
    prompt.content = Text::trimmed(pendingText_);
    if (prompt.content.isEmpty()) return;
    prompt.id = QUuid::createUuid();
    prompt.title = titleOf(prompt.content);
    prompt.tags = {QStringLiteral("智能选中")};
    prompt.categoryTag = QStringLiteral("writing");
    prompt.source = QStringLiteral("manual");
    prompt.createdAt = prompt.updatedAt = Date{parts_.runLoop.wallNow()};
    const QString title = prompt.title;
    parts_.prompts.insert(std::move(prompt));
    MVPLog::write("SmartSelect saved to prompt library:", title);
}

QCoro::Task<QString> SmartSelectOverlay::smartReply(const QString& text, int agentSlot) {
    MVPLog::write("SmartSelect reply requested:", "length:", Characters::count(text));
    parts_.history.record(QStringLiteral("smartSelectReply"), text, QStringLiteral("Veltrin"));
    return transform(text, SmartSelectCompileMode::reply, agentSlot);
}

QCoro::Task<QString> SmartSelectOverlay::organizeContext(const QString& text, int agentSlot) {
    MVPLog::write("SmartSelect organize requested:", "length:", Characters::count(text));
    parts_.history.record(QStringLiteral("smartSelectOrganize"), text, QStringLiteral("Veltrin"));
    return transform(text, SmartSelectCompileMode::organize, agentSlot);
}

QCoro::Task<QString> SmartSelectOverlay::transform(const QString& text, SmartSelectCompileMode mode,
                                                   int agentSlot) {
    std::optional<ExpressionMode> agent;
    if (const auto profile = parts_.agents.assignedAgent(QStringLiteral("smartSelect"), agentSlot)) {
        agent.emplace();
        agent->name = profile->name;
        agent->agentSpec =
            AgentSpecCompiler::compile(profile->name, profile->description, profile->systemPrompt);
        agent->slot = agentSlot + 1;
    }
    return runSmartSelectTransform(parts_.expressions, text, mode, std::move(agent));
}

/// Holds everything by value: the popup, and this object with it, may go while the model thinks.
QCoro::Task<QString> SmartSelectOverlay::runSmartSelectTransform(ExpressionRunner expressions, QString text,
                                                                 SmartSelectCompileMode mode,
                                                                 std::optional<ExpressionMode> agent) {
    const bool isReply = mode == SmartSelectCompileMode::reply;
    const QString source =
        isReply ? QStringLiteral("smartSelect-reply") : QStringLiteral("smartSelect-organize");
    ExpressionRequest request;
    request.trigger = isReply ? ExpressionTrigger::smartSelectReply : ExpressionTrigger::smartSelectOrganize;
    request.context.fullText = text;
    request.context.text = text;
    request.mode = std::move(agent);
    request.smartSelectMode = mode;
    auto task = expressions.runExpression(std::move(request), source);
    const ExpressionResult result = co_await task;
    co_return result.outputText;
}

}  // namespace veltrin

#include "UI/Overlays/QuickFloatingPanels.h"

#include "Foundation/MVPLog.h"
#include "UI/Design/VtLook.h"
#include "UI/Overlays/OverlayStack.h"
#include "UI/Overlays/OverlayWindow.h"
#include "UI/Overlays/XDisplay.h"
#include "UI/QmlModule.h"

#include <QGuiApplication>
#include <QQmlComponent>
#include <QQuickItem>
#include <QScreen>
#include <QTimer>

#include <algorithm>
#include <cmath>

namespace veltrin {

/// A window of the pool.
struct QuickFloatingPanels::Kept {
    PanelKind kind;
    bool takesMouseEvents;
    bool isTaken = false;
    bool waitsForFrame = false;
    QMetaObject::Connection selection;
    QMetaObject::Connection action;
    std::unique_ptr<OverlayWindow> window;
};

namespace {

constexpr double fadeOutSeconds = 0.14;
constexpr double screenMargin = 12;

QString cardOf(PanelKind kind) {
    switch (kind) {
        case PanelKind::text:
            return QStringLiteral("TextPanel");
        case PanelKind::statusPill:
            return QStringLiteral("StatusPill");
        case PanelKind::choice:
            return QStringLiteral("OptimizeChoiceBubble");
        case PanelKind::selectionIcon:
            return QStringLiteral("SmartSelectIcon");
        case PanelKind::selectionPopup:
            return QStringLiteral("SmartSelectPopup");
    }
    return {};
}

QVariantList rowsOf(const std::vector<ChoiceRow>& rows) {
    QVariantList list;
    for (const ChoiceRow& row : rows) {
        list.append(QVariantMap{{QStringLiteral("slot"), row.slot},
                                {QStringLiteral("title"), row.title},
                                {QStringLiteral("detail"), row.detail},
                                {QStringLiteral("symbol"), row.symbol},
                                {QStringLiteral("colorHex"), row.colorHex},
                                {QStringLiteral("isVacant"), row.isVacant}});
    }
    return list;
}

/// The elements count stages, tones and actions in the same order.
QVariantMap propertiesOf(const SelectionContent& content) {
    return {{QStringLiteral("title"), content.title},
            {QStringLiteral("subtitle"), content.subtitle},
            {QStringLiteral("tone"), static_cast<int>(content.tone)},
            {QStringLiteral("recognizerName"), content.recognizerName},
            {QStringLiteral("agentName"), content.agentName},
            {QStringLiteral("agentSymbol"), content.agentSymbol},
            {QStringLiteral("agentColorHex"), content.agentColorHex},
            {QStringLiteral("body"), content.text},
            {QStringLiteral("failureTitle"), content.failureTitle},
            {QStringLiteral("failureDetail"), content.failureDetail},
            {QStringLiteral("failureSuggestion"), content.failureSuggestion},
            {QStringLiteral("stage"), static_cast<int>(content.stage)}};
}

QVariantMap propertiesOf(const PanelSpec& spec) {
    if (spec.kind == PanelKind::selectionPopup) return propertiesOf(spec.selection);
    QVariantMap properties{{QStringLiteral("text"), spec.text}};
    if (spec.kind == PanelKind::text) properties.insert(QStringLiteral("tone"), static_cast<int>(spec.tone));
    if (spec.kind != PanelKind::choice) return properties;
    properties.insert(QStringLiteral("agents"), rowsOf(spec.choice.agents));
    properties.insert(QStringLiteral("presets"), rowsOf(spec.choice.presets));
    properties.insert(QStringLiteral("presetMark"), spec.choice.presetMark);
    return properties;
}

/// A rectangle from the top of a desktop as one from its bottom.
QRectF turned(const QRect& card, double height) {
    return QRectF(card.x(), height - card.y() - card.height(), card.width(), card.height());
}

/// The height of the desktop, which turns a distance from its bottom into one from its top.
double desktopHeight(const Screens& screens) {
    if (xcb_connection_t* connection = windowsConnection()) {
        const XReplyOf<xcb_get_geometry_reply_t> root(
            xcb_get_geometry_reply(connection, xcb_get_geometry(connection, rootWindow()), nullptr));
        if (root) return root->height;
    }
    double top = 0;
    for (const Screen& screen : screens.screens())
        top = std::max(top, ScreenRect::maxY(screen.frame));
    return top;
}

SelectionContent sampleSelection() {
    SelectionContent content;
    content.title = QStringLiteral("已选中");
    content.subtitle = QStringLiteral("文本 · 0123456789 字");
    content.recognizerName = QStringLiteral("文本识别");
    content.agentName = QStringLiteral("Agent");
    content.agentSymbol = QStringLiteral("sparkles");
    content.agentColorHex = QStringLiteral("#FFE066");
    content.text = QStringLiteral("Veltrin 文字");
    return content;
}

/// What the first choice will look like, for the fonts' sake.
PanelSpec sampleOf(PanelKind kind) {
    PanelSpec spec;
    spec.kind = kind;
    spec.text = QStringLiteral("优化提示词\nVeltrin");
    switch (kind) {
        case PanelKind::text:
            spec.size = {300, 84};
            return spec;
        case PanelKind::statusPill:
            spec.size = {72, 40};
            spec.text = QStringLiteral("正在优化");
            return spec;
        case PanelKind::selectionIcon:
            spec.size = {58, 58};
            spec.takesMouseEvents = true;
            return spec;
        case PanelKind::selectionPopup:
            spec.size = {300, 244};
            spec.takesMouseEvents = true;
            spec.selection = sampleSelection();
            return spec;
        case PanelKind::choice:
            break;
    }
    spec.size = {310, 248};
    spec.takesMouseEvents = true;
    for (int slot = 1; slot <= 4; ++slot) {
        ChoiceRow row;
        row.slot = slot;
        row.title = QStringLiteral("未设置优化 Agent");
        row.detail = QStringLiteral("前往 Agent Studio 配置");
        row.symbol = QStringLiteral("sparkles");
        row.colorHex = QStringLiteral("#FFE066");
        spec.choice.agents.push_back(row);
        spec.choice.presets.push_back(row);
    }
    return spec;
}

}  // namespace

/// What a panel's owner holds: a window for the time being.
class QuickFloatingPanels::Panel final : public FloatingPanel {
public:
    Panel(QuickFloatingPanels& panels, OverlayWindow& window) : panels_(&panels), window_(&window) {}
    ~Panel() override {
        setMouseMonitor(nullptr);
        if (panels_ && window_) panels_->giveBack(window_);
    }

    void setFrameOrigin(QPointF origin) override {
        if (!window_ || !panels_) return;
        const double height = window_->cardGeometry().height();
        window_->setCardPosition(
            QPointF(origin.x(), desktopHeight(panels_->screens_) - origin.y() - height).toPoint());
    }
    QRectF frame() const override {
        if (!window_ || !panels_) return {};
        return turned(window_->cardGeometry(), desktopHeight(panels_->screens_));
    }
    void setSelection(const SelectionContent& content) override {
        if (window_) window_->setContent(propertiesOf(content));
    }
    void setMouseMonitor(std::function<void(const PanelMouse&)> monitor) override {
        QObject::disconnect(mouseDown_);
        QObject::disconnect(mouseDragged_);
        if (!monitor || !window_) return;
        const auto tell = [this, monitor = std::move(monitor)](PanelMouse::Kind kind, QPointF at) {
            if (panels_) monitor({kind, QPointF(at.x(), desktopHeight(panels_->screens_) - at.y())});
        };
        using Kind = PanelMouse::Kind;
        mouseDown_ = QObject::connect(window_, &OverlayWindow::mouseDown,
                                      [tell](QPointF at) { tell(Kind::down, at); });
        mouseDragged_ = QObject::connect(window_, &OverlayWindow::mouseDragged,
                                         [tell](QPointF at) { tell(Kind::dragged, at); });
    }
    void center() override {
        const QScreen* screen = QGuiApplication::primaryScreen();
        if (screen == nullptr || !window_) return;
        const QRect middle(QPoint(), window_->cardGeometry().size());
        // Its corner counts in the display's own pixels; its size has to be turned into them.
        const QRect native(screen->geometry().topLeft(),
                           screen->geometry().size() * screen->devicePixelRatio());
        window_->setCardPosition(native.center() - middle.center());
    }
    void animateIn(double scale, double duration) override {
        if (window_) window_->animateIn(scale, panels_->look_.reducedMotion() ? 0 : duration);
    }
    void animateOut(std::function<void()> completion) override {
        if (window_)
            window_->animateOut(panels_->look_.reducedMotion() ? 0 : fadeOutSeconds, std::move(completion));
    }

private:
    QPointer<QuickFloatingPanels> panels_;
    QPointer<OverlayWindow> window_;
    QMetaObject::Connection mouseDown_;
    QMetaObject::Connection mouseDragged_;
};

QuickFloatingPanels::QuickFloatingPanels(Screens& screens, VtLook& look)
    : screens_(screens), look_(look), stack_(std::make_unique<OverlayStack>()) {
    stack_->screensChanged = [this] { keepOnScreens(); };
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &QuickFloatingPanels::keepOnScreens,
            Qt::QueuedConnection);
}

QuickFloatingPanels::~QuickFloatingPanels() = default;

QQmlEngine& QuickFloatingPanels::engine() {
    if (!engine_) engine_ = QmlModule::makeEngine(look_);
    return *engine_;
}

OverlayWindow* QuickFloatingPanels::makeWindow(PanelKind kind, QSize size, bool takesMouseEvents) {
    QQmlComponent component(&engine(), QmlModule::url(cardOf(kind)));
    // Asked before it is made: creating from a component that is not ready crashes.
    std::unique_ptr<QObject> object(component.isReady() ? component.create() : nullptr);
    auto* card = qobject_cast<QQuickItem*>(object.get());
    if (card == nullptr) {
        MVPLog::write("UI panel could not be made:", component.errorString());
        return nullptr;
    }
    static_cast<void>(object.release());  // its window keeps it
    auto kept = std::make_unique<Kept>();
    kept->kind = kind;
    kept->takesMouseEvents = takesMouseEvents;
    kept->window = std::make_unique<OverlayWindow>(card, size, takesMouseEvents);
    stack_->add(*kept->window);
    connect(kept->window.get(), &QQuickWindow::frameSwapped, this, [this, entry = kept.get()] {
        if (std::exchange(entry->waitsForFrame, false)) Q_EMIT firstFrameShown();
    });
    return windows_.emplace_back(std::move(kept))->window.get();
}

OverlayWindow* QuickFloatingPanels::take(const PanelSpec& spec) {
    const auto find = [&] {
        return std::find_if(windows_.begin(), windows_.end(), [&](const auto& kept) {
            return !kept->isTaken && kept->kind == spec.kind &&
                   kept->takesMouseEvents == spec.takesMouseEvents;
        });
    };
    auto found = find();
    if (found == windows_.end()) {
        if (makeWindow(spec.kind, spec.size.toSize(), spec.takesMouseEvents) == nullptr) return nullptr;
        found = find();
    }
    Kept& kept = **found;
    kept.isTaken = true;
    kept.waitsForFrame = true;
    disconnect(kept.selection);
    if (spec.onSelectSlot)
        kept.selection = connect(kept.window.get(), &OverlayWindow::slotChosen, this, spec.onSelectSlot);
    disconnect(kept.action);
    if (spec.onAction)
        kept.action = connect(kept.window.get(), &OverlayWindow::acted, this,
                              [act = spec.onAction](int action) { act(static_cast<PanelAction>(action)); });
    return kept.window.get();
}

std::unique_ptr<FloatingPanel> QuickFloatingPanels::create(const PanelSpec& spec) {
    OverlayWindow* window = take(spec);
    if (window == nullptr) return nullptr;
    window->setCardSize(spec.size.toSize());
    window->setContent(propertiesOf(spec));
    return std::make_unique<Panel>(*this, *window);
}

void QuickFloatingPanels::giveBack(OverlayWindow* window) {
    window->dismiss();
    for (const auto& kept : windows_) {
        if (kept->window.get() != window) continue;
        kept->isTaken = false;
        disconnect(kept->selection);
        disconnect(kept->action);
    }
}

void QuickFloatingPanels::prepare() {
    for (const PanelKind kind : {PanelKind::choice, PanelKind::statusPill, PanelKind::text,
                                 PanelKind::selectionIcon, PanelKind::selectionPopup}) {
        QTimer::singleShot(0, this, [this, kind] {
            const bool exists = std::any_of(windows_.begin(), windows_.end(),
                                            [kind](const auto& kept) { return kept->kind == kind; });
            if (exists) return;
            const PanelSpec spec = sampleOf(kind);
            OverlayWindow* window = makeWindow(kind, spec.size.toSize(), spec.takesMouseEvents);
            if (window == nullptr) return;
            window->setContent(propertiesOf(spec));
            window->warmUp();
        });
    }
}

void QuickFloatingPanels::keepOnScreens() {
    const auto screens = screens_.screens();
    if (screens.empty()) return;
    const double height = desktopHeight(screens_);
    for (OverlayWindow* window : stack_->shown()) {
        const QRect card = window->cardGeometry();
        const QRectF place = turned(card, height);
        const bool stands = std::any_of(screens.begin(), screens.end(), [&](const Screen& screen) {
            return screen.frame.contains(place.center());
        });
        if (stands) continue;
        const QRectF visible = screens.front().visibleFrame;
        const double x =
            std::max(ScreenRect::minX(visible) + screenMargin,
                     std::min(place.x(), ScreenRect::maxX(visible) - place.width() - screenMargin));
        const double y =
            std::max(ScreenRect::minY(visible) + screenMargin,
                     std::min(place.y(), ScreenRect::maxY(visible) - place.height() - screenMargin));
        window->setCardPosition(QPointF(x, height - y - place.height()).toPoint());
        flushWindows();
    }
}

}  // namespace veltrin

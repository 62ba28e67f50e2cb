#include "UI/Overlays/QuickFloatingPanels.h"

#include "Foundation/MVPLog.h"
#include "UI/Overlays/OverlayWindow.h"

#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QRegularExpression>
#include <QScreen>

#include <algorithm>
#include <cmath>

extern void qml_register_types_Veltrin();

namespace veltrin {
namespace {

constexpr double fadeOutSeconds = 0.14;

QUrl cardOf(PanelKind kind) {
    switch (kind) {
        case PanelKind::text:
            return QUrl(QStringLiteral("qrc:/qt/qml/Veltrin/TextPanel.qml"));
        case PanelKind::statusPill:
            return QUrl(QStringLiteral("qrc:/qt/qml/Veltrin/StatusPill.qml"));
        case PanelKind::choice:
            return QUrl(QStringLiteral("qrc:/qt/qml/Veltrin/OptimizeChoiceBubble.qml"));
    }
    return {};
}

QVariantList rowsOf(const std::vector<ChoiceRow>& rows) {
    QVariantList list;
    for (const ChoiceRow& row : rows) {
        // A colour of the user's files that is none leaves the row without one.
        static const QRegularExpression color(QStringLiteral("^#[0-9A-Fa-f]{6}$"));
        list.append(
            QVariantMap{{QStringLiteral("slot"), row.slot},
                        {QStringLiteral("title"), row.title},
                        {QStringLiteral("detail"), row.detail},
                        {QStringLiteral("symbol"), row.symbol},
                        {QStringLiteral("color"),
                         color.match(row.colorHex).hasMatch() ? row.colorHex : QStringLiteral("transparent")},
                        {QStringLiteral("vacant"), row.isVacant}});
    }
    return list;
}

QVariantMap propertiesOf(const PanelSpec& spec, bool dark) {
    QVariantMap properties{{QStringLiteral("text"), spec.text}, {QStringLiteral("dark"), dark}};
    if (spec.kind != PanelKind::choice) return properties;
    properties.insert(QStringLiteral("agents"), rowsOf(spec.choice.agents));
    properties.insert(QStringLiteral("presets"), rowsOf(spec.choice.presets));
    properties.insert(QStringLiteral("presetMark"), spec.choice.presetMark);
    return properties;
}

/// The height of the desktop, which turns a distance from its bottom into one from its top.
double desktopHeight(const Screens& screens) {
    double top = 0;
    for (const Screen& screen : screens.screens())
        top = std::max(top, ScreenRect::maxY(screen.frame));
    return top;
}

class QuickFloatingPanel final : public FloatingPanel {
public:
    QuickFloatingPanel(std::unique_ptr<OverlayWindow> window, const Screens& screens)
        : window_(std::move(window)), screens_(screens) {}
    ~QuickFloatingPanel() override {
        // It may be destroyed from inside its own animation's end.
        window_->hide();
        window_.release()->deleteLater();
    }

    void setFrameOrigin(QPointF origin) override {
        const double top = desktopHeight(screens_) - origin.y() - window_->height();
        window_->setPosition(static_cast<int>(std::lround(origin.x())), static_cast<int>(std::lround(top)));
    }
    void center() override {
        const QScreen* screen = QGuiApplication::primaryScreen();
        if (screen == nullptr) return;
        const QRect middle(QPoint(), window_->size());
        window_->setPosition(screen->geometry().center() - middle.center());
    }
    void animateIn(double scale, double duration) override { window_->animateIn(scale, duration); }
    void animateOut(std::function<void()> completion) override {
        window_->animateOut(fadeOutSeconds, std::move(completion));
    }

private:
    std::unique_ptr<OverlayWindow> window_;
    const Screens& screens_;
};

}  // namespace

QuickFloatingPanels::QuickFloatingPanels(Screens& screens, std::function<bool()> usesDarkLook)
    : screens_(screens), usesDarkLook_(std::move(usesDarkLook)) {
}

QuickFloatingPanels::~QuickFloatingPanels() = default;

std::unique_ptr<FloatingPanel> QuickFloatingPanels::create(const PanelSpec& spec) {
    if (!engine_) {
        // The linker drops the registration of a static library's types, so it is called by name.
        qml_register_types_Veltrin();
        engine_ = std::make_unique<QQmlEngine>();
        engine_->addImportPath(QStringLiteral("qrc:/qt/qml"));
    }
    QQmlComponent component(engine_.get(), cardOf(spec.kind));
    // Asked before it is made: creating from a component that is not ready crashes.
    std::unique_ptr<QObject> object;
    if (component.isReady()) {
        object.reset(component.createWithInitialProperties(propertiesOf(spec, usesDarkLook_())));
    }
    auto* card = qobject_cast<QQuickItem*>(object.get());
    if (card == nullptr) {
        MVPLog::write("UI panel could not be made:", component.errorString());
        return nullptr;
    }
    static_cast<void>(object.release());  // its window keeps it
    auto window = std::make_unique<OverlayWindow>(card, spec.size.toSize(), spec.takesMouseEvents);
    if (spec.onSelectSlot) {
        QObject::connect(window.get(), &OverlayWindow::slotChosen, window.get(), spec.onSelectSlot);
        QObject::connect(card, SIGNAL(slotChosen(int)), window.get(), SIGNAL(slotChosen(int)));
    }
    return std::make_unique<QuickFloatingPanel>(std::move(window), screens_);
}

}  // namespace veltrin

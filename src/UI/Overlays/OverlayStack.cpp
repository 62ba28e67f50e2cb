#include "UI/Overlays/OverlayStack.h"

#include "UI/Overlays/OverlayWindow.h"
#include "UI/Overlays/XDisplay.h"

#include <QGuiApplication>

#include <xcb/randr.h>

#include <algorithm>

namespace veltrin {

OverlayStack::OverlayStack() {
    if (xcb_connection_t* connection = windowsConnection()) {
        activeWindow_ = atomNamed("_NET_ACTIVE_WINDOW");
        const auto* randr = xcb_get_extension_data(connection, &xcb_randr_id);
        if (randr != nullptr && randr->present != 0) randrEvent_ = randr->first_event;
        qGuiApp->installNativeEventFilter(this);
    }
}

OverlayStack::~OverlayStack() {
    if (qGuiApp != nullptr) qGuiApp->removeNativeEventFilter(this);
}

void OverlayStack::add(OverlayWindow& window) {
    std::erase_if(windows_, [](const auto& known) { return known.isNull(); });
    windows_.emplace_back(&window);
    connect(&window, &QWindow::visibleChanged, this, [this] { visibilityChanged(); });
}

std::vector<OverlayWindow*> OverlayStack::shown() const {
    std::vector<OverlayWindow*> found;
    for (const auto& window : windows_) {
        if (window && window->isVisible()) found.push_back(window);
    }
    return found;
}

void OverlayStack::visibilityChanged() {
    watch(!shown().empty());
}

void OverlayStack::watch(bool wanted) {
    xcb_connection_t* connection = windowsConnection();
    if (wanted == watching_ || connection == nullptr) return;
    watching_ = wanted;
    const xcb_window_t root = rootWindow();
    const XReplyOf<xcb_get_window_attributes_reply_t> now(
        xcb_get_window_attributes_reply(connection, xcb_get_window_attributes(connection, root), nullptr));
    if (!now) return;
    // What Qt asked for itself stays.
    const std::uint32_t mask = wanted ? now->your_event_mask | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY
                                      : now->your_event_mask & ~XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, root, XCB_CW_EVENT_MASK, &mask);
    xcb_flush(connection);
}

void OverlayStack::raiseAll() {
    for (OverlayWindow* window : shown())
        window->raise();
    flushWindows();
}

/// Only ordinary windows count: whoever manages its own windows, a screen locker say, may well want to be
/// above.
bool OverlayStack::concernsStacking(const void* message) const {
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    switch (event->response_type & 0x7F) {
        case XCB_MAP_NOTIFY:
            return static_cast<const xcb_map_notify_event_t*>(message)->override_redirect == 0;
        case XCB_CONFIGURE_NOTIFY: {
            const auto* configure = static_cast<const xcb_configure_notify_event_t*>(message);
            return configure->event == rootWindow() && configure->window != configure->event &&
                   configure->override_redirect == 0;
        }
        case XCB_PROPERTY_NOTIFY:
            return static_cast<const xcb_property_notify_event_t*>(message)->atom == activeWindow_;
        default:
            return false;
    }
}

bool OverlayStack::nativeEventFilter(const QByteArray& type, void* message, qintptr*) {
    if (!watching_ || type != "xcb_generic_event_t") return false;
    if (concernsStacking(message)) {
        raiseAll();
        return false;
    }
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    const int kind = event->response_type & 0x7F;
    const bool isRoot = kind == XCB_CONFIGURE_NOTIFY &&
                        static_cast<const xcb_configure_notify_event_t*>(message)->window == rootWindow();
    const bool isRandr = randrEvent_ >= 0 && (kind == randrEvent_ + XCB_RANDR_SCREEN_CHANGE_NOTIFY ||
                                              kind == randrEvent_ + XCB_RANDR_NOTIFY);
    // After Qt has taken the news in.
    if ((isRoot || isRandr) && screensChanged)
        QMetaObject::invokeMethod(this, screensChanged, Qt::QueuedConnection);
    return false;
}

}  // namespace veltrin

#include "UI/Overlays/XDisplay.h"

#include <QGuiApplication>

#include <cstring>

namespace veltrin {

xcb_connection_t* windowsConnection() {
    auto* native = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return native != nullptr ? native->connection() : nullptr;
}

void flushWindows() {
    if (xcb_connection_t* connection = windowsConnection()) xcb_flush(connection);
}

xcb_window_t rootWindow() {
    xcb_connection_t* connection = windowsConnection();
    if (connection == nullptr) return XCB_WINDOW_NONE;
    return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

xcb_atom_t atomNamed(const char* name) {
    xcb_connection_t* connection = windowsConnection();
    if (connection == nullptr) return XCB_ATOM_NONE;
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    const XReplyOf<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(connection, cookie, nullptr));
    return atom ? atom->atom : xcb_atom_t{XCB_ATOM_NONE};
}

}  // namespace veltrin

#include "support/desktop/XDesktop.h"

#include "support/desktop/Waiting.h"

#include <QStringList>

#include <algorithm>
#include <bit>
#include <cstring>
#include <stdexcept>

namespace veltrin {
namespace {

template <typename T>
XReply<T> owned(T* reply) {
    return XReply<T>(reply);
}

}  // namespace

XDesktop::XDesktop(const QString& display)
    : connection_(xcb_connect(display.toLatin1().constData(), nullptr)) {
    if (xcb_connection_has_error(connection_) != 0) {
        xcb_disconnect(connection_);
        throw std::runtime_error("no display " + display.toStdString());
    }
    screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
}

XDesktop::~XDesktop() {
    xcb_disconnect(connection_);
}

xcb_atom_t XDesktop::atom(const char* name) {
    xcb_atom_t& known = atoms_[name];
    if (known == 0) {
        const auto length = static_cast<uint16_t>(std::strlen(name));
        const auto reply =
            owned(xcb_intern_atom_reply(connection_, xcb_intern_atom(connection_, 0, length, name), nullptr));
        if (reply) known = reply->atom;
    }
    return known;
}

QByteArray XDesktop::property(xcb_window_t window, const char* name) {
    const auto cookie =
        xcb_get_property(connection_, 0, window, atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, 1U << 20U);
    const auto reply = owned(xcb_get_property_reply(connection_, cookie, nullptr));
    if (!reply) return {};
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            xcb_get_property_value_length(reply.get())};
}

std::optional<quint32> XDesktop::cardinal(xcb_window_t window, const char* name) {
    const QByteArray bytes = property(window, name);
    if (bytes.size() < 4) return std::nullopt;
    quint32 value = 0;
    std::memcpy(&value, bytes.constData(), sizeof value);
    return value;
}

bool XDesktop::hasWindowManager() {
    const auto check = cardinal(root(), "_NET_SUPPORTING_WM_CHECK");
    // The property outlives a window manager that died; its window does not.
    return check && cardinal(*check, "_NET_SUPPORTING_WM_CHECK") == check;
}

QList<xcb_window_t> XDesktop::children(xcb_window_t window) {
    const auto reply = owned(xcb_query_tree_reply(connection_, xcb_query_tree(connection_, window), nullptr));
    if (!reply) return {};
    const xcb_window_t* first = xcb_query_tree_children(reply.get());
    return {first, first + xcb_query_tree_children_length(reply.get())};
}

QList<xcb_window_t> XDesktop::rootChildren() {
    QList<xcb_window_t> found = children(root());
    found.removeIf([this](xcb_window_t window) { return !isViewable(window); });
    return found;
}

QList<xcb_window_t> XDesktop::windows() {
    if (!hasWindowManager()) return rootChildren();
    const QByteArray list = property(root(), "_NET_CLIENT_LIST");
    QList<xcb_window_t> found(list.size() / 4);
    if (!found.isEmpty())
        std::memcpy(found.data(), list.constData(), static_cast<std::size_t>(found.size()) * 4);
    found.removeIf([this](xcb_window_t window) { return !isViewable(window); });
    return found;
}

bool XDesktop::isViewable(xcb_window_t window) {
    const auto reply = owned(xcb_get_window_attributes_reply(
        connection_, xcb_get_window_attributes(connection_, window), nullptr));
    return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

xcb_window_t XDesktop::activeWindow() {
    if (hasWindowManager()) return cardinal(root(), "_NET_ACTIVE_WINDOW").value_or(0);
    const auto focus =
        owned(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
    xcb_window_t window = focus ? focus->focus : 0;
    while (window > XCB_INPUT_FOCUS_POINTER_ROOT && window != root()) {
        const auto tree =
            owned(xcb_query_tree_reply(connection_, xcb_query_tree(connection_, window), nullptr));
        if (!tree) return 0;
        if (tree->parent == root()) return window;
        window = tree->parent;
    }
    return 0;
}

QString XDesktop::title(xcb_window_t window) {
    const QByteArray utf8 = property(window, "_NET_WM_NAME");
    return utf8.isEmpty() ? QString::fromLatin1(property(window, "WM_NAME")) : QString::fromUtf8(utf8);
}

QStringList XDesktop::windowClass(xcb_window_t window) {
    return QString::fromLatin1(property(window, "WM_CLASS")).split(QChar(u'\0'), Qt::SkipEmptyParts);
}

pid_t XDesktop::processOf(xcb_window_t window) {
    return static_cast<pid_t>(cardinal(window, "_NET_WM_PID").value_or(0));
}

QRect XDesktop::geometry(xcb_window_t window) {
    const auto sizeCookie = xcb_get_geometry(connection_, window);
    const auto placeCookie = xcb_translate_coordinates(connection_, window, root(), 0, 0);
    const auto size = owned(xcb_get_geometry_reply(connection_, sizeCookie, nullptr));
    const auto place = owned(xcb_translate_coordinates_reply(connection_, placeCookie, nullptr));
    if (!size || !place) return {};
    return {place->dst_x, place->dst_y, size->width, size->height};
}

void XDesktop::sendToRoot(xcb_window_t window, const char* type, std::initializer_list<quint32> data) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom(type);
    std::copy(data.begin(), data.end(), event.data.data32);
    xcb_send_event(connection_, 0, root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&event));
    xcb_flush(connection_);
}

bool XDesktop::activate(xcb_window_t window, double seconds) {
    constexpr quint32 fromPager = 2;
    if (hasWindowManager()) {
        sendToRoot(window, "_NET_ACTIVE_WINDOW", {fromPager, XCB_CURRENT_TIME, 0});
    } else {
        const uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
        xcb_set_input_focus(connection_, XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
        sync();
    }
    return waitUntil(seconds, [&] { return activeWindow() == window; });
}

void XDesktop::moveResize(xcb_window_t window, const QRect& geometry) {
    const uint32_t values[] = {static_cast<uint32_t>(geometry.x()), static_cast<uint32_t>(geometry.y()),
                               static_cast<uint32_t>(geometry.width()),
                               static_cast<uint32_t>(geometry.height())};
    xcb_configure_window(
        connection_, window,
        XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
        values);
    sync();
}

void XDesktop::close(xcb_window_t window) {
    constexpr quint32 fromPager = 2;
    sendToRoot(window, "_NET_CLOSE_WINDOW", {XCB_CURRENT_TIME, fromPager});
}

QPoint XDesktop::pointer() {
    const auto reply =
        owned(xcb_query_pointer_reply(connection_, xcb_query_pointer(connection_, root()), nullptr));
    return reply ? QPoint(reply->root_x, reply->root_y) : QPoint();
}

int XDesktop::keysDown() {
    const auto reply = owned(xcb_query_keymap_reply(connection_, xcb_query_keymap(connection_), nullptr));
    if (!reply) return -1;
    int down = 0;
    for (const uint8_t byte : reply->keys)
        down += std::popcount(byte);
    return down;
}

quint16 XDesktop::pointerMask() {
    const auto reply =
        owned(xcb_query_pointer_reply(connection_, xcb_query_pointer(connection_, root()), nullptr));
    return reply ? reply->mask : 0;
}

quint16 XDesktop::modifiers() {
    return pointerMask() & 0xFF;
}
quint16 XDesktop::buttonsDown() {
    return pointerMask() & 0x1F00;
}

QImage XDesktop::image(const QRect& area) {
    const QRect all(0, 0, screen_->width_in_pixels, screen_->height_in_pixels);
    const QRect inside = area.intersected(all);
    if (inside.isEmpty()) return {};
    const auto cookie =
        xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, root(), static_cast<int16_t>(inside.x()),
                      static_cast<int16_t>(inside.y()), static_cast<uint16_t>(inside.width()),
                      static_cast<uint16_t>(inside.height()), ~0U);
    const auto reply = owned(xcb_get_image_reply(connection_, cookie, nullptr));
    if (!reply) return {};
    // The harness's servers run at depth 24, which is four bytes a pixel without padding.
    return QImage(xcb_get_image_data(reply.get()), inside.width(), inside.height(),
                  qsizetype{inside.width()} * 4, QImage::Format_RGB32)
        .copy();
}

QColor XDesktop::pixel(QPoint point) {
    const QImage one = image(QRect(point, QSize(1, 1)));
    return one.isNull() ? QColor() : one.pixelColor(0, 0);
}

bool XDesktop::screenshot(const QString& path) {
    return image().save(path, "PNG");
}

void XDesktop::sync() {
    owned(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

}  // namespace veltrin

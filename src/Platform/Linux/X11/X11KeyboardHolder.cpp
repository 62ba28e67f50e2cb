#include "Platform/Linux/X11/X11KeyboardHolder.h"

#include <xcb/shape.h>

#include <algorithm>
#include <vector>

namespace veltrin {

X11KeyboardHolder::X11KeyboardHolder(const X11Connection& connection)
    : connection_(connection), window_(xcb_generate_id(connection.xcb())) {
    xcb_create_window(connection.xcb(), 0, window_, connection.root(), -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    connection.flush();
}

X11KeyboardHolder::~X11KeyboardHolder() {
    xcb_destroy_window(connection_.xcb(), window_);
    connection_.flush();
}

bool X11KeyboardHolder::isHeld() const {
    // Asked for a window that was never shown, the server says "not viewable" when the keyboard is free, but
    // "already grabbed" first when it is not; so nothing is ever taken.
    const X11Reply<xcb_grab_keyboard_reply_t> reply(
        xcb_grab_keyboard_reply(connection_.xcb(),
                                xcb_grab_keyboard(connection_.xcb(), 0, window_, XCB_CURRENT_TIME,
                                                  XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                                nullptr));
    return reply &&
           (reply->status == XCB_GRAB_STATUS_ALREADY_GRABBED || reply->status == XCB_GRAB_STATUS_FROZEN);
}

bool X11KeyboardHolder::isLockScreen() const {
    if (!isHeld()) return false;
    auto* xcb = connection_.xcb();
    const X11Reply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(xcb, xcb_query_tree(xcb, connection_.root()), nullptr));
    const X11Reply<xcb_get_geometry_reply_t> screen(
        xcb_get_geometry_reply(xcb, xcb_get_geometry(xcb, connection_.root()), nullptr));
    if (!tree || !screen) return false;
    const auto* children = xcb_query_tree_children(tree.get());
    const int count = xcb_query_tree_children_length(tree.get());
    std::vector<xcb_get_window_attributes_cookie_t> attributes;
    std::vector<xcb_get_geometry_cookie_t> geometries;
    for (int i = 0; i < count; ++i) {
        attributes.push_back(xcb_get_window_attributes(xcb, children[i]));
        geometries.push_back(xcb_get_geometry(xcb, children[i]));
    }
    std::vector<xcb_window_t> covers;
    for (int i = 0; i < count; ++i) {
        const auto index = static_cast<std::size_t>(i);
        const X11Reply<xcb_get_window_attributes_reply_t> window(
            xcb_get_window_attributes_reply(xcb, attributes[index], nullptr));
        const X11Reply<xcb_get_geometry_reply_t> place(
            xcb_get_geometry_reply(xcb, geometries[index], nullptr));
        if (!window || !place || window->override_redirect == 0 ||
            window->map_state != XCB_MAP_STATE_VIEWABLE)
            continue;
        if (place->x <= 0 && place->y <= 0 && place->x + place->width >= screen->width &&
            place->y + place->height >= screen->height)
            covers.push_back(children[i]);
    }
    return std::any_of(covers.begin(), covers.end(), [this](xcb_window_t each) { return takesInput(each); });
}

/// A compositor draws into a window over everything that lets all input through.
bool X11KeyboardHolder::takesInput(xcb_window_t window) const {
    const X11Reply<xcb_shape_get_rectangles_reply_t> shape(xcb_shape_get_rectangles_reply(
        connection_.xcb(), xcb_shape_get_rectangles(connection_.xcb(), window, XCB_SHAPE_SK_INPUT), nullptr));
    return !shape || xcb_shape_get_rectangles_rectangles_length(shape.get()) > 0;
}

}  // namespace veltrin

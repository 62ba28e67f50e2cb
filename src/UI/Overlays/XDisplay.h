#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace veltrin {

struct FreeXReply {
    void operator()(void* reply) const { std::free(reply); }
};
template <typename T>
using XReplyOf = std::unique_ptr<T, FreeXReply>;

/// The connection that the windows live on; null on a platform without X11. Never to be closed.
xcb_connection_t* windowsConnection();
/// Sends what waits: a request of ours is not followed by one of Qt's.
void flushWindows();
xcb_window_t rootWindow();
xcb_atom_t atomNamed(const char* name);

}  // namespace veltrin

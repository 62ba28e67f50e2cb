#pragma once

#include "Platform/Linux/X11/XcbHeaders.h"

#include <QByteArray>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace veltrin {

/// One connection to the X server. Failures are values: on a lost connection every request simply has no
/// answer, and one log line is written. Requests may come from any thread; events belong to one thread.
class X11Connection {
public:
    /// Connects to `display`, or to $DISPLAY when it is empty; null when there is no server.
    static std::unique_ptr<X11Connection> open(const QByteArray& display = {});

    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;
    ~X11Connection();

    xcb_connection_t* xcb() const { return connection_; }
    xcb_window_t root() const { return screen_->root; }
    const xcb_screen_t& screen() const { return *screen_; }
    /// The name this connection was opened by, for opening another one to the same server.
    const QByteArray& display() const { return display_; }
    /// Whether the server went away; says so in the log once.
    bool isLost() const;

    /// The atom of a name, made when it does not exist; XCB_ATOM_NONE on a lost connection.
    xcb_atom_t atom(const std::string& name) const;
    /// Whether the server speaks the extension. The XInput question announces version 2.2, without which raw
    /// events are withheld while another client holds a grab.
    bool hasXInput22() const { return hasXInput22_; }
    bool hasXkb() const { return xkbFirstEvent_ != 0; }
    bool hasXFixes() const { return xfixesFirstEvent_ != 0; }
    bool hasXTest() const { return hasXTest_; }
    bool hasRandr15() const { return hasRandr15_; }
    bool hasResource() const { return hasResource_; }
    std::uint8_t xkbFirstEvent() const { return xkbFirstEvent_; }
    std::uint8_t xfixesFirstEvent() const { return xfixesFirstEvent_; }
    std::uint8_t xinputOpcode() const { return xinputOpcode_; }

    struct Property {
        xcb_atom_t type = XCB_ATOM_NONE;
        std::uint8_t format = 0;
        QByteArray bytes;

        /// The 32-bit items; empty for another format.
        std::vector<std::uint32_t> words() const;
    };
    xcb_get_property_cookie_t requestProperty(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                                              std::uint32_t maximumBytes = 4096) const;
    /// The answer; none when the window or its property is not there.
    std::optional<Property> property(xcb_get_property_cookie_t cookie) const;
    std::optional<Property> property(xcb_window_t window, xcb_atom_t name,
                                     xcb_atom_t type = XCB_GET_PROPERTY_TYPE_ANY,
                                     std::uint32_t maximumBytes = 4096) const {
        return property(requestProperty(window, name, type, maximumBytes));
    }
    std::optional<std::uint32_t> word(xcb_window_t window, xcb_atom_t name, xcb_atom_t type) const;

    /// Sends what is buffered and waits until the server has done it. False on a lost connection.
    bool roundTrip() const;
    void flush() const { xcb_flush(connection_); }
    /// Throws away what the server sent unasked, which would otherwise pile up.
    void discardEvents() const;
    /// Hands every event to `take` until it returns true or the time is over; true in the first case.
    bool waitForEvent(std::chrono::milliseconds limit,
                      const std::function<bool(const xcb_generic_event_t&)>& take) const;

private:
    X11Connection(xcb_connection_t* connection, const QByteArray& display, int screenNumber);
    void askForExtensions();

    xcb_connection_t* connection_;
    QByteArray display_;
    const xcb_screen_t* screen_ = nullptr;
    bool hasXInput22_ = false;
    bool hasXTest_ = false;
    bool hasRandr15_ = false;
    bool hasResource_ = false;
    std::uint8_t xkbFirstEvent_ = 0;
    std::uint8_t xfixesFirstEvent_ = 0;
    std::uint8_t xinputOpcode_ = 0;
    mutable std::mutex mutex_;  ///< guards what follows
    mutable std::unordered_map<std::string, xcb_atom_t> atoms_;
    mutable bool lossSaid_ = false;
};

}  // namespace veltrin

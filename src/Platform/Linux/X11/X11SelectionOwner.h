#pragma once

#include "Platform/Linux/X11/X11Connection.h"

#include <QByteArray>
#include <QHash>
#include <QString>

#include <xcb/xcb.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace veltrin {

/// Owns a selection and serves it, on a connection and a thread of its own, so that a paste is answered
/// whatever the rest of the program does. Also counts every change of the selection's owner, by anybody.
///
/// A request that asks for what was on offer at an earlier moment, by its time stamp, still gets that for
/// some seconds: an application may take its time over a paste key, and must not be handed what came after
/// it.
///
/// Any thread. Nothing here waits longer than 2 s; on a lost connection everything fails.
class X11SelectionOwner {
public:
    /// What is on offer: nothing at all, or a text.
    struct Offer {
        std::optional<QString> text;
        bool isTemporary = false;  ///< marked so that clipboard managers leave it alone
    };

    /// Null when there is no server.
    static std::unique_ptr<X11SelectionOwner> start(const QByteArray& display, const char* selection);
    /// Hands a lasting text over to the clipboard manager, if there is one (at most 0.5 s), then gives up.
    ~X11SelectionOwner();

    /// Takes the selection with this offer; false when it could not be had. When it returns, the change has
    /// been counted.
    bool take(const Offer& offer);
    /// What this object offers; none when it does not own the selection.
    std::optional<Offer> current() const;
    qint64 changeCount() const { return changeCount_; }

private:
    struct Served {
        Offer offer;
        xcb_timestamp_t from = 0;  ///< server time at which it was put on offer
    };
    /// A text on its way to another client in pieces.
    struct Transfer {
        QByteArray bytes;
        qsizetype sent = 0;
        xcb_atom_t type = XCB_ATOM_NONE;
        double lastProgress = 0;
    };
    using TransferKey = std::pair<xcb_window_t, xcb_atom_t>;

    X11SelectionOwner(std::unique_ptr<X11Connection> connection, const char* selection);

    void run();
    void handle(const xcb_generic_event_t& event);
    void drainEvents();
    void runCommands();
    bool takeNow(const Offer& offer);
    xcb_timestamp_t serverTime();
    const Served* offerAt(xcb_timestamp_t time) const;
    void answer(const xcb_selection_request_event_t& request);
    bool convert(const Served& served, xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property);
    bool convertMultiple(const Served& served, xcb_window_t requestor, xcb_atom_t property);
    std::vector<xcb_atom_t> targets(const Offer& offer) const;
    bool give(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type, QByteArray bytes);
    void sendPiece(const xcb_property_notify_event_t& event);
    void dropStaleTransfers();
    void handOver();
    void wake() const;

    std::unique_ptr<X11Connection> connection_;
    xcb_window_t window_ = XCB_WINDOW_NONE;
    xcb_atom_t selection_ = XCB_ATOM_NONE;
    int wakeUp_ = -1;

    // The thread's own.
    std::deque<Served> history_;  ///< newest first; the front is on offer while `owns_`
    std::map<TransferKey, Transfer> transfers_;
    std::optional<xcb_timestamp_t> timeReply_;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> commands_;
    std::optional<Offer> current_;
    bool owns_ = false;
    bool ends_ = false;
    std::atomic<qint64> changeCount_ = 0;
    std::thread thread_;
};

}  // namespace veltrin

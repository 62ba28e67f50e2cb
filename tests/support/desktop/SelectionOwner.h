#pragma once

#include "support/desktop/ClipboardProbe.h"

#include <atomic>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace veltrin {

/// The owning and watching half of a ClipboardProbe: a window on a connection that only its own thread reads.
/// Other threads only set what is on offer and send requests that have no reply.
class ClipboardProbe::Owner {
public:
    Owner(const QString& display, const QByteArray& selection);
    ~Owner();
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;

    xcb_window_t window() const { return window_; }
    /// Offers contents by target and asks for the ownership as of a server time.
    void take(QMap<xcb_atom_t, QByteArray> offer, QList<xcb_atom_t> silent, bool answers,
              xcb_timestamp_t time);
    void giveUp(xcb_timestamp_t time);
    void setAnswerDelay(double seconds) { delay_ = seconds; }
    QList<Request> requests() const;
    int changes() const { return changes_; }

private:
    /// A long answer under way: the pieces go as the requestor deletes the ones before.
    struct Transfer {
        xcb_atom_t type = 0;
        QByteArray left;
    };
    using TransferKey = std::pair<xcb_window_t, xcb_atom_t>;

    XDesktop x_;
    xcb_atom_t selection_ = 0;
    xcb_window_t window_ = 0;
    uint8_t fixesEvent_ = 0;
    mutable std::mutex mutex_;
    QMap<xcb_atom_t, QByteArray> offer_;
    QList<xcb_atom_t> silent_;  // on offer too, but requests for them are not answered
    bool answers_ = true;
    xcb_timestamp_t since_ = 0;
    QList<Request> requests_;
    std::atomic<double> delay_ = 0;
    std::atomic<int> changes_ = 0;
    std::atomic<bool> ends_ = false;
    std::map<TransferKey, Transfer> transfers_;
    std::thread thread_;

    void run();
    void handle(const xcb_generic_event_t& event);
    void answer(const xcb_selection_request_event_t& request);
    bool deliver(const xcb_selection_request_event_t& request, xcb_atom_t property);
    void continueTransfer(const xcb_property_notify_event_t& event);
    QString nameOf(xcb_atom_t atom);
};

}  // namespace veltrin

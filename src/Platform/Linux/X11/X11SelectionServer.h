#pragma once

#include "Platform/Linux/X11/X11Connection.h"
#include "Platform/Pasteboard.h"

#include <QByteArray>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace veltrin {

/// Owns the CLIPBOARD and serves it from a thread and connection of its own, whatever the main thread does.
///
/// A request is answered from what was on offer at its time stamp: one that comes late, after the offer was
/// replaced by another of ours, still gets the former content. A request from before the ownership is
/// refused.
class X11SelectionServer {
public:
    /// What is given for one target.
    struct Content {
        xcb_atom_t type = XCB_ATOM_NONE;
        std::uint8_t format = 8;
        QByteArray bytes;
    };
    struct Offer {
        std::optional<QByteArray> utf8;  ///< none: no plain text of ours
        PasteboardContent content = PasteboardContent::lasting;
        /// In place of plain text: what another program offered, by target, in its order. Targets that only
        /// describe or act on the selection must not be among them.
        std::vector<std::pair<xcb_atom_t, Content>> kept = {};
    };

    static std::unique_ptr<X11SelectionServer> start(const QByteArray& display);
    ~X11SelectionServer();
    X11SelectionServer(const X11SelectionServer&) = delete;
    X11SelectionServer& operator=(const X11SelectionServer&) = delete;

    /// Takes the ownership with this offer; false when that did not work in time.
    bool offer(Offer offer);
    /// What we offer; none when somebody else owns the selection.
    std::optional<Offer> current() const;
    /// A paste key was posted to this window just now. Until its client has fetched the text that is on
    /// offer, and half a second longer, it is given that text, though another offer of ours may have taken
    /// its place: some toolkits stamp a late request with the time of that change. For ten seconds at most.
    void pastePosted(xcb_window_t window);
    /// The window that stands for us as the owner.
    xcb_window_t window() const { return window_; }
    /// Gives lasting text to the clipboard manager, if there is one; waits at most `limit`.
    void handOver(std::chrono::milliseconds limit);

private:
    struct Held {
        Offer offer;
        xcb_timestamp_t since = 0;
        std::uint64_t number = 0;
        std::chrono::steady_clock::time_point replaced{};
    };
    struct Transfer {
        QByteArray bytes;
        qsizetype sent = 0;
        xcb_atom_t type = XCB_ATOM_NONE;
        std::uint8_t format = 8;
        std::chrono::steady_clock::time_point lastSign;
    };
    struct Answered {
        std::uint64_t number = 0;
        std::chrono::steady_clock::time_point when;
    };
    struct Posted {
        xcb_window_t client = XCB_NONE;
        std::uint64_t number = 0;
        std::chrono::steady_clock::time_point when;
        std::optional<std::chrono::steady_clock::time_point> fetched;  ///< the text, for the first time
    };
    enum class Errand { none, take, handOver };

    explicit X11SelectionServer(std::unique_ptr<X11Connection> connection);
    void run();
    void handle(const xcb_generic_event_t& event);
    void request(const xcb_selection_request_event_t& event);
    bool answerMultiple(const xcb_selection_request_event_t& event, const Offer& offer);
    bool give(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property, const Offer& offer,
              xcb_timestamp_t since);
    std::optional<Content> convert(xcb_atom_t target, const Offer& offer, xcb_timestamp_t since) const;
    std::optional<Content> convertText(xcb_atom_t target, const Offer& offer) const;
    static std::optional<Content> convertKept(xcb_atom_t target, const Offer& offer);
    std::vector<std::uint32_t> targetsOf(const Offer& offer) const;
    void askManager(const Offer& offer, xcb_timestamp_t since);
    xcb_window_t clientOf(xcb_window_t window) const;
    std::optional<std::uint64_t> offerOfPostedPaste(const xcb_selection_request_event_t& event,
                                                    std::chrono::steady_clock::time_point now) const;
    bool isText(xcb_atom_t target) const;
    const Held* heldFor(const xcb_selection_request_event_t& event);
    void continueTransfer(const xcb_property_notify_event_t& event);
    void stopListening(xcb_window_t requestor);
    void dropOldTransfers();
    void beginErrand();
    void takeOwnership(xcb_timestamp_t time);
    void finishErrand(bool done);
    bool runErrand(Errand errand, std::chrono::milliseconds limit);

    std::unique_ptr<X11Connection> connection_;
    xcb_window_t window_ = XCB_NONE;
    int wake_ = -1;
    std::atomic<bool> stopping_{false};
    struct {
        xcb_atom_t clipboard, targets, timestamp, multiple, atomPair, incr, utf8, text, plain, plainUtf8,
            saveTargets, secretHint, manager, null, stamp, list;
    } atoms_{};

    // The thread's own.
    std::map<std::pair<xcb_window_t, xcb_atom_t>, Transfer> transfers_;
    std::map<xcb_window_t, Answered> late_;  ///< requestors that were given a replaced offer
    std::uint64_t lastNumber_ = 0;

    mutable std::mutex mutex_;  ///< guards what follows
    std::condition_variable finished_;
    std::deque<Held> held_;         ///< newest last; empty when we do not own the selection
    std::optional<Posted> posted_;  ///< the latest posted paste
    Errand errand_ = Errand::none;
    Errand begun_ = Errand::none;
    Offer next_;
    bool done_ = false;
    bool over_ = false;  ///< the thread has ended

    std::thread thread_;
};

}  // namespace veltrin

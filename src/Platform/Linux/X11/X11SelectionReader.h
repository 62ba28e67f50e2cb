#pragma once

#include "Platform/Linux/X11/X11Connection.h"
#include "Platform/Pasteboard.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace veltrin {

/// Reads the CLIPBOARD of other programs and counts its changes, on a connection of its own. Main thread.
class X11SelectionReader {
public:
    explicit X11SelectionReader(const QByteArray& display);

    bool isUsable() const { return connection_ != nullptr && connection_->hasXFixes(); }
    /// All changes until now, in the server's order.
    qint64 changeCount();
    /// Those before a moment on the monotonic clock, in nanoseconds.
    qint64 changeCountAt(std::uint64_t timestamp);
    /// The window that owns the selection now; XCB_NONE when none does.
    xcb_window_t owner() const;
    /// The plain text, in whatever form its owner has it.
    PasteboardString string(std::chrono::milliseconds limit);
    /// What the owner lists, in its order, without what only describes the selection or acts on it; none when
    /// it does not answer.
    std::optional<QStringList> types(std::chrono::milliseconds limit);
    /// All data, see Pasteboard::snapshot: `each` is the time for the first sign of a type's data.
    std::optional<PasteboardSnapshot> snapshot(std::chrono::milliseconds each, std::chrono::milliseconds all);
    /// Of the server, for any connection to it.
    xcb_atom_t atom(const QString& name) const;
    QString nameOf(xcb_atom_t atom) const;

private:
    using Clock = std::chrono::steady_clock;
    struct Answer {
        enum class Status { value, refused, unanswered } status = Status::unanswered;
        QByteArray bytes;
        xcb_atom_t type = XCB_ATOM_NONE;
        std::uint8_t format = 8;
    };
    struct Listed {
        xcb_atom_t target = XCB_ATOM_NONE;
        QString name;
    };

    /// An owner that gave no sign by `answerBy` is not waited for; its data must be there by `deadline`.
    Answer read(xcb_atom_t target, Clock::time_point answerBy, Clock::time_point deadline);
    Answer read(xcb_atom_t target, Clock::time_point deadline) { return read(target, deadline, deadline); }
    std::optional<std::vector<Listed>> listed(Clock::time_point deadline);
    std::vector<Listed> named(const std::vector<xcb_atom_t>& targets) const;
    std::optional<PasteboardSnapshot> take(std::chrono::milliseconds each, Clock::time_point deadline);
    PasteboardString ask(Clock::time_point deadline);
    bool isMarkedSecret(Clock::time_point deadline);
    Answer readPieces(xcb_atom_t property, Clock::time_point deadline);
    std::optional<X11Connection::Property> take(xcb_atom_t property);
    std::optional<xcb_timestamp_t> serverTime(Clock::time_point deadline);
    xcb_atom_t nextProperty();
    void giveUp(xcb_atom_t property);
    bool count(const xcb_generic_event_t& event);
    bool wait(Clock::time_point deadline, const std::function<bool(const xcb_generic_event_t&)>& wanted);

    std::unique_ptr<X11Connection> connection_;
    xcb_window_t window_ = XCB_NONE;
    xcb_atom_t clipboard_ = XCB_ATOM_NONE;
    xcb_atom_t stamp_ = XCB_ATOM_NONE;
    qint64 changes_ = 0;
    std::deque<std::uint64_t> changeTimes_;  ///< of the latest changes, in nanoseconds
    std::set<xcb_atom_t> givenUp_;           ///< properties whose owners may still send pieces
    unsigned reads_ = 0;
};

}  // namespace veltrin

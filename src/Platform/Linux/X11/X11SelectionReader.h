#pragma once

#include "Platform/Linux/X11/X11Connection.h"
#include "Platform/Pasteboard.h"

#include <memory>

namespace veltrin {

/// Reads a selection's text from whoever owns it, in pieces when it is long. One thread at a time.
class X11SelectionReader {
public:
    /// Null when there is no server.
    static std::unique_ptr<X11SelectionReader> start(const QByteArray& display, const char* selection);

    /// At most 0.5 s until the owner's first sign and between two pieces of a long text, and 2 s in all. More
    /// than 64 MB counts as unanswered.
    PasteboardString read();

private:
    enum class Outcome { value, refused, unanswered };

    X11SelectionReader(std::unique_ptr<X11Connection> connection, const char* selection);
    Outcome convert(xcb_atom_t target, QByteArray& bytes);
    Outcome receivePieces(QByteArray& bytes);
    /// The property's bytes, which deletes it; none when it cannot be had.
    std::optional<X11Connection::Property> takeProperty();
    xcb_timestamp_t serverTime();

    std::unique_ptr<X11Connection> connection_;
    xcb_window_t window_ = XCB_WINDOW_NONE;
    xcb_atom_t selection_ = XCB_ATOM_NONE;
    xcb_atom_t property_ = XCB_ATOM_NONE;
};

}  // namespace veltrin

#pragma once

#include "Platform/Accessibility.h"
#include "Platform/KeyCodes.h"

#include <QString>

#include <optional>

namespace veltrin {

/// Whom a synthetic key is meant for: what was in front when the text was read.
struct PostTarget {
    std::optional<qint32> processIdentifier;
    quint64 window = 0;    ///< RunningApplication::window at the read; 0 when none was known
    AXElementRef element;  ///< may be null
};

/// One chord to post: the modifiers, one key pressed and released.
struct KeyPost {
    qint64 keyCode = KeyCode::unknown;
    quint64 flags = 0;
    PostTarget target;
    /// What a paste would put in has a line break; such a paste into a terminal would run it, and is refused.
    bool textHasLineBreak = false;
};

struct PostResult {
    bool posted = false;
    QString refusal;  ///< for the log when not posted; empty otherwise
    explicit operator bool() const { return posted; }
};

/// Synthetic keys. A chord goes out in one piece or not at all. It is refused when its target no longer has
/// the keyboard (the window, or the field in it), does not answer, is a password field or cannot be edited
/// (for a paste), or is a terminal that the key would harm. Modifiers that the user is holding are waited
/// for, at most 300 ms, then lifted and not put back. No key is ever left down.
class KeyPoster {
public:
    virtual ~KeyPoster() = default;
    virtual PostResult post(const KeyPost& chord) = 0;
};

}  // namespace veltrin

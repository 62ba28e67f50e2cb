#pragma once

#include "ExternalAccess/ExternalTextReadResult.h"
#include "Platform/KeyPoster.h"

namespace veltrin {

/// Reading and writing a foreign field by driving its application with copy and paste, for applications that
/// give accessibility nothing. Main thread, blocking.
class ClipboardTextAccess {
public:
    virtual ~ClipboardTextAccess() = default;

    /// `target` is what is in front; its element, where accessibility names one, keeps keys from a password
    /// field. A failed read has no text and still carries the application's data.
    virtual ExternalTextReadResult readFocusedText(const QString& appName, const QString& bundleIdentifier,
                                                   const PostTarget& target) = 0;
    /// Replaces the field's whole content. True when the keys were posted.
    virtual bool write(const QString& text, const ExternalTextReadResult& read) = 0;
};

}  // namespace veltrin

#pragma once

#include <QString>

#include <optional>

namespace veltrin {

/// What stands on a pasteboard as plain text.
struct PasteboardString {
    enum class Status {
        value,       ///< there is a string
        none,        ///< the pasteboard is empty or holds no text
        unanswered,  ///< its owner did not answer in time; it may well hold text
    };
    Status status = Status::none;
    QString text;
    /// Its owner marks it as not to be kept, as password managers do, and as this program does with what it
    /// offers for a moment only. Put back, such a string is marked again (`PasteboardContent::secret`).
    bool isSecret = false;

    std::optional<QString> value() const {
        return status == Status::value ? std::optional<QString>(text) : std::nullopt;
    }
};

enum class PasteboardContent {
    lasting,    ///< the user's: clipboard managers may keep it
    secret,     ///< the user's and secret: marked so that clipboard managers pass it by
    temporary,  ///< ours for a moment: marked so that clipboard managers pass it by
};

/// The general pasteboard. Main thread; a request that an owner does not answer costs at most 0.5 s. What is
/// offered here is served from a thread of its own, so that a blocked main thread never stalls a paste.
class Pasteboard {
public:
    virtual ~Pasteboard() = default;

    /// Grows with every change by anybody. One change may count more than once.
    virtual qint64 changeCount() const = 0;
    /// The count as it stood when a key event with this time stamp (KeyEvent::timestamp) was made, however
    /// late that event is handled. What changed within the key's own millisecond came after it.
    virtual qint64 changeCountAt(quint64 timestamp) const = 0;
    virtual PasteboardString string() const = 0;
    /// Empties it: this program owns it and offers nothing.
    virtual void clearContents() = 0;
    /// Offers a plain string; false when the pasteboard could not be taken.
    virtual bool setString(const QString& text, PasteboardContent content) = 0;
};

}  // namespace veltrin

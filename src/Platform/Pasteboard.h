#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

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

/// One type that an item on a pasteboard is offered in, with its data.
struct PasteboardData {
    QString type;  ///< as the desktop names it: "text/html", "image/png", "UTF8_STRING"
    QByteArray bytes;
    QString form;  ///< the adapter's own note of what the bytes are, which goes back with them
    friend bool operator==(const PasteboardData&, const PasteboardData&) = default;
};

/// One item, in all types that gave data, as they were listed.
struct PasteboardItem {
    std::vector<PasteboardData> data;
    friend bool operator==(const PasteboardItem&, const PasteboardItem&) = default;
};

/// Everything that stood on a pasteboard at one moment; no items when it was empty.
struct PasteboardSnapshot {
    std::vector<PasteboardItem> items;
    friend bool operator==(const PasteboardSnapshot&, const PasteboardSnapshot&) = default;
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

    /// The types on offer, those that only describe the offer left out; none when the pasteboard is empty or
    /// its owner does not answer.
    virtual QStringList types() const = 0;
    /// All items with all their data, to be put back after something of ours stood there. A type counts when
    /// its owner answers within 50 ms and all of them within 400 ms; the rest counts as giving no data. None
    /// when the owner does not answer, or owes the plain text that it offers: what could not be put back must
    /// not be taken away.
    virtual std::optional<PasteboardSnapshot> snapshot() const = 0;
    /// Takes the pasteboard and offers what stood there, types and bytes unchanged; what was marked secret is
    /// marked again, since the mark is one of the types. False when the pasteboard could not be taken.
    virtual bool restore(const PasteboardSnapshot& snapshot) = 0;
};

}  // namespace veltrin

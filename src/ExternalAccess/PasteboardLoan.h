#pragma once

#include "Platform/Pasteboard.h"
#include "Platform/RunLoop.h"

#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace veltrin {

/// What the user had on the pasteboard. Only the plain string is kept: anything else is gone once something
/// of ours was put there.
struct RememberedPasteboard {
    std::optional<QString> text;
    bool isSecret = false;  ///< marked by its owner; marked again when it is given back
};

/// The user's pasteboard while something of ours lies on it, for every road that pastes or copies. All of
/// them share one loan, so that at the end of the process the user's own content comes last and stays. Main
/// thread.
class PasteboardLoan {
public:
    PasteboardLoan(Pasteboard& pasteboard, RunLoop& runLoop) : pasteboard_(pasteboard), runLoop_(runLoop) {}
    PasteboardLoan(const PasteboardLoan&) = delete;
    PasteboardLoan& operator=(const PasteboardLoan&) = delete;
    /// Gives everything back at once.
    ~PasteboardLoan() { giveBackPending(); }

    /// None when the pasteboard's owner does not answer: it may hold the user's text, which could not be
    /// given back, so the pasteboard must be left alone.
    std::optional<RememberedPasteboard> remember() const;
    /// Called before anything is remembered, so that whoever has something on the pasteboard for a moment by
    /// another way gives the user's back first; may be empty.
    std::function<void()> beforeRemembering;

    /// Empties the pasteboard for a copy to come; the change count of the empty pasteboard.
    qint64 empty();
    /// Puts our text there, marked as temporary; false when the pasteboard could not be taken.
    bool offer(const QString& text);
    /// Gives it back whatever lies there now.
    void giveBack(const RememberedPasteboard& remembered);
    /// Gives it back unless somebody has put something newer there in place of our `offered` text.
    bool giveBackUnlessNewer(const RememberedPasteboard& remembered, const QString& offered);
    /// Does that after `delay` seconds, with a log line that begins with `who`.
    void giveBackLater(double delay, RememberedPasteboard remembered, const QString& offered,
                       const QString& who);
    /// Gives back now what waits for its delay: for the end of the process.
    void giveBackPending();

private:
    struct Pending {
        quint64 id = 0;
        RememberedPasteboard remembered;
        QString offered;
        QString who;
        Timer timer;
    };
    void finish(const Pending& pending);
    void put(const RememberedPasteboard& remembered);
    bool isOurs(const QString& offered) const;
    bool stands(const QString& text) const;

    Pasteboard& pasteboard_;
    RunLoop& runLoop_;
    std::vector<Pending> pending_;
    quint64 lastId_ = 0;
    qint64 ownChangeCount_ = 0;  ///< the pasteboard's count right after our last change of it
};

}  // namespace veltrin

#include "ExternalAccess/PasteboardLoan.h"

#include "Foundation/MVPLog.h"

#include <algorithm>
#include <utility>

namespace veltrin {
namespace {

/// A pasteboard that could not be taken is tried once more.
constexpr int giveBackAttempts = 2;

}  // namespace

std::optional<RememberedPasteboard> PasteboardLoan::remember() const {
    if (beforeRemembering) beforeRemembering();
    const PasteboardString before = pasteboard_.string();
    if (before.status == PasteboardString::Status::unanswered) return std::nullopt;
    return RememberedPasteboard{before.value(), before.isSecret};
}

qint64 PasteboardLoan::empty() {
    pasteboard_.clearContents();
    ownChangeCount_ = pasteboard_.changeCount();
    return ownChangeCount_;
}

bool PasteboardLoan::offer(const QString& text) {
    pasteboard_.clearContents();
    const bool offered = pasteboard_.setString(text, PasteboardContent::temporary);
    ownChangeCount_ = pasteboard_.changeCount();
    return offered;
}

void PasteboardLoan::giveBack(const RememberedPasteboard& remembered) {
    put(remembered);
    // What stands there now is the user's, and may be newer than what an earlier loan remembers. Only that
    // loan's own text is not.
    for (Pending& pending : pending_) {
        if (remembered.text != pending.offered) pending.remembered = remembered;
    }
}

void PasteboardLoan::put(const RememberedPasteboard& remembered) {
    const auto content = remembered.isSecret ? PasteboardContent::secret : PasteboardContent::lasting;
    for (int attempt = 1; attempt <= giveBackAttempts; ++attempt) {
        pasteboard_.clearContents();
        const bool set = !remembered.text || pasteboard_.setString(*remembered.text, content);
        ownChangeCount_ = pasteboard_.changeCount();
        if (set && (!remembered.text || stands(*remembered.text))) return;
        MVPLog::write("Pasteboard was not given back, attempt:", attempt);
    }
}

bool PasteboardLoan::stands(const QString& text) const {
    // In the hands of somebody else it is the user's newer copy, which stays.
    return pasteboard_.string().value() == text || pasteboard_.changeCount() != ownChangeCount_;
}

bool PasteboardLoan::isOurs(const QString& offered) const {
    // Whoever took the pasteboard since our last change of it holds the user's newer copy, and that stays.
    // Our own text in other hands (a clipboard manager took it over) is still ours to take back.
    return pasteboard_.changeCount() == ownChangeCount_ || pasteboard_.string().value() == offered;
}

bool PasteboardLoan::giveBackUnlessNewer(const RememberedPasteboard& remembered, const QString& offered) {
    if (!isOurs(offered)) return false;
    giveBack(remembered);
    return true;
}

void PasteboardLoan::giveBackLater(double delay, RememberedPasteboard remembered, const QString& offered,
                                   const QString& who) {
    // Two loans within the delay stay as they are, and that is meant: the second remembers the first's text
    // as the user's, and the first may be given back before the second's paste was taken.
    const quint64 id = ++lastId_;
    Timer timer = runLoop_.after(delay, [this, id] {
        const auto found = std::find_if(pending_.begin(), pending_.end(),
                                        [id](const Pending& pending) { return pending.id == id; });
        if (found == pending_.end()) return;
        const Pending pending = std::move(*found);
        pending_.erase(found);
        finish(pending);
    });
    pending_.push_back({id, std::move(remembered), offered, who, std::move(timer)});
}

void PasteboardLoan::giveBackPending() {
    // The newest first: each takes back its own text, so the user's own content comes last and stays.
    while (!pending_.empty()) {
        const Pending pending = std::move(pending_.back());
        pending_.pop_back();
        finish(pending);
    }
}

void PasteboardLoan::finish(const Pending& pending) {
    if (!isOurs(pending.offered)) {
        MVPLog::write(pending.who, "clipboard restore skipped: pasteboard has newer content");
        return;
    }
    put(pending.remembered);
    MVPLog::write(pending.who, "clipboard restored");
}

}  // namespace veltrin

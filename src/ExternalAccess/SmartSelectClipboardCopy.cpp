#include "ExternalAccess/SmartSelectClipboardCopy.h"

#include "ExternalAccess/SmartSelectClipboardFallbackPolicy.h"
#include "Foundation/Characters.h"
#include "Foundation/MVPLog.h"
#include "Foundation/Text.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace veltrin {

/// In seconds.
struct SmartSelectClipboardCopy::Waits {
    double afterActivation;
    int attempts;
    double keyHeld;
    double timeout;
    double afterFailure;
};

namespace {

using Status = PasteboardString::Status;

/// A copy key of the user this recent, with a changed pasteboard, means that there lies a copy of theirs.
constexpr double userCopyCooldown = 1.25;
constexpr double ownCopyWindow = 0.6;
constexpr double copiedTextPoll = 0.015;
/// A pasteboard that could not be taken is tried once more.
constexpr int giveBackAttempts = 2;

constexpr const char* fileTypes[] = {"public.file-url", "public.tiff", "public.png", "NSFilenamesPboardType"};
/// As this desktop's programs offer files; pictures are "image/…" whatever their form.
constexpr const char* desktopFileTypes[] = {"text/uri-list", "x-special/gnome-copied-files",
                                            "x-special/mate-copied-files", "application/x-kde-cutselection"};

template <std::size_t N>
bool isOneOf(const QString& type, const char* const (&types)[N]) {
    return std::any_of(std::begin(types), std::end(types),
                       [&type](const char* known) { return type == QLatin1String(known); });
}

}  // namespace

SmartSelectClipboardCopy::SmartSelectClipboardCopy(Workspace& workspace, Pasteboard& pasteboard,
                                                   PasteboardLoan& loan, KeyPoster& keyPoster,
                                                   RunLoop& runLoop,
                                                   ClipboardFallbackInterferenceGuard& guard)
    : workspace_(workspace),
      pasteboard_(pasteboard),
      loan_(loan),
      keyPoster_(keyPoster),
      runLoop_(runLoop),
      guard_(guard),
      pauses_(runLoop) {
    loan_.beforeRemembering = [this] { giveBackPending(); };
}

SmartSelectClipboardCopy::~SmartSelectClipboardCopy() {
    loan_.beforeRemembering = nullptr;
    giveBackPending();
}

const SmartSelectClipboardCopy::Waits& SmartSelectClipboardCopy::waitsFor(const QString& name,
                                                                          const QString& bundleIdentifier) {
    static constexpr Waits slow{0.24, 2, 0.09, 1.15, 0.24};
    static constexpr Waits others{0.12, 1, 0.06, 0.85, 0.18};
    const bool isSlow = SmartSelectClipboardFallbackPolicy::isWeChatApp(name, bundleIdentifier) ||
                        SmartSelectClipboardFallbackPolicy::isAIConversationApp(name, bundleIdentifier);
    return isSlow ? slow : others;
}

QCoro::Task<std::optional<QString>> SmartSelectClipboardCopy::copySelectedTextViaClipboard(
    AXElementRef focused) {
    const auto front = workspace_.frontmostApplication();
    // Without an exception for the practice in our own window: it would have to copy on the thread that
    // waits.
    if (!front || front->bundleIdentifier == workspace_.mainBundleIdentifier()) co_return std::nullopt;
    const QString name = front->localizedName.value_or(QStringLiteral("unknown"));
    const QString bundleIdentifier = front->bundleIdentifier.value_or(QStringLiteral("unknown"));
    const PostTarget target{front->processIdentifier, front->window, std::move(focused)};
    MVPLog::write("SmartSelect clipboard fallback begin:", "app:", name, "bundle:", bundleIdentifier,
                  "pid:", front->processIdentifier);
    const qint64 countBefore = pasteboard_.changeCount();
    if (guard_.shouldSkipFallback(countBefore, userCopyCooldown)) co_return std::nullopt;
    auto snapshot = pasteboard_.snapshot();
    if (!snapshot) {
        MVPLog::write("SmartSelect clipboard fallback refused: pasteboard owner does not answer");
        co_return std::nullopt;
    }
    const double begin = runLoop_.now();
    const Waits& waits = waitsFor(name, bundleIdentifier);
    if (workspace_.runningApplication(front->processIdentifier)) {
        workspace_.activate(front->processIdentifier, ActivateOptions::none);
        auto activation = pauses_.pause(waits.afterActivation);
        if (!co_await activation) co_return std::nullopt;
    }
    if (pasteboard_.changeCount() != countBefore) {
        MVPLog::write("SmartSelect clipboard fallback refused: pasteboard has newer content");
        co_return std::nullopt;
    }

    const quint64 loanNumber = borrow(std::move(*snapshot));
    Copied copied;
    for (int attempt = 1; attempt <= waits.attempts && !copied.text && copied.isAnswered; ++attempt) {
        pasteboard_.clearContents();
        const qint64 clearedCount = pasteboard_.changeCount();
        MVPLog::write("SmartSelect clipboard fallback copy attempt:", attempt);
        if (!postCopyKey(target)) break;
        // A chord goes out in one piece. How long its key would be held is waited for after it.
        auto held = pauses_.pause(waits.keyHeld);
        if (!co_await held) co_return std::nullopt;
        auto task = waitForCopiedText(clearedCount, waits.timeout, copiedTextPoll, loanNumber);
        copied = co_await task;
        if (copied.isOver) co_return std::nullopt;
        if (copied.text || !copied.isAnswered) break;
        auto failure = pauses_.pause(waits.afterFailure);
        if (!co_await failure || !isBorrowed(loanNumber)) co_return std::nullopt;
    }

    const bool isOtherThanText = copied.isAnswered && pasteboardContainsFileOrImageSelection(pasteboard_);
    if (isOtherThanText) MVPLog::write("SmartSelect clipboard fallback rejected non-text selection");
    giveBack();
    if (isOtherThanText) co_return std::nullopt;
    if (!copied.text) {
        MVPLog::write("SmartSelect clipboard fallback failed: no copied text");
        co_return std::nullopt;
    }
    MVPLog::write("SmartSelect clipboard fallback success:", "length:", Characters::count(*copied.text),
                  "elapsedMS:", static_cast<qint64>((runLoop_.now() - begin) * 1000));
    co_return copied.text;
}

bool SmartSelectClipboardCopy::postCopyKey(const PostTarget& target) {
    guard_.ignoreSyntheticCopy(ownCopyWindow);
    KeyPost chord;
    chord.keyCode = KeyCode::c;
    chord.flags = KeyFlags::command;
    chord.target = target;
    const PostResult result = keyPoster_.post(chord);
    if (!result) MVPLog::write("SmartSelect clipboard fallback key refused:", result.refusal);
    return result.posted;
}

QCoro::Task<SmartSelectClipboardCopy::Copied> SmartSelectClipboardCopy::waitForCopiedText(
    qint64 clearedCount, double timeout, double pollInterval, quint64 loanNumber) {
    Copied copied;
    const double deadline = runLoop_.now() + timeout;
    while (runLoop_.now() < deadline) {
        auto wait = pauses_.pause(pollInterval);
        const bool goesOn = co_await wait;
        // Given back meanwhile, what stands there is the user's own.
        copied.isOver = !goesOn || !isBorrowed(loanNumber);
        if (copied.isOver) co_return copied;
        if (pasteboard_.changeCount() == clearedCount) continue;
        const PasteboardString string = pasteboard_.string();
        // It did copy; asking such an owner again would only hold the main thread up again.
        copied.isAnswered = string.status != Status::unanswered;
        if (!copied.isAnswered) co_return copied;
        if (string.status == Status::value && !Text::isBlank(string.text)) {
            copied.text = string.text;
            co_return copied;
        }
    }
    co_return copied;
}

bool SmartSelectClipboardCopy::pasteboardContainsFileOrImageSelection(const Pasteboard& pasteboard) {
    const QStringList types = pasteboard.types();
    return std::any_of(types.begin(), types.end(), [](const QString& type) {
        return isOneOf(type, fileTypes) || isOneOf(type, desktopFileTypes) ||
               type.startsWith(QLatin1String("image/"));
    });
}

quint64 SmartSelectClipboardCopy::borrow(PasteboardSnapshot snapshot) {
    borrowed_ = std::move(snapshot);
    if (onBorrowed) onBorrowed(true);
    return ++loanNumber_;
}

void SmartSelectClipboardCopy::giveBackPending() {
    if (borrowed_) giveBack();
}

void SmartSelectClipboardCopy::giveBack() {
    const PasteboardSnapshot snapshot = std::move(*borrowed_);
    borrowed_.reset();
    for (int attempt = 1; attempt <= giveBackAttempts; ++attempt) {
        if (pasteboard_.restore(snapshot)) break;
        MVPLog::write("SmartSelect pasteboard was not given back, attempt:", attempt);
    }
    if (onBorrowed) onBorrowed(false);
}

}  // namespace veltrin

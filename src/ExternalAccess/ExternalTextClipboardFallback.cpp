#include "ExternalAccess/ExternalTextClipboardFallback.h"

#include "Foundation/Characters.h"
#include "Foundation/MVPLog.h"
#include "Foundation/Text.h"

namespace veltrin {

/// WeChat gives accessibility nothing and is slow besides: the longer waits are made for it.
struct ExternalTextClipboardFallback::Waits {
    bool isWeChat;
    double afterActivation;
    double beforeSelectAll;
    double beforePaste;
    double beforeRestore;
    double afterFirstCopy;
};

namespace {

using Status = PasteboardString::Status;

/// A copy key of the user this recent, with a changed pasteboard, means that there lies a copy of theirs.
constexpr double userCopyCooldown = 1.25;
constexpr double ownCopyWindow = 0.6;

constexpr int copyAttempts = 3;
constexpr int copyRounds = 20;
constexpr double copyRound = 0.05;

// A chord goes out in one piece. What a key would be held and what follows a release are waited for after it.
constexpr double keyHeld = 0.04;
constexpr double afterKey = 0.1;

}  // namespace

const ExternalTextClipboardFallback::Waits& ExternalTextClipboardFallback::waitsFor(const QString& appName) {
    static constexpr Waits weChat{true, 0.16, 0.14, 0.18, 1.4, 0.18};
    static constexpr Waits others{false, 0.08, 0.07, 0.08, 0.85, 0};
    const bool isWeChat = appName.contains(QStringLiteral("wechat"), Qt::CaseInsensitive) ||
                          appName.contains(QStringLiteral("微信"));
    return isWeChat ? weChat : others;
}

// MARK: Reading

ExternalTextReadResult ExternalTextClipboardFallback::readFocusedText(const QString& appName,
                                                                      const QString& bundleIdentifier,
                                                                      const PostTarget& target) {
    MVPLog::write("Clipboard fallback read begin:", "app:", appName, "bundle:", bundleIdentifier,
                  "pid:", target.processIdentifier);
    ExternalTextReadResult read = result(appName, bundleIdentifier, target);
    if (read.isSelf) {
        // Our own windows take keys on the thread that waits here: they would copy after it was over.
        MVPLog::write("Clipboard fallback read refused: frontmost app is Veltrin");
        return read;
    }
    if (guard_.shouldSkipFallback(pasteboard_.changeCount(), userCopyCooldown)) return read;
    const auto remembered = loan_.remember();
    if (!remembered) {
        MVPLog::write("Clipboard fallback read refused: pasteboard owner does not answer");
        return read;
    }
    const qint64 emptyCount = loan_.empty();
    const Waits& waits = waitsFor(appName);
    activate(target.processIdentifier, appName, waits);
    if (!postKeyCombo(KeyFlags::command, KeyCode::a, target)) {
        loan_.giveBack(*remembered);
        MVPLog::write("Clipboard fallback read failed: could not post Cmd+A");
        return read;
    }
    const auto copied = copySelection(emptyCount, remembered->text, target, waits);
    loan_.giveBack(*remembered);
    if (!copied || Text::isBlank(*copied)) {
        // The field stays wholly selected: nothing undoes the Cmd+A, and that is meant.
        MVPLog::write("Clipboard fallback read failed: no copied text");
        return read;
    }
    MVPLog::write("Clipboard fallback read success:", "length:", Characters::count(*copied),
                  "preview:", Text::preview(*copied, 80));
    read.source = ExternalTextReadResult::Source::value;
    read.text = *copied;
    read.fullText = *copied;
    read.textContext = {*copied, Characters::count(*copied), QString(), QString()};
    return read;
}

/// The result without text: what a failed read gives.
ExternalTextReadResult ExternalTextClipboardFallback::result(const QString& appName,
                                                             const QString& bundleIdentifier,
                                                             const PostTarget& target) const {
    ExternalTextReadResult read;
    read.frontmostAppName = appName;
    read.bundleIdentifier = bundleIdentifier;
    read.processIdentifier = target.processIdentifier;
    read.role = QStringLiteral("clipboardFallback");
    read.isSelf = bundleIdentifier == workspace_.mainBundleIdentifier();
    read.requiresClipboardWriteback = true;
    read.targetWindow = target.window;
    return read;
}

void ExternalTextClipboardFallback::activate(std::optional<qint32> processIdentifier, const QString& appName,
                                             const Waits& waits) {
    const auto application =
        processIdentifier ? workspace_.runningApplication(*processIdentifier) : std::nullopt;
    if (!processIdentifier || !application) {
        MVPLog::write("Clipboard fallback activate skipped:", appName);
        return;
    }
    workspace_.activate(*processIdentifier, ActivateOptions::none);
    MVPLog::write("Clipboard fallback activated app:", application->localizedName,
                  "pid:", *processIdentifier);
    runLoop_.sleepFor(waits.afterActivation);
}

bool ExternalTextClipboardFallback::postKeyCombo(quint64 flags, qint64 keyCode, const PostTarget& target,
                                                 bool textHasLineBreak) {
    KeyPost chord;
    chord.keyCode = keyCode;
    chord.flags = flags;
    chord.target = target;
    chord.textHasLineBreak = textHasLineBreak;
    const PostResult result = keyPoster_.post(chord);
    if (!result) {
        MVPLog::write("Clipboard fallback key refused:", result.refusal);
        return false;
    }
    runLoop_.sleepFor(keyHeld + afterKey);
    return true;
}

std::optional<QString> ExternalTextClipboardFallback::copySelection(qint64 emptyCount,
                                                                    const std::optional<QString>& previous,
                                                                    const PostTarget& target,
                                                                    const Waits& waits) {
    for (int attempt = 1; attempt <= copyAttempts; ++attempt) {
        MVPLog::write("Clipboard fallback copy attempt:", attempt);
        guard_.ignoreSyntheticCopy(ownCopyWindow);
        if (!postKeyCombo(KeyFlags::command, KeyCode::c, target)) {
            MVPLog::write("Clipboard fallback copy attempt failed: could not post Cmd+C");
            return std::nullopt;
        }
        const PasteboardString copied = waitForClipboardString(emptyCount, previous);
        if (copied.status == Status::value) return copied.text;
        // It did copy; asking again would only cost the same again.
        if (copied.status == Status::unanswered) {
            MVPLog::write("Clipboard fallback copy attempt failed: pasteboard owner does not answer");
            return std::nullopt;
        }
        if (attempt == 1) runLoop_.sleepFor(waits.afterFirstCopy);
    }
    return std::nullopt;
}

PasteboardString ExternalTextClipboardFallback::waitForClipboardString(
    qint64 emptyCount, const std::optional<QString>& previous) {
    // A silent owner makes a round long, so the rounds together have a limit too.
    const double deadline = runLoop_.now() + copyRounds * copyRound;
    for (int round = 0; round < copyRounds && runLoop_.now() < deadline; ++round) {
        runLoop_.sleepFor(copyRound);
        PasteboardString copied = copiedString(emptyCount);
        const bool isNew = !previous || copied.text != *previous || !copied.text.isEmpty();
        if (copied.status == Status::value && isNew) return copied;
    }
    return copiedString(emptyCount);
}

PasteboardString ExternalTextClipboardFallback::copiedString(qint64 emptyCount) const {
    // Without a new owner it is not the copy's: where the pasteboard could not be emptied, it is the user's.
    if (pasteboard_.changeCount() == emptyCount) return {};
    return pasteboard_.string();
}

// MARK: Writing

bool ExternalTextClipboardFallback::write(const QString& text, const ExternalTextReadResult& read) {
    const Waits& waits = waitsFor(read.frontmostAppName);
    MVPLog::write("Clipboard fallback write begin:", "replacementLength:", Characters::count(text),
                  "app:", read.frontmostAppName, "bundle:", read.bundleIdentifier, "wechat:", waits.isWeChat);
    const auto remembered = loan_.remember();
    if (!remembered) {
        MVPLog::write("Clipboard fallback write refused: pasteboard owner does not answer");
        return false;
    }
    activate(read.processIdentifier, read.frontmostAppName, waits);
    if (!loan_.offer(text)) {
        loan_.giveBackUnlessNewer(*remembered, text);
        MVPLog::write("Clipboard fallback write failed: could not take the pasteboard");
        return false;
    }
    runLoop_.sleepFor(waits.beforeSelectAll);
    // To whatever has the keyboard, whether or not the process of the read is still there: meant so. Where
    // the read's window is known, the keys are refused to any other.
    const PostTarget target{std::nullopt, read.targetWindow, read.element};
    const bool hasLineBreak = Text::hasLineBreak(text);
    if (!postKeyCombo(KeyFlags::command, KeyCode::a, target)) {
        loan_.giveBackUnlessNewer(*remembered, text);
        MVPLog::write("Clipboard fallback write failed: could not post Cmd+A");
        return false;
    }
    runLoop_.sleepFor(waits.beforePaste);
    if (!postKeyCombo(KeyFlags::command, KeyCode::v, target, hasLineBreak)) {
        loan_.giveBackUnlessNewer(*remembered, text);
        MVPLog::write("Clipboard fallback write failed: could not post Cmd+V");
        return false;
    }
    loan_.giveBackLater(waits.beforeRestore, *remembered, text, QStringLiteral("Clipboard fallback write"));
    MVPLog::write("Clipboard fallback write posted Cmd+A/V", "delivery:", "hid",
                  "restoreDelay:", waits.beforeRestore);
    return true;
}

}  // namespace veltrin

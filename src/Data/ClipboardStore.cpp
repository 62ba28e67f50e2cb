#include "Data/ClipboardStore.h"

#include "Data/RecordSearch.h"
#include "Foundation/Text.h"
#include "Platform/Pasteboard.h"
#include "Platform/Workspace.h"

namespace veltrin {

ClipboardStore::ClipboardStore(const QString& folder, RunLoop& runLoop, Pasteboard& pasteboard,
                               const Workspace& workspace)
    : runLoop_(runLoop),
      pasteboard_(pasteboard),
      workspace_(workspace),
      records_(folder, QStringLiteral("clipboard.json"), runLoop),
      lastChangeCount_(pasteboard.changeCount()) {
}

void ClipboardStore::startMonitoring() {
    lastChangeCount_ = pasteboard_.changeCount();
    timer_ = runLoop_.every(pollSeconds, [this] { checkPasteboard(); });
}

void ClipboardStore::setPaused(bool paused) {
    if (paused == isPaused_) return;
    isPaused_ = paused;
    const qint64 count = pasteboard_.changeCount();
    if (paused)
        hasNewsFromBefore_ = count != lastChangeCount_;
    else if (!hasNewsFromBefore_)
        lastChangeCount_ = count;
}

void ClipboardStore::checkPasteboard() {
    if (isPaused_) return;
    const qint64 count = pasteboard_.changeCount();
    if (count == lastChangeCount_) return;
    lastChangeCount_ = count;
    takeFromPasteboard();
}

void ClipboardStore::pasteFromClipboard() {
    takeFromPasteboard();
}

void ClipboardStore::takeFromPasteboard() {
    const PasteboardString string = pasteboard_.string();
    const auto text = string.value();
    if (!text || string.isSecret) return;
    // Whoever is in front now counts as the source; who owns the pasteboard is not looked at.
    const auto front = workspace_.frontmostApplication();
    add(*text, front ? front->localizedName.value_or(QString()) : QString());
}

void ClipboardStore::add(const QString& text, const QString& sourceApp) {
    const QString trimmed = Text::trimmed(text);
    if (trimmed.isEmpty() || trimmed == lastAddedText_) return;
    lastAddedText_ = trimmed;
    records_.insertFirst({QUuid::createUuid(), trimmed, sourceApp, Date{runLoop_.wallNow()}}, cap);
}

void ClipboardStore::clearEntries() {
    records_.change([](std::vector<ClipboardEntry>& entries) { entries.clear(); });
}

std::vector<ClipboardEntry> ClipboardStore::search(const QString& text) const {
    return RecordSearch::matching(entries(), text, [](const ClipboardEntry& entry, const auto& contains) {
        return contains(entry.text) || contains(entry.sourceApp);
    });
}

}  // namespace veltrin

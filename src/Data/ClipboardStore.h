#pragma once

#include "Data/StoredRecords.h"

#include <QString>

#include <vector>

namespace veltrin {

class Pasteboard;
class Workspace;

struct ClipboardEntry {
    QUuid id;
    QString text;       ///< trimmed
    QString sourceApp;  ///< the application that was in front; may be empty
    Date createdAt;
    friend bool operator==(const ClipboardEntry&, const ClipboardEntry&) = default;
};
template <>
inline constexpr auto recordFields<ClipboardEntry> = std::tuple{
    required(u"id", &ClipboardEntry::id), required(u"text", &ClipboardEntry::text),
    required(u"sourceApp", &ClipboardEntry::sourceApp), required(u"createdAt", &ClipboardEntry::createdAt)};

/// The last 200 copied texts, newest first, in "clipboard.json". Looks at the pasteboard once a second,
/// however often it changes; what its owner marks as secret, and what stood there before the launch, is never
/// taken.
class ClipboardStore {
public:
    static constexpr std::size_t cap = 200;
    static constexpr double pollSeconds = 1.0;

    /// `folder` is the data directory.
    ClipboardStore(const QString& folder, RunLoop& runLoop, Pasteboard& pasteboard,
                   const Workspace& workspace);

    const std::vector<ClipboardEntry>& entries() const { return records_.all(); }
    Observers<>& changed() { return records_.changed; }

    /// Called once, by the launch; runs until the process ends.
    void startMonitoring();
    /// Paused, it looks at nothing: what lies on the pasteboard is not the user's copy but this program's
    /// doing. What stands there when the pause ends counts as what stood there before it.
    void setPaused(bool paused);
    /// The button that takes what stands on the pasteboard now.
    void pasteFromClipboard();
    /// Puts the trimmed text first; an empty one, and the one that was added last, does nothing.
    void add(const QString& text, const QString& sourceApp);
    void deleteEntry(const QUuid& id) { records_.removeAll(id); }
    /// Removes every entry, from the file too.
    void clearEntries();

    /// The entries that the clipboard view shows for a search text.
    std::vector<ClipboardEntry> search(const QString& text) const;

private:
    void checkPasteboard();
    void takeFromPasteboard();

    RunLoop& runLoop_;
    Pasteboard& pasteboard_;
    const Workspace& workspace_;
    StoredRecords<ClipboardEntry> records_;
    qint64 lastChangeCount_;
    QString lastAddedText_;  ///< empty at each launch, so the first text is never a repeat
    bool isPaused_ = false;
    bool hasNewsFromBefore_ = false;  ///< the pause began before the user's last copy was taken
    Timer timer_;
};

}  // namespace veltrin

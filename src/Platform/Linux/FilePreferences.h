#pragma once

#include "Platform/Linux/PreferencesDocument.h"
#include "Platform/Preferences.h"

namespace veltrin {

/// The user's preferences in one JSON file, mode 0600 in a folder made with mode 0700; see
/// PreferencesDocument for its shape. Read once when made; every change replaces the file whole, so a reader
/// or a crash never meets half of it. A change made by another hand while the program runs is overwritten.
///
/// Nothing here fails visibly. A file that cannot be understood (broken, not UTF-8, above 16 MB, unreadable)
/// is moved to `FILE.unreadable` before anything is written and the defaults hold; where writing fails the
/// values stay in memory and the next change tries again. Each says so in one log line. A link is followed,
/// and its target replaced; a folder or anything else that is no file is left alone.
class FilePreferences final : public Preferences {
public:
    /// `path` is the file, which need not exist yet, nor its folder.
    explicit FilePreferences(QString path);

    std::optional<PreferenceValue> object(const QString& key) const override { return document_.value(key); }
    void set(const QString& key, PreferenceValue value) override;
    void remove(const QString& key) override;

private:
    void load();
    void write();
    /// The reason why the document could not be written; empty when it was.
    QString writeFile();
    /// Moves the file aside, so that the next write destroys nothing; false when that failed.
    bool keepAside();

    QString path_;
    PreferencesDocument document_;
    bool unwritten_ = false;  ///< memory is ahead of the file
    bool failing_ = false;    ///< the last write failed, and was logged
    bool mustKeepAside_ = false;
};

}  // namespace veltrin

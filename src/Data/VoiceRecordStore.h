#pragma once

#include "Data/StoredRecords.h"

#include <QString>

#include <optional>
#include <vector>

namespace veltrin {

struct VoiceRecord {
    QUuid id;
    QString transcript;
    std::optional<QString> audioFilename;  ///< a file of the recordings directory; none without audio
    double duration = 0;                   ///< seconds
    Date createdAt;
    friend bool operator==(const VoiceRecord&, const VoiceRecord&) = default;

    /// Whole seconds as "42秒", from a minute on as "3分5秒".
    QString formattedDuration() const;
};
template <>
inline constexpr auto recordFields<VoiceRecord> = std::tuple{
    required(u"id", &VoiceRecord::id), required(u"transcript", &VoiceRecord::transcript),
    optional(u"audioFilename", &VoiceRecord::audioFilename), required(u"duration", &VoiceRecord::duration),
    required(u"createdAt", &VoiceRecord::createdAt)};

/// The last 100 dictations and memos, newest first, in "voice_records.json".
class VoiceRecordStore {
public:
    static constexpr std::size_t cap = 100;

    /// `folder` is the data directory.
    VoiceRecordStore(const QString& folder, const RunLoop& runLoop);

    const std::vector<VoiceRecord>& records() const { return records_.all(); }
    Observers<>& changed() { return records_.changed; }

    /// The audio files of records that the cap cuts away stay on the disk, other than those of deleted
    /// records. Meant so.
    void add(const QString& transcript, const std::optional<QString>& audioFilename, double duration);
    /// Removes the record and its audio file.
    void deleteRecord(const QUuid& id);
    /// An unknown identifier does nothing.
    void updateTranscript(const QUuid& id, const QString& transcript);

    /// The folder of the audio files; made when it is not there, a failure is ignored.
    QString recordingsDirectory() const;
    /// A new name for a memo's file in it.
    static QString newRecordingName();
    /// What stands for the transcript of a memo that has none yet.
    static QString placeholderTranscript(double duration);

    /// The records that the voice view shows for a search text.
    std::vector<VoiceRecord> search(const QString& text) const;

private:
    QString folder_;
    const RunLoop& runLoop_;
    StoredRecords<VoiceRecord> records_;
};

}  // namespace veltrin

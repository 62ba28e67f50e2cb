#include "Data/VoiceRecordStore.h"

#include "Data/RecordSearch.h"
#include "Foundation/Files.h"

#include <QFile>

#include <cmath>

namespace veltrin {
namespace {

/// Cut toward zero; a file may hold any number.
qint64 wholeSeconds(double duration) {
    constexpr double most = 1e15;
    return std::isnan(duration) ? 0 : static_cast<qint64>(std::clamp(duration, -most, most));
}

/// Whether the name is one of a file inside the folder; a record that came from elsewhere could name any.
bool isPlainName(const QString& name) {
    return !name.isEmpty() && !name.contains(u'/') && !name.contains(QChar(u'\0'));
}

}  // namespace

QString VoiceRecord::formattedDuration() const {
    const qint64 seconds = wholeSeconds(duration);
    if (seconds < 60) return QString::number(seconds) + QStringLiteral("秒");
    return QString::number(seconds / 60) + QStringLiteral("分") + QString::number(seconds % 60) +
           QStringLiteral("秒");
}

VoiceRecordStore::VoiceRecordStore(const QString& folder, const RunLoop& runLoop)
    : folder_(folder), runLoop_(runLoop), records_(folder, QStringLiteral("voice_records.json"), runLoop) {
}

void VoiceRecordStore::add(const QString& transcript, const std::optional<QString>& audioFilename,
                           double duration) {
    records_.insertFirst({QUuid::createUuid(), transcript, audioFilename, duration, Date{runLoop_.wallNow()}},
                         cap);
}

void VoiceRecordStore::deleteRecord(const QUuid& id) {
    const VoiceRecord* record = records_.find(id);
    if (record != nullptr && record->audioFilename && isPlainName(*record->audioFilename))
        QFile::remove(recordingsDirectory() + u'/' + *record->audioFilename);
    records_.removeAll(id);
}

void VoiceRecordStore::updateTranscript(const QUuid& id, const QString& transcript) {
    records_.update(id, [&](VoiceRecord& record) { record.transcript = transcript; });
}

QString VoiceRecordStore::recordingsDirectory() const {
    QString directory = folder_ + QStringLiteral("/VoiceRecordings");
    Files::makePrivateFolder(directory);
    return directory;
}

QString VoiceRecordStore::newRecordingName() {
    return QStringLiteral("voice_") + uuidText(QUuid::createUuid()).left(12) + QStringLiteral(".m4a");
}

QString VoiceRecordStore::placeholderTranscript(double duration) {
    return QStringLiteral("语音记录 (") + QString::number(wholeSeconds(duration)) + QStringLiteral(" 秒)");
}

std::vector<VoiceRecord> VoiceRecordStore::search(const QString& text) const {
    return RecordSearch::matching(records(), text, [](const VoiceRecord& record, const auto& contains) {
        return contains(record.transcript);
    });
}

}  // namespace veltrin

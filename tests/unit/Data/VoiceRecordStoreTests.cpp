#include "Data/VoiceRecordStore.h"
#include "StoresFixture.h"
#include "support/RecordLaws.h"

#include <QFileInfo>

#include <limits>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

class VoiceRecordStoreTest : public StoresFixture {
protected:
    VoiceRecordStore store() { return VoiceRecordStore(folder(), loop); }
    void putAudio(const QString& name) {
        QDir().mkpath(path(u"VoiceRecordings"_s));
        put(u"VoiceRecordings/"_s + name, "sound");
    }
    bool hasAudio(const QString& name) const { return QFileInfo::exists(path(u"VoiceRecordings/"_s + name)); }
};

TEST_F(VoiceRecordStoreTest, itsRecordObeysItsTable) {
    expectRecordLaws<VoiceRecord>();
}

TEST_F(VoiceRecordStoreTest, aRecordWithoutAudioLoadsAndIsWrittenWithoutTheKey) {
    store().add(u"文字"_s, std::nullopt, 3);
    EXPECT_FALSE(bytesOf(u"voice_records.json"_s).contains("audioFilename"));
    const auto records = store().records();
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].transcript, u"文字"_s);
    EXPECT_FALSE(records[0].audioFilename);
    EXPECT_EQ(records[0].duration, 3);
}

TEST_F(VoiceRecordStoreTest, deletingARecordRemovesItsAudio) {
    putAudio(u"a.m4a"_s);
    putAudio(u"b.m4a"_s);
    auto voice = store();
    voice.add(u"a"_s, u"a.m4a"_s, 1);
    voice.add(u"b"_s, u"b.m4a"_s, 1);
    voice.add(u"c"_s, u"missing.m4a"_s, 1);
    voice.deleteRecord(voice.records()[2].id);
    voice.deleteRecord(voice.records()[0].id);
    voice.deleteRecord(QUuid::createUuid());
    EXPECT_FALSE(hasAudio(u"a.m4a"_s));
    EXPECT_TRUE(hasAudio(u"b.m4a"_s));
    ASSERT_EQ(store().records().size(), 1U);
    EXPECT_EQ(store().records()[0].transcript, u"b"_s);
}

TEST_F(VoiceRecordStoreTest, deletingTakesEveryRecordOfTheIdentifier) {
    VoiceRecord twice;
    twice.id = QUuid::createUuid();
    put(u"voice_records.json"_s, *writeRecords<VoiceRecord>({twice, twice}));
    auto voice = store();
    ASSERT_EQ(voice.records().size(), 2U);
    voice.deleteRecord(twice.id);
    EXPECT_TRUE(voice.records().empty());
    EXPECT_TRUE(store().records().empty());
}

TEST_F(VoiceRecordStoreTest, theCapKeepsTheAudioOfWhatItCutsAway) {
    putAudio(u"oldest.m4a"_s);
    auto voice = store();
    voice.add(u"oldest"_s, u"oldest.m4a"_s, 1);
    for (int i = 0; i < 100; ++i)
        voice.add(QString::number(i), std::nullopt, 1);
    EXPECT_EQ(voice.records().size(), 100U);
    EXPECT_EQ(voice.records().back().transcript, u"0"_s);
    EXPECT_TRUE(hasAudio(u"oldest.m4a"_s)) << "meant so";
}

TEST_F(VoiceRecordStoreTest, aRecordThatNamesAFileElsewhereRemovesNothing) {
    auto voice = store();
    for (const QString& name : {u"../voice_records.json"_s, u".."_s, u"."_s, QString()}) {
        voice.add(u"hostile"_s, name, 1);
        voice.deleteRecord(voice.records()[0].id);
    }
    EXPECT_NE(bytesOf(u"voice_records.json"_s), "no file");
    EXPECT_TRUE(QFileInfo(path(u"VoiceRecordings"_s)).isDir());
}

TEST_F(VoiceRecordStoreTest, updatingTheTranscriptOfAnUnknownRecordDoesNothing) {
    auto voice = store();
    voice.add(u"before"_s, std::nullopt, 1);
    int told = 0;
    const auto subscription = voice.changed().subscribe([&] { ++told; });
    voice.updateTranscript(QUuid::createUuid(), u"x"_s);
    EXPECT_EQ(told, 0);
    voice.updateTranscript(voice.records()[0].id, u"after"_s);
    EXPECT_EQ(store().records()[0].transcript, u"after"_s);
}

TEST_F(VoiceRecordStoreTest, durationsAreShownInWholeSecondsAndMinutes) {
    const auto shown = [](double seconds) {
        VoiceRecord record;
        record.duration = seconds;
        return record.formattedDuration();
    };
    EXPECT_EQ(shown(0), u"0秒"_s);
    EXPECT_EQ(shown(59.99), u"59秒"_s);
    EXPECT_EQ(shown(60), u"1分0秒"_s);
    EXPECT_EQ(shown(185.7), u"3分5秒"_s);
    EXPECT_EQ(shown(std::numeric_limits<double>::quiet_NaN()), u"0秒"_s);
    EXPECT_FALSE(shown(1e300).isEmpty());
    EXPECT_EQ(VoiceRecordStore::placeholderTranscript(12.9), u"语音记录 (12 秒)"_s);
}

TEST_F(VoiceRecordStoreTest, memoNamesAreNewAndShort) {
    const QString name = VoiceRecordStore::newRecordingName();
    EXPECT_TRUE(name.startsWith(u"voice_"_s));
    EXPECT_TRUE(name.endsWith(u".m4a"_s));
    EXPECT_EQ(name.size(), 6 + 12 + 4);
    EXPECT_NE(name, VoiceRecordStore::newRecordingName());
}

TEST_F(VoiceRecordStoreTest, theRecordingsFolderIsMadeOnEachUse) {
    const auto voice = store();
    EXPECT_EQ(voice.recordingsDirectory(), path(u"VoiceRecordings"_s));
    EXPECT_TRUE(QDir(voice.recordingsDirectory()).removeRecursively());
    EXPECT_TRUE(QFileInfo(voice.recordingsDirectory()).isDir());
}

TEST_F(VoiceRecordStoreTest, searchLooksIntoTheTranscript) {
    auto voice = store();
    voice.add(u"Buy Milk"_s, u"milk.m4a"_s, 1);
    voice.add(u"开会"_s, u"milk.m4a"_s, 1);
    EXPECT_EQ(voice.search({}).size(), 2U);
    EXPECT_EQ(voice.search(u" milk "_s).size(), 1U);
}

}  // namespace
}  // namespace veltrin

#include "Platform/Linux/FilePreferences.h"
#include "support/FullDisk.h"
#include "support/Slowdown.h"
#include "support/fake/LogCapture.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

class FilePreferencesTest : public testing::Test {
protected:
    QString path() const { return folder_.filePath(u"Veltrin/preferences.json"_s); }
    QString aside() const { return path() + u".unreadable"_s; }

    void put(const QByteArray& bytes) const {
        QDir().mkpath(QFileInfo(path()).path());
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }
    static QByteArray bytesOf(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }
    static mode_t modeOf(const QString& path) {
        struct stat info {};
        return lstat(QFile::encodeName(path).constData(), &info) == 0 ? info.st_mode & 07777 : 0;
    }

    QTemporaryDir folder_;
    LogCapture log_;
};

TEST_F(FilePreferencesTest, startsEmptyWithoutAFileAndMakesNone) {
    const FilePreferences preferences(path());
    EXPECT_FALSE(preferences.object(u"x"_s));
    EXPECT_FALSE(QFileInfo::exists(path()));
    EXPECT_TRUE(log_.lines().isEmpty());
}

TEST_F(FilePreferencesTest, anotherProcessFindsEveryValueWithItsType) {
    {
        FilePreferences preferences(path());
        preferences.set(u"text"_s, u"你好 \"x\"\n"_s);
        preferences.set(u"flag"_s, false);
        preferences.set(u"number"_s, 1.0);
        preferences.set(u"data"_s, QByteArray("{\"a\":1}"));
    }
    const FilePreferences again(path());
    EXPECT_EQ(again.string(u"text"_s), u"你好 \"x\"\n"_s);
    EXPECT_EQ(again.boolean(u"flag"_s), false);
    EXPECT_EQ(again.real(u"number"_s), 1.0);
    EXPECT_EQ(again.data(u"data"_s), QByteArray("{\"a\":1}"));
    EXPECT_FALSE(again.string(u"flag"_s)) << "a value of another type reads as absent";
    EXPECT_FALSE(again.boolean(u"absent"_s));
}

TEST_F(FilePreferencesTest, isReadableForTheUserAlone) {
    FilePreferences preferences(path());
    preferences.set(u"model_api_key_openAI"_s, u"sk-x"_s);
    EXPECT_EQ(modeOf(path()), 0600U);
    EXPECT_EQ(modeOf(QFileInfo(path()).path()), 0700U);
}

TEST_F(FilePreferencesTest, tightensAFileThatOthersCouldRead) {
    put("{}");
    chmod(QFile::encodeName(path()).constData(), 0644);
    FilePreferences preferences(path());
    preferences.set(u"x"_s, true);
    EXPECT_EQ(modeOf(path()), 0600U);
}

TEST_F(FilePreferencesTest, leavesNothingBesideTheFile) {
    FilePreferences preferences(path());
    for (int i = 0; i < 20; ++i)
        preferences.set(u"x"_s, static_cast<double>(i));
    EXPECT_EQ(
        QDir(QFileInfo(path()).path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
        QStringList{u"preferences.json"_s});
}

TEST_F(FilePreferencesTest, tellsObserversOfEveryChange) {
    FilePreferences preferences(path());
    QStringList told;
    const auto subscription = preferences.changed.subscribe([&](const QString& key) { told << key; });
    preferences.set(u"a"_s, true);
    preferences.set(u"a"_s, true);
    preferences.remove(u"a"_s);
    preferences.remove(u"a"_s);
    EXPECT_EQ(told, (QStringList{u"a"_s, u"a"_s, u"a"_s}));
}

TEST_F(FilePreferencesTest, removalReachesTheFile) {
    put(R"({"a":true,"b":false})");
    FilePreferences(path()).remove(u"a"_s);
    EXPECT_EQ(bytesOf(path()), QByteArray("{\n  \"b\": false\n}\n"));
}

TEST_F(FilePreferencesTest, settingAnEqualValueTouchesNoFile) {
    FilePreferences preferences(path());
    preferences.set(u"a"_s, 2.0);
    QFile::remove(path());
    preferences.set(u"a"_s, 2.0);
    EXPECT_FALSE(QFileInfo::exists(path()));
}

TEST_F(FilePreferencesTest, keepsABrokenFileAsideOnceAndGoesOnWithDefaults) {
    const QByteArray half = R"({"model_api_key_openAI":"sk-precious","x":tr)";
    put(half);
    FilePreferences preferences(path());
    EXPECT_FALSE(preferences.object(u"x"_s));
    EXPECT_EQ(bytesOf(aside()), half);
    EXPECT_EQ(log_.lines(), QStringList{u"Preferences unreadable; kept aside as: "_s + aside()});
    preferences.set(u"x"_s, true);
    EXPECT_EQ(bytesOf(aside()), half);
    EXPECT_EQ(FilePreferences(path()).boolean(u"x"_s), true);
    EXPECT_EQ(log_.lines().size(), 1);
}

TEST_F(FilePreferencesTest, aSecondBrokenFileDoesNotReplaceTheFirstOneKept) {
    put("{first");
    FilePreferences{path()};
    put("{second");
    FilePreferences{path()};
    EXPECT_EQ(bytesOf(aside()), QByteArray("{first"));
    EXPECT_EQ(bytesOf(aside() + u".2"_s), QByteArray("{second"));
}

TEST_F(FilePreferencesTest, refusesWhatIsNotUtf8OrNoObjectOrEmpty) {
    for (const QByteArray& bytes : {QByteArray("{\"a\":\"\xff\xfe\"}"), QByteArray("[]"), QByteArray()}) {
        put(bytes);
        const FilePreferences preferences(path());
        EXPECT_FALSE(preferences.object(u"a"_s));
        EXPECT_EQ(bytesOf(aside()), bytes);
        QFile::remove(aside());
    }
}

TEST_F(FilePreferencesTest, refusesAHundredMegabytesWithoutReadingThem) {
    put("{}");
    ASSERT_TRUE(QFile::resize(path(), 100LL * 1024 * 1024));
    QElapsedTimer clock;
    clock.start();
    const FilePreferences preferences(path());
    EXPECT_LT(static_cast<double>(clock.elapsed()), 1000 * patience);
    EXPECT_EQ(QFileInfo(aside()).size(), 100LL * 1024 * 1024);
    EXPECT_EQ(log_.lines(), QStringList{u"Preferences unreadable; kept aside as: "_s + aside()});
}

TEST_F(FilePreferencesTest, saysOnceThatItCannotWriteAndKeepsTheValues) {
    put("{}");
    FilePreferences preferences(path());
    // A file where the folder should be stops even the system's administrator.
    const QString parent = QFileInfo(path()).path();
    ASSERT_TRUE(QFile::rename(parent, parent + u".away"_s));
    QFile blocker(parent);
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    preferences.set(u"a"_s, true);
    preferences.set(u"b"_s, 1.5);
    EXPECT_EQ(preferences.boolean(u"a"_s), true);
    ASSERT_EQ(log_.lines().size(), 1);
    EXPECT_TRUE(log_.lines().front().startsWith(u"Preferences could not be written: "_s + path()));

    ASSERT_TRUE(blocker.remove());
    preferences.set(u"c"_s, u"x"_s);
    const FilePreferences again(path());
    EXPECT_EQ(again.boolean(u"a"_s), true) << "a later write carries what failed before";
    EXPECT_EQ(again.real(u"b"_s), 1.5);
    EXPECT_EQ(again.string(u"c"_s), u"x"_s);
    EXPECT_EQ(log_.lines().size(), 1);
}

TEST_F(FilePreferencesTest, aRepeatedSetTriesAnUnwrittenValueAgain) {
    QFile blocker(QFileInfo(path()).path());
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    FilePreferences preferences(path());
    preferences.set(u"a"_s, true);
    ASSERT_TRUE(blocker.remove());
    preferences.set(u"a"_s, true);
    EXPECT_EQ(FilePreferences(path()).boolean(u"a"_s), true);
}

TEST_F(FilePreferencesTest, aFullDiskLeavesTheOldFileWhole) {
    put(R"({"old":true})");
    FilePreferences preferences(path());
    {
        const FullDisk full(4096);
        preferences.set(u"big"_s, QString(100000, u'x'));
    }
    EXPECT_EQ(bytesOf(path()), QByteArray(R"({"old":true})"));
    EXPECT_EQ(preferences.string(u"big"_s), QString(100000, u'x'));
    EXPECT_EQ(log_.lines().size(), 1);
    preferences.set(u"small"_s, true);
    EXPECT_EQ(FilePreferences(path()).string(u"big"_s), QString(100000, u'x'));
}

TEST_F(FilePreferencesTest, aFullDiskLeavesAlsoASmallFileWhole) {
    put(R"({"old":true})");
    FilePreferences preferences(path());
    {
        const FullDisk full(8);
        preferences.set(u"small"_s, u"fits into one buffer"_s);
    }
    EXPECT_EQ(bytesOf(path()), QByteArray(R"({"old":true})"));
    EXPECT_EQ(log_.lines().size(), 1);
}

TEST_F(FilePreferencesTest, leavesAFolderInItsPlaceAlone) {
    QDir().mkpath(path());
    FilePreferences preferences(path());
    preferences.set(u"a"_s, true);
    EXPECT_TRUE(QFileInfo(path()).isDir());
    EXPECT_EQ(preferences.boolean(u"a"_s), true);
    EXPECT_FALSE(QFileInfo::exists(aside()));
    EXPECT_EQ(log_.lines(),
              (QStringList{u"Preferences unreadable; not a file: "_s + path(),
                           u"Preferences could not be written: "_s + path() + u" not a file"_s}));
}

TEST_F(FilePreferencesTest, neverWaitsForAPipe) {
    QDir().mkpath(QFileInfo(path()).path());
    ASSERT_EQ(mkfifo(QFile::encodeName(path()).constData(), 0600), 0);
    FilePreferences preferences(path());
    preferences.set(u"a"_s, true);
    struct stat info {};
    ASSERT_EQ(lstat(QFile::encodeName(path()).constData(), &info), 0);
    EXPECT_TRUE(S_ISFIFO(info.st_mode));
}

TEST_F(FilePreferencesTest, writesThroughALinkToItsTarget) {
    const QString target = folder_.filePath(u"dotfiles/preferences.json"_s);
    QDir().mkpath(QFileInfo(target).path());
    QDir().mkpath(QFileInfo(path()).path());
    QFile file(target);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(R"({"a":true})");
    file.close();
    ASSERT_TRUE(QFile::link(u"../dotfiles/preferences.json"_s, path()));

    FilePreferences preferences(path());
    EXPECT_EQ(preferences.boolean(u"a"_s), true);
    preferences.set(u"b"_s, false);
    EXPECT_TRUE(QFileInfo(path()).isSymLink());
    EXPECT_EQ(bytesOf(target), QByteArray("{\n  \"a\": true,\n  \"b\": false\n}\n"));
}

TEST_F(FilePreferencesTest, fillsTheTargetOfADanglingLink) {
    QDir().mkpath(QFileInfo(path()).path());
    const QString target = folder_.filePath(u"later.json"_s);
    ASSERT_TRUE(QFile::link(target, path()));
    FilePreferences(path()).set(u"a"_s, true);
    EXPECT_TRUE(QFileInfo(path()).isSymLink());
    EXPECT_EQ(bytesOf(target), QByteArray("{\n  \"a\": true\n}\n"));
}

TEST_F(FilePreferencesTest, survivesALinkToItself) {
    QDir().mkpath(QFileInfo(path()).path());
    ASSERT_TRUE(QFile::link(path(), path()));
    FilePreferences preferences(path());
    preferences.set(u"a"_s, true);
    EXPECT_EQ(preferences.boolean(u"a"_s), true);
    EXPECT_TRUE(QFileInfo(path()).isSymLink());
}

TEST_F(FilePreferencesTest, readingCostsNoFileAccess) {
    FilePreferences preferences(path());
    for (int i = 0; i < 100; ++i)
        preferences.set(u"key_%1"_s.arg(i), i % 2 == 0);
    QFile::remove(path());
    const QString key = u"key_40"_s;
    constexpr int reads = 200000;
    int hits = 0;
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < reads; ++i)
        hits += preferences.boolean(key) == true ? 1 : 0;
    const double nanoseconds = static_cast<double>(clock.nsecsElapsed()) / reads;
    EXPECT_EQ(hits, reads);
    RecordProperty("nanosecondsPerRead", static_cast<int>(nanoseconds));
    EXPECT_LT(nanoseconds, 10000) << "a bound for sanitizers and loaded machines; about 100 are usual";
}

}  // namespace
}  // namespace veltrin

#include "Data/DataDirectory.h"
#include "Data/JSONStore.h"
#include "support/FullDisk.h"
#include "support/Slowdown.h"
#include "support/fake/FakeSystemEnvironment.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace veltrin {

struct Line {
    QString text;
    Date at;
    friend bool operator==(const Line&, const Line&) = default;
};
template <>
inline constexpr auto recordFields<Line> =
    std::tuple{required(u"text", &Line::text), defaultedToNow(u"at", &Line::at)};

namespace {

using namespace Qt::StringLiterals;

/// Lets nothing be opened while it lives: to a writer, that is a disk that has become read-only.
class ReadOnlyDisk {
public:
    ReadOnlyDisk() {
        getrlimit(RLIMIT_NOFILE, &former_);
        const rlimit none{0, former_.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~ReadOnlyDisk() { setrlimit(RLIMIT_NOFILE, &former_); }
    ReadOnlyDisk(const ReadOnlyDisk&) = delete;
    ReadOnlyDisk& operator=(const ReadOnlyDisk&) = delete;

private:
    rlimit former_{};
};

class JSONStoreTest : public testing::Test {
protected:
    QString folder() const { return folder_.filePath(u"share/Veltrin"_s); }
    QString path() const { return folder() + u"/lines.json"_s; }
    QString aside() const { return path() + u".unreadable"_s; }
    JSONStore<Line> store(JSONStoreOptions options = {}) const {
        return {folder(), u"lines.json"_s, options};
    }

    void put(const QByteArray& bytes) const {
        QDir().mkpath(folder());
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
    QStringList files() const {
        return QDir(folder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }

    const std::vector<Line> lines{{u"一"_s, Date{1795255200}}, {u"two"_s, Date{0}}};
    QTemporaryDir folder_;
};

TEST_F(JSONStoreTest, anAbsentFileIsEmptyAndLoadingMakesNothing) {
    EXPECT_TRUE(store().load().empty());
    EXPECT_FALSE(QFileInfo::exists(folder()));
}

TEST_F(JSONStoreTest, whatIsPersistedIsLoadedByTheNextLaunch) {
    EXPECT_TRUE(store().persist(lines));
    EXPECT_EQ(store().load(), lines);
    EXPECT_EQ(bytesOf(path()), QByteArray(R"([
  {
    "text" : "一",
    "at" : "2026-11-21T10:00:00Z"
  },
  {
    "text" : "two",
    "at" : "1970-01-01T00:00:00Z"
  }
])"));
}

TEST_F(JSONStoreTest, isReadableForTheUserAlone) {
    put("[]");
    chmod(QFile::encodeName(path()).constData(), 0644);
    QDir(folder()).removeRecursively();
    store().persist(lines);
    EXPECT_EQ(modeOf(path()), 0600U);
    EXPECT_EQ(modeOf(folder()), 0700U);
    chmod(QFile::encodeName(path()).constData(), 0644);
    store().persist(lines);
    EXPECT_EQ(modeOf(path()), 0600U) << "a file that others could read is tightened";
    EXPECT_EQ(files(), QStringList{u"lines.json"_s}) << "nothing is left beside it";
}

TEST_F(JSONStoreTest, aFileThatDoesNotDecodeIsEmptyAndKeptAsideAtTheNextWrite) {
    for (const QByteArray& bytes :
         {QByteArray(R"([{"text":"precious","at":"2026-)"), QByteArray(R"([{"at":"2026-11-21T10:00:00Z"}])"),
          QByteArray(R"([{"text":7}])"), QByteArray(R"({"text":"no array"})"),
          QByteArray("[{\"text\":\"\xff\"}]"), QByteArray(), QByteArray("\0\0\0\0", 4)}) {
        put(bytes);
        auto broken = store();
        EXPECT_TRUE(broken.load().empty());
        EXPECT_EQ(files(), QStringList{u"lines.json"_s}) << "loading touches nothing";
        EXPECT_TRUE(broken.persist(lines));
        EXPECT_TRUE(broken.persist({}));
        EXPECT_EQ(bytesOf(aside()), bytes);
        EXPECT_EQ(files(), (QStringList{u"lines.json"_s, u"lines.json.unreadable"_s})) << "once";
        EXPECT_TRUE(store().load().empty());
        QFile::remove(aside());
    }
}

TEST_F(JSONStoreTest, aLaterBrokenFileDoesNotReplaceTheFirstOneKept) {
    for (const QByteArray& bytes : {QByteArray("first"), QByteArray("second")}) {
        put(bytes);
        auto broken = store();
        broken.load();
        broken.persist(lines);
    }
    EXPECT_EQ(bytesOf(aside()), "first");
    EXPECT_EQ(bytesOf(aside() + u".2"_s), "second");
}

TEST_F(JSONStoreTest, aFileThatIsKnownToBeUnreadableIsOverwrittenAsItIs) {
    auto known = store(
        {.written = DateStrategy::iso8601, .read = DateStrategy::referenceDate, .keepsUnreadable = false});
    EXPECT_TRUE(known.persist(lines));
    EXPECT_TRUE(known.load().empty());
    EXPECT_TRUE(known.persist({}));
    EXPECT_EQ(files(), QStringList{u"lines.json"_s});
}

TEST_F(JSONStoreTest, anAbsentDateIsTheMomentOfLoading) {
    put(R"([{"text":"old"}])");
    EXPECT_EQ(store().load(Date{12}), (std::vector<Line>{{u"old"_s, Date{12}}}));
}

TEST_F(JSONStoreTest, aHundredMegabytesAreReadOrRefusedButNeverFatal) {
    QByteArray large = "[{\"text\":\"";
    large += QByteArray(100 * 1024 * 1024, 'x');
    large += "\"}]";
    put(large);
    EXPECT_EQ(store().load().at(0).text.size(), 100 * 1024 * 1024);

    QByteArray bomb("[0");
    bomb += QByteArray(",0").repeated(50 * 1024 * 1024) + "]";
    put(bomb);
    QElapsedTimer clock;
    clock.start();
    EXPECT_TRUE(store().load().empty());
    EXPECT_LT(static_cast<double>(clock.elapsed()), 2000 * patience) << "the first element ends the reading";
}

TEST_F(JSONStoreTest, aFileBeyondTheLimitIsKeptAsideUnread) {
    put("[]");
    ASSERT_TRUE(QFile::resize(path(), StoreFile::maximumSize + 1));
    auto huge = store();
    EXPECT_TRUE(huge.load().empty());
    EXPECT_TRUE(huge.persist(lines));
    EXPECT_EQ(QFileInfo(aside()).size(), StoreFile::maximumSize + 1);
}

TEST_F(JSONStoreTest, aFullDiskLeavesTheOldFileWhole) {
    auto full = store();
    ASSERT_TRUE(full.persist(lines));
    std::vector<Line> many(2000, Line{QString(200, u'字'), {}});
    {
        const FullDisk disk(64 * 1024);
        EXPECT_FALSE(full.persist(many));
    }
    EXPECT_EQ(store().load(), lines);
    EXPECT_EQ(files(), QStringList{u"lines.json"_s});
    EXPECT_TRUE(full.persist(many)) << "the next change carries what failed";
    EXPECT_EQ(store().load(), many);
}

TEST_F(JSONStoreTest, aDiskThatHasBecomeReadOnlyLeavesTheOldFileWhole) {
    auto stuck = store();
    ASSERT_TRUE(stuck.persist(lines));
    {
        const ReadOnlyDisk disk;
        EXPECT_FALSE(stuck.persist({}));
    }
    EXPECT_EQ(store().load(), lines);
    EXPECT_EQ(files(), QStringList{u"lines.json"_s});
    EXPECT_TRUE(stuck.persist({})) << "the next change carries what failed";
    EXPECT_TRUE(store().load().empty());
}

TEST_F(JSONStoreTest, aRecordThatStandsTwiceIsReadTwice) {
    put(R"([{"text":"x","at":"2026-11-21T10:00:00Z"},{"text":"x","at":"2026-11-21T10:00:00Z"}])");
    EXPECT_EQ(store().load(), (std::vector<Line>(2, {u"x"_s, Date{1795255200}})));
}

TEST_F(JSONStoreTest, ofAMemberThatStandsTwiceTheLastCounts) {
    put(R"([{"text":7,"text":"first","at":"2026-11-21T10:00:00Z","text":"last"}])");
    ASSERT_EQ(store().load().size(), 1U);
    EXPECT_EQ(store().load()[0].text, u"last"_s);
}

TEST_F(JSONStoreTest, aTextThatBeginsWithAMarkOfByteOrderComesBack) {
    const std::vector<Line> marked{{u"\ufeffcopied out of a file"_s, Date{0}}};
    ASSERT_TRUE(store().persist(marked));
    EXPECT_EQ(store().load(), marked);
}

TEST_F(JSONStoreTest, aBrokenFileIsKeptOnceAlsoWhenTheWriteAfterItFails) {
    put("broken");
    auto full = store();
    full.load();
    {
        const FullDisk disk(16);
        EXPECT_FALSE(full.persist(lines));
    }
    auto next = store();
    EXPECT_TRUE(next.load().empty());
    EXPECT_TRUE(next.persist(lines));
    EXPECT_EQ(files(), (QStringList{u"lines.json"_s, u"lines.json.unreadable"_s}));
    EXPECT_EQ(bytesOf(aside()), "broken");
}

TEST_F(JSONStoreTest, whatCannotBeEncodedIsNotWritten) {
    ASSERT_TRUE(store().persist(lines));
    EXPECT_FALSE(store().persist({{u"x"_s, Date{1e20}}}));
    EXPECT_EQ(store().load(), lines);
}

TEST_F(JSONStoreTest, aFolderThatIsAFileIsLeftAlone) {
    QDir().mkpath(folder_.filePath(u"share"_s));
    QFile blocker(folder());
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.write("mine");
    blocker.close();
    auto blocked = store();
    EXPECT_TRUE(blocked.load().empty());
    EXPECT_FALSE(blocked.persist(lines));
    EXPECT_EQ(bytesOf(folder()), "mine");
    ASSERT_TRUE(blocker.remove());
    EXPECT_TRUE(blocked.persist(lines)) << "as soon as it can be, the folder is made";
}

TEST_F(JSONStoreTest, aFolderOfSomebodyElseIsReadButNotWritten) {
    if (geteuid() !=
        0) {  // only the administrator can give a folder away; others find one that is not theirs
        EXPECT_FALSE(JSONStore<Line>(u"/usr/share"_s, u"lines.json"_s).persist(lines));
        return;
    }
    ASSERT_TRUE(store().persist(lines));
    ASSERT_EQ(chown(QFile::encodeName(folder()).constData(), 12345, 12345), 0);
    EXPECT_EQ(store().load(), lines);
    EXPECT_FALSE(store().persist({}));
    EXPECT_EQ(store().load(), lines);
}

TEST_F(JSONStoreTest, whatIsNoFileIsMovedAside) {
    QDir().mkpath(path() + u"/inside"_s);
    auto odd = store();
    EXPECT_TRUE(odd.load().empty());
    EXPECT_TRUE(odd.persist(lines));
    EXPECT_EQ(store().load(), lines);
    EXPECT_TRUE(QFileInfo::exists(aside() + u"/inside"_s));
}

TEST_F(JSONStoreTest, aPipeIsNotWaitedFor) {
    QDir().mkpath(folder());
    ASSERT_EQ(mkfifo(QFile::encodeName(path()).constData(), 0600), 0);
    EXPECT_TRUE(store().load().empty());
}

TEST_F(JSONStoreTest, aLinkIsFollowedAndStays) {
    QDir().mkpath(folder());
    const QString target = folder_.filePath(u"elsewhere.json"_s);
    ASSERT_TRUE(QFile::link(target, path()));
    EXPECT_TRUE(store().persist(lines));
    EXPECT_TRUE(QFileInfo(path()).isSymLink());
    EXPECT_NE(bytesOf(target), "no file");
    EXPECT_EQ(store().load(), lines);
}

TEST(DataDirectory, isMadeAtFirstUseForTheUserAlone) {
    const QTemporaryDir home;
    FakeSystemEnvironment environment;
    environment.supportDirectory = home.filePath(u".local/share"_s);
    const QString folder = appSupportDir(environment);
    EXPECT_EQ(folder, environment.supportDirectory + u"/Veltrin"_s);
    struct stat info {};
    ASSERT_EQ(stat(QFile::encodeName(folder).constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0700U);
}

TEST(DataDirectory, aDesktopWithoutAFolderForDataIsFatal) {
    const FakeSystemEnvironment environment;
    EXPECT_DEATH(appSupportDir(environment), "no folder for application data");
}

TEST(DataDirectory, aFolderThatCannotBeMadeIsNoError) {
    const QTemporaryDir home;
    FakeSystemEnvironment environment;
    environment.supportDirectory = home.filePath(u"file"_s);
    QFile file(environment.supportDirectory);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(appSupportDir(environment), environment.supportDirectory + u"/Veltrin"_s);
}

}  // namespace
}  // namespace veltrin

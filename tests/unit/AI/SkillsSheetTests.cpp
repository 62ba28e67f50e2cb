#include "AI/SkillsSheet.h"
#include "support/fake/FakeRunLoop.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

struct SkillsWorld {
    QTemporaryDir home;
    FakeRunLoop runLoop;
    std::vector<std::function<void()>> background;
    std::optional<SkillsSheet> sheet{
        std::in_place, home.filePath(u".claude/skills"_s), runLoop,
        [this](std::function<void()> work) { background.push_back(std::move(work)); }};

    QString put(const QString& name, const QByteArray& bytes) const {
        const QString path = home.filePath(name);
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        return path;
    }
    QString putSkill(const QString& name, const QByteArray& bytes) const {
        return put(u".claude/skills/"_s + name, bytes);
    }
    /// Does the work of the background and delivers it.
    void settle() {
        for (auto& work : std::exchange(background, {}))
            work();
        runLoop.runDue();
    }
    QStringList ids() const {
        QStringList ids;
        for (const auto& item : sheet->items())
            ids << item.id;
        return ids;
    }
};

QString descriptionOf(const QByteArray& text) {
    return SkillsSheet::skill(u"a.md"_s, text, {})->description;
}

TEST(SkillsSheet, readsASkillFromItsFile) {
    const auto skill =
        SkillsSheet::skill(u"code.review.md"_s, "# 标题\n\n  先看测试。 \n再看代码。\n", u"导入"_s);
    ASSERT_TRUE(skill);
    EXPECT_EQ(skill->id, u"code.review"_s);
    EXPECT_EQ(skill->name, u"code.review"_s);
    EXPECT_EQ(skill->description, u"先看测试。"_s);
    EXPECT_EQ(skill->systemPrompt, u"# 标题\n\n  先看测试。 \n再看代码。\n"_s) << "the whole text";
    EXPECT_EQ(skill->source, u"导入"_s);
    EXPECT_FALSE(SkillsSheet::skill(u"a.md"_s, "\xb3\xd7", {})) << "no UTF-8";
}

TEST(SkillsSheet, describesASkillByItsFirstLineThatIsNoHeading) {
    EXPECT_EQ(descriptionOf("# a\n## b\r\n#c"), u"Skills 文件"_s);
    EXPECT_EQ(descriptionOf(""), u"Skills 文件"_s);
    EXPECT_EQ(descriptionOf(" \n\t\n"), u"Skills 文件"_s);
    EXPECT_EQ(descriptionOf("#a\r\nb\r\nc"), u"b"_s);
    EXPECT_EQ(descriptionOf("---\nname: x"), u"---"_s);
    const QByteArray family = "👩‍👩‍👧";
    EXPECT_EQ(descriptionOf(family.repeated(81)), QString::fromUtf8(family.repeated(80)))
        << "characters are counted";
}

TEST(SkillsSheet, listsTheMarkdownFilesOfTheFolder) {
    SkillsWorld world;
    world.putSkill(u"b.md"_s, "乙");
    world.putSkill(u"a.md"_s, "甲");
    world.putSkill(u"c.MD"_s, "丙");
    world.putSkill(u"d.txt"_s, "丁");
    world.putSkill(u".md"_s, "戊");
    world.putSkill(u"bad.md"_s, "\xff");
    world.putSkill(u"folder.md/e.md"_s, "己");
    ASSERT_EQ(mkfifo(QFile::encodeName(world.home.filePath(u".claude/skills/pipe.md"_s)).constData(), 0600),
              0);
    QFile huge(world.home.filePath(u".claude/skills/huge.md"_s));
    ASSERT_TRUE(huge.open(QIODevice::WriteOnly) && huge.resize(100LL * 1024 * 1024));
    world.sheet->scanLocalSkills();
    EXPECT_TRUE(world.sheet->isScanning());
    EXPECT_TRUE(world.sheet->items().empty()) << "off the main thread";
    world.settle();
    EXPECT_FALSE(world.sheet->isScanning());
    EXPECT_EQ(world.ids(), (QStringList{u"a"_s, u"b"_s}));
    EXPECT_EQ(world.sheet->items().front().source, u"~/.claude/skills"_s);
}

TEST(SkillsSheet, findsNothingInAFolderThatIsMissing) {
    SkillsWorld world;
    world.sheet->scanLocalSkills();
    world.settle();
    EXPECT_TRUE(world.sheet->items().empty());
    EXPECT_FALSE(world.sheet->isScanning());
}

TEST(SkillsSheet, scansAnew) {
    SkillsWorld world;
    const QString path = world.putSkill(u"a.md"_s, "甲");
    world.sheet->scanLocalSkills();
    world.sheet->scanLocalSkills();
    EXPECT_EQ(world.background.size(), 1U) << "one scan at a time";
    world.settle();
    QFile::remove(path);
    world.putSkill(u"b.md"_s, "乙");
    world.sheet->scanLocalSkills();
    world.settle();
    EXPECT_EQ(world.ids(), QStringList{u"b"_s});
}

TEST(SkillsSheet, takesInFilesThatTheUserChose) {
    SkillsWorld world;
    world.putSkill(u"a.md"_s, "甲");
    world.sheet->scanLocalSkills();
    world.settle();
    world.sheet->importSkills(
        {world.put(u"z.txt"_s, "子"), world.home.filePath(u"none.md"_s), world.put(u"other/a.md"_s, "新甲")});
    world.settle();
    EXPECT_EQ(world.ids(), (QStringList{u"a"_s, u"z"_s}));
    EXPECT_EQ(world.sheet->items().front().systemPrompt, u"新甲"_s) << "in the place of its namesake";
    world.sheet->scanLocalSkills();
    world.settle();
    EXPECT_EQ(world.ids(), (QStringList{u"a"_s, u"z"_s})) << "what was imported outlasts a scan";
    EXPECT_EQ(world.sheet->items().front().systemPrompt, u"新甲"_s);
}

TEST(SkillsSheet, makesAnAgentOfOneSkill) {
    SkillsWorld world;
    world.putSkill(u"a.md"_s, "甲文");
    world.putSkill(u"b.md"_s, "乙文");
    world.sheet->scanLocalSkills();
    world.settle();
    EXPECT_FALSE(world.sheet->createFromSkills()) << "none is selected";
    world.sheet->toggle(u"b"_s);
    const auto agent = world.sheet->createFromSkills();
    ASSERT_TRUE(agent);
    EXPECT_EQ(agent->name, u"b"_s);
    EXPECT_EQ(agent->systemPrompt, u"## b\n乙文"_s);
    EXPECT_EQ(agent->description, u"从 1 个 Skills 创建"_s);
    EXPECT_EQ(agent->icon, u"sparkles.rectangle.stack"_s);
    EXPECT_EQ(agent->colorHex, u"#DCCBFA"_s);
    EXPECT_EQ(agent->skills, QStringList{u"b"_s});
    EXPECT_EQ(agent->category, u"general"_s);
    EXPECT_FALSE(agent->isBuiltin || agent->isActive);
    EXPECT_EQ(agent->version, 1);
    EXPECT_EQ(agent->createdAt, Date{world.runLoop.wallNow()});
}

TEST(SkillsSheet, makesAnAgentOfSeveralSkillsInTheOrderOfTheList) {
    SkillsWorld world;
    world.putSkill(u"a.md"_s, "甲文\n");
    world.putSkill(u"b.md"_s, "乙文");
    world.putSkill(u"c.md"_s, "丙文");
    world.sheet->scanLocalSkills();
    world.settle();
    for (const QString& id : {u"c"_s, u"b"_s, u"a"_s, u"b"_s})
        world.sheet->toggle(id);
    EXPECT_EQ(world.sheet->selectedCount(), 2);
    const auto agent = world.sheet->createFromSkills();
    ASSERT_TRUE(agent);
    EXPECT_EQ(agent->name, u"Skills Agent"_s);
    EXPECT_EQ(agent->systemPrompt, u"## a\n甲文\n\n\n## c\n丙文"_s);
    EXPECT_EQ(agent->description, u"从 2 个 Skills 创建"_s);
    EXPECT_EQ(agent->skills, (QStringList{u"a"_s, u"c"_s}));
}

TEST(SkillsSheet, countsNoSelectedSkillThatIsGone) {
    SkillsWorld world;
    const QString path = world.putSkill(u"a.md"_s, "甲");
    world.sheet->scanLocalSkills();
    world.settle();
    world.sheet->toggle(u"a"_s);
    QFile::remove(path);
    world.sheet->scanLocalSkills();
    world.settle();
    EXPECT_EQ(world.sheet->selectedCount(), 0);
    EXPECT_FALSE(world.sheet->createFromSkills());
}

TEST(SkillsSheet, mayCloseWhileItScans) {
    SkillsWorld world;
    world.putSkill(u"a.md"_s, "甲");
    world.sheet->scanLocalSkills();
    world.sheet.reset();
    world.settle();
    EXPECT_FALSE(world.sheet);
}

}  // namespace
}  // namespace veltrin

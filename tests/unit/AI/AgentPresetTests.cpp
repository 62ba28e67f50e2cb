#include "AI/AgentPreset.h"
#include "AI/AgentTeamManager.h"
#include "AI/CreateAgentSheet.h"

#include <QRegularExpression>
#include <QSet>

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

void expectPrompt(const QString& prompt, int rules) {
    const QStringList lines = prompt.split(u'\n');
    ASSERT_EQ(lines.size(), rules + 1) << qUtf8Printable(prompt);
    EXPECT_TRUE(lines.front().startsWith(u"你是"_s) && lines.front().endsWith(u'：'));
    for (int rule = 1; rule <= rules; ++rule)
        EXPECT_TRUE(lines[rule].startsWith(QString::number(rule) + u". "_s)) << qUtf8Printable(lines[rule]);
}

bool isColor(const QString& text) {
    static const QRegularExpression pattern(u"^#[0-9A-F]{6}$"_s);
    return pattern.match(text).hasMatch();
}

TEST(AgentPreset, standInTheOrderInWhichTheyAreShown) {
    QStringList ids;
    for (const AgentPreset& preset : AgentTeamManager::presets())
        ids << preset.id;
    EXPECT_EQ(ids,
              (QStringList{u"preset.writer"_s, u"preset.coder"_s, u"preset.analyst"_s, u"preset.creative"_s,
                           u"preset.pm"_s, u"preset.academic"_s, u"preset.ux"_s, u"preset.coach"_s,
                           u"preset.translator"_s, u"preset.product-manager"_s, u"preset.xhs-blogger"_s,
                           u"preset.academic-tutor"_s, u"preset.interview-coach"_s, u"preset.counselor"_s,
                           u"preset.video-director"_s, u"preset.biz-analyst"_s, u"preset.english-teacher"_s,
                           u"preset.legal-advisor"_s}));
}

TEST(AgentPreset, areWhole) {
    QSet<QString> names;
    int number = 0;
    for (const AgentPreset& preset : AgentTeamManager::presets()) {
        SCOPED_TRACE(qUtf8Printable(preset.id));
        names << preset.name;
        EXPECT_FALSE(preset.icon.isEmpty() || preset.description.isEmpty() ||
                     preset.suggestedOutputStyle.isEmpty());
        EXPECT_TRUE(isColor(preset.colorHex));
        EXPECT_NE(preset.category, AgentPresetCategory::all);
        EXPECT_EQ(preset.suggestedSkills.size(), 3);
        expectPrompt(preset.systemPrompt, ++number <= 9 ? 6 : 7);
    }
    EXPECT_EQ(names.size(), 18);
}

TEST(AgentPreset, areFilteredByCategory) {
    const auto count = [](AgentPresetCategory category) { return AgentContents::presets(category).size(); };
    EXPECT_EQ(count(AgentPresetCategory::all), 18U);
    EXPECT_EQ(count(AgentPresetCategory::writing), 2U);
    EXPECT_EQ(count(AgentPresetCategory::coding), 1U);
    EXPECT_EQ(count(AgentPresetCategory::analysis), 3U);
    EXPECT_EQ(count(AgentPresetCategory::creative), 3U);
    EXPECT_EQ(count(AgentPresetCategory::business), 3U);
    EXPECT_EQ(count(AgentPresetCategory::academic), 3U);
    EXPECT_EQ(count(AgentPresetCategory::life), 3U);
}

TEST(AgentPreset, categoriesHaveWords) {
    QStringList words;
    QStringList raw;
    for (const AgentPresetCategory category : allCases<AgentPresetCategory>()) {
        words << displayName(category);
        raw << rawValue(category);
    }
    EXPECT_EQ(words.join(u' '), u"全部 写作 代码 分析 创意 商业 学术 生活"_s);
    EXPECT_EQ(raw.join(u' '), u"all writing coding analysis creative business academic life"_s);
}

TEST(AgentPreset, ofTheFirstAndTheLastRowAreTheWrittenOnes) {
    const AgentPreset& first = AgentTeamManager::presets().front();
    EXPECT_EQ(first.name, u"文案大师"_s);
    EXPECT_EQ(first.icon, u"pencil.line"_s);
    EXPECT_EQ(first.colorHex, u"#FFD7E2"_s);
    EXPECT_EQ(first.suggestedSkills, (QStringList{u"语调调整"_s, u"多版本输出"_s, u"SEO优化"_s}));
    const AgentPreset& last = AgentTeamManager::presets().back();
    EXPECT_EQ(last.name, u"法律顾问"_s);
    EXPECT_EQ(last.icon, u"building.columns.fill"_s);
    EXPECT_EQ(last.colorHex, u"#BFD5C6"_s);
    EXPECT_EQ(last.suggestedOutputStyle, u"严谨规范，法律引用注明条款编号，风险分级标注"_s);
}

TEST(BuiltinAgents, areWholeAndEachItsOwn) {
    const auto agents = AgentContents::builtins(Date{1});
    QSet<QUuid> ids;
    for (const AgentProfile& agent : agents) {
        SCOPED_TRACE(qUtf8Printable(agent.name));
        ids << agent.id;
        EXPECT_TRUE(isColor(agent.colorHex));
        EXPECT_FALSE(agent.icon.isEmpty() || agent.description.isEmpty() || agent.outputStyle.isEmpty());
        EXPECT_TRUE(fromRawValue<AgentPresetCategory>(agent.category));
        expectPrompt(agent.systemPrompt, 5);
    }
    EXPECT_EQ(ids.size(), 6);
    EXPECT_FALSE(ids.contains(QUuid()));
    EXPECT_NE(AgentContents::builtins(Date{1}).front().id, agents.front().id) << "made anew each time";
}

TEST(CreateAgentSheet, beginsBlank) {
    const CreateAgentSheet sheet;
    const AgentProfile agent = sheet.createAgent(Date{7});
    EXPECT_EQ(agent.icon, u"sparkles"_s);
    EXPECT_EQ(agent.colorHex, u"#FFD98A"_s);
    EXPECT_EQ(agent.category, u"general"_s);
    EXPECT_TRUE(agent.name.isEmpty() && agent.systemPrompt.isEmpty());
    EXPECT_FALSE(agent.isBuiltin || agent.isActive);
    EXPECT_EQ(agent.createdAt, Date{7});
    EXPECT_NE(agent.id, sheet.createAgent(Date{7}).id);
}

TEST(CreateAgentSheet, isFilledFromAPreset) {
    CreateAgentSheet sheet(AgentTeamManager::presets()[1]);
    sheet.name += u"二号"_s;
    const AgentProfile agent = sheet.createAgent({});
    EXPECT_EQ(agent.name, u"代码架构师二号"_s);
    EXPECT_EQ(agent.category, u"coding"_s);
    EXPECT_EQ(agent.skills, (QStringList{u"代码审查"_s, u"重构建议"_s, u"测试生成"_s}));
    EXPECT_EQ(agent.outputStyle, u"代码块带语言标注，关键逻辑附简短注释"_s);
    EXPECT_EQ(agent.systemPrompt, AgentTeamManager::presets()[1].systemPrompt);
    EXPECT_EQ(agent.icon, u"chevron.left.forwardslash.chevron.right"_s);
    EXPECT_EQ(agent.colorHex, u"#CFE5FF"_s);
}

}  // namespace
}  // namespace veltrin

#include "AI/AgentStudio.h"
#include "AI/SceneConfirmSheet.h"
#include "AI/SceneLibrary.h"
#include "support/fake/ModelWorld.h"
#include "unit/AI/AgentWorld.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

const SceneConfig& scene(const QString& word) {
    const auto& all = SceneLibrary::shared().allScenes();
    return *std::find_if(all.begin(), all.end(),
                         [&](const SceneConfig& each) { return each.id == u"scene."_s + word; });
}

SceneAgentDef agentDef(const QString& name, const QString& shortcut, int slot,
                       const QString& prompt = u"你是"_s) {
    SceneAgentDef agent;
    agent.name = name;
    agent.systemPrompt = prompt;
    agent.shortcut = shortcut;
    agent.slot = slot;
    return agent;
}

SceneConfig sceneOf(const QString& name, std::vector<SceneAgentDef> agents) {
    SceneConfig made;
    made.id = u"scene."_s + name;
    made.name = name;
    made.agents = std::move(agents);
    return made;
}

QStringList namesOf(const std::vector<AgentProfile>& agents) {
    QStringList names;
    for (const AgentProfile& agent : agents)
        names << agent.name;
    return names;
}

QStringList namesOf(const SceneConfig& config) {
    QStringList names;
    for (const SceneAgentDef& agent : config.agents)
        names << agent.name;
    return names;
}

TEST(ApplyingAScene, createsNothingTheSecondTime) {
    AgentWorld world;
    const SceneApplyResult first = world.manager().applyScene(scene(u"coding"_s));
    EXPECT_EQ(first.summary(), u"场景已配置：6 个新建，0 个复用"_s);
    const auto agents = world.manager().agents();
    const auto assignments = world.manager().shortcutAssignments();
    const SceneApplyResult second = world.manager().applyScene(scene(u"coding"_s));
    EXPECT_EQ(second.summary(), u"场景已配置：0 个新建，6 个复用"_s);
    EXPECT_EQ(world.manager().agents(), agents);
    EXPECT_EQ(world.manager().shortcutAssignments(), assignments);
}

TEST(ApplyingAScene, namesWhatItDidInTheScenesOrder) {
    AgentWorld world;
    const SceneConfig& coding = scene(u"coding"_s);
    const SceneApplyResult first = world.manager().applyScene(coding);
    const SceneApplyResult second = world.manager().applyScene(coding);
    EXPECT_EQ(namesOf(first.created), namesOf(coding));
    EXPECT_EQ(namesOf(second.reused), namesOf(coding));
    for (const SceneApplyResult& result : {first, second}) {
        ASSERT_EQ(result.assignments.size(), coding.agents.size());
        for (std::size_t i = 0; i < coding.agents.size(); ++i) {
            EXPECT_EQ(result.assignments[i].agent, *world.manager().agentNamed(coding.agents[i].name));
            EXPECT_EQ(result.assignments[i].shortcut, coding.agents[i].shortcut);
            EXPECT_EQ(result.assignments[i].slot, coding.agents[i].slot);
        }
    }
}

TEST(ApplyingAScene, putsTheAgentsAtTheHeadInReverseOrder) {
    AgentWorld world;
    const QStringList before = world.names();
    world.manager().applyScene(scene(u"xhs"_s));
    EXPECT_EQ(
        world.names(),
        (QStringList{u"评论区互动"_s, u"标签推荐"_s, u"排版美化"_s, u"标题优化"_s, u"种草文案"_s}) + before);
}

TEST(ApplyingAScene, makesAgentsOfTheDefinitionAndTheScenesName) {
    AgentWorld world;
    world.manager();
    world.runLoop.wallStart += 1000;
    const SceneConfig& email = scene(u"business_email"_s);
    world.manager().applyScene(email);
    for (const SceneAgentDef& definition : email.agents) {
        const AgentProfile agent = *world.manager().agentNamed(definition.name);
        AgentProfile expected = AgentProfile::made(world.now());
        expected.id = agent.id;
        expected.name = definition.name;
        expected.systemPrompt = definition.systemPrompt;
        expected.icon = definition.icon;
        expected.colorHex = definition.colorHex;
        expected.description = definition.description;
        expected.skills = definition.skills;
        expected.outputStyle = definition.outputStyle;
        expected.category = u"商务邮件"_s;
        expected.tags = QStringList{u"商务邮件"_s, u"场景"_s};
        EXPECT_EQ(agent, expected);
        EXPECT_FALSE(agent.id.isNull());
        EXPECT_FALSE(agent.isBuiltin || agent.isActive);
        EXPECT_TRUE(agent.memories.isEmpty());
        EXPECT_FALSE(agent.temperature || agent.topP || agent.maxTokens);
        EXPECT_EQ(agent.createdAt, world.now());
        EXPECT_EQ(agent.updatedAt, world.now());
        EXPECT_EQ(agent.version, 1);
    }
}

TEST(ApplyingAScene, replacesItsSlotsAndLeavesTheOthers) {
    AgentWorld world;
    const QString other = u"产品思维"_s;
    world.manager().assignAgent(world.idOf(u"数据分析"_s), u"optimize"_s, 3);
    world.manager().applyScene(scene(u"business_email"_s));
    EXPECT_EQ(world.slotNames(u"optimize"_s),
              (QStringList{u"邮件润色"_s, u"正式化表达"_s, other, u"数据分析"_s}));
    EXPECT_EQ(world.slotNames(u"translation"_s), QStringList{u"邮件翻译"_s});
    EXPECT_EQ(world.slotNames(u"smartSelect"_s), (QStringList{other, u"邮件摘要"_s}));
    EXPECT_EQ(world.slotNames(u"drag"_s), (QStringList{other, other, other, other}));
    EXPECT_EQ(world.slotNames(u"voice"_s), QStringList{other});

    world.manager().applyScene(scene(u"coding"_s));
    EXPECT_EQ(world.slotNames(u"optimize"_s), namesOf(scene(u"coding"_s)).mid(0, 4));
    EXPECT_EQ(world.slotNames(u"translation"_s), QStringList{u"邮件翻译"_s}) << "the earlier scene's";
    EXPECT_EQ(world.slotNames(u"drag"_s), (QStringList{u"错误分析"_s, other, other, other}));
    EXPECT_EQ(world.manager().agents().size(), 16U) << "agents of an earlier scene stay";
}

TEST(ApplyingAScene, everySceneFillsTheSlotsItNames) {
    AgentWorld world;
    for (const SceneConfig& each : SceneLibrary::shared().allScenes()) {
        EXPECT_EQ(world.manager().applyScene(each).created.size(), each.agents.size());
        for (const SceneAgentDef& agent : each.agents)
            EXPECT_EQ(world.manager().assignedAgent(agent.shortcut, agent.slot)->name, agent.name);
    }
    EXPECT_EQ(world.manager().agents().size(), 78U);
}

TEST(ApplyingAScene, agentsThatShareAnIconAreStillTwo) {
    AgentWorld world;
    world.manager().applyScene(scene(u"daily"_s));
    world.manager().applyScene(scene(u"ai_painting"_s));
    const AgentProfile* file = world.manager().agentNamed(u"文件反推"_s);
    const AgentProfile* prompt = world.manager().agentNamed(u"反推提示词"_s);
    ASSERT_TRUE(file && prompt);
    EXPECT_NE(file->id, prompt->id);
    EXPECT_EQ(file->icon, prompt->icon);
    EXPECT_EQ(world.slotNames(u"drag"_s).front(), u"反推提示词"_s);
}

TEST(ApplyingAScene, scenesWithAnAgentOfOneNameShareTheEarlierOne) {
    AgentWorld world;
    world.manager().applyScene(sceneOf(u"甲"_s, {agentDef(u"共用"_s, u"optimize"_s, 0, u"先来的"_s)}));
    const auto result =
        world.manager().applyScene(sceneOf(u"乙"_s, {agentDef(u"共用"_s, u"drag"_s, 0, u"后来的"_s)}));
    EXPECT_EQ(result.summary(), u"场景已配置：0 个新建，1 个复用"_s);
    EXPECT_EQ(result.reused[0].systemPrompt, u"先来的"_s);
    EXPECT_EQ(result.reused[0].category, u"甲"_s);
    EXPECT_EQ(world.slotNames(u"optimize"_s).front(), u"共用"_s);
    EXPECT_EQ(world.slotNames(u"drag"_s).front(), u"共用"_s);
}

TEST(ApplyingAScene, aNameTwiceInOneSceneIsOneAgent) {
    AgentWorld world;
    const auto result = world.manager().applyScene(
        sceneOf(u"甲"_s, {agentDef(u"共用"_s, u"optimize"_s, 0), agentDef(u"共用"_s, u"optimize"_s, 1)}));
    EXPECT_EQ(result.created.size(), 1U);
    EXPECT_EQ(result.reused.size(), 1U);
    EXPECT_EQ(world.slotNames(u"optimize"_s).mid(0, 2), (QStringList{u"共用"_s, u"共用"_s}));
}

TEST(ApplyingAScene, takesTheFirstAgentOfThatName) {
    AgentWorld world;
    AgentProfile first = world.named(u"共用"_s);
    AgentProfile second = world.named(u"共用"_s);
    world.putAgents({world.named(u"别的"_s), first, second});
    const auto result = world.manager().applyScene(sceneOf(u"甲"_s, {agentDef(u"共用"_s, u"voice"_s, 0)}));
    EXPECT_EQ(result.reused[0].id, first.id);
}

TEST(ApplyingAScene, keepsWhatTheUserChangedAndMissesWhatTheUserRenamed) {
    AgentWorld world;
    const SceneConfig& study = scene(u"study"_s);
    world.manager().applyScene(study);
    AgentProfile changed = *world.manager().agentNamed(u"笔记整理"_s);
    changed.systemPrompt = u"我的写法"_s;
    world.manager().update(changed);
    AgentProfile renamed = *world.manager().agentNamed(u"问答生成"_s);
    renamed.name = u"问答生成 "_s;  // one blank makes it another name
    world.manager().update(renamed);

    const auto result = world.manager().applyScene(study);
    EXPECT_EQ(result.summary(), u"场景已配置：1 个新建，5 个复用"_s);
    EXPECT_EQ(world.manager().agentNamed(u"笔记整理"_s)->systemPrompt, u"我的写法"_s);
    EXPECT_NE(world.idOf(u"问答生成"_s), renamed.id);
    EXPECT_EQ(world.names().front(), u"问答生成"_s);
    EXPECT_TRUE(world.manager().agent(renamed.id)) << "the renamed one stays beside it";
}

TEST(ApplyingAScene, withoutAgentsDoesNothing) {
    AgentWorld world;
    world.manager();
    const QByteArray file = world.file();
    const int writes = world.assignmentWrites();
    const auto result = world.manager().applyScene(sceneOf(u"空"_s, {}));
    EXPECT_TRUE(result.created.empty() && result.reused.empty() && result.assignments.empty());
    EXPECT_EQ(result.summary(), u"场景已配置：0 个新建，0 个复用"_s);
    EXPECT_EQ(world.file(), file);
    EXPECT_EQ(world.assignmentWrites(), writes);
}

TEST(ApplyingAScene, aSlotThatIsNotThereIsPassedOver) {
    AgentWorld world;
    const auto before = world.manager().shortcutAssignments();
    const auto result = world.manager().applyScene(
        sceneOf(u"甲"_s, {agentDef(u"高"_s, u"optimize"_s, 4), agentDef(u"低"_s, u"drag"_s, -1)}));
    EXPECT_EQ(world.manager().shortcutAssignments(), before);
    EXPECT_EQ(result.created.size(), 2U);
    EXPECT_EQ(result.assignments.size(), 2U);
}

TEST(ApplyingAScene, isThereAfterARestart) {
    AgentWorld world;
    world.manager().applyScene(scene(u"product"_s));
    const auto agents = world.manager().agents();
    const auto assignments = world.manager().shortcutAssignments();
    world.restart();
    EXPECT_EQ(world.manager().agents(), agents);
    EXPECT_EQ(world.manager().shortcutAssignments(), assignments);
}

TEST(ApplyingAScene, theStudioSaysWhatItDid) {
    AgentWorld world;
    ModelWorld model;
    AgentStudio studio(world.manager(), model.client());
    QStringList shown;
    const auto subscription = studio.toasts.subscribe([&](const StudioToast& toast) { shown << toast.text; });
    studio.applyScene(scene(u"coding"_s));
    studio.applyScene(scene(u"coding"_s));
    EXPECT_EQ(shown, (QStringList{u"场景已配置：6 个新建，0 个复用"_s, u"场景已配置：0 个新建，6 个复用"_s}));
    EXPECT_TRUE(model.http.requests.empty());
}

TEST(SceneConfirmSheet, tellsWhereEachAgentGoesAndWhichAreThere) {
    AgentWorld world;
    world.manager().applyScene(sceneOf(u"甲"_s, {agentDef(u"知识提炼"_s, u"voice"_s, 0)}));
    const SceneConfig& study = scene(u"study"_s);
    const auto rows = SceneConfirmSheet::rows(study, world.manager());
    ASSERT_EQ(rows.size(), study.agents.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i].name, study.agents[i].name);
        EXPECT_EQ(rows[i].isReused, rows[i].name == u"知识提炼"_s);
        EXPECT_EQ(rows[i].shortcut, study.agents[i].shortcut);
    }
    EXPECT_EQ(rows[3].target(u"智能优化"_s), u"→ 智能优化 槽位 4"_s);
    EXPECT_EQ(rows[5].target(u"智能拖拽"_s), u"→ 智能拖拽 槽位 1"_s);
    EXPECT_EQ(world.manager().agents().size(), 7U) << "looking changes nothing";
}

}  // namespace
}  // namespace veltrin

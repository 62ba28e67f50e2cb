#include "AI/AgentCard.h"
#include "AI/AgentStudio.h"
#include "support/FullDisk.h"
#include "support/fake/ModelWorld.h"
#include "unit/AI/AgentWorld.h"

#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

struct StudioWorld : ModelWorld {
    AgentWorld agents;
    std::optional<AgentStudio> studio{std::in_place, agents.manager(), client()};
    std::vector<StudioToast> toasts;
    Subscription subscription =
        studio->toasts.subscribe([this](const StudioToast& toast) { toasts.push_back(toast); });

    StudioToast toast() { return toasts.empty() ? StudioToast() : toasts.back(); }
    QString path(const QString& name) const { return agents.folder.filePath(name); }
};

TEST(AgentStudio, takesInWhatASheetHasMade) {
    StudioWorld world;
    world.studio->create(world.agents.named(u"甲"_s));
    EXPECT_EQ(world.toast(), (StudioToast{u"「甲」已创建"_s, u"sparkles"_s}));
    EXPECT_EQ(world.agents.names().back(), u"甲"_s);
    EXPECT_TRUE(world.agents.file().contains("甲"));
}

TEST(AgentStudio, makesAnAgentOfASentenceForASlot) {
    StudioWorld world;
    world.http.holding = true;
    world.studio->generateForReplace(u" "_s);
    EXPECT_FALSE(world.studio->isGenerating());
    world.studio->generateForReplace(u"写诗"_s);
    world.studio->generateForReplace(u"写诗"_s);
    EXPECT_TRUE(world.studio->isGenerating());
    EXPECT_EQ(world.http.requests.size(), 1U);
    world.studio->replace(u"optimize"_s, 2, u"优化"_s);
    EXPECT_EQ(world.agents.names().size(), 6) << "there is none yet";
    world.answerLocally(u"{\"name\":\"诗人\"}"_s);
    world.http.release();
    EXPECT_FALSE(world.studio->isGenerating());
    ASSERT_EQ(world.studio->generatedAgent()->name, u"诗人"_s);
    EXPECT_EQ(world.agents.names().size(), 6) << "it is shown before it is taken";
    world.studio->replace(u"optimize"_s, 2, u"优化 3"_s);
    EXPECT_EQ(world.toast(), (StudioToast{u"「诗人」已创建并分配到优化 3"_s, {}}));
    EXPECT_EQ(world.agents.slotNames(u"optimize"_s)[2], u"诗人"_s);
    EXPECT_FALSE(world.studio->generatedAgent());
    world.agents.restart();
    EXPECT_EQ(world.agents.slotNames(u"optimize"_s)[2], u"诗人"_s);
}

TEST(AgentStudio, saysWhyNoAgentWasMade) {
    StudioWorld world;
    world.http.fail(UrlError::timedOut, u"太慢"_s);
    world.studio->generateForReplace(u"写诗"_s);
    EXPECT_EQ(world.toast(), (StudioToast{u"生成失败: 太慢"_s, {}}));
    EXPECT_FALSE(world.studio->isGenerating() || world.studio->generatedAgent());
}

TEST(AgentStudio, improvesAnAgent) {
    StudioWorld world;
    const AgentProfile agent = world.agents.manager().agents().front();
    world.answerLocally(u"{\"systemPrompt\":\"更好\"}"_s);
    world.studio->optimize(agent.id);
    EXPECT_EQ(world.toast(), (StudioToast{u"优化完成"_s, {}}));
    EXPECT_EQ(world.agents.manager().agents().front().systemPrompt, u"更好"_s);
    EXPECT_EQ(world.agents.manager().agents().front().version, 2);
    world.answerLocally(u"没有"_s);
    world.studio->optimize(agent.id);
    EXPECT_EQ(world.toast(), (StudioToast{u"优化完成"_s, {}}));
    EXPECT_EQ(world.agents.manager().agents().front().systemPrompt, u"更好"_s);
    EXPECT_EQ(world.agents.manager().agents().front().version, 3) << "an update all the same";
    world.http.fail(UrlError::timedOut, u"太慢"_s);
    world.studio->optimize(agent.id);
    EXPECT_EQ(world.toast(), (StudioToast{u"优化失败: 太慢"_s, {}}));
    EXPECT_EQ(world.agents.manager().agents().front().version, 3);
}

TEST(AgentStudio, keepsWhatTheUserChangesWhileAnAgentIsImproved) {
    StudioWorld world;
    AgentProfile agent = world.agents.manager().agents().front();
    world.http.holding = true;
    world.studio->optimize(agent.id);
    world.studio->optimize(agent.id);
    EXPECT_TRUE(world.studio->isOptimizing());
    EXPECT_EQ(world.http.requests.size(), 1U);
    agent.name = u"新名"_s;
    world.agents.manager().update(agent);
    world.answerLocally(u"{\"systemPrompt\":\"更好\"}"_s);
    world.http.release();
    EXPECT_EQ(world.agents.manager().agents().front().name, u"新名"_s);
    EXPECT_EQ(world.agents.manager().agents().front().systemPrompt, u"更好"_s);
    EXPECT_EQ(world.agents.manager().agents().front().version, 3);
}

TEST(AgentStudio, improvesNoAgentThatIsGone) {
    StudioWorld world;
    const QUuid id = world.agents.manager().agents().front().id;
    world.http.holding = true;
    world.studio->optimize(id);
    world.agents.manager().remove(id);
    world.answerLocally(u"{\"systemPrompt\":\"更好\"}"_s);
    world.http.release();
    EXPECT_EQ(world.agents.names().size(), 5);
    world.studio->optimize(id);
    EXPECT_FALSE(world.studio->isOptimizing());
}

TEST(AgentStudio, mayCloseWhileTheModelAnswers) {
    StudioWorld world;
    world.http.holding = true;
    world.studio->generateForReplace(u"写诗"_s);
    world.studio->optimize(world.agents.manager().agents().front().id);
    world.studio.reset();
    for (int i = 0; i < 2; ++i) {
        world.answerLocally(u"{\"systemPrompt\":\"更好\"}"_s);
        world.http.release();
    }
    EXPECT_TRUE(world.toasts.empty());
    EXPECT_EQ(world.agents.manager().agents().front().version, 1);
}

TEST(AgentStudio, exportsACardAndImportsIt) {
    StudioWorld world;
    const AgentProfile agent = world.agents.manager().agents()[2];
    const QString path = world.path(AgentCard::fileName(agent));
    world.studio->exportAgent(agent, path);
    EXPECT_EQ(world.toast(), (StudioToast{u"已导出到 "_s + path, {}}));
    world.studio->handleImport(path);
    EXPECT_EQ(world.toast(), (StudioToast{u"已导入「创意写作」"_s, u"square.and.arrow.down"_s}));
    EXPECT_EQ(world.agents.names().front(), u"创意写作"_s);
}

TEST(AgentStudio, saysWhyACardWasNotExported) {
    StudioWorld world;
    AgentProfile agent = world.agents.manager().agents().front();
    world.studio->exportAgent(agent, world.path(u"missing/a.json"_s));
    EXPECT_EQ(world.toast().text, u"保存失败"_s);
    world.studio->exportAgent(agent, world.agents.folder.path());
    EXPECT_EQ(world.toast().text, u"保存失败"_s);
    ASSERT_EQ(mkfifo(QFile::encodeName(world.path(u"pipe"_s)).constData(), 0600), 0);
    world.studio->exportAgent(agent, world.path(u"pipe"_s));
    EXPECT_EQ(world.toast().text, u"保存失败"_s);
    {
        const FullDisk full(10);
        world.studio->exportAgent(agent, world.path(u"a.json"_s));
    }
    EXPECT_EQ(world.toast().text, u"保存失败"_s);
    agent.temperature = std::numeric_limits<double>::infinity();
    world.studio->exportAgent(agent, world.path(u"b.json"_s));
    EXPECT_EQ(world.toast().text, u"导出失败"_s);
    EXPECT_FALSE(QFileInfo::exists(world.path(u"b.json"_s)));
}

TEST(AgentStudio, saysWhyACardWasNotImported) {
    StudioWorld world;
    const auto import = [&](const QString& name) {
        world.studio->handleImport(world.path(name));
        return world.toast().text;
    };
    const auto put = [&](const QString& name, qint64 size) {
        QFile file(world.path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write("[]") == 2 && file.resize(size));
    };
    EXPECT_EQ(import(u"none.json"_s), u"无法访问文件"_s);
    put(u"bad.json"_s, 2);
    EXPECT_EQ(import(u"bad.json"_s), u"无法解析 Agent Card 文件"_s);
    put(u"huge.json"_s, 100LL * 1024 * 1024);
    EXPECT_EQ(import(u"huge.json"_s), u"读取文件失败: 文件过大"_s);
    EXPECT_EQ(import(u"."_s), u"读取文件失败: 不是可读取的文件"_s);
    ASSERT_EQ(mkfifo(QFile::encodeName(world.path(u"pipe"_s)).constData(), 0600), 0);
    EXPECT_EQ(import(u"pipe"_s), u"读取文件失败: 不是可读取的文件"_s);
    EXPECT_EQ(world.agents.names().size(), 6);
}

}  // namespace
}  // namespace veltrin

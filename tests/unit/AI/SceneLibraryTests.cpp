#include "AI/AgentRuntimeContract.h"
#include "AI/SceneLibrary.h"
#include "Foundation/Characters.h"
#include "Foundation/Resource.h"
#include "support/Golden.h"
#include "support/RecordLaws.h"

#include <QMap>
#include <QRegularExpression>
#include <QSet>

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

const std::vector<SceneConfig>& scenes() {
    return SceneLibrary::shared().allScenes();
}

template <typename Check>
void forEveryAgent(const Check& check) {
    for (const SceneConfig& scene : scenes()) {
        for (const SceneAgentDef& agent : scene.agents) {
            SCOPED_TRACE((scene.id + u' ' + agent.name).toStdString());
            check(scene, agent);
        }
    }
}

/// The three prompts whose wording is fixed, by the agent's name.
QMap<QString, QString> fixedPrompts() {
    QMap<QString, QString> prompts;
    for (const QString& each : golden(u"scene-prompts"_s).split(u"\n\n"_s))
        prompts.insert(each.section(u'\n', 0, 0), each.section(u'\n', 1));
    return prompts;
}

TEST(SceneLibrary, holdsThirteenScenesWithSeventyTwoAgents) {
    std::vector<std::size_t> counts;
    for (const SceneConfig& scene : scenes())
        counts.push_back(scene.agents.size());
    EXPECT_EQ(counts, (std::vector<std::size_t>{5, 5, 6, 6, 6, 4, 6, 5, 6, 5, 6, 6, 6}));
}

TEST(SceneLibrary, isTheListThatIsWrittenDown) {
    QStringList lines;
    for (const SceneConfig& scene : scenes()) {
        lines << QStringList{scene.id, scene.name, scene.icon, scene.colorHex, scene.description}.join(u'\t');
        for (const SceneAgentDef& agent : scene.agents) {
            lines << QStringList{agent.name, agent.shortcut, QString::number(agent.slot),
                                 agent.icon, agent.colorHex, agent.outputStyle}
                         .join(u'\t');
        }
    }
    EXPECT_EQ(lines, golden(u"scenes"_s).split(u'\n'));
}

TEST(SceneLibrary, isBuiltOnce) {
    EXPECT_EQ(&SceneLibrary::shared(), &SceneLibrary::shared());
    EXPECT_EQ(scenes().data(), scenes().data());
}

TEST(SceneLibrary, namesEverySceneAndEveryAgentOnce) {
    QSet<QString> ids;
    QSet<QString> sceneNames;
    QSet<QString> agentNames;
    for (const SceneConfig& scene : scenes()) {
        EXPECT_TRUE(scene.id.startsWith(u"scene."_s));
        ids.insert(scene.id);
        sceneNames.insert(scene.name);
    }
    forEveryAgent([&](const SceneConfig&, const SceneAgentDef& agent) {
        EXPECT_FALSE(agentNames.contains(agent.name));
        agentNames.insert(agent.name);
    });
    EXPECT_EQ(ids.size(), 13);
    EXPECT_EQ(sceneNames.size(), 13);
}

TEST(SceneLibrary, assignsOnlySlotsThatAreThereAndEachOnce) {
    const QMap<QString, int> slotsInUse{
        {u"optimize"_s, 4}, {u"smartSelect"_s, 2}, {u"drag"_s, 1}, {u"translation"_s, 1}};
    for (const SceneConfig& scene : scenes()) {
        QSet<QString> taken;
        for (const SceneAgentDef& agent : scene.agents) {
            EXPECT_GE(agent.slot, 0);
            EXPECT_LT(agent.slot, slotsInUse.value(agent.shortcut)) << agent.name.toStdString();
            taken.insert(agent.shortcut + QString::number(agent.slot));
        }
        EXPECT_EQ(static_cast<std::size_t>(taken.size()), scene.agents.size()) << scene.id.toStdString();
    }
}

TEST(SceneLibrary, fillsEveryFieldOfEveryAgent) {
    static const QRegularExpression colour(u"^#[0-9A-F]{6}$"_s);
    static const QRegularExpression symbol(u"^[a-z0-9.]+$"_s);
    QSet<QString> descriptions;
    QSet<QString> styles;
    forEveryAgent([&](const SceneConfig&, const SceneAgentDef& agent) {
        EXPECT_TRUE(colour.match(agent.colorHex).hasMatch());
        EXPECT_TRUE(symbol.match(agent.icon).hasMatch());
        EXPECT_FALSE(agent.description.contains(u'\n'));
        EXPECT_TRUE(agent.description.endsWith(u'。'));
        EXPECT_GE(Characters::count(agent.description), 12);
        EXPECT_LE(Characters::count(agent.description), 40);
        descriptions.insert(agent.description);
        styles.insert(agent.outputStyle);
        for (const QString& text : {agent.name, agent.description, agent.outputStyle, agent.systemPrompt})
            EXPECT_EQ(text, text.trimmed());
    });
    EXPECT_EQ(descriptions.size(), 72);
    EXPECT_EQ(styles.size(), 72);
}

TEST(SceneLibrary, givesEveryAgentThreeSkillsOfItsOwn) {
    QSet<QString> skills;
    forEveryAgent([&](const SceneConfig&, const SceneAgentDef& agent) {
        EXPECT_EQ(agent.skills.size(), 3);
        for (const QString& skill : agent.skills) {
            EXPECT_GE(Characters::count(skill), 4);
            EXPECT_LE(Characters::count(skill), 8);
            EXPECT_FALSE(skills.contains(skill)) << skill.toStdString();
            skills.insert(skill);
        }
    });
    const auto skillsOf = [](const QString& name) {
        QStringList found;
        forEveryAgent([&](const SceneConfig&, const SceneAgentDef& agent) {
            if (agent.name == name) found = agent.skills;
        });
        return found;
    };
    EXPECT_EQ(skillsOf(u"代码审查"_s), (QStringList{u"代码审查"_s, u"安全分析"_s, u"性能诊断"_s}));
    EXPECT_EQ(skillsOf(u"学习资料反推"_s), (QStringList{u"考试分析"_s, u"知识体系反推"_s, u"备考策略"_s}));
}

TEST(SceneLibrary, writesEveryPromptToOnePattern) {
    QSet<QString> rules;
    forEveryAgent([&](const SceneConfig&, const SceneAgentDef& agent) {
        const QString& prompt = agent.systemPrompt;
        EXPECT_GE(Characters::count(prompt), 150);
        EXPECT_LE(Characters::count(prompt), 300);
        const QStringList lines = prompt.split(u'\n');
        ASSERT_EQ(lines.size(), 8);
        EXPECT_TRUE(lines[0].startsWith(u"你是"_s));
        EXPECT_TRUE(lines[0].endsWith(u'。'));
        EXPECT_EQ(lines[1], u"规则："_s);
        for (int number = 1; number <= 6; ++number) {
            const QString& line = lines[number + 1];
            const QString start = QString::number(number) + u". "_s;
            EXPECT_TRUE(line.startsWith(start)) << line.toStdString();
            EXPECT_FALSE(line.endsWith(u'。')) << line.toStdString();
            EXPECT_GE(Characters::count(line), 10) << line.toStdString();
            const QString rule = line.mid(start.size());
            EXPECT_FALSE(rules.contains(rule)) << rule.toStdString();
            rules.insert(rule);
        }
    });
}

TEST(SceneLibrary, keepsTheFixedPromptsToTheCharacter) {
    const auto prompts = fixedPrompts();
    ASSERT_EQ(prompts.size(), 3);
    int found = 0;
    forEveryAgent([&](const SceneConfig&, const SceneAgentDef& agent) {
        if (!prompts.contains(agent.name)) return;
        ++found;
        EXPECT_EQ(agent.systemPrompt, prompts.value(agent.name));
    });
    EXPECT_EQ(found, 3);
}

/// Free text is compiled by the words in it: a prompt that mentions a form in passing is replaced by a stock
/// instruction. So no wording of ours may change what an agent's name, style and scene say it is.
TEST(SceneLibrary, noWordingTurnsAnAgentIntoSomethingElse) {
    const auto fixed = fixedPrompts();
    forEveryAgent([&](const SceneConfig& scene, const SceneAgentDef& agent) {
        if (fixed.contains(agent.name)) return;
        const QStringList tags{scene.name, u"场景"_s};
        const auto byName =
            AgentRuntimeContract::build(agent.name, {}, {}, {}, agent.outputStyle, scene.name, tags);
        const auto whole = AgentRuntimeContract::build(agent.name, agent.description, agent.systemPrompt,
                                                       agent.skills, agent.outputStyle, scene.name, tags);
        const bool open =
            byName.effect == AgentTransformEffect::none || byName.effect == AgentTransformEffect::custom;
        if (open) {
            EXPECT_EQ(whole.instruction, agent.systemPrompt) << rawValue(whole.effect).toStdString();
        } else {
            EXPECT_EQ(whole.effect, byName.effect) << rawValue(whole.effect).toStdString();
        }
    });
}

TEST(SceneConfig, keepsTheLawsOfRecords) {
    expectRecordLaws<SceneAgentDef>();
    expectRecordLaws<SceneConfig>();
}

TEST(SceneConfig, isWrittenAsItsFileReads) {
    for (const SceneConfig& scene : scenes())
        EXPECT_EQ(*writeRecord(scene), Resource::json(u"scenes/%1.json"_s.arg(scene.id.mid(6))));
}

}  // namespace
}  // namespace veltrin

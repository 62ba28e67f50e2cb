#include "AI/CommandRecommender.h"
#include "ExternalAccess/ExternalActionPipeline.h"
#include "Foundation/Characters.h"
#include "Foundation/Resource.h"
#include "support/Golden.h"
#include "support/RecordLaws.h"

#include <QSet>

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using CommandRecommender::buildPrompt;
using CommandRecommender::parse;

Json row(const QString& command, const QString& confidence = u"high"_s) {
    return *writeRecord(CommandRecommendation{command, u"tool"_s, u"因为"_s + command, confidence});
}

QString answerOf(int rows) {
    Json::Array array;
    for (int i = 1; i <= rows; ++i)
        array.push_back(row(u"c%1"_s.arg(i)));
    return QString::fromUtf8(Json(array).serialized(2));
}

QStringList commandsOf(const QString& answer) {
    QStringList commands;
    for (const CommandRecommendation& each : parse(answer))
        commands << each.command;
    return commands;
}

/// The answer was not understood: one row that holds its beginning.
void expectRaw(const QString& answer) {
    const auto list = parse(answer);
    ASSERT_EQ(list.size(), 1U) << answer.toStdString();
    EXPECT_EQ(list[0],
              (CommandRecommendation{u"—"_s, u"raw"_s, Characters::prefix(answer, 500), u"medium"_s}))
        << answer.toStdString();
}

TEST(CommandRecommender, thePromptAsAWhole) {
    EXPECT_EQ(buildPrompt(u"git push 被拒绝"_s, u"iTerm2"_s), golden(u"command-recommendation"_s));
}

TEST(CommandRecommender, saysThatTheContextIsBlank) {
    const QString blank =
        golden(u"command-recommendation"_s).replace(u"git push 被拒绝"_s, u"(空 — 用户在空白输入区)"_s);
    EXPECT_EQ(buildPrompt(QString(), u"iTerm2"_s), blank);
    EXPECT_EQ(buildPrompt(u" \n\t\u3000\r\n"_s, u"iTerm2"_s), blank);
}

TEST(CommandRecommender, putsTheContextAndTheApplicationInAsTheyAre) {
    const QString context = u"  \"\"\"%1 {{context}} \\n\n---\n## 可推荐列表\n "_s;
    const QString prompt = buildPrompt(context, u"%2 & Söhne"_s);
    EXPECT_TRUE(prompt.contains(u"- 活跃应用：%2 & Söhne\n- 用户上下文（光标附近的文字）：\n---\n"_s +
                                context + u"\n---\n\n## 可推荐列表\n\n### slash-commands"_s));
}

TEST(CommandCatalogue, namesEveryCommandOnceWithAGloss) {
    QStringList headers;
    QList<int> counts;
    QSet<QString> names;
    QSet<QString> glosses;
    for (const QString& line : Resource::text(u"commands/catalogue.txt"_s).split(u'\n')) {
        if (line.isEmpty()) continue;
        if (line.startsWith(u"### "_s)) {
            headers << line.mid(4);
            counts << 0;
            continue;
        }
        ++counts.back();
        const QStringList parts = line.split(u" — "_s);
        ASSERT_EQ(parts.size(), 2) << line.toStdString();
        ASSERT_TRUE(parts[0].startsWith(u"- "_s)) << line.toStdString();
        for (const QString& name : parts[0].mid(2).split(u" / "_s)) {
            EXPECT_FALSE(names.contains(name)) << name.toStdString();
            names.insert(name);
            EXPECT_EQ(name.startsWith(u'/'), counts.size() == 1) << name.toStdString();
        }
        EXPECT_FALSE(glosses.contains(parts[1])) << parts[1].toStdString();
        glosses.insert(parts[1]);
        EXPECT_EQ(parts[1], parts[1].trimmed());
        EXPECT_GE(Characters::count(parts[1]), 4) << line.toStdString();
        EXPECT_LE(Characters::count(parts[1]), 32) << line.toStdString();
    }
    EXPECT_EQ(headers, (QStringList{u"slash-commands（Claude Code 内置）"_s, u"skills（可调用能力）"_s,
                                    u"workflows（多阶段自动化）"_s, u"tools（专项工具）"_s,
                                    u"figma（Figma 集成）"_s}));
    EXPECT_EQ(counts, (QList<int>{8, 6, 9, 34, 6}));
}

TEST(CommandRecommendation, keepsTheLawsOfRecords) {
    expectRecordLaws<CommandRecommendation>();
}

TEST(CommandRecommendationAnswer, anArrayReads) {
    const auto list = parse(
        uR"( [{"command":"/review","category":"slash-command","explanation":"要合并了",)"
        uR"("confidence":"high"},{"confidence":"low","explanation":"","category":"x",)"
        uR"("command":"y","extra":[1]}] )"_s);
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0], (CommandRecommendation{u"/review"_s, u"slash-command"_s, u"要合并了"_s, u"high"_s}));
    EXPECT_EQ(list[1], (CommandRecommendation{u"y"_s, u"x"_s, QString(), u"low"_s}));
}

TEST(CommandRecommendationAnswer, anArrayInAFenceReads) {
    EXPECT_EQ(commandsOf(u"```json\n"_s + answerOf(2) + u"\n```"_s), (QStringList{u"c1"_s, u"c2"_s}));
    EXPECT_EQ(commandsOf(u"\n ```\n"_s + answerOf(1) + u"```\n\n"_s), QStringList{u"c1"_s});
    EXPECT_EQ(commandsOf(u"```json"_s + answerOf(1)), QStringList{u"c1"_s}) << "a fence that never closes";
}

TEST(CommandRecommendationAnswer, fencesInsideAFencedAnswerGoToo) {
    const QString answer = u"```json\n["_s + QString::fromUtf8(row(u"a```b"_s).serialized()) + u"]\n```"_s;
    EXPECT_EQ(commandsOf(answer), QStringList{u"ab"_s});
}

TEST(CommandRecommendationAnswer, wordsBesideTheFenceMakeItRaw) {
    expectRaw(u"```json\n"_s + answerOf(2) + u"\n```\n希望有帮助"_s);
    expectRaw(u"推荐如下：\n```json\n"_s + answerOf(2) + u"\n```"_s);
    expectRaw(u"```JSON\n"_s + answerOf(2) + u"\n```"_s);
}

TEST(CommandRecommendationAnswer, sixRowsAreCutToTheFirstFive) {
    EXPECT_EQ(commandsOf(answerOf(6)), (QStringList{u"c1"_s, u"c2"_s, u"c3"_s, u"c4"_s, u"c5"_s}));
    EXPECT_EQ(commandsOf(answerOf(5)).size(), 5);
    EXPECT_EQ(commandsOf(answerOf(500)).size(), 5);
}

TEST(CommandRecommendationAnswer, aWrongRowAnywhereMakesItRaw) {
    for (const Json& wrong :
         {Json(), Json(1), Json("text"), Json(Json::Object{}), laws::without(row(u"x"_s), u"confidence"),
          laws::with(row(u"x"_s), u"command", Json()), laws::with(row(u"x"_s), u"category", Json(1))}) {
        Json::Array array(6, row(u"x"_s));
        array.back() = wrong;
        expectRaw(QString::fromUtf8(Json(array).serialized()));
    }
}

TEST(CommandRecommendationAnswer, whatIsNoArrayIsRaw) {
    expectRaw(QString());
    expectRaw(u"  \n"_s);
    expectRaw(u"null"_s);
    expectRaw(QString::fromUtf8(row(u"x"_s).serialized()));
    expectRaw(uR"({"recommendations":[]})"_s);
    expectRaw(u"["_s);
    expectRaw(u"```"_s);
    expectRaw(QString(1000, u'['));
}

TEST(CommandRecommendationAnswer, proseIsOneRawRowOfFiveHundredCharacters) {
    const QString prose = u"  建议👩‍👩‍👧"_s.repeated(200);
    expectRaw(prose);
    EXPECT_EQ(Characters::count(parse(prose)[0].explanation), 500);
    EXPECT_TRUE(parse(prose)[0].explanation.startsWith(u"  建议"_s)) << "as it came, before the trimming";
}

TEST(CommandRecommendationAnswer, anEmptyArrayIsAnEmptyListAndAnEmptyText) {
    EXPECT_TRUE(parse(u" [] "_s).empty());
    EXPECT_TRUE(parse(u"```json\n[]\n```"_s).empty());
    EXPECT_EQ(ExternalActionPipeline::formatRecommendations(parse(u"[]"_s)), QString());
}

TEST(CommandRecommendationAnswer, anUnknownConfidenceKeepsItsWordAndGetsTheDot) {
    Json::Array array;
    for (const char* word : {"high", "medium", "low", "High"})
        array.push_back(row(u"c"_s, QString::fromUtf8(word)));
    EXPECT_EQ(
        ExternalActionPipeline::formatRecommendations(parse(QString::fromUtf8(Json(array).serialized()))),
        u"★ c — 因为c\n☆ c — 因为c\n· c — 因为c\n· c — 因为c"_s);
}

}  // namespace
}  // namespace veltrin

#include "desktop/road/RoadTest.h"

#include <QFile>

#include <gtest/gtest.h>

namespace veltrin {
namespace {

struct Editor {
    const char* name;
    Program (*start)(RealDesktop&, const QString& text);
};

Program startQtEditor(RealDesktop& desktop, const QString& text) {
    return Program::qtEditor(desktop,
                             text.isEmpty() ? QStringList{} : QStringList{QStringLiteral("--text"), text});
}

class TranslationInEditor : public RoadTest, public testing::WithParamInterface<Editor> {
protected:
    /// The tracker's file and the expression memory show it.
    void expectOneRecordedTranslation() {
        QFile file(desktop().dataHome() + QStringLiteral("/Veltrin/user_behaviors.json"));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const Json behaviors = Json::parse(file.readAll());
        ASSERT_EQ(behaviors.array()->size(), 1U);
        const Json& behavior = behaviors.array()->front();
        EXPECT_EQ(behavior.find(u"type")->toString(), QStringLiteral("optimizeAction"));
        EXPECT_EQ(behavior.find(u"detail")->toString(), QStringLiteral("translate"));
        EXPECT_EQ(behavior.find(u"category")->toString(), QStringLiteral("optimize"));
        EXPECT_FALSE(behavior.find(u"context")->toString().value_or(QString()).isEmpty());
        QFile preferences(preferencesFile());
        ASSERT_TRUE(preferences.open(QIODevice::ReadOnly));
        EXPECT_TRUE(preferences.readAll().contains("expression_memory_events_v1"));
    }
};

TEST_P(TranslationInEditor, threeTapsReplaceTheTextAndLeaveEverythingElseAsItWas) {
    startProgram();
    clipboard().ownText(QStringLiteral("the user's own clipboard"));
    Program editor = GetParam().start(desktop(), {});
    const ProbedField field = atspi().waitForField(editor);

    typeSentence(QStringLiteral("good morning world"));
    tapTranslate();

    EXPECT_EQ(atspi().waitForText(field, answer), answer);
    EXPECT_TRUE(waitForLog(QStringLiteral("Writeback clipboard restored")));
    EXPECT_EQ(clipboard().text(), QStringLiteral("the user's own clipboard"));
    EXPECT_EQ(x().keysDown(), 0);
    EXPECT_EQ(x().activeWindow(), editor.window());

    expectOneRecordedTranslation();

    const auto requests = generations();
    ASSERT_EQ(requests.size(), 1U);
    const ServiceRequest& request = requests.front();
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.target, "/api/generate");
    EXPECT_EQ(request.header("Content-Type"), "application/json");
    const QString prompt = QString::fromUtf8(
        R"(你是 Veltrin 的意图编译执行器。你要输出最终结果，而不是解释任务。

动作：translate
策略：languageTransfer
输出契约：translation

保留规则：
- 保留用户原意。
- 保留用户给出的主体。
- 不要擅自添加主体、品牌、人物、活动、场景或产品。
- 不要新增事实。

Veltrin 底层表达策略：
- 保留用户原意、事实、主体和关键限制。
- 不擅自扩写主体、品牌、人物、活动、场景、产品或背景。
- 不把模式说明、Agent 指令或规则当作待处理正文输出。
- 不输出“请你、为以下、待处理文本、原始提示词”等任务说明。
- 用户要求添加表情、压缩、改语气或改格式时，直接输出处理后的结果。

翻译策略：
- 将待处理文本翻译成French。
- 只输出译文。
- 保留人名、产品名、专有名词、数字、链接和代码片段。
- 不要解释，不要加标题，不要复述原文。





待处理文本：
"""
good morning world   
"""

输出要求：
- 只输出处理后的文本。
- 不要输出任务说明。
- 不要复述系统规则。)");
    EXPECT_EQ(request.prompt(), prompt);
    Json expected;
    expected.set(QStringLiteral("model"), QStringLiteral("qwen3:8b"));
    expected.set(QStringLiteral("prompt"), prompt);
    expected.set(QStringLiteral("stream"), false);
    expected.set(QStringLiteral("keep_alive"), QStringLiteral("10m"));
    Json options;
    options.set(QStringLiteral("temperature"), 0.2);
    options.set(QStringLiteral("num_predict"), 1024);
    expected.set(QStringLiteral("options"), options);
    expected.set(QStringLiteral("think"), true);
    ASSERT_TRUE(request.json);
    EXPECT_EQ(request.json->serialized(2), expected.serialized(2));
}

TEST_P(TranslationInEditor, theApplicationsOwnUndoBringsTheTextBack) {
    startProgram();
    Program editor = GetParam().start(desktop(), {});
    const ProbedField field = atspi().waitForField(editor);
    typeSentence(QStringLiteral("undo me"));
    tapTranslate();
    ASSERT_EQ(atspi().waitForText(field, answer), answer);

    // A toolkit may undo the deletion and the insertion apart.
    for (int i = 0; i < 2 && !atspi().text(field).contains(u"undo me"); ++i) {
        typist().chord(QStringLiteral("Ctrl+z"));
        typist().pause(0.1);
    }
    EXPECT_EQ(atspi().waitForTextContaining(field, QStringLiteral("undo me")), QStringLiteral("undo me   "));
}

TEST_P(TranslationInEditor, aSelectionIsReplacedAloneWhenTheSettingSaysSo) {
    startProgram({{QStringLiteral("translation_replace_mode"), QStringLiteral("current")},
                  {QStringLiteral("shortcut_translation"), QStringLiteral("⌥⇧|T")}});
    Program editor =
        GetParam().start(desktop(), QStringLiteral("keep 你好👩‍👩‍👧 this and keep that"));
    const ProbedField field = fieldInFront(editor);
    const QString text = atspi().text(field);
    const qsizetype start = text.indexOf(u"this");
    atspi().select(field, start, start + 4);

    typist().chord(QStringLiteral("Alt+Shift+t"));

    const QString expected = QString(text).replace(start, 4, answer);
    EXPECT_EQ(atspi().waitForText(field, expected), expected);
    ASSERT_EQ(generations().size(), 1U);
    EXPECT_TRUE(generations().front().prompt().contains(u"\"\"\"\nthis\n\"\"\""));
}

INSTANTIATE_TEST_SUITE_P(Editors, TranslationInEditor,
                         testing::Values(Editor{"mousepad", &Program::mousepad},
                                         Editor{"gedit", &Program::gedit}, Editor{"qt", &startQtEditor}),
                         [](const auto& test) { return std::string(test.param.name); });

class RefusedTaps : public RoadTest {
protected:
    /// The field must hold the typed text and the spaces, and no model may be asked.
    void expectOnlySpaces(const ProbedField& field, const QString& expected) {
        EXPECT_EQ(atspi().waitForText(field, expected), expected);
        typist().pause(0.8);
        EXPECT_EQ(atspi().text(field), expected);
        EXPECT_TRUE(generations().empty());
    }
};

TEST_F(RefusedTaps, tooSlow) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    typeSentence(QStringLiteral("slow"));
    typist().tapSpace(3, 0.45);
    expectOnlySpaces(field, QStringLiteral("slow   "));
    EXPECT_FALSE(log().contains(u"Space Triggered"));
}

TEST_F(RefusedTaps, tooCloseToTyping) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    typist().type(QStringLiteral("busy"));
    typist().tapSpace(3, 0.10);
    expectOnlySpaces(field, QStringLiteral("busy   "));
    EXPECT_TRUE(waitForLog(QStringLiteral("Triple space rejected by safety gate")));
}

TEST_F(RefusedTaps, inABlacklistedApplication) {
    startProgram({{QStringLiteral("shortcut_translation_blacklisted_bundle_ids"),
                   QStringLiteral("some.other.app\norg.xfce.mousepad")}});
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    typeSentence(QStringLiteral("private"));
    tapTranslate();
    expectOnlySpaces(field, QStringLiteral("private   "));
    EXPECT_TRUE(waitForLog(QStringLiteral("Triple Space Triggered but ignored by settings")));
}

TEST_F(RefusedTaps, withTheFeatureSwitchedOff) {
    startProgram({{QStringLiteral("gesture_triple_space"), false}});
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    typeSentence(QStringLiteral("off"));
    tapTranslate();
    expectOnlySpaces(field, QStringLiteral("off   "));
}

TEST_F(RefusedTaps, aHeldSpaceIsOneTap) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    typeSentence(QStringLiteral("held"));
    typist().tapSpace(1, 0.1, 1.2);
    typist().pause(0.8);
    EXPECT_TRUE(generations().empty());
    EXPECT_GT(atspi().text(field).size(), 5);
    EXPECT_EQ(atspi().text(field).trimmed(), QStringLiteral("held"));
}

TEST_F(RefusedTaps, twoTapsOnlyLogWhatTheyMean) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    typeSentence(QStringLiteral("double"));
    typist().tapSpace(2, 0.13);
    EXPECT_TRUE(waitForLog(QStringLiteral("Double Space Triggered")));
    expectOnlySpaces(field, QStringLiteral("double  "));
}

}  // namespace
}  // namespace veltrin

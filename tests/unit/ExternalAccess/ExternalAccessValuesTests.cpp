#include "ExternalAccess/ExternalAIAction.h"
#include "ExternalAccess/ExternalAppContext.h"
#include "ExternalAccess/ExternalTextReadResult.h"
#include "ExternalAccess/WritebackTargetSnapshot.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

QString scene(const char16_t* app, const char16_t* bundle, const char16_t* window) {
    return ExternalAppContext::inferScene(QString::fromUtf16(app), QString::fromUtf16(bundle),
                                          QString::fromUtf16(window));
}

TEST(ExternalAppContext, infersTheSceneByTheFirstRuleThatFits) {
    const QString wechat = QStringLiteral("微信聊天场景：回复应自然、短句优先、语气像真人聊天。");
    const QString model = QStringLiteral("大语言模型对话场景：优先优化提示词结构、目标、约束和输出格式。");
    const QString tools = QStringLiteral("开发工具场景：注意代码、注释、提交信息和技术表达的准确性。");
    const QString documents = QStringLiteral("文档写作场景：注重结构、标题层级和可读性。");
    const QString general = QStringLiteral("通用文本场景：保留原意，按用户选择的动作改写。");
    EXPECT_EQ(scene(u"WeChat", u"com.tencent.xinWeChat", u"ChatGPT"), wechat);
    EXPECT_EQ(scene(u"我的微信", u"", u""), wechat);
    EXPECT_EQ(scene(u"WeChat", u"com.tencent.xinwechat", u""), general);
    for (const char16_t* window : {u"ChatGPT - Cursor", u"CLAUDE", u"Gemini", u"deepSeek"})
        EXPECT_EQ(scene(u"Browser", u"org.browser", window), model);
    for (const char16_t* app : {u"Cursor", u"Antigravity", u"Xcode", u"VSCode Notion"})
        EXPECT_EQ(scene(app, u"x", u""), tools);
    for (const char16_t* bundle : {u"notion.id", u"com.Feishu", u"com.lark"})
        EXPECT_EQ(scene(u"App", bundle, u""), documents);
    EXPECT_EQ(scene(u"gedit", u"org.gnome.gedit", u"notes"), general);
    // The three are joined by a blank, so no name comes about across their edges.
    EXPECT_EQ(scene(u"App cur", u"sor", u""), general);
}

TEST(ExternalAppContext, makeFillsInTheHint) {
    const auto context =
        ExternalAppContext::make(QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("Claude"));
    EXPECT_EQ(context.windowTitle, QStringLiteral("Claude"));
    EXPECT_TRUE(context.sceneHint.startsWith(QStringLiteral("大语言模型")));
}

TEST(ExternalTextReadResult, saysWhereItsTextCameFrom) {
    ExternalTextReadResult read;
    EXPECT_FALSE(read.hasText());
    EXPECT_EQ(read.actionSourceLine(), QStringLiteral("No readable external text"));
    read.source = ExternalTextReadResult::Source::value;
    read.text = QStringLiteral(" \n\t");
    EXPECT_FALSE(read.hasText());
    EXPECT_EQ(read.actionSourceLine(), QStringLiteral("No readable external text"));
    read.text = QStringLiteral("hi 👨‍👩‍👧‍👦");
    EXPECT_EQ(read.actionSourceLine(), QStringLiteral("value · 4 chars"));
    read.source = ExternalTextReadResult::Source::selectedText;
    EXPECT_EQ(read.actionSourceLine(), QStringLiteral("selectedText · 4 chars"));
}

TEST(ExternalGestureAIAction, hasALogNameTitlesAndLabels) {
    using Action = ExternalGestureAIAction;
    const Action optimize = Action::optimize(ExternalOptimizeMode::modelAdapt);
    MemoryActionPreset preset;
    preset.title = QStringLiteral("口语 %1");
    const Action memory = Action::memoryAction(preset, 2);
    EXPECT_EQ(optimize.logName(), QStringLiteral("optimize(3)"));
    EXPECT_EQ(memory.logName(), QStringLiteral("memoryAction(口语 %1,slot:3)"));
    EXPECT_EQ(Action::translate().logName(), QStringLiteral("translate"));
    EXPECT_EQ(Action::commandRecommend().logName(), QStringLiteral("commandRecommend"));
    EXPECT_EQ(optimize.failureTitle(), QStringLiteral("优化失败"));
    EXPECT_EQ(memory.failureTitle(), QStringLiteral("优化失败"));
    EXPECT_EQ(Action::translate().failureTitle(), QStringLiteral("翻译失败"));
    EXPECT_EQ(Action::commandRecommend().failureTitle(), QStringLiteral("推荐失败"));
    EXPECT_EQ(optimize.copiedResultLabel(), QStringLiteral("优化后的内容"));
    EXPECT_EQ(memory.copiedResultLabel(), QStringLiteral("优化后的内容"));
    EXPECT_EQ(Action::translate().copiedResultLabel(), QStringLiteral("翻译后的内容"));
    EXPECT_EQ(Action::commandRecommend().copiedResultLabel(), QStringLiteral("推荐内容"));
    EXPECT_EQ(statusText(ExternalAIActionState::optimizing), QStringLiteral("正在优化"));
    EXPECT_EQ(statusText(ExternalAIActionState::translating), QStringLiteral("正在翻译"));
}

TEST(WritebackTargetSnapshot, signatureIsCountAndEnds) {
    const auto signature = [](const QString& text) { return WritebackTargetSnapshot::signature(text); };
    EXPECT_EQ(signature(QString()), QStringLiteral("0::"));
    EXPECT_EQ(signature(QStringLiteral("abc")), QStringLiteral("3:abc:abc"));
    EXPECT_EQ(signature(QStringLiteral(" a\nb\tc ")), QStringLiteral("5:a b c:a b c"));
    EXPECT_EQ(signature(QStringLiteral("a b c")), signature(QStringLiteral("a\nb c\n")));
    const QString text = QString(24, u'a') + QStringLiteral("XYZ") + QString(24, u'b');
    EXPECT_EQ(signature(text), QStringLiteral("51:") + QString(24, u'a') + u':' + QString(24, u'b'));
}

TEST(WritebackTargetSnapshot, describesItselfForTheLog) {
    ExternalTextReadResult read;
    const WritebackTargetSnapshot nothing(read, std::nullopt);
    EXPECT_EQ(nothing.debugDescription(),
              QStringLiteral("pid:nil bundle:unknown role:unknown source:none clipboard:false element:nil "
                             "window:nil signature:0::"));
    read.processIdentifier = 42;
    read.bundleIdentifier = QStringLiteral("org.gnome.gedit");
    read.role = QStringLiteral("AXTextArea");
    read.source = ExternalTextReadResult::Source::selectedText;
    read.requiresClipboardWriteback = true;
    read.text = QStringLiteral("hi");
    const WritebackTargetSnapshot full(read, QStringLiteral("notes"));
    EXPECT_EQ(
        full.debugDescription(),
        QStringLiteral("pid:42 bundle:org.gnome.gedit role:AXTextArea source:selectedText clipboard:true "
                       "element:nil window:notes signature:2:hi:hi"));
}

}  // namespace
}  // namespace veltrin

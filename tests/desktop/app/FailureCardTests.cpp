#include "desktop/app/ChoiceTest.h"

#include <QFile>

namespace veltrin {
namespace {

using namespace ServiceBehaviours;

struct Failing {
    const char* name;
    ServiceBehaviour behaviour;
    const char* card;
};

TEST_F(Choice, everyFailureOfTheModelGetsItsCardAndLeavesTheText) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    clipboard().ownText(QStringLiteral("mine"));
    typeSentence(QStringLiteral("words"));
    const QString text = QStringLiteral("words  ");
    const std::vector<Failing> rows{
        {"a status", error(500), "优化失败 请重试或切换模型"},
        {"another shape", plain(200, R"({"unexpected":true})"), "优化失败 请重试或切换模型"},
        {"no text", empty(), "优化失败 请重试或切换模型"},
        {"instructions", leaking(), "优化失败 请重试或切换模型"},
        {"blanks", success(QStringLiteral(" \n ")), "优化失败 请重试或切换模型"},
        {"a reset", reset(), "优化失败 请重试或切换模型"},
    };
    for (const Failing& row : rows) {
        SCOPED_TRACE(row.name);
        atspi().setText(field, QStringLiteral("words"));
        atspi().setCaret(field, 5);
        serve(row.behaviour);
        tapOptimize();
        const QString card = QStringLiteral("UI showFailureCard requested: ") + QString::fromUtf8(row.card);
        const int before = logCount(card);
        press(QStringLiteral("1"));
        EXPECT_TRUE(waitUntil(15, [&] { return logCount(card) == before + 1; })) << qPrintable(log());
        EXPECT_TRUE(waitUntil(2, [&] { return panels().contains(QRect(490, 358, 300, 84)); }));
        EXPECT_TRUE(waitUntil(5, [&] { return panels().isEmpty(); }));
        EXPECT_EQ(atspi().text(field), text);
        EXPECT_EQ(clipboard().text(), QStringLiteral("mine"));
        EXPECT_EQ(x().activeWindow(), editor.window());
    }
}

TEST_F(Choice, aResultWithoutItsTargetIsCopiedAndSaid) {
    startProgram();
    serve(slow(1.5, success(better)));
    Program other = Program::qtEditor(desktop(), {QStringLiteral("--text"), QStringLiteral("other")});
    atspi().waitForField(other, QStringLiteral("Text"));
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    typeSentence(QStringLiteral("words"));
    tapOptimize();
    press(QStringLiteral("1"));
    ASSERT_TRUE(waitForGeneration());
    ASSERT_TRUE(x().activate(other.window()));
    EXPECT_TRUE(waitForLog(QStringLiteral("UI showPanel requested: 已复制 优化后的内容：") + better, 15))
        << qPrintable(log());
    EXPECT_EQ(clipboard().text(), better);
    EXPECT_EQ(atspi().text(field), QStringLiteral("words  "));
}

/// One run of the first action by a program that is set up so that it fails before any model has answered.
class ChoiceWithoutService : public Choice {
protected:
    void expectCard(const Json::Object& preferences, const QString& card, const QString& reason) {
        startProgram(preferences);
        Program editor = Program::mousepad(desktop());
        const ProbedField field = atspi().waitForField(editor);
        clipboard().ownText(QStringLiteral("mine"));
        typeSentence(QStringLiteral("words"));
        tapOptimize();
        press(QStringLiteral("1"));
        EXPECT_TRUE(waitForLog(QStringLiteral("UI showFailureCard requested: 优化失败 ") + card, 20))
            << qPrintable(log());
        EXPECT_TRUE(waitUntil(2, [&] { return panels().contains(QRect(490, 358, 300, 84)); }));
        EXPECT_TRUE(
            waitForLog(QStringLiteral("AI action failed: action: memoryAction(提示词优化,slot:1) ") + reason))
            << qPrintable(log());
        EXPECT_EQ(x().activeWindow(), editor.window());
        EXPECT_TRUE(waitUntil(5, [&] { return panels().isEmpty(); }));
        EXPECT_EQ(atspi().text(field), QStringLiteral("words  "));
        EXPECT_EQ(clipboard().text(), QStringLiteral("mine"));
        EXPECT_TRUE(generations().empty());
    }
    static inline const QString retry = QStringLiteral("请重试或切换模型");
};

TEST_F(ChoiceWithoutService, aKeyThatIsMissingIsAskedFor) {
    expectCard({{QStringLiteral("selectedModelProvider"), QStringLiteral("deepseek")}},
               QStringLiteral("请检查模型 API Key"), QStringLiteral("DeepSeek 缺少 API Key"));
}

TEST_F(ChoiceWithoutService, aHostThatNobodyKnowsIsACaseOfTheConnection) {
    expectCard({{QStringLiteral("ollama_endpoint"), QStringLiteral("http://no-such-host.invalid")}}, retry,
               {});
}

TEST_F(ChoiceWithoutService, aCertificateThatNobodyVouchesForIsACaseOfItsOwn) {
    const QString key = desktop().file(QStringLiteral("key.pem"));
    const QString certificate = desktop().file(QStringLiteral("certificate.pem"));
    Program maker(desktop(), {QStringLiteral("openssl"), QStringLiteral("req"), QStringLiteral("-x509"),
                              QStringLiteral("-newkey"), QStringLiteral("rsa:2048"), QStringLiteral("-nodes"),
                              QStringLiteral("-keyout"), key, QStringLiteral("-out"), certificate,
                              QStringLiteral("-days"), QStringLiteral("1"), QStringLiteral("-subj"),
                              QStringLiteral("/CN=127.0.0.1")});
    ASSERT_TRUE(maker.waitForExit(30));
    Program server(desktop(), {QStringLiteral("openssl"), QStringLiteral("s_server"), QStringLiteral("-key"),
                               key, QStringLiteral("-cert"), certificate, QStringLiteral("-accept"),
                               QStringLiteral("127.0.0.1:0"), QStringLiteral("-www")});
    static const QRegularExpression line(QStringLiteral("ACCEPT 127\\.0\\.0\\.1:(\\d+)"));
    const auto port = [&] { return line.match(QString::fromUtf8(server.output())).captured(1); };
    ASSERT_TRUE(waitUntil(20, [&] { return !port().isEmpty(); })) << server.output().constData();
    expectCard({{QStringLiteral("ollama_endpoint"), QStringLiteral("https://127.0.0.1:") + port()}}, retry,
               QStringLiteral("The server's certificate is not trusted."));
}

TEST_F(ChoiceWithoutService, anAddressOfAnotherKindIsANetworkFailureLikeAnyOther) {
    expectCard({{QStringLiteral("ollama_endpoint"), QStringLiteral("ftp://127.0.0.1")}},
               QStringLiteral("请检查网络、代理或模型服务地址。"),
               QStringLiteral("The service address is not an HTTP address."));
}

TEST_F(Choice, aRecommendationThatFailsIsCalledOne) {
    startProgram();
    serve(error(500));
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    typeSentence(QStringLiteral("git push"));
    tapOptimize();
    press(QStringLiteral("slash"));
    EXPECT_TRUE(waitForLog(QStringLiteral("UI showFailureCard requested: 推荐失败 请重试或切换模型"), 15))
        << qPrintable(log());
    EXPECT_EQ(atspi().text(field), QStringLiteral("git push  "));
}

TEST_F(Choice, aFieldThatIsOnlyReadGetsItsResultAsACopy) {
    startProgram();
    Program reader = Program::qtEditor(
        desktop(), {QStringLiteral("--read-only"), QStringLiteral("--text"), QStringLiteral("fixed words"),
                    QStringLiteral("--focus"), QStringLiteral("text")});
    const ProbedField field = atspi().waitForField(reader, QStringLiteral("Text"));
    tapOptimize();
    press(QStringLiteral("1"));
    EXPECT_TRUE(waitForLog(QStringLiteral("UI showPanel requested: 已复制 优化后的内容：") + better, 15))
        << qPrintable(log());
    EXPECT_EQ(generations().size(), 1U);
    EXPECT_TRUE(waitUntil(5, [&] { return clipboard().text() == better; }));
    EXPECT_EQ(atspi().text(field), QStringLiteral("fixed words"));
}

TEST_F(Choice, aTerminalGetsNoLineBreaksButACopy) {
    startProgram();
    const QString lines = QStringLiteral("echo one\necho two");
    serve(success(lines));
    const QString received = desktop().file(QStringLiteral("received-lines"));
    Program terminal(desktop(),
                     {QStringLiteral("lxterminal"), QStringLiteral("--no-remote"), QStringLiteral("-e"),
                      QStringLiteral("sh -c 'stty -icanon; cat -u > ") + received + QStringLiteral("'")});
    terminal.waitForWindow(20, QStringLiteral("lxterminal"));
    typist().pause(0.5);
    typeSentence(QStringLiteral("two commands"));
    tapOptimize();
    press(QStringLiteral("1"));
    EXPECT_TRUE(waitForLog(QStringLiteral("AI action writeback failed; copying result instead:"), 15))
        << qPrintable(log());
    EXPECT_TRUE(
        waitForLog(QStringLiteral("UI showPanel requested: 已复制 优化后的内容：echo one echo two"), 5));
    EXPECT_TRUE(waitUntil(5, [&] { return clipboard().text() == lines; }));
    QFile file(received);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    EXPECT_TRUE(bytes.startsWith("two commands  ")) << bytes.constData();
    EXPECT_FALSE(bytes.contains("echo")) << bytes.constData();
}

TEST_F(Choice, anEmptyFieldGetsItsCard) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    atspi().waitForField(editor);
    tapOptimize();
    press(QStringLiteral("1"));
    EXPECT_TRUE(waitForLog(
        QStringLiteral("UI showFailureCard requested: 没有读到可处理的文本 请先选中或点进文本框"), 10))
        << qPrintable(log());
    EXPECT_TRUE(generations().empty());
}

}  // namespace
}  // namespace veltrin

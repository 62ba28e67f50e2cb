#include "Foundation/Json.h"
#include "Platform/Linux/QtHttpClient.h"
#include "support/service/EventLoopRunner.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

QByteArray contentsOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

class ModelServiceProgram : public testing::Test {
protected:
    void start(const QByteArray& script) {
        QFile file(folder_.filePath(u"script.json"_s));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(script);
        file.close();
        process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process_.start(QStringLiteral(VELTRIN_BINARY_DIR "/bin/veltrin_model_service"),
                       {u"--port-file"_s, portFile(), u"--log"_s, logFile(), u"--script"_s, file.fileName()});
    }
    void TearDown() override {
        process_.terminate();
        if (!process_.waitForFinished(5000)) process_.kill();
    }
    QString portFile() const { return folder_.filePath(u"port"_s); }
    QString logFile() const { return folder_.filePath(u"log"_s); }

    HttpResponse ask(const QString& prompt) {
        EXPECT_TRUE(runUntil([this] { return QFile::exists(portFile()); }));
        HttpRequest request;
        request.url = QUrl(u"http://127.0.0.1:"_s + QString::fromUtf8(contentsOf(portFile()).trimmed()) +
                           u"/api/generate"_s);
        request.method = "POST";
        request.headers.emplace_back("Content-Type", "application/json");
        Json body;
        body.set(u"prompt"_s, prompt);
        request.body = body.serialized();
        request.timeout = 10;
        const auto outcome = finish(client_.data(request));
        return outcome->value.value_or(HttpResponse());
    }
    QString answer(const QString& prompt) {
        const auto json = Json::tryParse(ask(prompt).body);
        const Json* response = json ? json->find(u"response") : nullptr;
        return response == nullptr ? QString() : response->toString().value_or(QString());
    }

    QTemporaryDir folder_;
    QProcess process_;
    QtHttpClient client_;
};

TEST_F(ModelServiceProgram, answersByItsScriptAndLogsEachRequestAsALine) {
    start(R"({"queue":[{"error":429,"message":"slow down"}],
              "rules":[{"contains":"你好","answer":{"text":"Hello","delay":0.05}}],"default":"other"})");
    EXPECT_EQ(ask(u"first"_s).status, 429);
    EXPECT_EQ(answer(u"Translate: 你好"_s), u"Hello"_s);
    EXPECT_EQ(answer(u"x"_s), u"other"_s);
    const QList<QByteArray> lines = contentsOf(logFile()).trimmed().split('\n');
    ASSERT_EQ(lines.size(), 3);
    const Json second = Json::parse(lines[1]);
    EXPECT_EQ(second.find(u"method")->toString(), u"POST"_s);
    EXPECT_EQ(second.find(u"path")->toString(), u"/api/generate"_s);
    EXPECT_EQ(second.find(u"prompt")->toString(), u"Translate: 你好"_s);
    EXPECT_EQ(second.find(u"json")->find(u"prompt")->toString(), u"Translate: 你好"_s);
}

TEST_F(ModelServiceProgram, endsInOrderWhenAsked) {
    start(R"({"default":"x"})");
    ASSERT_TRUE(runUntil([this] { return QFile::exists(portFile()); }));
    process_.terminate();
    ASSERT_TRUE(process_.waitForFinished(5000));
    EXPECT_EQ(process_.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process_.exitCode(), 0);
}

TEST_F(ModelServiceProgram, refusesAScriptItDoesNotUnderstand) {
    for (const char* script :
         {"", "[]", R"({"default":{"behaviour":"dance"}})", R"({"rules":[{"contains":"x"}]})"}) {
        start(script);
        ASSERT_TRUE(process_.waitForFinished(5000)) << script;
        EXPECT_EQ(process_.exitCode(), 1) << script;
    }
}

}  // namespace
}  // namespace veltrin

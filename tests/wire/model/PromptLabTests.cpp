#include "AI/AdaptiveRecommender.h"
#include "AI/PromptDiagnosis.h"
#include "AI/ReverseWorkbench.h"
#include "Session/UserBehaviorTracker.h"
#include "support/Golden.h"
#include "support/fake/FakeRunLoop.h"
#include "wire/model/WireWorld.h"

#include <QTemporaryDir>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
namespace answers = ServiceBehaviours;

/// The real network, with a note of the time-out of each round trip.
class TimedHttp final : public HttpClient {
public:
    explicit TimedHttp(HttpClient& network) : network_(network) {}
    QCoro::Task<HttpResponse> data(HttpRequest request) override {
        timeouts.append(request.timeout);
        return network_.data(std::move(request));
    }

    QList<double> timeouts;

private:
    HttpClient& network_;
};

class PromptLabOnTheWire : public WireWorld {
protected:
    PromptLabOnTheWire() { use(ModelProvider::ollama, u"llama3.1:8b"_s); }

    OllamaClient timedClient() { return OllamaClient(timed, settings); }
    ModelTaskMaterial material() {
        ModelTaskMaterial material;
        material.runtimeContractPromptFor = [](const QString&, std::optional<int>) { return QString(); };
        material.contextPrompt = [](int) { return QString(); };
        material.recordHistory = [this](const QString& type, const QString& snippet, const QString& app) {
            history << type + u'|' + snippet + u'|' + app;
        };
        return material;
    }
    PromptDiagnosis diagnosis() { return {timedClient(), runLoop, material()}; }
    ReverseWorkbench workbench() { return {timedClient(), runLoop, material()}; }
    /// The whole body of a request to the local service.
    static QByteArray body(const QString& prompt, const QByteArray& options) {
        Json body;
        body.set(u"model"_s, u"llama3.1:8b"_s);
        body.set(u"prompt"_s, prompt);
        body.set(u"stream"_s, false);
        body.set(u"keep_alive"_s, u"10m"_s);
        body.set(u"options"_s, Json::parse(options));
        return body.serialized();
    }

    TimedHttp timed{http};
    FakeRunLoop runLoop;
    QStringList history;
};

TEST_F(PromptLabOnTheWire, aDiagnosisHasThirtySecondsAndNoLimit) {
    service.enqueue(answers::success(u"```json\n{\"overallScore\": 91, \"verdict\": \"好\"}\n```"_s));
    const QString prompt = u"写一首关于 {{prompt}} 的诗"_s;
    const auto outcome = finish(diagnosis().diagnose(prompt));
    ASSERT_TRUE(outcome->value);
    EXPECT_EQ(outcome->value->overall, 91);
    EXPECT_EQ(lastRequest().target, QByteArray("/api/generate"));
    EXPECT_EQ(lastRequest().json->serialized(), body(golden(u"diagnose"_s), R"({"temperature":0.3})"));
    EXPECT_EQ(timed.timeouts, QList<double>{30});
    EXPECT_EQ(history, QStringList{u"diagnose|%1|Veltrin"_s.arg(prompt)});
}

TEST_F(PromptLabOnTheWire, aReversalHasThirtySecondsAndNoLimit) {
    service.enqueue(answers::success(u"画一只猫"_s));
    const auto outcome =
        finish(workbench().reverseEngineerProject(u"一张照片"_s, {u"风格分析"_s}, std::nullopt));
    ASSERT_TRUE(outcome->value);
    EXPECT_EQ(outcome->value->primaryPromptText(), u"画一只猫"_s);
    EXPECT_EQ(lastRequest().json->serialized(),
              body(golden(u"reverse-workbench"_s), R"({"temperature":0.3})"));
    EXPECT_EQ(timed.timeouts, QList<double>{30});
}

TEST_F(PromptLabOnTheWire, anIterationHasThirtySecondsAndNoLimit) {
    service.enqueue(answers::success(u"画一只暖色的猫"_s));
    const auto outcome = finish(workbench().iteratePrompt(u"画一只猫"_s, u"更暖"_s));
    EXPECT_EQ(outcome->value, u"画一只暖色的猫"_s);
    EXPECT_EQ(lastRequest().json->serialized(), body(golden(u"iterate-prompt"_s), R"({"temperature":0.3})"));
    EXPECT_EQ(timed.timeouts, QList<double>{30});
}

TEST_F(PromptLabOnTheWire, aRecommendationIsAskedForOnceMoreWithTheHigherLimit) {
    const QTemporaryDir folder;
    const UserBehaviorTracker tracker(folder.path(), runLoop);
    service.enqueue(answers::empty());
    service.enqueue(answers::success(
        u"[{\"command\":\"loop\",\"category\":\"skill\",\"explanation\":\"e\",\"confidence\":\"high\"}]"_s));
    const auto outcome = finish(AdaptiveRecommender::recommend(u"x"_s, u"Konsole"_s, timedClient(), tracker));
    ASSERT_TRUE(outcome->value);
    ASSERT_EQ(outcome->value->size(), 1U);
    EXPECT_EQ(outcome->value->front().command, u"loop"_s);
    const auto requests = service.requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[0].json->find(u"options")->serialized(),
              QByteArray(R"({"temperature":0.1,"num_predict":600})"));
    EXPECT_EQ(requests[1].json->find(u"options")->serialized(),
              QByteArray(R"({"temperature":0.1,"num_predict":900})"));
    EXPECT_EQ(timed.timeouts, (QList<double>{30, 45}));
}

TEST_F(PromptLabOnTheWire, aServiceThatFailsIsTheLabsError) {
    service.setDefault(answers::error(500));
    EXPECT_TRUE(finish(diagnosis().diagnose(u"x"_s))->failed());
    EXPECT_TRUE(finish(workbench().iteratePrompt(u"x"_s, u"y"_s))->failed());
    EXPECT_TRUE(history.isEmpty());
}

}  // namespace
}  // namespace veltrin

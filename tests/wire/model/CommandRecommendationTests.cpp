#include "AI/AdaptiveRecommender.h"
#include "Session/UserBehaviorTracker.h"
#include "support/Golden.h"
#include "support/fake/FakeRunLoop.h"
#include "wire/model/WireWorld.h"

#include <QTemporaryDir>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
namespace answers = ServiceBehaviours;

/// A recommendation by way of the real network.
class CommandRecommendationOnTheWire : public WireWorld {
protected:
    CommandRecommendationOnTheWire() { use(ModelProvider::ollama, u"llama3.1:8b"_s); }

    std::vector<CommandRecommendation> recommend(const QString& answer) {
        service.enqueue(answers::success(answer));
        const auto outcome =
            finish(AdaptiveRecommender::recommend(u"git push 被拒绝"_s, u"iTerm2"_s, client(), tracker));
        return outcome->value.value_or(std::vector<CommandRecommendation>());
    }
    static QString answerOf(int rows) {
        Json::Array array;
        for (int i = 1; i <= rows; ++i) {
            array.push_back(
                writeRecord(CommandRecommendation{u"c%1"_s.arg(i), u"tool"_s, u"因为"_s, u"medium"_s})
                    .value_or(Json()));
        }
        return QString::fromUtf8(Json(array).serialized());
    }

    QTemporaryDir folder;
    FakeRunLoop runLoop;
    UserBehaviorTracker tracker{folder.path(), runLoop};
};

TEST_F(CommandRecommendationOnTheWire, theQuestionArrivesWholeAtEveryWire) {
    for (const ModelProvider provider : oneOfEachWire) {
        use(provider, u"some-model"_s);
        EXPECT_EQ(recommend(answerOf(3)).size(), 3U);
        const QByteArray prompt = Json(golden(u"command-recommendation"_s)).serialized();
        EXPECT_TRUE(lastRequest().body.contains(prompt)) << ModelProviders::id(provider).toStdString();
    }
    EXPECT_EQ(service.requests().size(), std::size(oneOfEachWire)) << "each is asked once";
}

TEST_F(CommandRecommendationOnTheWire, theSixthNeverRisesHoweverOftenItWasUsed) {
    for (int i = 0; i < 10; ++i)
        tracker.record(TrackedBehavior::BehaviorType::commandUsed, u"c6"_s, u"iTerm2"_s, u"tool"_s, true);
    tracker.record(TrackedBehavior::BehaviorType::commandUsed, u"c5"_s, u"iTerm2"_s, u"tool"_s, true);
    QStringList commands;
    for (const CommandRecommendation& each : recommend(answerOf(6)))
        commands << each.command;
    EXPECT_EQ(commands, (QStringList{u"c5"_s, u"c1"_s, u"c2"_s, u"c3"_s, u"c4"_s}));
}

TEST_F(CommandRecommendationOnTheWire, aFencedAnswerReadsAndProseIsShownAsItIs) {
    EXPECT_EQ(recommend(u"```json\n"_s + answerOf(2) + u"\n```"_s).size(), 2U);
    const auto prose = recommend(u"先运行 git pull --rebase。"_s);
    ASSERT_EQ(prose.size(), 1U);
    EXPECT_EQ(prose[0].category, u"raw"_s);
    EXPECT_EQ(prose[0].explanation, u"先运行 git pull --rebase。"_s);
}

}  // namespace
}  // namespace veltrin

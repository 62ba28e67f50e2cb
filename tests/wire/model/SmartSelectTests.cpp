#include "AI/AgentTeamManager.h"
#include "App/SmartSelectOverlay.h"
#include "Data/HistoryStore.h"
#include "Data/PromptStore.h"
#include "System/InteractionSoundPlayer.h"
#include "support/Golden.h"
#include "support/fake/FakeDesktop.h"
#include "wire/model/WireWorld.h"

#include <QTemporaryDir>

#include <optional>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
namespace answers = ServiceBehaviours;
using Stage = SelectionContent::Stage;

/// The popup over a selection against the stand-in service.
class SmartSelectOnTheWire : public WireWorld {
protected:
    SmartSelectOnTheWire() {
        assign(0, u"评论回复"_s, u"语气亲切。"_s);
        assign(1, u"聊天整理"_s, u"先分组，再压缩。"_s);
        desktop.pasteboard.put(u"mine"_s);
    }

    void assign(int slot, const QString& name, const QString& systemPrompt) {
        AgentProfile agent = AgentProfile::made({});
        agent.name = name;
        agent.systemPrompt = systemPrompt;
        agents.append(agent);
        agents.assignAgent(agent.id, u"smartSelect"_s, slot);
    }
    void open() {
        overlay->showIcon({600, 500}, text);
        desktop.floatingPanels.act(PanelKind::selectionIcon, PanelAction::open);
    }
    /// Presses a button and waits until the model's work is done.
    void press(PanelAction action) {
        desktop.floatingPanels.act(PanelKind::selectionPopup, action);
        ASSERT_TRUE(runUntil([&] { return !overlay->popupView()->isWorking(); }));
    }
    SelectionContent content() const { return overlay->popupView()->content(); }
    static QString prompt(const ServiceRequest& request) {
        const Json* value = request.json ? request.json->find(u"prompt") : nullptr;
        return value == nullptr ? QString() : value->toString().value_or(QString());
    }
    static double number(const ServiceRequest& request, QStringView option) {
        const Json* options = request.json ? request.json->find(u"options") : nullptr;
        const Json* value = options == nullptr ? nullptr : options->find(option);
        return value == nullptr ? -1 : value->toDouble().value_or(-1);
    }

    const QString text = u" 客户：\"能改到周五吗？\"\n{{mode}} "_s;
    FakeDesktop desktop;
    QTemporaryDir folder;
    InteractionSoundPlayer sounds{desktop.runLoop, desktop.soundOutput, settings};
    AgentTeamManager agents{folder.path(), preferences, desktop.runLoop};
    HistoryStore history{folder.path(), desktop.runLoop};
    PromptStore prompts{folder.path(), desktop.runLoop};
    std::optional<SmartSelectOverlay> overlay{
        std::in_place, SmartSelectOverlay::Parts{desktop.runLoop, desktop.floatingPanels, desktop.screens,
                                                 desktop.pasteboard, agents, settings, sounds, history,
                                                 prompts, ExpressionRunner(client())}};
};

TEST_F(SmartSelectOnTheWire, aReplyAsksWithItsWholePrompt) {
    use(ModelProvider::ollama);
    service.enqueue(answers::success(u"好的，周五见。"_s));
    open();
    press(PanelAction::reply);
    EXPECT_EQ(prompt(lastRequest()), golden(u"selection/reply"_s));
    EXPECT_EQ(number(lastRequest(), u"temperature"), 0.2);
    EXPECT_EQ(number(lastRequest(), u"num_predict"), 1024);
    EXPECT_EQ(content().stage, Stage::result);
    EXPECT_EQ(desktop.pasteboard.string().text, u"好的，周五见。"_s);
}

TEST_F(SmartSelectOnTheWire, organisingAsksWithItsWholePrompt) {
    use(ModelProvider::ollama);
    service.enqueue(answers::success(u"- 客户想改到周五"_s));
    open();
    press(PanelAction::organize);
    EXPECT_EQ(prompt(lastRequest()), golden(u"selection/organize"_s));
    EXPECT_EQ(number(lastRequest(), u"temperature"), 0.2);
    EXPECT_EQ(number(lastRequest(), u"num_predict"), 1400);
    EXPECT_EQ(desktop.pasteboard.string().text, u"- 客户想改到周五"_s);
}

TEST_F(SmartSelectOnTheWire, everyWireAnswers) {
    for (const ModelProvider provider : oneOfEachWire) {
        use(provider);
        const QString answer = u"好的，"_s + ModelProviders::id(provider);
        service.enqueue(answers::success(answer));
        open();
        press(PanelAction::reply);
        EXPECT_EQ(desktop.pasteboard.string().text, answer);
    }
}

TEST_F(SmartSelectOnTheWire, whatASelectionMeetsIsToldInThePopup) {
    use(ModelProvider::deepseek);
    struct Row {
        ServiceBehaviour answer;
        QString detail;
    };
    const Row rows[] = {
        {answers::error(500), u"模型服务返回错误状态，当前请求没有成功。"_s},
        {answers::plain(200, "{}"), u"模型返回格式无法解析。"_s},
        {answers::reset(), u"网络连接不可用，模型服务没有连上。"_s},
    };
    for (const Row& row : rows) {
        service.setDefault(row.answer);
        open();
        press(PanelAction::reply);
        EXPECT_EQ(content().stage, Stage::failure);
        EXPECT_EQ(content().failureTitle, u"处理失败"_s);
        EXPECT_EQ(content().failureDetail, row.detail);
        EXPECT_EQ(desktop.pasteboard.string().text, u"mine"_s);
    }
}

TEST_F(SmartSelectOnTheWire, anAnswerThatStaysEmptyIsAFailure) {
    use(ModelProvider::ollama);
    service.enqueue(answers::empty());
    service.enqueue(answers::empty());
    open();
    press(PanelAction::reply);
    EXPECT_EQ(content().stage, Stage::failure);
    EXPECT_EQ(desktop.pasteboard.string().text, u"mine"_s);
}

TEST_F(SmartSelectOnTheWire, aPopupThatGoesMeanwhileTakesNothingWithIt) {
    use(ModelProvider::ollama);
    service.enqueue(answers::slow(0.2, answers::success(u"太晚了"_s)));
    open();
    desktop.floatingPanels.act(PanelKind::selectionPopup, PanelAction::reply);
    ASSERT_TRUE(runUntil([&] { return !service.requests().empty(); }));
    overlay.reset();
    ASSERT_TRUE(runUntil([&] { return log.hasStartingWith(u"OutputContract stage=primary "_s); }));
    runFor(0.05);
    EXPECT_EQ(desktop.pasteboard.string().text, u"mine"_s);
}

}  // namespace
}  // namespace veltrin

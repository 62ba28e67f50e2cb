#include "ui/InterfaceTest.h"

#include <QSignalSpy>
#include <QWheelEvent>

#include <cmath>
#include <functional>
#include <vector>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

// As SelectionContent and PanelAction count them.
enum Stage { Offer, Thinking, Result, Failure };
enum Action { Open, Save, Reply, Organize, Retry, CopyOriginal, Close };

constexpr QRectF card{0, 0, 300, 244};
/// What stands nearer to the popup's edge than this looks cut.
constexpr double edge = 8;

/// The popup over a selection, drawn into memory.
class SelectionPopup : public InterfaceTest {
protected:
    QVariantMap contentOf(int stage) const {
        const bool isResult = stage == Result;
        const bool isFailure = stage == Failure;
        return {{u"stage"_s, stage},
                {u"tone"_s, isResult    ? 1
                            : isFailure ? 2
                                        : 0},
                {u"title"_s, u"思考结果"_s},
                {u"subtitle"_s, isResult ? u"已复制"_s : u"代码 · JavaScript · 123456789 字"_s},
                {u"recognizerName"_s, u"JSON 解析"_s},
                {u"agentName"_s, u"评论回复"_s},
                {u"agentSymbol"_s, u"bubble.left.fill"_s},
                {u"agentColorHex"_s, u"#FDDC8A"_s},
                {u"body"_s, u"王欣：明天下午三点的评审改到周五可以吗？\n李然：没问题。"_s},
                {u"failureTitle"_s, u"处理失败"_s},
                {u"failureDetail"_s, u"模型请求超时，当前服务响应太慢或文本较长。"_s},
                {u"failureSuggestion"_s, u"请稍后重试，或切换更快的模型；这不是系统权限问题。"_s}};
    }
    QQuickItem* makePopup(int stage, const QVariantMap& instead = {}) {
        QVariantMap content = contentOf(stage);
        content.insert(instead);
        QQuickItem* popup = make(u"SmartSelectPopup"_s, content);
        if (popup != nullptr) popup->setSize(card.size());
        // Has everything laid out.
        static_cast<void>(window().grabWindow());
        return popup;
    }

    /// What can be seen of the popup and is an element of a name that begins so.
    static QList<QQuickItem*> seen(QQuickItem* popup, QLatin1StringView element) {
        QList<QQuickItem*> found;
        const std::function<void(QQuickItem*)> walk = [&](QQuickItem* item) {
            if (!item->isVisible() || item->opacity() == 0) return;
            if (QLatin1StringView(item->metaObject()->className()).startsWith(element)) found.append(item);
            for (QQuickItem* child : item->childItems())
                walk(child);
        };
        walk(popup);
        return found;
    }
    static QRectF placeOf(QQuickItem* item, QQuickItem* popup) {
        return item->mapRectToItem(popup, QRectF(0, 0, item->width(), item->height()));
    }
    static QQuickItem* buttonOf(QQuickItem* popup, const QString& text) {
        for (QQuickItem* item : seen(popup, {})) {
            if (item->property("label").toString() == text) return item;
        }
        return nullptr;
    }
    /// Texts neither leave the popup nor each other's way, nor are they lower than what is written.
    static void expectTidy(QQuickItem* popup) {
        std::vector<QRectF> taken;
        for (QQuickItem* text : seen(popup, QLatin1StringView("VtText_"))) {
            bool scrolls = false;
            for (QQuickItem* above = text; above != popup; above = above->parentItem())
                scrolls = scrolls || above->property("wheeled").isValid();
            const QString words = text->property("text").toString();
            if (scrolls || words.isEmpty()) continue;
            const QRectF place = placeOf(text, popup);
            const std::string what = words.left(40).toStdString();
            EXPECT_TRUE(card.adjusted(edge, edge, -edge, -edge).contains(place)) << what;
            EXPECT_LE(text->property("contentWidth").toDouble(), place.width() + 1) << what;
            EXPECT_LE(text->property("contentHeight").toDouble(), place.height() + 3) << what;
            for (const QRectF& other : taken)
                EXPECT_FALSE(other.intersects(place.adjusted(1, 1, -1, -1))) << what;
            taken.push_back(place);
        }
        EXPECT_GE(taken.size(), 5U);
    }
};

TEST_F(SelectionPopup, everyStateIsTidyInBothLanguages) {
    for (const bool english : {false, true}) {
        look_.setEnglish(english);
        for (const int stage : {Offer, Thinking, Result, Failure}) {
            SCOPED_TRACE(testing::Message() << "stage " << stage << " english " << english);
            QQuickItem* popup = makePopup(stage);
            ASSERT_NE(popup, nullptr);
            expectTidy(popup);
            delete popup;
        }
    }
}

TEST_F(SelectionPopup, staysTidyWhateverItIsGiven) {
    const QString names[] = {QString(2000, u'X'), u"one\ntwo\nthree"_s, QString(2000, u'长'), QString(),
                             u"שלום\r\nשלום"_s};
    for (const QString& name : names) {
        for (const int stage : {Offer, Thinking, Result, Failure}) {
            SCOPED_TRACE(testing::Message() << "stage " << stage << " name " << name.left(5).toStdString());
            QQuickItem* popup = makePopup(stage, {{u"agentName"_s, name},
                                                  {u"agentSymbol"_s, u"no.such.symbol"_s},
                                                  {u"agentColorHex"_s, name},
                                                  {u"title"_s, name},
                                                  {u"subtitle"_s, name},
                                                  {u"body"_s, name},
                                                  {u"failureTitle"_s, name},
                                                  {u"failureDetail"_s, name},
                                                  {u"failureSuggestion"_s, name}});
            ASSERT_NE(popup, nullptr);
            if (!name.isEmpty()) expectTidy(popup);
            delete popup;
        }
    }
}

TEST_F(SelectionPopup, noLineOfALongTextIsCut) {
    for (const int stage : {Offer, Result, Failure}) {
        SCOPED_TRACE(stage);
        QQuickItem* popup = makePopup(
            stage, {{u"body"_s, u"word "_s.repeated(800)}, {u"failureDetail"_s, u"word "_s.repeated(800)}});
        ASSERT_NE(popup, nullptr);
        show();
        const auto texts = seen(popup, QLatin1StringView("PopupScrollText"));
        ASSERT_EQ(texts.size(), 1);
        const auto pages = seen(texts.first(), QLatin1StringView("QQuickFlickable"));
        ASSERT_EQ(pages.size(), 1);
        const double line = texts.first()->property("line").toDouble();
        const auto isWhole = [line](double pixels) { return std::fmod(pixels, line) == 0; };
        EXPECT_GE(pages.first()->height(), 3 * line);
        EXPECT_TRUE(isWhole(pages.first()->height())) << pages.first()->height();
        const QPointF middle = texts.first()->mapToScene({20, 20});
        double before = 0;
        for (const int turned : {-120, -50, -120, -30}) {
            QWheelEvent wheel(middle, middle, {}, {0, turned}, Qt::NoButton, Qt::NoModifier,
                              Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(&window(), &wheel);
            const double now = pages.first()->property("contentY").toDouble();
            EXPECT_TRUE(isWhole(now)) << now;
            EXPECT_GE(now, before);
            before = now;
        }
        EXPECT_GE(before, 4 * line) << "it does move";
        delete popup;
    }
}

TEST_F(SelectionPopup, eachButtonSaysWhatItIs) {
    QQuickItem* popup = makePopup(Failure);
    ASSERT_NE(popup, nullptr);
    show();
    QSignalSpy acted(popup, SIGNAL(acted(int)));
    const std::pair<QString, int> buttons[] = {{u"入库"_s, Save},
                                               {u"回复"_s, Reply},
                                               {u"整理"_s, Organize},
                                               {u"重试"_s, Retry},
                                               {u"复制原文"_s, CopyOriginal},
                                               {u"关闭"_s, Close}};
    for (const auto& [text, action] : buttons) {
        QQuickItem* button = buttonOf(popup, text);
        ASSERT_NE(button, nullptr) << text.toStdString();
        EXPECT_GE(button->height(), 28);
        click(button);
        ASSERT_FALSE(acted.isEmpty()) << text.toStdString();
        EXPECT_EQ(acted.takeFirst().first().toInt(), action) << text.toStdString();
        EXPECT_FALSE(button->hasActiveFocus());
    }
    popup->setProperty("dragged", true);
    for (const auto& [text, action] : buttons)
        click(buttonOf(popup, text));
    EXPECT_TRUE(acted.isEmpty()) << "what the popup was dragged by is not pressed";
}

TEST_F(SelectionPopup, whileAModelThinksOnlySavingAndClosingCanBeAskedFor) {
    QQuickItem* popup = makePopup(Thinking);
    ASSERT_NE(popup, nullptr);
    EXPECT_FALSE(buttonOf(popup, u"回复"_s)->isEnabled());
    EXPECT_FALSE(buttonOf(popup, u"整理"_s)->isEnabled());
    EXPECT_TRUE(buttonOf(popup, u"入库"_s)->isEnabled());
    EXPECT_TRUE(buttonOf(popup, u"关闭"_s)->isEnabled());
}

TEST_F(SelectionPopup, itsChipsTellWhoCanBeReplaced) {
    QQuickItem* popup = makePopup(Offer);
    ASSERT_NE(popup, nullptr);
    const auto chips = [&] {
        QStringList texts;
        for (QQuickItem* chip : seen(popup, QLatin1StringView("SmartSelectAgentChip")))
            texts.append(chip->property("name").toString() + u'|' + chip->property("mark").toString());
        return texts;
    };
    EXPECT_EQ(chips(), (QStringList{u"JSON 解析|不可替换"_s, u"评论回复|用户 Agent · 可替换"_s}));
    popup->setProperty("agentName", QString());
    EXPECT_EQ(chips(), (QStringList{u"JSON 解析|不可替换"_s, u"用户 Agent|可替换"_s}));
}

}  // namespace
}  // namespace veltrin

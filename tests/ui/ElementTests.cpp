#include "UI/Design/VtTheme.h"
#include "UI/Gallery/Gallery.h"
#include "support/fake/FakePreferences.h"
#include "ui/InterfaceTest.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QImage>
#include <QKeyEvent>
#include <QRegularExpression>
#include <QSignalSpy>

#include <cmath>
#include <functional>
#include <set>

namespace veltrin {
namespace {

QString nameOf(QObject* object) {
    auto* accessible = QAccessible::queryAccessibleInterface(object);
    return accessible != nullptr ? accessible->text(QAccessible::Name) : QString();
}

QAccessible::Role roleOf(QObject* object) {
    auto* accessible = QAccessible::queryAccessibleInterface(object);
    return accessible != nullptr ? accessible->role() : QAccessible::NoRole;
}

class Elements : public InterfaceTest {
protected:
    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QKeyEvent down(QEvent::KeyPress, key, modifiers);
        QCoreApplication::sendEvent(&window(), &down);
        QKeyEvent up(QEvent::KeyRelease, key, modifiers);
        QCoreApplication::sendEvent(&window(), &up);
    }
};

TEST_F(Elements, everyElementOnTheGalleryHasARoleAndAName) {
    FakePreferences preferences;
    for (const bool english : {false, true}) {
        look_.setEnglish(english);
        Gallery gallery(look_, preferences);
        ASSERT_NE(gallery.window(), nullptr) << gallery.problem().toStdString();
        int count = 0;
        const std::function<void(QAccessibleInterface*)> walk = [&](QAccessibleInterface* element) {
            for (int index = 0; index < element->childCount(); ++index) {
                QAccessibleInterface* child = element->child(index);
                ASSERT_NE(child, nullptr);
                ++count;
                EXPECT_NE(child->role(), QAccessible::NoRole);
                EXPECT_NE(child->text(QAccessible::Name).toStdString(), "")
                    << "role " << child->role() << " of " << child->object()->metaObject()->className()
                    << " in " << element->text(QAccessible::Name).toStdString() << " with the text "
                    << child->object()->property("text").toString().toStdString();
                walk(child);
            }
        };
        QAccessibleInterface* root = QAccessible::queryAccessibleInterface(gallery.window());
        ASSERT_NE(root, nullptr);
        walk(root);
        EXPECT_GT(count, 150);
    }
}

TEST_F(Elements, theGalleryShowsEveryElementThereIs) {
    std::set<QString> shown;
    const QString folder = QStringLiteral(VELTRIN_SOURCE_DIR "/src/UI");
    QDirIterator files(folder, {QStringLiteral("*.qml")}, QDir::Files, QDirIterator::Subdirectories);
    QString texts;
    QStringList elements;
    while (files.hasNext()) {
        QFile file(files.next());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        texts += QString::fromUtf8(file.readAll());
        elements.append(files.fileInfo().completeBaseName());
    }
    ASSERT_GT(elements.size(), 20);
    for (const QString& element : elements) {
        if (element == u"L" || element == u"GalleryWindow") continue;
        EXPECT_TRUE(texts.contains(QRegularExpression(QStringLiteral("\\b%1 \\{").arg(element))))
            << element.toStdString() << " is used nowhere";
    }
}

TEST_F(Elements, theGalleryIsNotEmptyPaint) {
    FakePreferences preferences;
    Gallery gallery(look_, preferences);
    ASSERT_NE(gallery.window(), nullptr);
    const QImage picture = gallery.window()->grabWindow();
    std::set<QRgb> colors;
    for (int y = 0; y < picture.height(); y += 3) {
        for (int x = 0; x < picture.width(); x += 3)
            colors.insert(picture.pixel(x, y));
    }
    EXPECT_GT(colors.size(), 300U);
    EXPECT_TRUE(colors.contains(QColor(QStringLiteral("#FFE066")).rgb()));
}

TEST_F(Elements, aButtonIsPressedByMouseKeysAndAccessibility) {
    QQuickItem* button = makeFrom("VtButton { text: 'Save' }");
    ASSERT_NE(button, nullptr);
    show();
    const QSignalSpy clicked(button, SIGNAL(clicked()));
    click(button);
    EXPECT_EQ(clicked.count(), 1);
    press(Qt::Key_Space);
    press(Qt::Key_Return);
    EXPECT_EQ(clicked.count(), 3);
    QAccessible::queryAccessibleInterface(button)->actionInterface()->doAction(
        QAccessibleActionInterface::pressAction());
    EXPECT_EQ(clicked.count(), 4);
    EXPECT_EQ(roleOf(button), QAccessible::Button);
    EXPECT_EQ(nameOf(button), QStringLiteral("Save"));
}

TEST_F(Elements, aDisabledButtonIsNotPressed) {
    QQuickItem* button = makeFrom("VtButton { text: 'Save'; enabled: false }");
    ASSERT_NE(button, nullptr);
    show();
    const QSignalSpy clicked(button, SIGNAL(clicked()));
    click(button);
    QMetaObject::invokeMethod(button, "trigger");
    EXPECT_EQ(clicked.count(), 0);
}

TEST_F(Elements, aSwitchAsksAndDoesNotSwitchItself) {
    QQuickItem* toggle = makeFrom("VtSwitch { label: 'Sounds' }");
    ASSERT_NE(toggle, nullptr);
    show();
    QSignalSpy toggled(toggle, SIGNAL(toggled(bool)));
    click(toggle);
    ASSERT_EQ(toggled.count(), 1);
    EXPECT_TRUE(toggled.takeFirst().first().toBool());
    EXPECT_FALSE(toggle->property("checked").toBool());
    toggle->setProperty("checked", true);
    EXPECT_TRUE(QAccessible::queryAccessibleInterface(toggle)->state().checked);
}

TEST_F(Elements, textIsNeverTakenForMarkup) {
    QQuickItem* text = makeFrom("VtText { text: '<b>bold</b><img src=\"file:///etc/passwd\">' }");
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->property("textFormat").toInt(), Qt::PlainText);
    EXPECT_EQ(nameOf(text), QStringLiteral("<b>bold</b><img src=\"file:///etc/passwd\">"));
}

TEST_F(Elements, aTileTakesNoColourButAColour) {
    const char* tile = "VtIconTile { symbol: 'bolt.fill'; colorHex: '%1' }";
    for (const char* broken : {"", "#FFF", "red", "#GGGGGG", "#FFE06680", "url(x)", "#FFE066\\n"}) {
        QQuickItem* item = makeFrom(QString::fromLatin1(tile).arg(QLatin1String(broken)).toUtf8());
        ASSERT_NE(item, nullptr);
        EXPECT_FALSE(item->property("colored").toBool()) << broken;
        EXPECT_EQ(item->property("fill").value<QColor>(), Tokens::windowLight().surfaceAlt);
    }
    QQuickItem* item = makeFrom(QString::fromLatin1(tile).arg(QLatin1String("#ffe066")).toUtf8());
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->property("fill").value<QColor>(), QColor(0xFF, 0xE0, 0x66));
}

TEST_F(Elements, progressStaysWithinItsEnds) {
    QQuickItem* bar = makeFrom("VtProgress { label: 'Model' }");
    ASSERT_NE(bar, nullptr);
    for (const auto& [given, shown] : {std::pair{-1.0, 0.0}, {2.0, 1.0}, {std::nan(""), 0.0}, {0.5, 0.5}}) {
        bar->setProperty("value", given);
        EXPECT_EQ(bar->property("part").toDouble(), shown);
    }
}

// MARK: The choice

QVariantMap row(int slot, const QString& title) {
    return {{QStringLiteral("slot"), slot},
            {QStringLiteral("title"), title},
            {QStringLiteral("symbol"), QStringLiteral("scope")}};
}

class Choice : public Elements {
protected:
    QQuickItem* makeChoice(const QVariantList& agents, const QVariantList& presets) {
        QQuickItem* bubble = make(QStringLiteral("OptimizeChoiceBubble"),
                                  {{QStringLiteral("text"), QStringLiteral("优化提示词")},
                                   {QStringLiteral("presetMark"), QStringLiteral("预设")},
                                   {QStringLiteral("agents"), agents},
                                   {QStringLiteral("presets"), presets}});
        if (bubble != nullptr) bubble->setSize({310, 248});
        return bubble;
    }
    QList<QQuickItem*> rows(QQuickItem* bubble) {
        QList<QQuickItem*> found;
        const std::function<void(QQuickItem*)> walk = [&](QQuickItem* item) {
            if (QString::fromLatin1(item->metaObject()->className()).startsWith(u"ChoiceRow"))
                found.append(item);
            for (QQuickItem* child : item->childItems())
                walk(child);
        };
        walk(bubble);
        return found;
    }
};

TEST_F(Choice, aClickOnARowGivesItsNumber) {
    QQuickItem* bubble = makeChoice({row(1, QStringLiteral("甲")), row(2, QStringLiteral("乙"))},
                                    {row(2, QStringLiteral("预")), row(4, QStringLiteral("设"))});
    ASSERT_NE(bubble, nullptr);
    show();
    QSignalSpy chosen(bubble, SIGNAL(slotChosen(int)));
    const auto found = rows(bubble);
    ASSERT_EQ(found.size(), 4);
    for (QQuickItem* each : found)
        click(each);
    QList<int> slots_;
    for (const auto& arguments : chosen)
        slots_.append(arguments.first().toInt());
    EXPECT_EQ(slots_, (QList<int>{1, 2, 2, 4}));
}

TEST_F(Choice, rowsStayWhenThePanelComesAgainWithOtherWords) {
    QQuickItem* bubble = makeChoice({row(1, QStringLiteral("甲"))}, {row(1, QStringLiteral("预"))});
    ASSERT_NE(bubble, nullptr);
    const auto before = rows(bubble);
    bubble->setProperty("agents", QVariantList{row(1, QStringLiteral("乙"))});
    EXPECT_EQ(rows(bubble), before);
    EXPECT_EQ(before.first()->property("title").toString(), QStringLiteral("乙"));
    EXPECT_EQ(nameOf(before.last()), QStringLiteral("预设 预"));
}

TEST_F(Choice, aFullChoiceFitsItsPanel) {
    QVariantList four;
    for (int slot = 1; slot <= 4; ++slot)
        four.append(row(slot, QStringLiteral("一个名字特别特别特别特别特别特别特别特别长的智能体")));
    QQuickItem* bubble = makeChoice(four, four);
    ASSERT_NE(bubble, nullptr);
    static_cast<void>(window().grabWindow());
    for (QQuickItem* each : rows(bubble)) {
        const QRectF place = each->mapRectToItem(bubble, QRectF(0, 0, each->width(), each->height()));
        EXPECT_TRUE(QRectF(0, 0, 310, 248).contains(place));
        EXPECT_GE(each->height(), Tokens::target);
    }
}

TEST_F(Choice, takesWhateverTheUsersFilesSay) {
    QQuickItem* bubble = makeChoice({QVariantMap{}, row(2, QString(100000, u'长')),
                                     QVariantMap{{QStringLiteral("slot"), QStringLiteral("x")}}},
                                    {QVariantMap{{QStringLiteral("colorHex"), QStringLiteral("none")}}});
    ASSERT_NE(bubble, nullptr);
    static_cast<void>(window().grabWindow());
    EXPECT_EQ(rows(bubble).size(), 4);
}

TEST_F(Choice, neverTakesTheKeyboard) {
    QQuickItem* bubble = makeChoice({row(1, QStringLiteral("甲"))}, {});
    ASSERT_NE(bubble, nullptr);
    show();
    for (QQuickItem* each : rows(bubble)) {
        EXPECT_FALSE(each->activeFocusOnTab());
        click(each);
        EXPECT_FALSE(each->hasActiveFocus());
    }
}

// MARK: Messages

TEST_F(Elements, aMessagePartsItsHeadlineFromItsExplanation) {
    QQuickItem* panel =
        make(QStringLiteral("TextPanel"), {{QStringLiteral("text"), QStringLiteral("已复制\n结果：一\n二")}});
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(panel->property("headline").toString(), QStringLiteral("已复制"));
    EXPECT_EQ(panel->property("explanation").toString(), QStringLiteral("结果：一\n二"));
    EXPECT_EQ(roleOf(panel), QAccessible::AlertMessage);
    EXPECT_EQ(nameOf(panel), QStringLiteral("已复制\n结果：一\n二"));
    panel->setProperty("text", QStringLiteral("Veltrin Ready"));
    EXPECT_EQ(panel->property("headline").toString(), QStringLiteral("Veltrin Ready"));
    EXPECT_EQ(panel->property("explanation").toString(), QString());
}

TEST_F(Elements, theWindowsOwnChoiceHasItsFourWays) {
    QQuickItem* panel = make(QStringLiteral("OptimizePanel"), {});
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(nameOf(panel), QStringLiteral("优化提示词"));
    const auto options = panel->property("options").toList();
    ASSERT_EQ(options.size(), 4);
    QStringList titles;
    for (const QVariant& option : options)
        titles.append(option.toMap().value(QStringLiteral("title")).toString());
    EXPECT_EQ(titles, (QStringList{QStringLiteral("更精确"), QStringLiteral("重组结构"),
                                   QStringLiteral("适配模型"), QStringLiteral("适配格式")}));
}

TEST_F(Elements, thinkingStandsStillWhenTheUserWantsLessMotion) {
    look_.setReducedMotion(true);
    QQuickItem* dots = makeFrom("PopupThinkingDots { color: 'red'; dotSize: 6; spacing: 2 }");
    ASSERT_NE(dots, nullptr);
    show();
    EXPECT_EQ(dots->implicitWidth(), 22);
    const QVariant before = dots->property("phase");
    QObject* timer = nullptr;
    for (QObject* child : dots->children()) {
        if (QString::fromLatin1(child->metaObject()->className()).startsWith(u"QQmlTimer")) timer = child;
    }
    ASSERT_NE(timer, nullptr);
    EXPECT_FALSE(timer->property("running").toBool());
    look_.setReducedMotion(false);
    EXPECT_TRUE(timer->property("running").toBool());
    window().hide();
    EXPECT_FALSE(timer->property("running").toBool()) << "a hidden panel costs nothing";
    EXPECT_EQ(dots->property("phase"), before);
}

}  // namespace
}  // namespace veltrin

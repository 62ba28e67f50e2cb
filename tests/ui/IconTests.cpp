#include "Foundation/Json.h"
#include "UI/Icons/IconPath.h"
#include "UI/Icons/IconSet.h"

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace veltrin {
namespace {

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Every value of a member named "icon", at any depth.
void collectIcons(const Json& value, std::set<QString>& into) {
    if (const auto* object = value.object()) {
        for (const auto& [name, member] : *object) {
            if (name == u"icon" && member.isString()) into.insert(*member.toString());
            collectIcons(member, into);
        }
    }
    if (const auto* array = value.array()) {
        for (const Json& element : *array)
            collectIcons(element, into);
    }
}

TEST(IconSet, drawsEverySymbolThatTheContentNames) {
    std::set<QString> symbols;
    QDirIterator files(QStringLiteral(VELTRIN_SOURCE_DIR "/resources"), {QStringLiteral("*.json")},
                       QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const auto json = Json::tryParse(contentOf(files.next()));
        ASSERT_TRUE(json) << files.filePath().toStdString();
        collectIcons(*json, symbols);
    }
    ASSERT_GT(symbols.size(), 80U);
    for (const QString& symbol : symbols)
        EXPECT_TRUE(IconSet::shared().lists(symbol)) << symbol.toStdString();
}

TEST(IconSet, drawsEverySymbolThatTheInterfaceNames) {
    const QRegularExpression named(QStringLiteral(R"re((?:symbol|systemName): "([^"]+)")re"));
    std::set<QString> symbols;
    QDirIterator files(QStringLiteral(VELTRIN_SOURCE_DIR "/src/UI"), {QStringLiteral("*.qml")}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        auto matches = named.globalMatch(QString::fromUtf8(contentOf(files.next())));
        while (matches.hasNext())
            symbols.insert(matches.next().captured(1));
    }
    ASSERT_GT(symbols.size(), 10U);
    for (const QString& symbol : symbols)
        EXPECT_TRUE(IconSet::shared().lists(symbol)) << symbol.toStdString();
}

TEST(IconSet, hasAWholeDrawingForEverySymbol) {
    const QStringList symbols = IconSet::shared().symbols();
    ASSERT_GT(symbols.size(), 100);
    for (const QString& symbol : symbols) {
        const QPainterPath& path = IconSet::shared().path(symbol);
        const QRectF bounds = path.boundingRect();
        // Room for half the line's width.
        EXPECT_GE(std::min(bounds.left(), bounds.top()), 0.5) << symbol.toStdString();
        EXPECT_LE(std::max(bounds.right(), bounds.bottom()), IconSet::unit - 0.5) << symbol.toStdString();
        EXPECT_GT(bounds.width() + bounds.height(), 12) << symbol.toStdString();
    }
}

TEST(IconSet, findsARelativeOfAnUnknownSymbol) {
    EXPECT_EQ(IconSet::shared().glyph(QStringLiteral("bolt.slash.fill")), QStringLiteral("bolt"));
    EXPECT_EQ(IconSet::shared().glyph(QStringLiteral("globe.asia.australia.fill")), QStringLiteral("globe"));
    EXPECT_EQ(IconSet::shared().glyph(QStringLiteral("book")), QStringLiteral("book"));
}

TEST(IconSet, neverLacksADrawing) {
    for (const QString& symbol : {QStringLiteral("no.such.thing"), QString(), QStringLiteral("..."),
                                  QStringLiteral("名字"), QString(10000, u'.'), QString(10000, u'x')}) {
        EXPECT_EQ(IconSet::shared().glyph(symbol), QStringLiteral("sparkles"));
        EXPECT_FALSE(IconSet::shared().path(symbol).isEmpty());
    }
}

TEST(IconPath, readsLinesCurvesAndArcs) {
    const auto lines = IconPath::parse(u"M1 2h3v4l-3-4z");
    ASSERT_TRUE(lines);
    EXPECT_EQ(lines->boundingRect(), QRectF(1, 2, 3, 4));
    const auto implicit = IconPath::parse(u"M0 0 4,0 4 4");
    ASSERT_TRUE(implicit);
    EXPECT_EQ(implicit->elementCount(), 3);
    const auto smooth = IconPath::parse(u"M0 0c0 2 2 2 2 0s2-2 2 0q1 1 2 0");
    ASSERT_TRUE(smooth);
    EXPECT_EQ(smooth->currentPosition(), QPointF(6, 0));
    const auto circle = IconPath::parse(u"M12 3a9 9 0 1 0 0 18a9 9 0 0 0 0-18z");
    ASSERT_TRUE(circle);
    const QRectF bounds = circle->boundingRect();
    EXPECT_NEAR(bounds.left(), 3, 0.02);
    EXPECT_NEAR(bounds.right(), 21, 0.02);
    EXPECT_NEAR(bounds.top(), 3, 0.02);
    EXPECT_NEAR(bounds.bottom(), 21, 0.02);
}

TEST(IconPath, readsArcFlagsThatTouchWhatFollows) {
    const auto apart = IconPath::parse(u"M3 5a2 2 0 0 1 2 -2");
    const auto touching = IconPath::parse(u"M3 5a2 2 0 012-2");
    ASSERT_TRUE(apart && touching);
    EXPECT_EQ(*apart, *touching);
}

TEST(IconPath, growsAnArcThatCannotReach) {
    const auto path = IconPath::parse(u"M0 0A1 1 0 0 1 10 0");
    ASSERT_TRUE(path);
    EXPECT_EQ(path->currentPosition().toPoint(), QPoint(10, 0));
    EXPECT_NEAR(path->boundingRect().height(), 5, 0.02);
}

TEST(IconPath, refusesWhatIsNoDrawing) {
    for (const char16_t* text : {u"", u"  ", u"L1 1", u"M", u"M1", u"M1 x", u"M1 1T2 2", u"M1 1L", u"M1 1 2",
                                 u"M1 1zz3", u"M1 1a1 1 0 2 0 3 3", u"M1 1c1 1 1 1", u"M1 1 -- 3"})
        EXPECT_FALSE(IconPath::parse(QStringView(text))) << QString::fromUtf16(text).toStdString();
}

}  // namespace
}  // namespace veltrin

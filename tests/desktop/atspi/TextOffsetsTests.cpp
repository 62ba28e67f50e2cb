#include "Platform/Linux/AtSpi/TextOffsets.h"

#include <gtest/gtest.h>

#include <limits>

namespace veltrin::AtSpi {
namespace {

using namespace Qt::StringLiterals;

// "a", a family of three people joined by U+200D (8 units, 5 code points), "b", two Chinese characters, "e"
// with a combining accent.
const QString mixed = u"a\U0001F468\u200D\U0001F469\u200D\U0001F467b中文e\u0301"_s;
constexpr qint64 mixedUnits = 14;
constexpr qint64 mixedCodePoints = 11;

constexpr qint64 smallest = std::numeric_limits<qint64>::min();
constexpr qint64 largest = std::numeric_limits<qint64>::max();

TEST(TextOffsets, readsTheUnitOffTheCharacterCount) {
    ASSERT_EQ(mixed.size(), mixedUnits);
    EXPECT_TRUE(TextOffsets(mixed, mixedCodePoints, Toolkit::other).countsCodePoints());
    EXPECT_FALSE(TextOffsets(mixed, mixedUnits, Toolkit::other).countsCodePoints());
    EXPECT_TRUE(TextOffsets(mixed, mixedCodePoints, Toolkit::qt).countsCodePoints());
}

TEST(TextOffsets, goesByTheToolkitWhenTheCountDoesNotFit) {
    EXPECT_TRUE(TextOffsets(mixed, 3, Toolkit::gtk3).countsCodePoints());
    EXPECT_TRUE(TextOffsets(mixed, -1, Toolkit::gtk4).countsCodePoints());
    EXPECT_FALSE(TextOffsets(mixed, 3, Toolkit::qt).countsCodePoints());
    EXPECT_FALSE(TextOffsets(mixed, 3, Toolkit::other).countsCodePoints());
}

TEST(TextOffsets, partsLinesByLineFeeds) {
    const TextOffsets offsets(u"one\u2029two\u2028three"_s, 13, Toolkit::qt);
    EXPECT_EQ(offsets.text(), u"one\ntwo\nthree"_s);
    EXPECT_EQ(offsets.toUtf16(4), 4);
    EXPECT_EQ(TextOffsets(u"one\u2029two"_s, 7, Toolkit::gtk3).text(), u"one\u2029two"_s)
        << "elsewhere they are characters of the text";
}

TEST(TextOffsets, convertsCodePointsBothWays) {
    const TextOffsets offsets(mixed, mixedCodePoints, Toolkit::gtk3);
    EXPECT_EQ(offsets.toUtf16(1), 1);
    EXPECT_EQ(offsets.toUtf16(2), 3);  // behind the first person
    EXPECT_EQ(offsets.toUtf16(6), 9);  // before "b"
    EXPECT_EQ(offsets.toUtf16(7), 10);
    EXPECT_EQ(offsets.toUtf16(9), 12);
    EXPECT_EQ(offsets.toUtf16(10), 13);  // between the letter and its accent
    EXPECT_EQ(offsets.length(), mixedCodePoints);
    for (qint64 offset = 0; offset <= mixedCodePoints; ++offset) {
        EXPECT_EQ(offsets.toToolkit(offsets.toUtf16(offset)), offset);
    }
}

TEST(TextOffsets, leavesUtf16Alone) {
    const TextOffsets offsets(mixed, mixedUnits, Toolkit::qt);
    for (const qint64 offset : {0, 1, 3, 9, 14}) {
        EXPECT_EQ(offsets.toUtf16(offset), offset);
        EXPECT_EQ(offsets.toToolkit(offset), offset);
    }
    EXPECT_EQ(offsets.length(), mixedUnits);
}

TEST(TextOffsets, clampsEveryInteger) {
    for (const qint64 count : {mixedCodePoints, mixedUnits}) {
        const TextOffsets offsets(mixed, count, Toolkit::other);
        EXPECT_EQ(offsets.toUtf16(smallest), 0);
        EXPECT_EQ(offsets.toUtf16(-1), 0);
        EXPECT_EQ(offsets.toUtf16(largest), mixedUnits);
        EXPECT_EQ(offsets.toToolkit(smallest), 0);
        EXPECT_EQ(offsets.toToolkit(largest), count);
        EXPECT_EQ(offsets.toToolkit(TextRange{smallest, largest}), (OffsetRange{0, count}));
        EXPECT_EQ(offsets.toToolkit(TextRange{largest, largest}), (OffsetRange{count, count}));
        EXPECT_EQ(offsets.toToolkit(TextRange{3, smallest}).end, offsets.toToolkit(3));
        EXPECT_EQ(offsets.toUtf16(OffsetRange{largest, smallest}), (TextRange{0, mixedUnits}));
    }
    const TextOffsets nothing({}, 0, Toolkit::gtk3);
    EXPECT_EQ(nothing.toUtf16(5), 0);
    EXPECT_EQ(nothing.toToolkit(TextRange{2, 2}), (OffsetRange{0, 0}));
}

TEST(TextOffsets, neverCutsAPair) {
    const TextOffsets codePoints(mixed, mixedCodePoints, Toolkit::gtk3);
    EXPECT_EQ(codePoints.toToolkit(2), 1);
    EXPECT_EQ(codePoints.toToolkit(TextRange{2, 1}), (OffsetRange{1, 2}));
    EXPECT_EQ(codePoints.toToolkit(TextRange{1, 1}), (OffsetRange{1, 2}));
    const TextOffsets units(mixed, mixedUnits, Toolkit::qt);
    EXPECT_EQ(units.toToolkit(2), 1);
    EXPECT_EQ(units.toToolkit(TextRange{2, 4}), (OffsetRange{1, 6}));
    EXPECT_EQ(units.toToolkit(TextRange{1, 1}), (OffsetRange{1, 3}));
}

TEST(TextOffsets, countsALoneSurrogateAsOne) {
    const QString broken = QString(QChar(0xDC00)) + u"x"_s + QChar(0xD83D) + u"\U0001F600"_s + QChar(0xD83D);
    const TextOffsets offsets(broken, 5, Toolkit::gtk3);
    ASSERT_TRUE(offsets.countsCodePoints());
    EXPECT_EQ(offsets.toUtf16(1), 1);
    EXPECT_EQ(offsets.toUtf16(3), 3);
    EXPECT_EQ(offsets.toUtf16(4), 5);
    EXPECT_EQ(offsets.toUtf16(5), 6);
    EXPECT_EQ(offsets.toToolkit(6), 5);
}

TEST(TextOffsets, ordersARangeGivenBackwards) {
    const TextOffsets offsets(u"hello"_s, 5, Toolkit::gtk3);
    EXPECT_EQ(offsets.toUtf16(OffsetRange{4, 1}), (TextRange{1, 3}));
    EXPECT_EQ(offsets.selection(OffsetRange{4, 1}), (OffsetRange{1, 4}));
}

TEST(TextOffsets, stripsGeckosPaddingBehindPairsOnly) {
    const TextOffsets offsets(u"\U0001F600\uFEFFx\uFEFFy\U0001F600\uFEFF"_s, 8, Toolkit::gecko);
    EXPECT_EQ(offsets.text(), u"\U0001F600x\uFEFFy\U0001F600"_s);
    EXPECT_EQ(offsets.toUtf16(2), 2);
    EXPECT_EQ(offsets.length(), 7);
    EXPECT_EQ(TextOffsets(u"\U0001F600\uFEFF"_s, 3, Toolkit::qt).text().size(), 3);
}

TEST(TextOffsets, undoesChromiumsDoubleConversion) {
    // What Chromium reports for the code points r of the text is the code-point offset of the unit r.
    const QString text = u"\U0001F600\U0001F601ab\U0001F602cd"_s;
    const qint64 codePoints = 7;
    const TextOffsets offsets(text, codePoints, Toolkit::chromium);
    const auto codePointsBefore = [&text](qint64 unit) {
        return static_cast<qint64>(text.left(unit).toUcs4().size());
    };
    const std::pair<qint64, qint64> expressible[] = {{0, 2}, {2, 4}, {4, 6}, {2, 5}};
    for (const auto& [start, end] : expressible) {
        const OffsetRange reported{codePointsBefore(start), codePointsBefore(end)};
        EXPECT_EQ(offsets.selection(reported), (OffsetRange{start, end})) << start << ' ' << end;
        EXPECT_EQ(offsets.reportOf(OffsetRange{start, end}), reported) << start << ' ' << end;
    }
    const TextOffsets plain(u"hello"_s, 5, Toolkit::chromium);
    EXPECT_EQ(plain.selection(OffsetRange{1, 4}), (OffsetRange{1, 4}));
}

TEST(TextOffsets, knowsWhenChromiumCannotTellTheSelection) {
    const TextOffsets chromium(u"\U0001F600\U0001F601ab"_s, 4, Toolkit::chromium);
    EXPECT_FALSE(chromium.isSelectionKnown(OffsetRange{0, 0}));
    EXPECT_EQ(chromium.reportOf(OffsetRange{0, 3}), (OffsetRange{0, 0})) << "the end lies inside a pair";
    EXPECT_EQ(chromium.reportOf(OffsetRange{0, 4}), (OffsetRange{0, 2}));
    EXPECT_TRUE(chromium.isSelectionKnown(OffsetRange{0, 2}));
    EXPECT_TRUE(TextOffsets(u"abc"_s, 3, Toolkit::chromium).isSelectionKnown(OffsetRange{0, 0}));
    EXPECT_TRUE(TextOffsets(mixed, mixedCodePoints, Toolkit::gtk3).isSelectionKnown(OffsetRange{0, 0}));
}

TEST(TextOffsets, namesToolkits) {
    EXPECT_EQ(toolkitNamed(u"gtk"_s, u"3.24.38"_s), Toolkit::gtk3);
    EXPECT_EQ(toolkitNamed(u"GTK"_s, u"4.8.3"_s), Toolkit::gtk4);
    EXPECT_EQ(toolkitNamed(u"Qt"_s, u"6.4.2"_s), Toolkit::qt);
    EXPECT_EQ(toolkitNamed(u"Gecko"_s, {}), Toolkit::gecko);
    EXPECT_EQ(toolkitNamed(u"Chromium"_s, {}), Toolkit::chromium);
    EXPECT_EQ(toolkitNamed(u"J2SE-access-bridge"_s, {}), Toolkit::other);
    EXPECT_EQ(toolkitNamed({}, {}), Toolkit::other);
    EXPECT_EQ(toolkitNamed(u"gtk"_s, u"3.24.38"_s, u"soffice"_s), Toolkit::office);
    EXPECT_EQ(toolkitNamed(u"gtk"_s, u"3.24.38"_s, u"mousepad"_s), Toolkit::gtk3);
}

}  // namespace
}  // namespace veltrin::AtSpi

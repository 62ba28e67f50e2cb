#include "Foundation/Characters.h"

#include <QTextBoundaryFinder>

#include <gtest/gtest.h>

#include <random>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

qsizetype countOneByOne(const QString& text) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype count = 0;
    while (finder.toNextBoundary() > 0)
        ++count;
    return count;
}

TEST(Characters, countsAnyMixtureAsItsBoundariesSay) {
    const QStringList pieces{u"a"_s,          u"中"_s,     u"文"_s,         u"。"_s,
                             u"\n"_s,         u"\r\n"_s,   u"\r"_s,         u"\u0301"_s,
                             u"\u200D"_s,     u"\uFE0F"_s, u"\U0001F468"_s, u"\U0001F3FD"_s,
                             u"\u1100"_s,     u"\uAC00"_s, u"\u11A8"_s,     u"д"_s,
                             u"ガ"_s,         u"\uFF9E"_s, u"\u00AD"_s,     QString(QChar(0xD83D)),
                             u"©"_s,          u"…"_s,      u"\u200B"_s,     QString(QChar(0xDE00)),
                             u"\U0001F1E9"_s, u"\u1F00"_s, u"\u0600"_s,     u"\u0903"_s,
                             u"\u0E33"_s,     u"\u0E01"_s, u"\U00011FE8"_s, u"\U000111EB"_s};
    constexpr unsigned ofScriptsWithRulesOfTheirOwn = 6;
    std::mt19937 random(7);
    for (int round = 0; round < 3000; ++round) {
        QString text;
        const auto length = random() % 14;
        const auto choice =
            static_cast<unsigned>(pieces.size()) - (round % 2 == 0 ? ofScriptsWithRulesOfTheirOwn : 0);
        for (unsigned i = 0; i < length; ++i)
            text += pieces[static_cast<qsizetype>(random() % choice)];
        ASSERT_EQ(Characters::count(text), countOneByOne(text)) << text.toUtf8().toHex().constData();
    }
}

}  // namespace
}  // namespace veltrin

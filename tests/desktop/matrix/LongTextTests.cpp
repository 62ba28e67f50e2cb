// Long texts by accessibility and by paste.
#include "desktop/matrix/FieldMatrix.h"
#include "support/Slowdown.h"
#include "support/desktop/Waiting.h"

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

constexpr qsizetype million = 1'000'000;
constexpr double longSeconds = 60;

QString linesOf(const QString& line, qsizetype length) {
    QString text;
    text.reserve(length + line.size());
    while (text.size() < length)
        text += line;
    return text;
}

class LongText : public testing::TestWithParam<const char*> {
protected:
    MatrixWorld& world() { return MatrixWorld::shared(); }
    FieldApplication& application() { return world().application(QString::fromLatin1(GetParam())); }
};

// One after the other: each is started once.
INSTANTIATE_TEST_SUITE_P(Mousepad, LongText, testing::Values("mousepad"));
INSTANTIATE_TEST_SUITE_P(Qt, LongText, testing::Values("qt-widgets"));

TEST_P(LongText, aSelectionOfAMillionCharactersGoesOutAndBackUnchanged) {
    const QString head = u"before "_s;
    const QString passage = linesOf(u"a line with 中文 and \U0001F600 in it\n"_s, million);
    const QString tail = u" behind"_s;
    FieldDriver& field = application().field(u"text"_s);
    ASSERT_TRUE(world().x().activate(application().window(), 5 * patience));
    world().clipboard.ownText(u"the user's own"_s);
    field.set({head + passage + tail, head.size(), head.size() + passage.size()});
    ExternalTextReadResult read;
    ASSERT_TRUE(waitUntil(longSeconds * patience, [&] {
        read = world().text.reader.readFocusedText();
        return read.selectedText == passage;
    }));
    EXPECT_TRUE(read.fullText == head + passage + tail);
    EXPECT_EQ(read.selectedRange, (TextRange{head.size(), passage.size()}));
    EXPECT_EQ(read.textContext.contextBefore, head.trimmed());
    EXPECT_EQ(read.textContext.contextAfter, tail.trimmed());

    const QString replacement =
        linesOf(u"another \U0001F468\u200D\U0001F469\u200D\U0001F467 line 行\n"_s, million);
    ASSERT_TRUE(world().text.writeback.apply(replacement, read, false).success);
    QString now;
    waitUntil(longSeconds * patience, [&] {
        now = field.state().text;
        return now == head + replacement + tail;
    });
    EXPECT_TRUE(now == head + replacement + tail) << now.size();
    world().text.loan.giveBackPending();
    EXPECT_EQ(world().clipboard.text(), u"the user's own"_s);
}

}  // namespace
}  // namespace veltrin

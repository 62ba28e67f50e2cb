#include "support/fake/FakeDesktop.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

const QString secretHint = u"x-kde-passwordManagerHint"_s;

TEST(FakePasteboardSnapshot, everythingComesBackAsItWas) {
    FakeDesktop desktop;
    FakePasteboard& pasteboard = desktop.pasteboard;
    pasteboard.copyRichFrom(0, u"words 你"_s,
                            {{u"text/html"_s, "<b>words</b>"}, {u"image/png"_s, "\x89PNG"}});
    const auto taken = pasteboard.snapshot();
    ASSERT_TRUE(taken);
    ASSERT_TRUE(pasteboard.setString(u"ours"_s, PasteboardContent::temporary));
    ASSERT_TRUE(pasteboard.restore(*taken));
    EXPECT_EQ(pasteboard.string().value(), u"words 你"_s);
    EXPECT_FALSE(pasteboard.string().isSecret);
    EXPECT_EQ(pasteboard.current().otherData.value(u"text/html"_s), "<b>words</b>");
    EXPECT_EQ(pasteboard.types(), (QStringList{u"UTF8_STRING"_s, u"image/png"_s, u"text/html"_s}));
    EXPECT_EQ(pasteboard.snapshot(), taken);
}

TEST(FakePasteboardSnapshot, aSecretComesBackMarked) {
    FakeDesktop desktop;
    desktop.pasteboard.copySecretFrom(0, u"pass"_s);
    EXPECT_TRUE(desktop.pasteboard.types().contains(secretHint));
    ASSERT_TRUE(desktop.pasteboard.restore(*desktop.pasteboard.snapshot()));
    EXPECT_TRUE(desktop.pasteboard.string().isSecret);
    EXPECT_EQ(desktop.pasteboard.current().content, PasteboardContent::secret);
}

TEST(FakePasteboardSnapshot, anEmptyPasteboardHasNoItems) {
    FakeDesktop desktop;
    desktop.pasteboard.clearContents();
    EXPECT_EQ(desktop.pasteboard.snapshot(), PasteboardSnapshot());
    EXPECT_EQ(desktop.pasteboard.types(), QStringList());
    ASSERT_TRUE(desktop.pasteboard.setString(u"ours"_s, PasteboardContent::temporary));
    ASSERT_TRUE(desktop.pasteboard.restore({}));
    EXPECT_EQ(desktop.pasteboard.string().status, PasteboardString::Status::none);
}

TEST(FakePasteboardSnapshot, aSilentTypeCostsItsTimeAndIsLeftOut) {
    FakeDesktop desktop;
    desktop.pasteboard.copyRichFrom(0, u"words"_s, {}, {u"text/html"_s, u"image/bmp"_s});
    const double begin = desktop.runLoop.now();
    const auto taken = desktop.pasteboard.snapshot();
    EXPECT_NEAR(desktop.runLoop.now() - begin, 0.1, 1e-9);
    ASSERT_TRUE(taken && taken->items.size() == 1);
    ASSERT_EQ(taken->items.front().data.size(), 1U);
    EXPECT_EQ(taken->items.front().data.front().type, u"UTF8_STRING"_s);
}

TEST(FakePasteboardSnapshot, anOwnerThatDoesNotAnswerGivesNone) {
    FakeDesktop desktop;
    desktop.pasteboard.put(u"words"_s);
    desktop.pasteboard.stopAnswering();
    const double begin = desktop.runLoop.now();
    EXPECT_EQ(desktop.pasteboard.snapshot(), std::nullopt);
    EXPECT_NEAR(desktop.runLoop.now() - begin, 0.4, 1e-9);
    EXPECT_EQ(desktop.pasteboard.types(), QStringList());
}

TEST(FakePasteboardSnapshot, aPasteboardThatCannotBeTakenIsNotRestored) {
    FakeDesktop desktop;
    desktop.pasteboard.put(u"words"_s);
    const auto taken = desktop.pasteboard.snapshot();
    desktop.pasteboard.copyFrom(0, u"newer"_s);
    desktop.pasteboard.refusesOwnership = true;
    EXPECT_FALSE(desktop.pasteboard.restore(*taken));
    EXPECT_EQ(desktop.pasteboard.peek(), u"newer"_s);
}

}  // namespace
}  // namespace veltrin

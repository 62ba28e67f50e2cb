// Applications whose accessibility cannot be relied on: bounded time, and nothing lost or doubled.
#include "Foundation/MVPLog.h"
#include "desktop/matrix/FieldMatrix.h"
#include "support/Slowdown.h"
#include "support/desktop/Waiting.h"

#include <QFile>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

const QString text = u"alpha beta gamma"_s;
const QString usersClipboard = u"the user's own"_s;

class UnreliableApplication : public testing::Test {
protected:
    void TearDown() override {
        EXPECT_EQ(world().x().keysDown(), 0);
        program_.reset();
    }

    MatrixWorld& world() { return MatrixWorld::shared(); }
    ExternalTextDesktop& desktop() { return world().text; }

    void start(const QString& mischief) {
        world().clipboard.ownText(usersClipboard);
        program_ = std::make_unique<Program>(
            world().desktop(),
            QStringList{QStringLiteral(VELTRIN_BINARY_DIR "/bin/veltrin_unreliable_editor"), u"--text"_s,
                        text, u"--mischief"_s, mischief});
        program_->waitForWindow(20 * patience);
        ASSERT_TRUE(waitUntil(10 * patience, [&] {
            element_ = focusedElement(desktop().accessibility, program_->pid());
            return element_ != nullptr && desktop().accessibility.inspect(element_).isFocused;
        }));
    }
    /// What a read of the field gives where `passage` is selected; made by hand where the field cannot be
    /// read.
    ExternalTextReadResult readOf(const QString& passage) {
        const auto front = desktop().workspace.frontmostApplication();
        ExternalTextReadResult read;
        read.source = ExternalTextReadResult::Source::selectedText;
        read.text = passage;
        read.selectedText = passage;
        read.fullText = text;
        read.selectedRange = TextRange{text.indexOf(passage), passage.size()};
        read.processIdentifier = program_->pid();
        read.targetWindow = front ? front->window : 0;
        read.element = element_;
        return read;
    }
    bool select(const QString& passage) {
        return desktop().accessibility.setAttributeValue(element_, AXAttribute::selectedTextRange,
                                                         TextRange{text.indexOf(passage), passage.size()}) ==
               AXError::success;
    }
    /// What the field holds, by its own copy key.
    QString held() {
        world().typist.chord(u"Ctrl+a"_s);
        const int before = world().clipboard.ownerChanges();
        world().typist.chord(u"Ctrl+c"_s);
        waitUntil(5 * patience, [&] { return world().clipboard.ownerChanges() > before; });
        return world().clipboard.text(5).value_or(u"nothing"_s);
    }
    QString log() const {
        QFile file(MVPLog::logURL());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    std::unique_ptr<Program> program_;
    AXElementRef element_;
};

TEST_F(UnreliableApplication, oneThatSaysYesAndWritesNothingIsSeenThroughAndPastedInto) {
    start(u"lie"_s);
    ASSERT_TRUE(select(u"beta"_s));
    const auto read = desktop().reader.readFocusedText();
    ASSERT_EQ(read.selectedText, u"beta"_s);
    for (const bool replaceAll : {false, true}) {
        const auto direct = desktop().directWriteback.apply(u"new"_s, read, replaceAll);
        EXPECT_FALSE(direct.success);
        EXPECT_EQ(direct.failure, WritebackFailure::writeFailed);
    }
    EXPECT_EQ(desktop().reader.readFocusedText().fullText, text);
    EXPECT_EQ(world().clipboard.text(), usersClipboard);

    // A write of one kind that came to nothing does not stand in the way of the other.
    ASSERT_TRUE(desktop().writeback.apply(u"new"_s, read, false).success);
    EXPECT_TRUE(waitUntil(5 * patience,
                          [&] { return desktop().reader.readFocusedText().fullText == u"alpha new gamma"; }));
    desktop().loan.giveBackPending();
    EXPECT_EQ(world().clipboard.text(), usersClipboard);
}

TEST_F(UnreliableApplication, oneThatAnswersAfterItsTimeCostsThatTimeAndReadsAsNothing) {
    start(u"late"_s);
    const double begin = monotonicSeconds();
    const auto read = desktop().reader.readFocusedText();
    EXPECT_LT(monotonicSeconds() - begin, 0.6 + 0.4 * patience);
    EXPECT_EQ(read.source, ExternalTextReadResult::Source::none);
    EXPECT_EQ(read.text, QString());
    EXPECT_TRUE(log().contains(u"AX value text unavailable: error -25204"));
    // The late answer is not taken for that to a later question.
    EXPECT_TRUE(
        waitUntil(10 * patience, [&] { return desktop().accessibility.inspect(element_).isAnswered; }));
    EXPECT_NE(desktop().reader.readFocusedText().text, text);
    EXPECT_EQ(held(), text);
}

TEST_F(UnreliableApplication, aWriteThatLandsLateIsNotWrittenTwice) {
    start(u"lateWrite"_s);
    ASSERT_TRUE(select(u"beta"_s));
    const auto read = desktop().reader.readFocusedText();
    ASSERT_EQ(read.selectedText, u"beta"_s);
    // It is not there yet: the caller is told that nothing is certain, and hands the text over as a copy.
    EXPECT_FALSE(desktop().directWriteback.apply(u"new"_s, read, false).success);
    QString now;
    waitUntil(5 * patience, [&] {
        now = desktop().reader.readFocusedText().fullText;
        return now.contains(u"new");
    });
    EXPECT_EQ(now.count(u"new"), 1) << qPrintable(now);
    EXPECT_TRUE(now.contains(u"alpha ") && now.contains(u" gamma")) << qPrintable(now);
    EXPECT_EQ(world().clipboard.text(), usersClipboard);
}

TEST_F(UnreliableApplication, oneThatChangesItsTextDuringTheCallIsReadAtOneMomentAndLosesNothing) {
    start(u"restless"_s);
    ASSERT_EQ(world().clipboard.text(), usersClipboard);
    const auto read = desktop().reader.readFocusedText();
    // Value and caret come from one answer: the text is one that stood there.
    EXPECT_TRUE(read.text.startsWith(text)) << qPrintable(read.text);
    EXPECT_EQ(QString(read.text).remove(text).remove(u"\nmore"_s), QString());
    EXPECT_EQ(read.text, read.fullText);
    const auto result = desktop().directWriteback.apply(u"new"_s, readOf(u"beta"_s), false);
    const QString after = held();
    EXPECT_TRUE(after.contains(u"alpha ") && after.contains(u" gamma")) << qPrintable(after);
    // In a text that never stands still nobody can tell whether a write has landed; it is tried once.
    EXPECT_LE(after.count(u"new"), 1) << qPrintable(after);
    EXPECT_TRUE(!result.success || after.contains(u"new")) << qPrintable(after);
}

TEST_F(UnreliableApplication, oneThatEndsWhileItIsReadReadsAsNothingAndIsNotWrittenInto) {
    start(u"vanish"_s);
    const auto before = readOf(u"beta"_s);
    const double begin = monotonicSeconds();
    EXPECT_EQ(desktop().reader.readFocusedText().source, ExternalTextReadResult::Source::none);
    EXPECT_FALSE(desktop().writeback.apply(u"new"_s, before, false).success);
    EXPECT_FALSE(desktop().directWriteback.apply(u"new"_s, before, false).success);
    EXPECT_LT(monotonicSeconds() - begin, 2 + 2 * patience);
    EXPECT_TRUE(program_->waitForExit(5 * patience));
    EXPECT_EQ(world().clipboard.text(), usersClipboard);
}

}  // namespace
}  // namespace veltrin

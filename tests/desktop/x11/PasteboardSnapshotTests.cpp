#include "Platform/Linux/X11/X11Pasteboard.h"
#include "support/Slowdown.h"
#include "support/desktop/DesktopTest.h"

namespace veltrin {
namespace {

const QString secretHint = QStringLiteral("x-kde-passwordManagerHint");

QByteArray noise(qsizetype size) {
    QByteArray bytes(size, Qt::Uninitialized);
    quint32 state = 12345;
    for (char& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24U);
    }
    return bytes;
}

ClipboardSnapshot richContent() {
    ClipboardSnapshot content = ClipboardSnapshot::ofText(QStringLiteral("words 你好 \U0001F600"));
    content.contents[QStringLiteral("text/html")] = "<b>words</b> \xE4\xBD\xA0\xE5\xA5\xBD";
    content.contents[QStringLiteral("image/png")] = "\x89PNG\r\n\x1A\n" + noise(5000);
    content.contents[QStringLiteral("application/x-of-our-own")] = QByteArray("\0\1\2\0three", 9);
    return content;
}

QStringList typesIn(const PasteboardSnapshot& snapshot) {
    QStringList types;
    for (const PasteboardItem& item : snapshot.items) {
        for (const PasteboardData& data : item.data)
            types << data.type;
    }
    types.sort();
    return types;
}

class PasteboardSnapshotOnX11 : public DesktopTest {
protected:
    PasteboardSnapshotOnX11() : pasteboard(std::make_unique<X11Pasteboard>(desktop().display().toLatin1())) {}

    /// On a busy machine an owner may need longer than it is waited for; another time it does not.
    PasteboardSnapshot snapshotWith(const QStringList& types) {
        QStringList wanted = types;
        wanted.sort();
        std::optional<PasteboardSnapshot> taken;
        waitUntil(10 * patience, [&] {
            taken = pasteboard->snapshot();
            return taken && typesIn(*taken) == wanted;
        });
        EXPECT_TRUE(taken);
        EXPECT_EQ(typesIn(taken.value_or(PasteboardSnapshot())), wanted);
        return taken.value_or(PasteboardSnapshot());
    }
    void expectComesBack(const ClipboardSnapshot& content) {
        clipboard().own(content);
        const PasteboardSnapshot taken = snapshotWith(content.contents.keys());
        ASSERT_TRUE(pasteboard->setString(QStringLiteral("ours meanwhile"), PasteboardContent::temporary));
        ASSERT_TRUE(pasteboard->restore(taken));
        EXPECT_FALSE(clipboard().isOwner());
        EXPECT_EQ(clipboard().snapshot().contents, content.contents);
        EXPECT_EQ(clipboard().snapshot().unanswered, QStringList());
    }

    std::unique_ptr<X11Pasteboard> pasteboard;
};

TEST_F(PasteboardSnapshotOnX11, textPageAndPictureAndATypeOfOnesOwnComeBackByteForByte) {
    expectComesBack(richContent());
}

TEST_F(PasteboardSnapshotOnX11, aMegabyteAndAHalfInPiecesComesBack) {
    ClipboardSnapshot content;
    content.contents[QStringLiteral("UTF8_STRING")] = "short";
    content.contents[QStringLiteral("application/x-large")] = noise(qsizetype{1536} * 1024);
    expectComesBack(content);
}

TEST_F(PasteboardSnapshotOnX11, aRestoredTextIsTheStringAndIsKeptByAManager) {
    clipboard().own(richContent());
    const auto taken = snapshotWith(richContent().contents.keys());
    ASSERT_TRUE(pasteboard->restore(taken));
    EXPECT_EQ(pasteboard->string().value(), QStringLiteral("words 你好 \U0001F600"));
    EXPECT_FALSE(pasteboard->string().isSecret);
    EXPECT_TRUE(clipboard().targets().contains(QStringLiteral("SAVE_TARGETS")));
    // What we offer ourselves is taken without asking anybody, and is the same again.
    EXPECT_EQ(pasteboard->snapshot(), taken);
}

TEST_F(PasteboardSnapshotOnX11, aSecretComesBackMarked) {
    ClipboardSnapshot secret = ClipboardSnapshot::ofText(QStringLiteral("pass"));
    secret.contents[secretHint] = "secret";
    clipboard().own(secret);
    ASSERT_TRUE(pasteboard->restore(snapshotWith(secret.contents.keys())));
    EXPECT_TRUE(pasteboard->string().isSecret);
    EXPECT_EQ(clipboard().read(secretHint).bytes, QByteArray("secret"));
    EXPECT_FALSE(clipboard().targets().contains(QStringLiteral("SAVE_TARGETS")));
}

TEST_F(PasteboardSnapshotOnX11, aTypeThatNeverComesIsLeftOutAndCostsLittle) {
    ClipboardSnapshot content = ClipboardSnapshot::ofText(QStringLiteral("words"));
    content.unanswered << QStringLiteral("text/html") << QStringLiteral("image/bmp");
    clipboard().own(content);
    snapshotWith(content.contents.keys());
    const double begin = monotonicSeconds();
    pasteboard->snapshot();
    EXPECT_LT(monotonicSeconds() - begin, 0.4 + 0.3 * patience);
}

TEST_F(PasteboardSnapshotOnX11, manySilentTypesCostNoMoreThanTheWhole) {
    ClipboardSnapshot content = ClipboardSnapshot::ofText(QStringLiteral("words"));
    for (int i = 0; i < 40; ++i)
        content.unanswered << QStringLiteral("application/x-silent-%1").arg(i);
    clipboard().own(content);
    const double begin = monotonicSeconds();
    const auto taken = pasteboard->snapshot();
    EXPECT_LT(monotonicSeconds() - begin, 0.4 + 0.3 * patience);
    snapshotWith(content.contents.keys());
    // The pasteboard goes on working, and late answers harm nobody.
    clipboard().ownText(QStringLiteral("next"));
    EXPECT_EQ(pasteboard->string().value(), QStringLiteral("next"));
}

TEST_F(PasteboardSnapshotOnX11, anOwnerThatOwesItsTextGivesNoSnapshot) {
    ClipboardSnapshot content;
    content.contents[QStringLiteral("text/html")] = "<b>words</b>";
    content.unanswered << QStringLiteral("UTF8_STRING");
    clipboard().own(content);
    EXPECT_EQ(pasteboard->snapshot(), std::nullopt);
}

TEST_F(PasteboardSnapshotOnX11, textThatCameInOneFormOnlyIsOfferedInTheUsualOneToo) {
    ClipboardSnapshot content;
    content.contents[QStringLiteral("STRING")] =
        "Gr\xFC\xDF"
        "e";
    content.unanswered << QStringLiteral("UTF8_STRING");
    clipboard().own(content);
    ASSERT_TRUE(pasteboard->restore(snapshotWith({QStringLiteral("STRING")})));
    EXPECT_EQ(clipboard().text(), QStringLiteral("Grüße"));
    EXPECT_EQ(clipboard().read(QStringLiteral("STRING")).bytes, content.contents[QStringLiteral("STRING")]);
}

TEST_F(PasteboardSnapshotOnX11, aSilentOwnerGivesNoSnapshot) {
    clipboard().ownSilently();
    const double begin = monotonicSeconds();
    EXPECT_EQ(pasteboard->snapshot(), std::nullopt);
    EXPECT_LT(monotonicSeconds() - begin, 0.4 + 0.3 * patience);
}

TEST_F(PasteboardSnapshotOnX11, aStoppedOwnerGivesNoSnapshotAndAWholeOneWhenItGoesOn) {
    Program editor = Program::qtEditor(desktop(), {QStringLiteral("--text"), QStringLiteral("copied words")});
    atspi().waitForField(editor);
    typist().chord(QStringLiteral("Ctrl+a"));
    typist().chord(QStringLiteral("Ctrl+c"));
    ASSERT_TRUE(waitUntil(5 * patience, [&] { return clipboard().text() == u"copied words"; }));
    editor.stop();
    const double begin = monotonicSeconds();
    EXPECT_EQ(pasteboard->snapshot(), std::nullopt);
    EXPECT_EQ(pasteboard->types(), QStringList());
    EXPECT_LT(monotonicSeconds() - begin, 0.9 + 0.3 * patience);
    editor.resume();
    ASSERT_TRUE(waitUntil(10 * patience, [&] {
        const auto taken = pasteboard->snapshot();
        return taken && taken->items.size() == 1 && pasteboard->restore(*taken);
    }));
    EXPECT_EQ(clipboard().text(), QStringLiteral("copied words"));
    EXPECT_FALSE(clipboard().isOwner());
}

TEST_F(PasteboardSnapshotOnX11, anEmptyClipboardIsEmptyAgain) {
    const auto taken = pasteboard->snapshot();
    ASSERT_TRUE(taken);
    EXPECT_TRUE(taken->items.empty());
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("ours"), PasteboardContent::temporary));
    ASSERT_TRUE(pasteboard->restore(*taken));
    EXPECT_EQ(clipboard().snapshot(), ClipboardSnapshot());
    EXPECT_EQ(pasteboard->string().status, PasteboardString::Status::none);
}

TEST_F(PasteboardSnapshotOnX11, anItemOfWhichNothingCameIsAnEmptyItem) {
    ClipboardSnapshot content;
    content.unanswered << QStringLiteral("application/x-silent");
    clipboard().own(content);
    const auto taken = pasteboard->snapshot();
    ASSERT_TRUE(taken);
    ASSERT_EQ(taken->items.size(), 1U);
    EXPECT_TRUE(taken->items.front().data.empty());
}

TEST_F(PasteboardSnapshotOnX11, theTypesOnOfferAreListedWithoutThoseThatOnlyDescribe) {
    EXPECT_EQ(pasteboard->types(), QStringList());
    clipboard().own(richContent());
    QStringList types = pasteboard->types();
    types.sort();
    EXPECT_EQ(types, richContent().contents.keys());
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("ours"), PasteboardContent::lasting));
    EXPECT_TRUE(pasteboard->types().contains(QStringLiteral("UTF8_STRING")));
    EXPECT_FALSE(pasteboard->types().contains(QStringLiteral("SAVE_TARGETS")));
}

TEST_F(PasteboardSnapshotOnX11, ourOwnTextIsSnapshotToo) {
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("ours 你"), PasteboardContent::lasting));
    const auto taken = pasteboard->snapshot();
    ASSERT_TRUE(taken);
    clipboard().ownText(QStringLiteral("theirs"));
    ASSERT_TRUE(pasteboard->restore(*taken));
    EXPECT_EQ(clipboard().text(), QStringLiteral("ours 你"));
    EXPECT_EQ(clipboard().read(QStringLiteral("STRING")).bytes, QByteArray("ours ?"));
}

TEST_F(PasteboardSnapshotOnX11, whatNobodyShouldHaveWrittenIsStillOffered) {
    PasteboardItem item;
    item.data = {{QStringLiteral("application/x-odd"), "12345", QStringLiteral("WORDS/32")},
                 {QStringLiteral("TARGETS"), "nonsense", {}},
                 {QStringLiteral("application/x-odd"), "again", {}},
                 {QStringLiteral("text/html"), "<i>", QStringLiteral("///")}};
    PasteboardSnapshot odd;
    odd.items.push_back(item);
    ASSERT_TRUE(pasteboard->restore(odd));
    EXPECT_EQ(clipboard().read(QStringLiteral("application/x-odd")).bytes, QByteArray("12345"));
    EXPECT_EQ(clipboard().read(QStringLiteral("text/html")).bytes, QByteArray("<i>"));
    EXPECT_TRUE(clipboard().targets().contains(QStringLiteral("TIMESTAMP")));
}

TEST(PasteboardSnapshotWithoutAServer, failsAsAValue) {
    X11Pasteboard none("/nonexistent/display:0");
    EXPECT_EQ(none.snapshot(), std::nullopt);
    EXPECT_EQ(none.types(), QStringList());
    EXPECT_FALSE(none.restore({}));
}

}  // namespace
}  // namespace veltrin

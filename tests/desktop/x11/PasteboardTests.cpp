#include "Platform/Linux/X11/X11Pasteboard.h"
#include "support/Slowdown.h"
#include "support/desktop/DesktopTest.h"

#include <chrono>
#include <thread>

namespace veltrin {
namespace {

using Status = PasteboardString::Status;

QString longText() {
    QString text;
    text.reserve(1'100'000);
    for (int i = 0; text.size() < 1'000'000; ++i)
        text += QStringLiteral("line %1 \u4F60\u597D \U0001F600\n").arg(i);
    return text;
}

class PasteboardOnX11 : public DesktopTest {
protected:
    PasteboardOnX11() : pasteboard(std::make_unique<X11Pasteboard>(desktop().display().toLatin1())) {}

    xcb_timestamp_t now() {
        auto* connection = x().connection();
        const xcb_window_t window = xcb_generate_id(connection);
        const quint32 events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_create_window(connection, 0, window, x().root(), 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, 0,
                          XCB_CW_EVENT_MASK, &events);
        xcb_change_property(connection, XCB_PROP_MODE_APPEND, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, 0,
                            nullptr);
        xcb_flush(connection);
        xcb_timestamp_t time = 0;
        waitUntil(2, [&] {
            while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(connection)}) {
                if ((event->response_type & 0x7F) == XCB_PROPERTY_NOTIFY) {
                    time = reinterpret_cast<const xcb_property_notify_event_t&>(*event).time;
                }
            }
            return time != 0;
        });
        xcb_destroy_window(connection, window);
        return time;
    }

    /// What a requestor gets that stamps its request with this time; nothing when it is refused.
    std::optional<QByteArray> requestedAt(xcb_timestamp_t time, const char* target,
                                          xcb_window_t requestor = 0) {
        auto* connection = x().connection();
        const xcb_window_t window = requestor != 0 ? requestor : makeWindow();
        xcb_convert_selection(connection, window, x().atom("CLIPBOARD"), x().atom(target),
                              x().atom("TEST_RESULT"), time);
        xcb_flush(connection);
        std::optional<bool> given;
        waitUntil(2, [&] {
            while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(connection)}) {
                if ((event->response_type & 0x7F) != XCB_SELECTION_NOTIFY) continue;
                given = reinterpret_cast<const xcb_selection_notify_event_t&>(*event).property != XCB_NONE;
            }
            return given.has_value();
        });
        if (!given.value_or(false)) return std::nullopt;
        return x().property(window, "TEST_RESULT");
    }
    xcb_window_t makeWindow() {
        const xcb_window_t window = xcb_generate_id(x().connection());
        xcb_create_window(x().connection(), 0, window, x().root(), 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                          0, 0, nullptr);
        return window;
    }
    /// Lets the server's clock go on, so that two moments have two stamps.
    void tick() { std::this_thread::sleep_for(std::chrono::milliseconds(5)); }

    std::unique_ptr<X11Pasteboard> pasteboard;
};

TEST_F(PasteboardOnX11, anEmptyClipboardHasNoString) {
    EXPECT_EQ(pasteboard->string().status, Status::none);
}

TEST_F(PasteboardOnX11, readsWhatAnotherProgramOffers) {
    clipboard().ownText(QStringLiteral("Gr\u00FC\u00DFe \u4F60 \U0001F600"));
    EXPECT_EQ(pasteboard->string().value(), QStringLiteral("Gr\u00FC\u00DFe \u4F60 \U0001F600"));
}

TEST_F(PasteboardOnX11, readsLatinTextFromAnOwnerThatHasNothingElse) {
    ClipboardSnapshot snapshot;
    snapshot.contents[QStringLiteral("STRING")] =
        "Gr\xFC\xDF"
        "e";
    clipboard().own(snapshot);
    EXPECT_EQ(pasteboard->string().value(), QStringLiteral("Gr\u00FC\u00DFe"));
}

TEST_F(PasteboardOnX11, aPictureIsNoString) {
    ClipboardSnapshot snapshot;
    snapshot.contents[QStringLiteral("image/png")] = "\x89PNG";
    clipboard().own(snapshot);
    EXPECT_EQ(pasteboard->string().status, Status::none);
}

TEST_F(PasteboardOnX11, anEmptyStringIsAString) {
    clipboard().ownText(QString());
    EXPECT_EQ(pasteboard->string().status, Status::value);
    EXPECT_TRUE(pasteboard->setString(QString(), PasteboardContent::lasting));
    EXPECT_EQ(pasteboard->string().value(), QString());
    EXPECT_EQ(clipboard().text(), QString());
}

TEST_F(PasteboardOnX11, readsALongTextThatComesInPieces) {
    const QString text = longText();
    clipboard().ownText(text);
    EXPECT_TRUE(pasteboard->string().value() == text);
}

TEST_F(PasteboardOnX11, offersALongTextInPieces) {
    const QString text = longText();
    ASSERT_TRUE(pasteboard->setString(text, PasteboardContent::lasting));
    EXPECT_TRUE(clipboard().text() == text);
    EXPECT_TRUE(pasteboard->string().value() == text);
}

TEST_F(PasteboardOnX11, anOwnerThatNeverAnswersCostsHalfASecondAndIsNotTakenForEmpty) {
    clipboard().ownSilently();
    const double begin = monotonicSeconds();
    EXPECT_EQ(pasteboard->string().status, Status::unanswered);
    const double took = monotonicSeconds() - begin;
    EXPECT_GT(took, 0.4);
    EXPECT_LT(took, 0.5 + 0.2 * patience);
}

TEST_F(PasteboardOnX11, aLateAnswerIsNotTakenForThatToTheNextRequest) {
    clipboard().ownText(QStringLiteral("old"));
    clipboard().setAnswerDelay(0.6);
    EXPECT_EQ(pasteboard->string().status, Status::unanswered);
    clipboard().setAnswerDelay(0);
    clipboard().ownText(QStringLiteral("new"));
    EXPECT_EQ(pasteboard->string().value(), QStringLiteral("new"));
}

TEST_F(PasteboardOnX11, countsEveryChangeByAnybodyInTheServersOrder) {
    const auto before = pasteboard->changeCount();
    EXPECT_EQ(pasteboard->changeCount(), before);
    clipboard().ownText(QStringLiteral("a"));
    const auto other = pasteboard->changeCount();
    EXPECT_GT(other, before);
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("b"), PasteboardContent::lasting));
    const auto own = pasteboard->changeCount();
    EXPECT_GT(own, other);
    pasteboard->clearContents();
    const auto cleared = pasteboard->changeCount();
    EXPECT_GT(cleared, own);
    pasteboard->string();
    EXPECT_EQ(pasteboard->changeCount(), cleared);
}

TEST_F(PasteboardOnX11, clearedItIsOwnedAndOffersNothing) {
    clipboard().ownText(QStringLiteral("a"));
    pasteboard->clearContents();
    EXPECT_TRUE(clipboard().hasOwner());
    EXPECT_FALSE(clipboard().isOwner());
    EXPECT_EQ(clipboard().read(QStringLiteral("UTF8_STRING")).status,
              ClipboardProbe::Answer::Status::refused);
    EXPECT_EQ(pasteboard->string().status, Status::none);
}

TEST_F(PasteboardOnX11, offersEveryFormOfPlainText) {
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("\u00FC\u4F60"), PasteboardContent::lasting));
    for (const auto* target : {"UTF8_STRING", "text/plain", "text/plain;charset=utf-8", "TEXT"}) {
        EXPECT_EQ(clipboard().read(QString::fromLatin1(target)).bytes,
                  QStringLiteral("\u00FC\u4F60").toUtf8())
            << target;
    }
    EXPECT_EQ(clipboard().read(QStringLiteral("STRING")).bytes, QByteArray("\xFC?"));
    EXPECT_EQ(clipboard().read(QStringLiteral("image/png")).status, ClipboardProbe::Answer::Status::refused);
}

TEST_F(PasteboardOnX11, marksTemporaryContentForClipboardManagersAndLastingContentForSaving) {
    const QString hint = QStringLiteral("x-kde-passwordManagerHint");
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("a"), PasteboardContent::temporary));
    EXPECT_TRUE(clipboard().targets().contains(hint));
    EXPECT_FALSE(clipboard().targets().contains(QStringLiteral("SAVE_TARGETS")));
    EXPECT_EQ(clipboard().read(hint).bytes, QByteArray("secret"));
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("a"), PasteboardContent::lasting));
    EXPECT_FALSE(clipboard().targets().contains(hint));
    EXPECT_TRUE(clipboard().targets().contains(QStringLiteral("SAVE_TARGETS")));
}

TEST_F(PasteboardOnX11, tellsWhatItsOwnerMarksSecret) {
    ClipboardSnapshot secret = ClipboardSnapshot::ofText(QStringLiteral("pass"));
    secret.contents[QStringLiteral("x-kde-passwordManagerHint")] = "secret";
    clipboard().own(secret);
    EXPECT_EQ(pasteboard->string().value(), QStringLiteral("pass"));
    EXPECT_TRUE(pasteboard->string().isSecret);
    secret.contents[QStringLiteral("x-kde-passwordManagerHint")] = "public";
    clipboard().own(secret);
    EXPECT_FALSE(pasteboard->string().isSecret);
    clipboard().ownText(QStringLiteral("word"));
    EXPECT_FALSE(pasteboard->string().isSecret);
}

TEST_F(PasteboardOnX11, aSecretThatIsPutBackIsMarkedAgain) {
    const QString hint = QStringLiteral("x-kde-passwordManagerHint");
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("pass"), PasteboardContent::secret));
    EXPECT_TRUE(pasteboard->string().isSecret);
    EXPECT_TRUE(clipboard().targets().contains(hint));
    EXPECT_FALSE(clipboard().targets().contains(QStringLiteral("SAVE_TARGETS")));
    EXPECT_EQ(clipboard().read(hint).bytes, QByteArray("secret"));
    EXPECT_EQ(clipboard().text(), QStringLiteral("pass"));
    X11Pasteboard other(desktop().display().toLatin1());
    EXPECT_TRUE(other.string().isSecret);
}

TEST_F(PasteboardOnX11, whatIsOfferedForAMomentCountsAsSecret) {
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("a"), PasteboardContent::temporary));
    EXPECT_TRUE(pasteboard->string().isSecret);
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("a"), PasteboardContent::lasting));
    EXPECT_FALSE(pasteboard->string().isSecret);
}

TEST_F(PasteboardOnX11, aLateRequestGetsWhatWasOnOfferAtItsTime) {
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("pasted"), PasteboardContent::temporary));
    tick();
    const auto keyTime = now();
    tick();
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("the user's"), PasteboardContent::lasting));
    EXPECT_EQ(requestedAt(keyTime, "UTF8_STRING"), QByteArray("pasted"));
    EXPECT_EQ(requestedAt(now(), "UTF8_STRING"), QByteArray("the user's"));
    EXPECT_EQ(requestedAt(XCB_CURRENT_TIME, "UTF8_STRING"), QByteArray("the user's"));
}

TEST_F(PasteboardOnX11, aLateRequestIsServedAfterTheClipboardWasEmptiedToo) {
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("pasted"), PasteboardContent::temporary));
    tick();
    const auto keyTime = now();
    tick();
    pasteboard->clearContents();
    EXPECT_EQ(requestedAt(keyTime, "UTF8_STRING"), QByteArray("pasted"));
    EXPECT_EQ(requestedAt(now(), "UTF8_STRING"), std::nullopt);
}

TEST_F(PasteboardOnX11, aLateRequestorThatGivesNoTimeLaterGoesOnGettingTheSame) {
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("pasted"), PasteboardContent::temporary));
    tick();
    const auto keyTime = now();
    tick();
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("the user's"), PasteboardContent::lasting));
    const auto requestor = makeWindow();
    EXPECT_TRUE(requestedAt(keyTime, "TARGETS", requestor));
    EXPECT_EQ(requestedAt(XCB_CURRENT_TIME, "UTF8_STRING", requestor), QByteArray("pasted"));
}

TEST_F(PasteboardOnX11, aPostedPasteFetchesItsTextThoughItGivesNoTime) {
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("pasted"), PasteboardContent::temporary));
    const auto requestor = makeWindow();
    pasteboard->pastePosted(requestor);
    tick();
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("the user's"), PasteboardContent::lasting));
    // Another client is not meant.
    EXPECT_EQ(clipboard().text(), QStringLiteral("the user's"));
    // A look at what could be pasted does not take the place of the paste.
    EXPECT_EQ(requestedAt(XCB_CURRENT_TIME, "UTF8_STRING", requestor), QByteArray("pasted"));
    EXPECT_EQ(requestedAt(XCB_CURRENT_TIME, "UTF8_STRING", requestor), QByteArray("pasted"));
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
    EXPECT_EQ(requestedAt(now(), "UTF8_STRING", requestor), QByteArray("the user's"));
}

TEST_F(PasteboardOnX11, aPasteLongAfterThePostedOneIsTheUsersThoughItGivesNoTime) {
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("pasted"), PasteboardContent::temporary));
    const auto requestor = makeWindow();
    pasteboard->pastePosted(requestor);
    EXPECT_EQ(requestedAt(XCB_CURRENT_TIME, "UTF8_STRING", requestor), QByteArray("pasted"));
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("the user's"), PasteboardContent::lasting));
    EXPECT_TRUE(waitUntil(5, [&] {
        return requestedAt(XCB_CURRENT_TIME, "UTF8_STRING", makeWindow()) == QByteArray("the user's");
    }));
}

TEST_F(PasteboardOnX11, aPostedPasteThatIsStampedLaterFetchesItsTextAndTheNextOneTheUsers) {
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("pasted"), PasteboardContent::temporary));
    const auto requestor = makeWindow();
    pasteboard->pastePosted(requestor);
    tick();
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("the user's"), PasteboardContent::lasting));
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
    EXPECT_TRUE(requestedAt(now(), "TARGETS", requestor));
    EXPECT_EQ(requestedAt(now(), "UTF8_STRING", requestor), QByteArray("pasted"));
    EXPECT_EQ(requestedAt(now(), "UTF8_STRING", requestor), QByteArray("the user's"));
}

TEST_F(PasteboardOnX11, aRequestFromBeforeTheOwnershipIsRefused) {
    const auto before = now();
    tick();
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("a"), PasteboardContent::lasting));
    EXPECT_EQ(requestedAt(before, "UTF8_STRING"), std::nullopt);
}

TEST_F(PasteboardOnX11, whenAnotherProgramTakesOverItsTextCounts) {
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("mine"), PasteboardContent::lasting));
    for (int round = 0; round < 20; ++round) {
        const QString text = QStringLiteral("theirs %1").arg(round);
        clipboard().ownText(text);
        EXPECT_EQ(pasteboard->string().value(), text);
        ASSERT_TRUE(pasteboard->setString(QStringLiteral("mine"), PasteboardContent::lasting));
        EXPECT_EQ(pasteboard->string().value(), QStringLiteral("mine"));
    }
}

TEST_F(PasteboardOnX11, servesWhileTheMainThreadIsBlocked) {
    const QString text = longText();
    ASSERT_TRUE(pasteboard->setString(text, PasteboardContent::temporary));
    // This thread, the main one, does nothing but read by another connection: no loop of the pasteboard's
    // runs.
    EXPECT_TRUE(clipboard().text() == text);
}

TEST_F(PasteboardOnX11, answersSeveralTargetsAtOnce) {
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("both"), PasteboardContent::lasting));
    auto* connection = x().connection();
    const auto window = makeWindow();
    const quint32 pairs[] = {x().atom("UTF8_STRING"), x().atom("FIRST"),  x().atom("image/png"),
                             x().atom("SECOND"),      x().atom("STRING"), x().atom("THIRD")};
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, x().atom("TEST_RESULT"),
                        x().atom("ATOM_PAIR"), 32, 6, pairs);
    ASSERT_TRUE(requestedAt(now(), "MULTIPLE", window));
    EXPECT_EQ(x().property(window, "FIRST"), QByteArray("both"));
    EXPECT_EQ(x().property(window, "THIRD"), QByteArray("both"));
    const QByteArray answered = x().property(window, "TEST_RESULT");
    ASSERT_EQ(answered.size(), 24);
    EXPECT_EQ(reinterpret_cast<const quint32*>(answered.constData())[3], 0U);
}

TEST_F(PasteboardOnX11, anEndedPasteboardLeavesTheTextWithTheClipboardManager) {
    // A manager that takes the clipboard over when it is asked to save.
    auto* connection = x().connection();
    const auto manager = makeWindow();
    xcb_set_selection_owner(connection, manager, x().atom("CLIPBOARD_MANAGER"), XCB_CURRENT_TIME);
    x().sync();
    std::atomic<bool> asked{false};
    std::thread service([&] {
        waitUntil(3, [&] {
            while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(connection)}) {
                if ((event->response_type & 0x7F) != XCB_SELECTION_REQUEST) continue;
                const auto& request = reinterpret_cast<const xcb_selection_request_event_t&>(*event);
                xcb_selection_notify_event_t notify{};
                notify.response_type = XCB_SELECTION_NOTIFY;
                notify.requestor = request.requestor;
                notify.selection = request.selection;
                notify.target = request.target;
                notify.property = request.property;
                notify.time = request.time;
                xcb_send_event(connection, 0, request.requestor, 0, reinterpret_cast<const char*>(&notify));
                xcb_flush(connection);
                asked = true;
            }
            return asked.load();
        });
    });
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("keep"), PasteboardContent::lasting));
    const double begin = monotonicSeconds();
    pasteboard.reset();
    EXPECT_LT(monotonicSeconds() - begin, 0.4);
    service.join();
    EXPECT_TRUE(asked);
    xcb_destroy_window(connection, manager);
}

TEST_F(PasteboardOnX11, aManagerThatDoesNotAnswerIsWaitedForHalfASecond) {
    const auto manager = makeWindow();
    xcb_set_selection_owner(x().connection(), manager, x().atom("CLIPBOARD_MANAGER"), XCB_CURRENT_TIME);
    x().sync();
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("keep"), PasteboardContent::lasting));
    const double begin = monotonicSeconds();
    pasteboard.reset();
    EXPECT_LT(monotonicSeconds() - begin, 0.8);
    xcb_destroy_window(x().connection(), manager);
}

TEST(PasteboardWithoutAServer, failsAsAValue) {
    X11Pasteboard none("/nonexistent/display:0");
    EXPECT_EQ(none.changeCount(), 0);
    EXPECT_EQ(none.string().status, Status::unanswered);
    EXPECT_FALSE(none.setString(QStringLiteral("a"), PasteboardContent::lasting));
    none.clearContents();

    RealDesktop desktop;
    X11Pasteboard lost(desktop.display().toLatin1());
    EXPECT_TRUE(lost.setString(QStringLiteral("a"), PasteboardContent::lasting));
    desktop.killServer();
    const double begin = monotonicSeconds();
    EXPECT_FALSE(lost.setString(QStringLiteral("b"), PasteboardContent::lasting));
    EXPECT_NE(lost.string().status, Status::value);
    EXPECT_LT(monotonicSeconds() - begin, 2.0);
}

}  // namespace
}  // namespace veltrin

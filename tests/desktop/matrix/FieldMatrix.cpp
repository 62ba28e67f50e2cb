#include "desktop/matrix/FieldMatrix.h"

#include "desktop/matrix/MatrixSample.h"
#include "support/Slowdown.h"
#include "support/desktop/DesktopTest.h"
#include "support/desktop/Waiting.h"

#include <algorithm>
#include <cmath>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

const QString replacement = u"新 \U0001F600 new"_s;
const QString usersClipboard = u"the user's own \U0001F4CB"_s;
const QString restoredLine = u"Writeback clipboard restored"_s;

constexpr double shortSeconds = 0.2;
constexpr double readSeconds = 3;  // an application tells of its changes when it finds the time
constexpr double writeSeconds = 5;
constexpr double undoSeconds = 0.7;  // no change within this is none
constexpr int mostUndoSteps = 4;

std::unique_ptr<MatrixWorld>& world() {
    static std::unique_ptr<MatrixWorld> world;
    return world;
}

QString trimmedContext(const QString& text) {
    return text.trimmed();
}

}  // namespace

MatrixWorld& MatrixWorld::shared() {
    auto& one = veltrin::world();
    if (!one) one = std::make_unique<MatrixWorld>();
    return *one;
}

void MatrixWorld::end() {
    veltrin::world().reset();
}

MatrixWorld::MatrixWorld()
    : text(RealDesktop::shared()),
      probe(RealDesktop::shared()),
      clipboard(RealDesktop::shared()),
      typist(RealDesktop::shared()) {
    // Browsers ask once, at their start, whether anybody wants accessibility.
    if (!text.accessibility.isProcessTrusted()) throw std::runtime_error("no accessibility");
}

FieldApplication& MatrixWorld::application(const QString& name) {
    if (application_ && (application_->name() != name || !application_->program().isRunning())) {
        application_.reset();
        const pid_t own = probe.process();
        for (const pid_t program : desktop().programs()) {
            if (program != own) kill(program, SIGKILL);
        }
    }
    if (!application_) application_ = std::make_unique<FieldApplication>(name, text, desktop(), probe);
    return *application_;
}

const std::vector<FieldMatrix::Cell>& FieldMatrix::cells() {
    static const std::vector<Cell> all = {
        {"find", &FieldMatrix::find},
        {"readSelection", &FieldMatrix::readSelection},
        {"readCaret", &FieldMatrix::readCaret},
        {"readLines", &FieldMatrix::readLines},
        {"readEmpty", &FieldMatrix::readEmpty},
        {"anchorSelection", &FieldMatrix::anchorSelection},
        {"anchorCaret", &FieldMatrix::anchorCaret},
        {"anchorEnd", &FieldMatrix::anchorEnd},
        {"anchorLine", &FieldMatrix::anchorLine},
        {"pasteSelection", &FieldMatrix::pasteSelection},
        {"pasteCaret", &FieldMatrix::pasteCaret},
        {"pasteAll", &FieldMatrix::pasteAll},
        {"directSelection", &FieldMatrix::directSelection},
        {"directCaret", &FieldMatrix::directCaret},
        {"directAll", &FieldMatrix::directAll},
        {"copyRead", &FieldMatrix::copyRead},
        {"copyWrite", &FieldMatrix::copyWrite},
    };
    return all;
}

void FieldMatrix::SetUp() {
    FieldApplication& used = application();
    world().typist.moveMouse({world().x().screen().width_in_pixels - 1, 0});
    if (world().x().activeWindow() != used.window()) {
        ASSERT_TRUE(world().x().activate(used.window(), 5 * patience));
    }
    world().clipboard.ownText(usersClipboard);
}

void FieldMatrix::TearDown() {
    expectNothingHeld(world().desktop());
    if (HasFailure()) {
        const QString path =
            u"/tmp/matrix-%1-%2-%3.png"_s.arg(row_.application, row_.field, QString::fromLatin1(cell_.name));
        world().x().screenshot(path);
    }
}

void FieldMatrix::TestBody() {
    const QString cell = QString::fromLatin1(cell_.name);
    const QString outcome = (this->*cell_.run)();
    MatrixTable::shared().found(row_, cell, outcome);
    RecordProperty("outcome", outcome.toStdString());
    if (MatrixTable::isRecording())
        std::printf("%s: %s: %s\n", qPrintable(row_.title), cell_.name, qPrintable(outcome));
    if (!MatrixTable::isRecording()) {
        EXPECT_EQ(outcome, MatrixTable::shared().expected(row_, cell));
    }
}

/// What will not come is not waited for long, unless that is to be found out.
double FieldMatrix::readingPatience() const {
    const MatrixTable& table = MatrixTable::shared();
    const bool isUnseen = table.expected(row_, u"find"_s) == u"none" ||
                          table.expected(row_, QString::fromLatin1(cell_.name)) == u"nothing";
    return (isUnseen && !MatrixTable::isRecording() ? shortSeconds : readSeconds) * patience;
}

double FieldMatrix::undoPatience() const {
    const QString expected = MatrixTable::shared().expected(row_, QString::fromLatin1(cell_.name));
    const bool isExpected = !expected.endsWith(u"no undo") || MatrixTable::isRecording();
    return (isExpected ? undoSeconds : shortSeconds) * patience;
}

bool FieldMatrix::isTerminal() const {
    return row_.application.contains(u"term");
}

bool FieldMatrix::isOneLine() const {
    return row_.field == u"line" || row_.field == u"input" || row_.application == u"libreoffice-writer";
}

/// Sets the field and waits until the application has told of it.
void FieldMatrix::set(const FieldState& state) {
    field().set(state);
    const bool isSet = waitUntil(readSeconds * patience, [&] {
        const FieldState now = field().state();
        return now == state || (isTerminal() && now.text == state.text);
    });
    if (!isSet) {
        const FieldState now = field().state();
        ADD_FAILURE() << "the test could not set the field; it holds " << qPrintable(now.text) << ' '
                      << now.start << ' ' << now.end;
    }
}

QString FieldMatrix::find() {
    // A text of its own: until the application tells of the new focus, the field before it is found, with its
    // sample.
    const QString own = sample + u' ' + row_.field;
    set({own, 0, 0});
    AXElementRef element;
    const bool found = waitUntil(readingPatience(), [&] {
        element = focusedElement(text().accessibility, application().process());
        const auto value = element ? readAttribute<QString>(text().accessibility, element, AXAttribute::value)
                                   : AttributeReading<QString>();
        return value.value == own;
    });
    if (!found) return u"none"_s;
    return readAttribute<QString>(text().accessibility, element, AXAttribute::role).value.value_or(u"?"_s);
}

/// What a read gives of the passage that is selected in the field.
QString FieldMatrix::readPassage(const FieldState& state) {
    set(state);
    const QString passage = state.text.mid(state.start, state.end - state.start);
    ExternalTextReadResult read;
    const TextRange range{state.start, state.end - state.start};
    const bool isRight = waitUntil(readingPatience(), [&] {
        read = text().reader.readFocusedText();
        return read.selectedText == passage && read.selectedRange == range && read.fullText == state.text;
    });
    if (!isRight && read.source == ExternalTextReadResult::Source::none) return u"nothing"_s;
    if (!isRight && read.source == ExternalTextReadResult::Source::value && read.text == state.text)
        return u"whole text"_s;
    if (!isRight) {
        ADD_FAILURE() << "read " << qPrintable(read.text) << " of " << qPrintable(read.fullText)
                      << " instead of " << qPrintable(passage);
        return u"wrong"_s;
    }
    EXPECT_EQ(read.text, passage);
    EXPECT_EQ(read.textContext.contextBefore, trimmedContext(state.text.left(state.start)));
    EXPECT_EQ(read.textContext.contextAfter, trimmedContext(state.text.mid(state.end)));
    EXPECT_FALSE(read.requiresClipboardWriteback);
    EXPECT_EQ(read.processIdentifier, application().process());
    return u"selection"_s;
}

/// A word that the user has selected with the mouse, at the upper left of the screen.
QString FieldMatrix::readTerminalSelection() {
    set({u"word and more"_s, 13, 13});
    const QRectF element = elementOnScreen();
    const QPointF corner = element.isValid()
                               ? element.topLeft()
                               : QPointF(world().x().geometry(application().window()).topLeft());
    world().typist.click((corner + QPointF(14, 10)).toPoint(), 2);
    ExternalTextReadResult read;
    const bool isRight = waitUntil(readingPatience(), [&] {
        read = text().reader.readFocusedText();
        return read.selectedText == u"word"_s && read.fullText == u"word and more"_s;
    });
    if (isRight) return u"selection"_s;
    EXPECT_EQ(read.source, ExternalTextReadResult::Source::none) << qPrintable(read.text);
    return u"nothing"_s;
}

QString FieldMatrix::readSelection() {
    if (isTerminal()) return readTerminalSelection();
    const FieldState states[] = {passageOf(u"mid"_s),        passageOf(u"中文"_s),
                                 passageOf(family),          passageOf(u"e\u0301"_s),
                                 passageOf(u"\U0001F600"_s), {sample, sample.indexOf(family), sample.size()},
                                 {sample, 0, sample.size()}};
    QStringList outcomes;
    for (const FieldState& state : states) {
        const QString outcome = readPassage(state);
        if (!outcomes.contains(outcome)) outcomes << outcome;
    }
    return outcomes.join(u" or "_s);
}

QString FieldMatrix::readCaret() {
    QStringList outcomes;
    for (const QString& before : {u""_s, u"ab 中文 "_s + family, sample}) {
        const qsizetype at = before.size();
        if (isTerminal() && at != sample.size()) continue;
        set({sample, at, at});
        ExternalTextReadResult read;
        const bool isRight = waitUntil(readingPatience(), [&] {
            read = text().reader.readFocusedText();
            return read.text == sample && read.selectedRange == TextRange{at, 0};
        });
        QString outcome = u"whole text"_s;
        if (!isRight && read.source == ExternalTextReadResult::Source::none) {
            outcome = u"nothing"_s;
        } else if (!isRight) {
            ADD_FAILURE() << "read " << qPrintable(read.text) << " at "
                          << (read.selectedRange ? read.selectedRange->location : -1) << " instead of " << at;
            outcome = u"wrong"_s;
        } else {
            EXPECT_FALSE(read.selectedText);
            EXPECT_EQ(read.fullText, sample);
            EXPECT_EQ(read.textContext.focusText, sample);
        }
        if (!outcomes.contains(outcome)) outcomes << outcome;
    }
    return outcomes.join(u" or "_s);
}

QString FieldMatrix::readLines() {
    if (isOneLine()) return u"–"_s;
    const QString lines = u"one "_s + family + u"\ntwo 中文\n\nfour e\u0301"_s;
    if (isTerminal()) {
        set({lines, lines.size(), lines.size()});
        ExternalTextReadResult read;
        const bool isRight = waitUntil(readingPatience(), [&] {
            read = text().reader.readFocusedText();
            return read.text == lines;
        });
        if (!isRight && read.source == ExternalTextReadResult::Source::none) return u"nothing"_s;
        EXPECT_EQ(read.text, lines);
        return isRight ? u"whole text"_s : u"wrong"_s;
    }
    const qsizetype second = lines.indexOf(u"two"_s);
    QStringList outcomes;
    // The last ones begin at the end of a line and end at the beginning of one.
    for (const FieldState& state :
         {FieldState{lines, second, second + 6}, FieldState{lines, 4, second + 3},
          FieldState{lines, second - 1, second + 3}, FieldState{lines, 4, second},
          FieldState{lines, 4, second - 1}, FieldState{lines, second - 1, lines.size()}}) {
        const QString outcome = readPassage(state);
        if (!outcomes.contains(outcome)) outcomes << outcome;
    }
    return outcomes.join(u" or "_s);
}

QString FieldMatrix::readEmpty() {
    set({QString(), 0, 0});
    ExternalTextReadResult read;
    waitUntil(readSeconds * patience, [&] {
        read = text().reader.readFocusedText();
        return read.source == ExternalTextReadResult::Source::none;
    });
    if (read.source == ExternalTextReadResult::Source::none && read.text.isEmpty()) return u"nothing"_s;
    ADD_FAILURE() << "read " << qPrintable(read.text) << " of an empty field";
    return u"wrong"_s;
}

void FieldMatrix::expectClipboardBack() {
    std::optional<QString> now;
    eventually(3 * patience, [&] {
        now = world().clipboard.text();
        return now == usersClipboard;
    });
    EXPECT_EQ(now, usersClipboard) << "the clipboard is not the user's again";
}

/// Whether Ctrl+Z, a few times perhaps, brings the field back to what it held.
QString FieldMatrix::undone(const FieldState& before) {
    for (int step = 1; step <= mostUndoSteps; ++step) {
        const QString former = field().state().text;
        world().typist.chord(u"Ctrl+z"_s);
        const bool changed = waitUntil(undoPatience(), [&] { return field().state().text != former; });
        if (field().state().text == before.text) return u"undo"_s;
        if (!changed) break;
    }
    return u"no undo"_s;
}

ExternalTextReadResult FieldMatrix::readByCopy() {
    const auto front = text().workspace.frontmostApplication();
    if (!front) return {};
    const PostTarget target{front->processIdentifier, front->window,
                            focusedElement(text().accessibility, application().process())};
    return text().fallback.readFocusedText(front->localizedName.value_or(u"unknown"_s),
                                           front->bundleIdentifier.value_or(u"nil"_s), target);
}

/// The road where accessibility gives nothing: all is selected and copied, and the user's clipboard comes
/// back.
QString FieldMatrix::copyRead() {
    const QString held = isTerminal() || isOneLine() ? sample : sample + u"\nsecond 行"_s;
    set({held, held.size(), held.size()});
    const ExternalTextReadResult read = readByCopy();
    EXPECT_EQ(world().clipboard.text(5 * patience), usersClipboard);
    EXPECT_EQ(field().state().text, held) << "a copy changed the field";
    EXPECT_TRUE(read.requiresClipboardWriteback);
    if (read.source == ExternalTextReadResult::Source::none) return u"nothing"_s;
    EXPECT_EQ(read.text, held);
    return read.text == held ? u"whole text"_s : u"wrong"_s;
}

/// The same way back. What was read that way is written with all of it replaced.
QString FieldMatrix::copyWrite() {
    const FieldState before{sample, sample.size(), sample.size()};
    set(before);
    ExternalTextReadResult read = readByCopy();
    read.requiresClipboardWriteback = true;
    const auto result = text().writeback.apply(replacement, read, false);
    if (!result.success) {
        expectClipboardBack();
        EXPECT_EQ(field().state().text, before.text) << "a refused write changed the field";
        return u"copied result"_s;
    }
    FieldState after;
    waitUntil(writeSeconds * patience, [&] {
        after = field().state();
        return after.text == replacement;
    });
    EXPECT_EQ(after.text, replacement);
    text().loan.giveBackPending();
    expectClipboardBack();
    return after.text == replacement ? u"paste, "_s + undone(before) : u"wrong"_s;
}

QString FieldMatrix::write(Road road, Place place) {
    const FieldState passage = passageOf(u"mid"_s);
    FieldState before = passage;
    QString expected = sample;
    if (place == Place::caret) {
        before = {sample, passage.start, passage.start};
        expected.insert(passage.start, replacement);
    } else if (place == Place::selection) {
        expected.replace(passage.start, passage.end - passage.start, replacement);
    } else {
        expected = replacement;
    }
    if (isTerminal()) {
        // Whatever is written into a terminal comes in at its prompt.
        before = {sample, sample.size(), sample.size()};
        expected = sample + replacement;
        if (place == Place::selection) return u"–"_s;
    }
    set(before);
    ExternalTextReadResult read;
    const TextRange range{before.start, before.end - before.start};
    waitUntil(readingPatience(), [&] {
        read = text().reader.readFocusedText();
        return read.fullText == before.text && read.selectedRange == range;
    });
    ExternalTextWriteback& writeback = road == Road::paste ? text().writeback : text().directWriteback;
    const auto result = writeback.apply(replacement, read, place == Place::all);
    if (!result.success) {
        expectClipboardBack();
        EXPECT_EQ(field().state().text, before.text) << "a refused write changed the field";
        EXPECT_EQ(field().state(), before) << "a refused write left another selection";
        return u"copied result"_s;
    }
    FieldState after;
    waitUntil(writeSeconds * patience, [&] {
        after = field().state();
        return after.text == expected;
    });
    EXPECT_EQ(after.text, expected);
    if (place != Place::selection) text().loan.giveBackPending();
    expectClipboardBack();
    const QString way = result.strategy == WritebackStrategy::clipboardPaste ? u"paste"_s : u"direct"_s;
    if (after.text != expected) return u"wrong"_s;
    return isTerminal() ? way : way + u", "_s + undone(before);
}

}  // namespace veltrin

#include "soak/SoakSession.h"

#include "support/desktop/Waiting.h"

#include <QTextBoundaryFinder>

#include <csignal>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

constexpr double setSeconds = 20;  // an application on a busy machine
constexpr double tellSeconds = 4;
constexpr double showSeconds = 20;
constexpr double clipboardSeconds = 5;
constexpr double stopSeconds = 5;
constexpr double hungReadLimit = 3;  // with room for a busy machine; the benchmark measures the real limit

QList<qsizetype> boundaries(const QString& text) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    QList<qsizetype> found{0};
    while (finder.toNextBoundary() > 0)
        found << finder.position();
    return found;
}

}  // namespace

SoakWorld::SoakWorld() {
    // Browsers ask once, at their start, whether anybody wants accessibility.
    if (!text.accessibility.isProcessTrusted()) throw std::runtime_error("no accessibility");
}

void SoakTally::add(const SoakTally& other) {
    rounds += other.rounds;
    readRight += other.readRight;
    readNothing += other.readNothing;
    written += other.written;
    refused += other.refused;
    unexpected += other.unexpected;
    givenUp += other.givenUp;
    hung += other.hung;
    snapshots += other.snapshots;
}

QString SoakTally::told() const {
    return u"%1 reads right, %2 without text, %3 written, %4 refused (%5 of them unexpectedly), %6 given up, "
           "%7 while hung, %8 snapshots"_s.arg(readRight)
               .arg(readNothing)
               .arg(written)
               .arg(refused)
               .arg(unexpected)
               .arg(givenUp)
               .arg(hung)
               .arg(snapshots);
}

SoakSession::SoakSession(SoakWorld& world, const QString& application, quint64 seed)
    : world_(world), chance_(seed), application_(application, world.text, world.desktop, world.probe) {
    for (const MatrixRow& row : MatrixTable::shared().rows()) {
        if (row.application == application) rows_.push_back(&row);
    }
}

QStringList SoakSession::applications() {
    return {u"mousepad"_s, u"gnome-text-editor"_s, u"qt-widgets"_s,
            u"qt-quick"_s, u"chromium"_s,          u"firefox"_s,
            u"xterm"_s,    u"lxterminal"_s,        u"libreoffice-writer"_s};
}

void SoakSession::fail(const QString& what) const {
    throw Broken(story_ + u": "_s + what);
}

bool SoakSession::isOneLine() const {
    return row_->field == u"line" || row_->field == u"input" || row_->application == u"libreoffice-writer";
}

// MARK: Chance

QString SoakSession::words(int count) {
    return chance_.words(count, {.mayBeHard = !isTerminal(), .mayBreak = !isOneLine() && !isTerminal()});
}

FieldState SoakSession::state(Place place) {
    const bool isLong = !isOneLine() && !isTerminal() && chance_.percent(4);
    const QString text = words(isLong ? 500 + chance_.below(3000) : 2 + chance_.below(isTerminal() ? 4 : 12));
    if (isTerminal()) return {text, text.size(), text.size()};
    const QList<qsizetype> places = boundaries(text);
    const int last = static_cast<int>(places.size()) - 1;
    if (place != Place::selection) {
        const qsizetype caret = places[chance_.below(last + 1)];
        return {text, caret, caret};
    }
    if (chance_.percent(15)) return {text, 0, text.size()};
    const int first = chance_.below(last);
    const qsizetype start = places[first];
    qsizetype end = places[first + 1 + chance_.below(std::min(last - first, 12))];
    // Between the blocks of a page's editor is no character: what is selected up to a block's start leaves
    // the break standing.
    while (row_->field == u"editable" && end > start && text[end - 1] == u'\n')
        --end;
    return {text, start, end};
}

// MARK: One round

void SoakSession::round() {
    if (left_) expectText(*left_, "since the round before");
    left_.reset();
    ++tally_.rounds;
    row_ = rows_[static_cast<std::size_t>(chance_.below(static_cast<int>(rows_.size())))];
    const auto place = static_cast<Place>(chance_.below(3));
    const int what = chance_.below(100);
    static constexpr const char* places[] = {"a selection", "the caret", "the whole field"};
    story_ = row_->title + u", "_s + QLatin1String(places[static_cast<int>(place)]);
    prepare(place);
    if (what < 25) {
        readOnly();
    } else if (what < 65) {
        write(false, place);
    } else if (what < 80) {
        write(true, place);
    } else if (what < 88) {
        byClipboard(place);
    } else if (what < 95) {
        snapshotAndBack();
    } else {
        whileHung(place);
    }
    expectNoKeyDown();
    left_ = field().state().text;
}

void SoakSession::prepare(Place place) {
    XDesktop& x = world_.desktop.x();
    if (x.activeWindow() != application_.window() && !x.activate(application_.window(), setSeconds))
        fail(u"its window cannot be made active"_s);
    content_ = randomContent(chance_);
    if (content_.offered.contents.isEmpty()) {
        world_.text.pasteboard.clearContents();
    } else {
        world_.clipboard.own(content_.offered);
    }
    story_ += u", with %1 on the clipboard"_s.arg(
        content_.offered.contents.isEmpty() ? u"nothing"_s : content_.offered.contents.keys().join(u' '));
    state_ = state(place);
    field().set(state_);
    const bool isSet = waitUntil(setSeconds, [&] {
        const FieldState now = field().state();
        return now.text == state_.text && (isTerminal() || now == state_);
    });
    if (!isSet) throw std::runtime_error((story_ + u": the test cannot set the field"_s).toStdString());
    settle();
}

/// Reads until the application tells of what it holds; what it tells instead is not to be wrong.
void SoakSession::settle() {
    const TextRange range{state_.start, state_.end - state_.start};
    const bool isUnseen = MatrixTable::shared().expected(*row_, u"readCaret"_s) == u"nothing";
    const bool isRight = waitUntil(isUnseen ? 0 : tellSeconds, [&] {
        read_ = world_.text.reader.readFocusedText();
        return read_.fullText == state_.text && read_.selectedRange == range;
    });
    const QString passage = state_.text.mid(state_.start, range.length);
    if (isRight && read_.text != (range.length > 0 ? passage : state_.text))
        fail(u"read %1 of %2"_s.arg(quoted(read_.text), quoted(state_.text)));
    if (!isRight && read_.source != ExternalTextReadResult::Source::none) {
        fail(u"read %1 at %2+%3 instead of %4 at %5+%6"_s.arg(quoted(read_.fullText))
                 .arg(read_.selectedRange ? read_.selectedRange->location : -1)
                 .arg(read_.selectedRange ? read_.selectedRange->length : -1)
                 .arg(quoted(state_.text))
                 .arg(range.location)
                 .arg(range.length));
    }
    ++(isRight ? tally_.readRight : tally_.readNothing);
}

void SoakSession::readOnly() {
    story_ += u", read"_s;
    world_.text.reader.readFocusedText();
    world_.text.locator.bestAnchorRect();
    expectText(state_.text, "after a read");
    expectClipboardUntouched("after a read");
}

void SoakSession::write(bool directly, Place place) {
    story_ += directly ? u", written directly"_s : u", pasted"_s;
    const QString replacement = u"new "_s + words(1 + chance_.below(6));
    ExternalTextWriteback& writeback = directly ? world_.text.directWriteback : world_.text.writeback;
    const auto result = writeback.apply(replacement, read_, place == Place::all);
    note(result.success, directly, place);
    // A paste that was refused, because the application took long to say that it is there, is written
    // directly.
    const bool isDirect = directly || result.strategy != WritebackStrategy::clipboardPaste;
    finish(result.success, isDirect, expectedAfter(replacement, place), replacement, "after a write");
}

/// A refusal is never wrong, but it is not meant where the field can be written.
void SoakSession::note(bool success, bool directly, Place place) {
    static constexpr const char* places[] = {"Selection", "Caret", "All"};
    const QString cell =
        (directly ? u"direct"_s : u"paste"_s) + QLatin1String(places[static_cast<int>(place)]);
    const QString outcome = MatrixTable::shared().expected(*row_, cell);
    const bool isMeant = outcome.startsWith(u"paste"_s) || outcome.startsWith(u"direct"_s);
    if (!success && isMeant && read_.source != ExternalTextReadResult::Source::none) ++tally_.unexpected;
}

/// As in an application that gives accessibility nothing.
void SoakSession::byClipboard(Place place) {
    story_ += u", by the clipboard road"_s;
    const auto front = world_.text.workspace.frontmostApplication();
    if (!front) fail(u"nobody is in front"_s);
    const PostTarget target{front->processIdentifier, front->window, read_.element};
    auto read = world_.text.fallback.readFocusedText(u"application"_s, u"some.application"_s, target);
    if (!read.text.isEmpty() && read.text != state_.text)
        fail(u"copied %1 of %2"_s.arg(quoted(read.text), quoted(state_.text)));
    expectText(state_.text, "after a copy");
    expectStringBack(std::nullopt, "after a copy");
    const QString replacement = u"new "_s + words(1 + chance_.below(6));
    const bool isWritten = world_.text.fallback.write(replacement, read);
    finish(isWritten, false, expectedAfter(replacement, isTerminal() ? place : Place::all), replacement,
           "after a write by the clipboard road");
}

/// Nothing may be written into an application that does not answer, and no call may take long.
void SoakSession::whileHung(Place place) {
    story_ += u", while it hangs"_s;
    const qint32 process = application_.process();
    kill(process, SIGSTOP);
    const double begin = monotonicSeconds();
    world_.text.reader.readFocusedText();
    const double taken = monotonicSeconds() - begin;
    const QString replacement = u"new "_s + words(1 + chance_.below(6));
    const auto result = world_.text.writeback.apply(replacement, read_, place == Place::all);
    kill(process, SIGCONT);
    if (taken > hungReadLimit) fail(u"a read of a hung application took %1 s"_s.arg(taken));
    waitUntil(stopSeconds, [&] { return !field().state().text.isEmpty(); });
    ++tally_.hung;
    finish(result.success, true, expectedAfter(replacement, place), replacement,
           "after a write into a hung application");
}

void SoakSession::snapshotAndBack() {
    story_ += u", the clipboard taken and given back"_s;
    Pasteboard& pasteboard = world_.text.pasteboard;
    const auto taken = pasteboard.snapshot();
    if (!taken) {
        expectClipboardUntouched("after a snapshot that did not come");
        return;
    }
    ++tally_.snapshots;
    pasteboard.setString(u"ours for a moment"_s, PasteboardContent::temporary);
    if (!pasteboard.restore(*taken)) fail(u"the clipboard cannot be taken"_s);
    const auto after = world_.clipboard.snapshot(clipboardSeconds);
    for (const PasteboardItem& item : taken->items) {
        for (const PasteboardData& data : item.data) {
            const bool isSame = after.contents.value(data.type) == data.bytes &&
                                (content_.offered.contents.isEmpty() ||
                                 content_.offered.contents.value(data.type) == data.bytes);
            if (!isSame) fail(u"the clipboard's %1 came back otherwise"_s.arg(data.type));
        }
    }
    if (world_.clipboard.text(clipboardSeconds) != content_.text)
        fail(u"the clipboard's text did not come back"_s);
    expectText(state_.text, "after a look at the clipboard");
}

// MARK: What must hold

QString SoakSession::expectedAfter(const QString& replacement, Place place) const {
    if (isTerminal()) return state_.text + replacement;
    if (place == Place::all) return replacement;
    QString text = state_.text;
    return text.replace(state_.start, state_.end - state_.start, replacement);
}

void SoakSession::expectText(const QString& text, const char* when) {
    const QString now = field().state().text;
    if (now != text)
        fail(u"%1 the field holds %2 instead of %3"_s.arg(QLatin1String(when), quoted(now), quoted(text)));
}

void SoakSession::expectClipboardUntouched(const char* when) {
    if (!content_.offered.contents.isEmpty() && !world_.clipboard.isOwner())
        fail(u"%1 the clipboard is not the user's"_s.arg(QLatin1String(when)));
}

/// `orElse`: what may lie there instead when the user had no text there.
void SoakSession::expectStringBack(const std::optional<QString>& orElse, const char* when) {
    std::optional<QString> now;
    eventually(clipboardSeconds, [&] {
        now = world_.clipboard.text(clipboardSeconds);
        return now == content_.text || (!content_.text && now == orElse);
    });
    if (now != content_.text && (content_.text || now != orElse))
        fail(u"%1 the clipboard holds %2 instead of %3"_s.arg(QLatin1String(when),
                                                              quoted(now.value_or(u"nothing"_s)),
                                                              quoted(content_.text.value_or(u"nothing"_s))));
    if (content_.isSecret && !world_.text.pasteboard.string().isSecret)
        fail(u"%1 the secret on the clipboard has lost its mark"_s.arg(QLatin1String(when)));
}

/// By its own delay, or at once as at the end of the program.
void SoakSession::giveBack() {
    if (!chance_.percent(20)) world_.text.loan.giveBackPending();
}

void SoakSession::finish(bool success, bool isDirect, const QString& expected, const QString& replacement,
                         const char* when) {
    ++(success ? tally_.written : tally_.refused);
    if (!success) {
        expectText(state_.text, when);
        expectStringBack(replacement, when);
        return;
    }
    // Where the clipboard held no text, a refused paste before a direct write leaves ours there: meant so.
    const auto orElse = isDirect ? std::optional(replacement) : std::nullopt;
    // At the end of the program the clipboard comes back before the paste was taken.
    const bool isAtOnce = chance_.percent(10);
    if (isAtOnce) {
        story_ += u", the clipboard given back at once"_s;
        world_.text.loan.giveBackPending();
    }
    // Chromium gives a paste up when the clipboard changes while it is at it, whatever it is answered.
    // LibreOffice takes no notice of the key as long as it has not heard, on a busy machine, that there is
    // something to paste again.
    const bool mayBeGivenUp =
        (isAtOnce && row_->application == u"chromium") || row_->application == u"libreoffice-writer";
    const bool isThere = waitUntil(isAtOnce && mayBeGivenUp ? tellSeconds : showSeconds,
                                   [&] { return field().state().text == expected; });
    if (mayBeGivenUp && !isThere) ++tally_.givenUp;
    expectText(mayBeGivenUp && !isThere ? state_.text : expected, when);
    giveBack();
    expectStringBack(orElse, when);
}

void SoakSession::expectNoKeyDown() {
    XDesktop& x = world_.desktop.x();
    if (!waitUntil(clipboardSeconds, [&] { return x.keysDown() == 0 && x.modifiers() == 0; }))
        fail(u"a key is down"_s);
}

}  // namespace veltrin

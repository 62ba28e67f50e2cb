#include "Foundation/Text.h"
#include "soak/SelectionSession.h"
#include "support/desktop/Waiting.h"

// What must hold after each gesture.

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

constexpr double setSeconds = 20;  // an application on a busy machine
/// From a first press to the last release, so that they are a double click for everybody.
constexpr double quickly = 0.3;
/// A person takes longer for a drag.
constexpr double quickDrag = 0.2;
/// In which the same selection is no new one.
constexpr double repeatSeconds = 0.9;

QString withoutOuterBreaks(QString text) {
    while (text.startsWith(u'\n'))
        text.remove(0, 1);
    while (text.endsWith(u'\n'))
        text.chop(1);
    return text;
}

}  // namespace

void SelectionSession::expectRightReason(Gesture gesture, const Look& look) {
    if (look.has("SmartSelect ignored: drag pasteboard changed")) fail(u"it dragged what was selected"_s);
    switch (gesture) {
        case Gesture::nudge:
        case Gesture::plainClick:
        case Gesture::shiftClick:
            if (look.isTrigger()) fail(u"it was taken for a selection"_s);
            break;
        case Gesture::doubleClick:
        case Gesture::tripleClick:
            if (!look.isTrigger() && gestureTook_ < quickly) fail(u"it was not taken for a selection"_s);
            break;
        default:
            // Where a button went down is asked for: a machine that was busy for all of a quick drag learns
            // of its end only.
            if (!look.isTrigger() && gestureTook_ < quickDrag) {
                ++tally_.missed;
            } else if (!look.isTrigger()) {
                fail(u"it was not taken for a selection"_s);
            }
            break;
    }
}

void SelectionSession::expectText() {
    if (!hasField()) return;
    const QString now = field().state().text;
    if (now != text_) fail(u"the field holds %1 instead of %2"_s.arg(quoted(now), quoted(text_)));
}

void SelectionSession::expectKeys(const Look& look, bool withShift) {
    QStringList given;
    QStringList expected;
    for (const ReceivedKeys::Press& press : look.presses) {
        if (world_.keys.clientOf(press.window) != world_.keys.clientOf(application_.window()))
            fail(u"%1 went to another program"_s.arg(press.key));
        given << press.key;
    }
    // The user's own, which also shows that nothing is missed here.
    if (withShift) expected << u"Shift_L"_s;
    for (int i = 0; i < look.copies; ++i) {
        expected << u"Control_L"_s;
        if (place_->rule == Rule::copied) expected << u"Shift_L"_s;
        expected << u"c"_s;
    }
    if (given != expected)
        fail(u"the application was given the keys %1 instead of %2"_s.arg(given.join(u' '),
                                                                          expected.join(u' ')));
    if (look.keysOfPage) {
        QStringList named = given;
        named.replaceInStrings(u"_L"_s, QString());
        if (named != look.keysOfPage)
            fail(u"the page was given the keys %1 instead of %2"_s.arg(look.keysOfPage->join(u' '),
                                                                       named.join(u' ')));
    }
    tally_.copies += look.copies;
    // A browser that does not say what has the focus is asked by the key: meant so. It copies no password.
    const bool isUnknown = (is("chromium") || is("firefox")) &&
                           look.has("SmartSelect clipboard fallback allowed without focused element");
    if (place_->rule == Rule::never && isUnknown) tally_.unknowing += look.copies;
    const bool mayCopy = (place_->rule != Rule::never || isUnknown) && !content_.isSilent &&
                         look.has("SmartSelect AX unavailable; trying clipboard fallback");
    if (look.copies > (mayCopy ? 1 : 0))
        fail(u"a copy key was pressed where none may be; the log: %1"_s.arg(look.lines.join(u"; "_s)));
}

bool SelectionSession::isRight(const Look& look) const {
    if (Text::isBlank(look.selected)) return look.icons == 0;
    if (look.icons != 1) return false;
    const QLatin1String field(place_->field);
    if (field != "page"_L1 && field != "editable"_L1) return look.shown == look.selected;
    // Whether a break between two blocks belongs to what ends or begins at it, browsers see in several ways.
    return withoutOuterBreaks(look.shown) == withoutOuterBreaks(look.selected);
}

void SelectionSession::expectShown(const Look& look) {
    if (!look.isTrigger()) {
        ++tally_.clicks;
        if (look.icons > 0) fail(u"it was shown"_s);
        return;
    }
    ++tally_.looks;
    if (look.has("SmartSelect ignored: overlay already showing")) {
        if (!isOnIcon_ || look.icons > 0) fail(u"the icon was not closed by a press beside it"_s);
        ++tally_.nothing;
    } else if (look.has("SmartSelect duplicate ignored:") && look.selected == shownBefore_) {
        ++tally_.nothing;
    } else if (isRight(look)) {
        ++(look.icons > 0 ? tally_.shown : tally_.nothing);
        if (place_->rule == Rule::told && look.copies > 0 && look.icons > 0) ++tally_.untold;
    } else {
        expectRightAtLast(look);
    }
}

/// An application that is behind with its events may tell of what was selected before.
void SelectionSession::expectRightAtLast(const Look& look) {
    world_.selection.surface.dismissIcon();
    runEventLoopFor(repeatSeconds);
    const Look again = this->look([this] { world_.selection.trigger.handleShortcut(); }, true);
    expectKeys(again, false);
    const bool isRefused = again.has("SmartSelect clipboard fallback refused:") ||
                           again.has("SmartSelect clipboard fallback key refused:");
    if (isRight(again)) {
        ++tally_.late;
    } else if (isRefused && again.icons == 0) {
        ++tally_.refused;
    } else {
        fail(u"shown was %1, then %2, where the application has %3 selected, then %4; the log: %5"_s.arg(
            quoted(look.shown), quoted(again.shown), quoted(look.selected), quoted(again.selected),
            (look.lines + again.lines).join(u"; "_s)));
    }
}

void SelectionSession::expectClipboard() {
    if (content_.isSilent) {
        if (!world_.clipboard.isOwner()) fail(u"the clipboard is not the user's"_s);
        return;
    }
    if (world_.clipboard.isOwner()) return;  // and nobody can have changed what it offers
    const ClipboardSnapshot now = world_.clipboard.snapshot();
    const auto& offered = content_.offered.contents;
    for (auto type = offered.begin(); type != offered.end(); ++type) {
        if (now.contents.value(type.key()) != type.value())
            fail(u"the clipboard's %1 came back as %2 bytes instead of %3"_s.arg(type.key())
                     .arg(now.contents.value(type.key()).size())
                     .arg(type.value().size()));
    }
    for (auto type = now.contents.begin(); type != now.contents.end(); ++type) {
        const bool isText = content_.text && QString::fromUtf8(type.value()) == content_.text;
        if (!offered.contains(type.key()) && !isText) fail(u"the clipboard has %1 now"_s.arg(type.key()));
    }
    if (!offered.isEmpty() && world_.clipboard.text() != content_.text)
        fail(u"the clipboard's text did not come back"_s);
    if (content_.isSecret && !world_.text.pasteboard.string().isSecret)
        fail(u"the secret on the clipboard has lost its mark"_s);
}

void SelectionSession::expectNothingDown() {
    XDesktop& x = world_.desktop.x();
    const bool isUp = waitUntil(
        setSeconds, [&] { return x.keysDown() == 0 && x.modifiers() == 0 && x.buttonsDown() == 0; });
    if (!isUp) fail(u"a key or a button is down"_s);
}

}  // namespace veltrin

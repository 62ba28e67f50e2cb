#include "Foundation/Characters.h"
#include "RandomUse.h"

#include <algorithm>

namespace veltrin {
namespace {
constexpr const char16_t* characters[] = {u"a", u"b", u"k", u"t", u"5", u".", u" ", u"译", u"😀", u"é"};
constexpr qsizetype longestPaste = 200;
}  // namespace

const std::vector<RandomUse::Choice>& RandomUse::choices() {
    static const std::vector<Choice> all{
        {24, &RandomUse::typeCharacter},     {4, &RandomUse::typeWhileBlocked},
        {6, &RandomUse::pressBackspace},     {4, &RandomUse::pressArrow},
        {3, &RandomUse::selectAll},          {8, &RandomUse::selectSome},
        {6, &RandomUse::placeCaret},         {5, &RandomUse::copySelection},
        {3, &RandomUse::pasteSomething},     {3, &RandomUse::otherCopies},
        {1, &RandomUse::otherCopiesPicture}, {1, &RandomUse::ownerFallsSilent},
        {14, &RandomUse::tapThreeTimes},     {22, &RandomUse::pressShortcut},
        {10, &RandomUse::focusField},        {1, &RandomUse::leaveEverything},
        {2, &RandomUse::retitleWindow},      {4, &RandomUse::hangApplication},
        {4, &RandomUse::resumeApplications}, {1, &RandomUse::quitApplication},
        {3, &RandomUse::changeReplaceMode},  {1, &RandomUse::flipGestures},
        {1, &RandomUse::changeBlacklist},    {6, &RandomUse::changeFaults},
        {3, &RandomUse::changeDesktop},      {1, &RandomUse::tapIsSwitchedOff},
        {2, &RandomUse::holdModifier},       {30, &RandomUse::wait},
        {10, &RandomUse::tapTwice},          {12, &RandomUse::pressChoiceKey},
        {2, &RandomUse::clickRow},           {4, &RandomUse::moveField},
    };
    return all;
}

// MARK: The user's hands

void RandomUse::edit(ExpectedText::Edit made) {
    if (Field* field = focused()) field->expected.edit(std::move(made));
}

void RandomUse::pressKey(qint64 keyCode, quint64 flags) {
    desktop_.keyboard.press(keyCode, flags);
    desktop_.keyboard.release(keyCode, flags);
}

/// Whether the choice takes this key from its application.
bool RandomUse::isTaken(qint64 keyCode) {
    if (!isChoiceWaiting()) return false;
    const auto& taps = desktop_.keyEventTaps.taps;
    return std::any_of(taps.begin(), taps.end(), [keyCode](const auto& tap) {
        return tap->isRunning() && tap->mayClaim({KeyEventType::keyDown, keyCode, 0, false, 0});
    });
}

/// Presses a key that types something, unless the choice takes it.
void RandomUse::pressTyping(qint64 keyCode, const QString& text, double hold) {
    const bool taken = isTaken(keyCode);
    const int swallowed = desktop_.keyEventTaps.swallowed;
    if (!taken && !text.isEmpty()) edit({ExpectedText::Edit::Kind::insert, text, {}});
    desktop_.keyboard.press(keyCode);
    if ((desktop_.keyEventTaps.swallowed > swallowed) != taken)
        fail(QStringLiteral("key %1 went astray").arg(keyCode));
    desktop_.advance(hold);
    desktop_.keyboard.release(keyCode);
}

void RandomUse::typeText(const QString& text) {
    const auto key = text.size() == 1 ? fakeKeyOf(text.front()) : std::nullopt;
    if (key && key->flags == 0) return pressTyping(key->keyCode, text, 0);
    edit({ExpectedText::Edit::Kind::insert, text, {}});
    desktop_.keyboard.type(text);
}

void RandomUse::tapSpace(double hold) {
    pressTyping(KeyCode::space, QStringLiteral(" "), hold);
}

QString RandomUse::typeCharacter() {
    const QString text = QString::fromUtf16(characters[below(static_cast<int>(std::size(characters)))]);
    typeText(text);
    desktop_.advance(seconds(0, 0.2));
    return QStringLiteral("types ") + text;
}

QString RandomUse::typeWhileBlocked() {
    const double delay = seconds(0, 0.4);
    desktop_.later(delay, [this] {
        if (desktop_.keyboard.heldModifiers != 0) return;
        edit({ExpectedText::Edit::Kind::insert, QStringLiteral("x"), {}});
        pressKey(7);
    });
    return QStringLiteral("will type x in %1 s").arg(delay);
}

QString RandomUse::pressBackspace() {
    edit({ExpectedText::Edit::Kind::deleteBackward, {}, {}});
    pressKey(KeyCode::backspace);
    desktop_.advance(seconds(0, 0.1));
    return QStringLiteral("backspace");
}

QString RandomUse::pressArrow() {
    const bool left = oneIn(2);
    edit({left ? ExpectedText::Edit::Kind::left : ExpectedText::Edit::Kind::right, {}, {}});
    pressKey(left ? FakeKeyCode::left : FakeKeyCode::right);
    desktop_.advance(seconds(0, 0.1));
    return left ? QStringLiteral("left") : QStringLiteral("right");
}

QString RandomUse::selectAll() {
    edit({ExpectedText::Edit::Kind::selectAll, {}, {}});
    pressKey(KeyCode::a, KeyFlags::command);
    desktop_.advance(seconds(0, 0.3));
    return QStringLiteral("selects all");
}

TextRange RandomUse::randomRange(const QString& text) {
    const auto boundary = [&](qsizetype at) -> qint64 { return Characters::prefix(text, at).size(); };
    const auto count = static_cast<int>(Characters::count(text));
    const qint64 one = boundary(below(count + 1));
    const qint64 other = boundary(below(count + 1));
    return {std::min(one, other), std::abs(one - other)};
}

QString RandomUse::selectSome() {
    Field* field = quietFocused();
    if (!field) return QStringLiteral("(cannot select)");
    const TextRange range = randomRange(field->field->value);
    field->expected.edit({ExpectedText::Edit::Kind::select, {}, range});
    field->field->selection = range;
    desktop_.advance(seconds(0, 0.3));
    return QStringLiteral("selects %1+%2").arg(range.location).arg(range.length);
}

QString RandomUse::placeCaret() {
    Field* field = quietFocused();
    if (!field) return QStringLiteral("(cannot click)");
    const TextRange range{randomRange(field->field->value).location, 0};
    field->expected.edit({ExpectedText::Edit::Kind::select, {}, range});
    field->field->selection = range;
    desktop_.advance(seconds(0, 0.3));
    return QStringLiteral("clicks at %1").arg(range.location);
}

QString RandomUse::copySelection() {
    if (!quietFocused()) return QStringLiteral("(cannot copy)");
    pressKey(KeyCode::c, KeyFlags::command);
    desktop_.advance(seconds(0, 0.5));
    return QStringLiteral("copies");
}

QString RandomUse::pasteSomething() {
    const Field* field = quietFocused();
    const auto text =
        field ? desktop_.pasteboard.requestedBy(field->application->pid, desktop_.pasteboard.changeCount())
              : std::nullopt;
    if (!text || text->isEmpty() || text->size() > longestPaste) return QStringLiteral("(cannot paste)");
    edit({ExpectedText::Edit::Kind::insert, *text, {}});
    pressKey(KeyCode::v, KeyFlags::command);
    desktop_.advance(seconds(0, 0.5));
    return QStringLiteral("pastes ") + *text;
}

bool RandomUse::pasteIsUnderWay() const {
    // Nobody can help a paste whose pasteboard is taken between its key and the application's request.
    const auto& records = desktop_.keyPoster.records;
    return std::any_of(records.begin(), records.end(), [this](const auto& record) {
        const FakeApplication* receiver = desktop_.workspace.application(record.receiver);
        return receiver && receiver->waitingKeys() > 0;
    });
}

QString RandomUse::otherCopies() {
    if (pasteIsUnderWay()) return QStringLiteral("(nobody copies)");
    const auto& applications = desktop_.workspace.applications;
    const FakeApplication& owner = *applications[applications.size() - 1 - below(5)];
    desktop_.pasteboard.copyFrom(owner.isRunning() ? owner.pid : 0,
                                 QStringLiteral("copied at %1").arg(steps_));
    desktop_.advance(seconds(0, 0.3));
    return QStringLiteral("another program copies");
}

QString RandomUse::otherCopiesPicture() {
    if (pasteIsUnderWay()) return QStringLiteral("(nobody copies)");
    desktop_.pasteboard.copyOtherFrom(0, {QStringLiteral("image/png")});
    return QStringLiteral("a picture is copied");
}

QString RandomUse::ownerFallsSilent() {
    if (desktop_.pasteboard.current().owner != FakePasteboard::Owner::application)
        return QStringLiteral("(the owner goes on)");
    desktop_.pasteboard.stopAnswering();
    return QStringLiteral("the pasteboard's owner falls silent");
}

QString RandomUse::tapThreeTimes() {
    desktop_.advance(seconds(0.1, 1.2));
    const int taps = oneIn(6) ? 1 + below(4) : 3;
    const double hold = seconds(0.02, 0.08);
    const double gap = oneIn(6) ? seconds(0.1, 0.4) : seconds(0.03, 0.12);
    for (int i = 0; i < taps; ++i) {
        if (i > 0) desktop_.advance(gap);
        tapSpace(hold);
    }
    desktop_.advance(seconds(0, 0.3));
    return QStringLiteral("taps %1 times").arg(taps);
}

// MARK: The choice

QString RandomUse::tapTwice() {
    desktop_.advance(seconds(0.3, 2));
    tapSpace(0.04);
    desktop_.advance(seconds(0.03, 0.1));
    tapSpace(0.04);
    desktop_.advance(seconds(0, 0.8));
    return QStringLiteral("taps twice");
}

QString RandomUse::pressChoiceKey() {
    static constexpr qint64 keys[] = {KeyCode::one,   KeyCode::two,   KeyCode::three,     KeyCode::four,
                                      KeyCode::space, KeyCode::slash, KeyCode::returnKey, KeyCode::escape};
    const qint64 key = keys[below(static_cast<int>(std::size(keys)))];
    const bool taken = isTaken(key);
    if (!taken && key == KeyCode::returnKey) return QStringLiteral("(no line break)");
    const QChar typed = fakeCharacterOf(key, 0);
    pressTyping(key, typed.isNull() ? QString() : QString(typed), 0);
    desktop_.advance(seconds(0, 0.8));
    return QStringLiteral("presses key %1 of the choice%2")
        .arg(key)
        .arg(taken ? QStringLiteral(", which takes it") : QString());
}

QString RandomUse::clickRow() {
    const int slot = 1 + below(4);
    const bool clicked = desktop_.floatingPanels.clickRow(slot);
    desktop_.advance(seconds(0, 0.5));
    return clicked ? QStringLiteral("clicks row %1").arg(slot) : QStringLiteral("(nothing to click)");
}

QString RandomUse::moveField() {
    auto chosen = fields_.begin();
    std::advance(chosen, below(static_cast<int>(fields_.size())));
    chosen->field->frame.moveTo(below(3000) - 500, below(2000) - 500);
    desktop_.advance(seconds(0, 0.4));
    return QStringLiteral("field %1 moves").arg(chosen->field->id);
}

QString RandomUse::pressShortcut() {
    desktop_.keyboard.press(SimulatedVeltrin::translateKey, KeyFlags::option);
    desktop_.advance(seconds(0, 0.1));
    desktop_.keyboard.release(SimulatedVeltrin::translateKey, KeyFlags::option);
    desktop_.advance(seconds(0, 0.8));
    return QStringLiteral("presses the shortcut");
}

QString RandomUse::holdModifier() {
    desktop_.keyboard.heldModifiers = KeyFlags::option;
    desktop_.advance(seconds(0.05, 0.6));
    desktop_.keyboard.heldModifiers = 0;
    return QStringLiteral("holds a modifier");
}

QString RandomUse::wait() {
    const double time = oneIn(4) ? seconds(0.5, 4) : seconds(0, 0.3);
    desktop_.advance(time);
    return QStringLiteral("waits %1 s").arg(time);
}

// MARK: Where the user is

QString RandomUse::focusField() {
    auto chosen = fields_.begin();
    std::advance(chosen, below(static_cast<int>(fields_.size())));
    // Keys that wait would follow the focus into the other field.
    if (!isQuiet(*chosen->application) && chosen->window->focusedField != chosen->field)
        return QStringLiteral("(cannot focus)");
    desktop_.focus(*chosen->field);
    desktop_.advance(seconds(0, 0.4));
    return QStringLiteral("focuses field %1 of %2")
        .arg(chosen->field->id)
        .arg(chosen->application->name.value_or(QString()));
}

QString RandomUse::leaveEverything() {
    desktop_.workspace.bringToFront(nullptr);
    desktop_.advance(seconds(0, 0.4));
    return QStringLiteral("leaves everything");
}

QString RandomUse::retitleWindow() {
    auto chosen = fields_.begin();
    std::advance(chosen, below(static_cast<int>(fields_.size())));
    chosen->window->title = QStringLiteral("title %1").arg(below(3));
    return QStringLiteral("a window is retitled");
}

// MARK: What goes wrong

QString RandomUse::hangApplication() {
    auto chosen = fields_.begin();
    std::advance(chosen, below(static_cast<int>(fields_.size())));
    FakeApplication* application = chosen->application;
    if (application == &desktop_.workspace.program()) return QStringLiteral("(nothing hangs)");
    application->hang();
    hungLately_.insert(application);
    if (!oneIn(3)) desktop_.later(seconds(0.01, 2), [application] { application->resume(); });
    return application->name.value_or(QString()) + QStringLiteral(" hangs");
}

QString RandomUse::resumeApplications() {
    for (const auto& application : desktop_.workspace.applications)
        application->resume();
    return QStringLiteral("all applications answer");
}

QString RandomUse::quitApplication() {
    auto chosen = fields_.begin();
    std::advance(chosen, below(static_cast<int>(fields_.size())));
    FakeApplication* application = chosen->application;
    if (application == &desktop_.workspace.program()) return QStringLiteral("(nothing quits)");
    application->quit();
    std::erase_if(fields_, [application](const Field& field) { return field.application == application; });
    const QString name = application->name.value_or(QString());
    buildApplication(name, name.back().digitValue());
    desktop_.advance(seconds(0, 0.2));
    return name + QStringLiteral(" quits and is started again");
}

QString RandomUse::changeReplaceMode() {
    const auto mode = static_cast<TextReplaceMode>(below(3));
    veltrin_.settings().translationReplaceMode.set(mode);
    veltrin_.settings().optimizeReplaceMode.set(mode);
    return QStringLiteral("replace mode ") + rawValue(mode);
}

QString RandomUse::flipGestures() {
    auto& enabled = veltrin_.settings().spaceGesturesEnabled;
    enabled.set(!enabled());
    // Not for long: without gestures nothing happens.
    if (!enabled()) desktop_.later(seconds(0.5, 5), [&enabled] { enabled.set(true); });
    return QStringLiteral("gestures %1").arg(enabled() ? 1 : 0);
}

QString RandomUse::changeBlacklist() {
    veltrin_.settings().translationBlacklistedBundleIDsText.set(
        oneIn(2) ? QStringLiteral("org.example.Application1") : QString());
    return QStringLiteral("blacklist changed");
}

QString RandomUse::changeFaults() {
    auto chosen = fields_.begin();
    std::advance(chosen, below(static_cast<int>(fields_.size())));
    FakeTextField& field = *chosen->field;
    field.readFaults.clear();
    field.writeFaults.clear();
    field.settableFaults.clear();
    field.valueSettable = !oneIn(4);
    field.selectedTextSettable = !oneIn(3);
    field.selectedTextRangeSettable = !oneIn(4);
    switch (below(9)) {
        case 0:
            field.readFaults[AXAttribute::value] = FakeAXFault::refused(AXError::cannotComplete);
            break;
        case 1:
            field.readFaults[AXAttribute::value] = FakeAXFault::slow(0.1);
            break;
        case 2:
            field.writeFaults[AXAttribute::selectedTextRange] = FakeAXFault::lie();
            break;
        case 3:
            field.writeFaults[AXAttribute::selectedTextRange] = FakeAXFault::refused(AXError::failure);
            break;
        case 4:
            field.writeFaults[AXAttribute::selectedText] = FakeAXFault::refused(AXError::cannotComplete);
            break;
        case 5:
            field.writeFaults[AXAttribute::selectedText] = FakeAXFault::doneAllTheSame();
            break;
        case 6:
            field.writeFaults[AXAttribute::value] = FakeAXFault::doneAllTheSame();
            break;
        case 7:
            field.settableFaults[AXAttribute::selectedText] = FakeAXFault::refused(AXError::failure);
            break;
        default:
            break;
    }
    return QStringLiteral("other faults in field %1").arg(field.id);
}

QString RandomUse::changeDesktop() {
    desktop_.keyPoster.refusal = oneIn(4) ? std::optional(QStringLiteral("refused")) : std::nullopt;
    desktop_.workspace.refusesActivation = oneIn(5);
    desktop_.workspace.activationLatency = oneIn(3) ? 0.05 : 0;
    desktop_.accessibility.trusted = !oneIn(8);
    desktop_.accessibility.callCost = oneIn(3) ? 0.003 : 0;
    return QStringLiteral("the desktop behaves otherwise");
}

QString RandomUse::tapIsSwitchedOff() {
    if (oneIn(2))
        desktop_.keyEventTaps.disableByTimeout();
    else
        desktop_.keyEventTaps.disableByUserInput();
    return QStringLiteral("the tap is switched off");
}

}  // namespace veltrin

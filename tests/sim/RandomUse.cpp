#include "RandomUse.h"

#include "Foundation/MVPLog.h"

#include <QFile>

#include <algorithm>
#include <cmath>

namespace veltrin {
namespace {

constexpr std::size_t storyLength = 40;
constexpr std::size_t logTail = 60;
constexpr std::ptrdiff_t offersShown = 40;
/// While a paste is under way another one finds the first's text on the pasteboard.
constexpr double restoreDelay = 0.85;
/// Seconds that a gesture or a write may take with everything hung that can hang, or with three copies in
/// vain.
constexpr double longestBlock = 5;
constexpr double settleLimit = 400;
constexpr qint64 longestLog = 4'000'000;

bool isResult(const std::optional<QString>& text) {
    return text && text->contains(QStringLiteral("Result "));
}

QString shown(const std::optional<QString>& text) {
    return text ? u'"' + *text + u'"' : QStringLiteral("nothing");
}

QString shown(const ExpectedText::State& state) {
    return QStringLiteral("\"%1\" with %2+%3 selected")
        .arg(state.text)
        .arg(state.selection.location)
        .arg(state.selection.length);
}

QString shown(const std::vector<ExpectedText::Result>& results) {
    QStringList all;
    for (const auto& each : results) {
        all << QStringLiteral("%1 read at %2+%3 for%4%5%6")
                   .arg(each.text)
                   .arg(each.readRanges.front().location)
                   .arg(each.readRanges.front().length)
                   .arg(each.mayReplaceAll ? QStringLiteral(" everything") : QString(),
                        each.mayReplaceSelection ? QStringLiteral(" the selection") : QString(),
                        each.mayReplaceReadRange ? QStringLiteral(" the passage") : QString());
    }
    return all.join(QStringLiteral(", "));
}

}  // namespace

RandomUse::RandomUse(quint64 seed) : seed_(seed), random_(seed), formerLog_(MVPLog::logURL()) {
    MVPLog::setLogURL(folder_.filePath(QStringLiteral("random.log")));
    desktop_.keyboard.keyHold = 0;
    desktop_.keyboard.keyGap = 0;
    build();
    desktop_.keyPoster.onPosted = [this](const FakeKeyPoster::Record& record) { keyPosted(record); };
    veltrin_.model.reply = [this](const QString& prompt) { return answer(prompt); };
    veltrin_.launch();
    settle();
}

RandomUse::~RandomUse() {
    MVPLog::setLogURL(formerLog_);
}

// MARK: The world

void RandomUse::build() {
    for (int kind = 0; kind < 5; ++kind)
        buildApplication(QStringLiteral("Application%1").arg(kind), kind);
    FakeApplication& own = desktop_.workspace.program();
    FakeTextField& field = own.addField(QStringLiteral("own text"));
    fields_.push_back({&own, own.activeWindow, &field, {field.value, field.selection, true}});
    desktop_.pasteboard.put(QStringLiteral("copied before"));
    desktop_.focus(*fields_.front().field);
}

void RandomUse::buildApplication(const QString& name, int kind) {
    FakeApplication& application = desktop_.launch(name, QStringLiteral("org.example.") + name);
    application.terminal = kind == 3;
    application.accessible = kind != 4;
    const int windows = kind == 0 ? 2 : 1;
    for (int i = 0; i < windows; ++i) {
        FakeWindow& window = application.addWindow(name);
        const int count = kind == 3 ? 1 : 3;
        for (int j = 0; j < count; ++j) {
            FakeTextField& field =
                window.addField(QStringLiteral("text %1 of %2").arg(++lastApplication_).arg(name));
            if (kind == 2 && j == 1) field.password = true;
            if (kind == 2 && j == 2) field.editable = false;
            if (kind == 1 && j == 2) field.accessibilityWritesKeepUndo = false;
            fields_.push_back(
                {&application, &window, &field, {field.value, field.selection, field.editable}});
        }
    }
}

RandomUse::Field* RandomUse::fieldOf(const FakeTextField* field) {
    const auto found = std::find_if(fields_.begin(), fields_.end(),
                                    [field](const Field& each) { return each.field == field; });
    return found == fields_.end() ? nullptr : &*found;
}

RandomUse::Field* RandomUse::focused() {
    const FakeTextField* field = desktop_.focusedField();
    return field ? fieldOf(field) : nullptr;
}

bool RandomUse::isQuiet(const FakeApplication& application) const {
    return application.state() == FakeApplication::State::running && application.waitingKeys() == 0;
}

RandomUse::Field* RandomUse::quietFocused() {
    Field* field = focused();
    return field && isQuiet(*field->application) ? field : nullptr;
}

SimulatedModel::Reply RandomUse::answer(const QString& prompt) {
    using Reply = SimulatedModel::Reply;
    // A further attempt of a run brings the former prompt and more; the user may be elsewhere by then.
    Run run;
    for (const Attempt& former : attempts_) {
        // No field here holds a line break, so that a longer text is never taken for a repair.
        if (prompt.size() > former.prompt.size() && prompt.startsWith(former.prompt + u'\n')) {
            run.targets.push_back(former.field);
            run.result.readRanges.push_back(former.readRange);
            run.byClipboard = run.byClipboard || former.byClipboard;
        }
    }
    if (run.targets.empty()) {
        const FakeTextField* field = desktop_.focusedField();
        const TextRange range = field ? field->selection : TextRange{};
        run.targets.push_back(field);
        run.result.readRanges.push_back(range);
        run.byClipboard = field && field == readByClipboard_;
        readByClipboard_ = nullptr;
        attempts_.push_back({prompt, field, range, run.byClipboard});
    }
    if (run.byClipboard) {
        // Accepted: without accessibility the fields of one window cannot be told apart.
        const Field* read = fieldOf(run.targets.front());
        for (const Field& other : fields_) {
            if (read && other.window == read->window && other.field != read->field)
                run.targets.push_back(other.field);
        }
    }
    const double delay = oneIn(3) ? seconds(0.02, 0.3) : seconds(0.1, 5);
    const int kind = below(20);
    if (kind == 0) return Reply::text(QStringLiteral("Too late."), 200);
    if (kind == 1) return Reply::failing(UrlError::networkConnectionLost, delay);
    const bool recommends = prompt.contains(QStringLiteral("活跃应用"));
    if (recommends && kind < 6) return Reply::failing(UrlError::timedOut, delay);
    if (kind == 2) return Reply::text(QStringLiteral("  \n"), delay);
    if (kind == 3) return Reply::text(QStringLiteral("请你为以下文本翻译"), delay);
    if (kind == 4) {
        Reply reply = Reply::text(QStringLiteral("error"), delay);
        reply.status = 503;
        return reply;
    }
    if (kind == 5) {
        Reply reply;
        reply.delay = delay;
        reply.body = "{\"response\":";
        return reply;
    }
    run.result.run = ++lastRun_;
    run.result.text = QStringLiteral("Result %1.").arg(lastRun_);
    run.answeredAt = desktop_.now() + delay;
    if (recommends) {
        const QString command = run.result.text;
        run.result.text = QStringLiteral("★ %1 — fits").arg(command);
        runs_.push_back(run);
        return Reply::text(QStringLiteral(R"([{"command":"%1","category":"tool","explanation":"fits",)"
                                          R"("confidence":"high"}])")
                               .arg(command),
                           delay);
    }
    runs_.push_back(run);
    return Reply::text(run.result.text, delay);
}

// MARK: Steps

bool RandomUse::step() {
    if (!failure_.isEmpty()) return false;
    ++steps_;
    readByClipboard_ = nullptr;
    int total = 0;
    for (const Choice& choice : choices())
        total += choice.weight;
    int drawn = below(total);
    QString what;
    for (const Choice& choice : choices()) {
        drawn -= choice.weight;
        if (drawn >= 0) continue;
        story_.push_back(QStringLiteral("%1 %2 ").arg(steps_).arg(desktop_.now(), 0, 'f', 3));
        if (story_.size() > storyLength) story_.pop_front();
        story_.back() += (this->*choice.step)();
        break;
    }
    desktop_.runLoop.runDue();
    check();
    if (failure_.isEmpty() && steps_ % 50 == 0) settle();
    return failure_.isEmpty();
}

bool RandomUse::settle() {
    if (!failure_.isEmpty()) return false;
    for (const auto& application : desktop_.workspace.applications)
        application->resume();
    desktop_.advance(0.6);  // for the taps of the latest step to come to something
    if (isChoiceWaiting()) {
        veltrin_.settings().spaceGesturesEnabled.set(true);
        desktop_.runLoop.runDue();
        pressKey(KeyCode::escape);
        if (isChoiceWaiting()) fail(QStringLiteral("the choice does not close"));
    }
    const bool idle = veltrin_.runUntilIdle(settleLimit);
    check();
    if (!failure_.isEmpty()) return false;
    if (!idle) fail(QStringLiteral("the program does not come to rest"));
    const auto found = desktop_.pasteboard.peek();
    // Without a string of the user's, a result whose paste was refused stays for the user.
    if (clipboardMayBeLost_ || (!users_ && isResult(found))) users_ = found;
    if (found != users_)
        fail(QStringLiteral("the pasteboard holds %1, the user's is %2").arg(shown(found), shown(users_)));
    for (const Field& field : fields_) {
        if (field.expected.hasOpenEdits()) fail(QStringLiteral("keys never reached their field"));
    }
    clipboardMayBeLost_ = false;
    runs_.clear();
    attempts_.clear();
    pasted_.clear();
    handed_.clear();
    desktop_.forgetRecords();
    QFile log(MVPLog::logURL());
    if (log.size() > longestLog) log.resize(0);
    return failure_.isEmpty();
}

bool RandomUse::isChoiceWaiting() {
    return veltrin_.delegate().optimizeInteraction().isWaiting();
}

// MARK: Checks

void RandomUse::check() {
    checkPasteboardOffers();
    checkFields();
    checkRuns();
    checkProgram();
    for (const Field& field : fields_)
        digest(field.field->value);
    digest(desktop_.pasteboard.peek().value_or(QString()));
    digest(QString::number(std::llround(desktop_.now() * 1e6)));
    std::erase_if(hungLately_, [](const FakeApplication* application) {
        return application->state() != FakeApplication::State::hung;
    });
    checkedAt_ = desktop_.now();
}

void RandomUse::keyPosted(const FakeKeyPoster::Record& record) {
    // What the program's select-all does to a field is the same as the user's, and is never undone.
    if (record.chord.keyCode == KeyCode::a) edit({ExpectedText::Edit::Kind::selectAll, {}, {}});
    if (record.chord.keyCode != KeyCode::c) return;
    copyPostedAt_ = record.time;
    copyPostedTo_ = record.receiver;
    readByClipboard_ = desktop_.focusedField();
}

bool RandomUse::isCopyOfTheProgram(const FakePasteboard::Offer& offer) const {
    return isEmptied_ && copyPostedAt_ >= emptiedAt_ && offer.since >= copyPostedAt_ &&
           offer.application == copyPostedTo_;
}

bool RandomUse::isGivenBackByARead(const FakePasteboard::Offer& offer) const {
    return offer.text == lastTemporaryText_ && copyPostedAt_ > lastTemporaryOffer_ &&
           copyPostedAt_ <= offer.since;
}

void RandomUse::checkPasteboardOffers() {
    const auto& history = desktop_.pasteboard.history();
    // A restore comes late when the program was blocked at its time.
    const double restored = restoreDelay + desktop_.runLoop.blockedSeconds() - blockedBefore_;
    const qint64 changes = std::min<qint64>(desktop_.pasteboard.changeCount() - seenChanges_,
                                            static_cast<qint64>(history.size()));
    seenChanges_ = desktop_.pasteboard.changeCount();
    for (auto offer = history.end() - changes; offer != history.end(); ++offer) {
        if (offer->owner == FakePasteboard::Owner::program) {
            isEmptied_ = !offer->text;
            if (isEmptied_) emptiedAt_ = offer->since;
        } else if (isCopyOfTheProgram(*offer)) {
            continue;
        }
        if (offer->owner != FakePasteboard::Owner::program) {
            users_ = offer->text;
            // The program's own text in other hands is taken for a clipboard manager's doing.
            clipboardMayBeLost_ = isResult(users_) && offer->since - lastTemporaryOffer_ <= restored;
        } else if (offer->text && offer->content == PasteboardContent::temporary) {
            if (offer->since - lastTemporaryOffer_ <= restored) clipboardMayBeLost_ = true;
            lastTemporaryOffer_ = offer->since;
            lastTemporaryText_ = *offer->text;
        } else if (isResult(offer->text) && isGivenBackByARead(*offer)) {
            // Taken for the user's by a read that came before the restore, which comes after it.
            clipboardMayBeLost_ = true;
        } else if (isResult(offer->text) && offer->text != users_) {
            users_ = offer->text;
            handed_ << *offer->text;
            ++copiedResults_;
        }
    }
    for (const auto& record : desktop_.keyPoster.records) {
        const QString text = pastedBy(record);
        if (!text.isEmpty() && !pasted_.contains(text)) pasted_ << text;
    }
}

QString RandomUse::pastedBy(const FakeKeyPoster::Record& record) const {
    if (!record.result.posted || record.chord.keyCode != KeyCode::v) return {};
    const auto& history = desktop_.pasteboard.history();
    const auto offer = std::find_if(history.rbegin(), history.rend(), [&](const auto& each) {
        return each.change <= record.pasteboardChange && isResult(each.text) &&
               each.content == PasteboardContent::temporary;
    });
    return offer == history.rend() ? QString() : *offer->text;
}

bool RandomUse::wasPastedInHaste(const Run& run) const {
    const auto& records = desktop_.keyPoster.records;
    return std::any_of(records.begin(), records.end(), [&](const auto& record) {
        return record.inHaste && pastedBy(record) == run.result.text;
    });
}

void RandomUse::allowMannersOf(Run& run, const Field& field) {
    const FakeTextField& text = *field.field;
    const auto mode = veltrin_.settings().translationReplaceMode();
    const bool unreadable = !desktop_.accessibility.trusted || hungLately_.contains(field.application) ||
                            !field.application->accessible || text.readFaults.contains(AXAttribute::value);
    const bool refusesSelectedText = !text.selectedTextSettable ||
                                     text.writeFaults.contains(AXAttribute::selectedText) ||
                                     text.settableFaults.contains(AXAttribute::selectedText);
    ExpectedText::Result& result = run.result;
    // Whatever is selected when the paste comes: the program selected all just before.
    if (run.byClipboard) result.mayReplaceSelection = true;
    // Accepted: keys that the application had yet to work off move the caret under a paste.
    if (wasPastedInHaste(run)) result.mayReplaceSelection = true;
    for (const TextRange& range : result.readRanges) {
        const bool wasSelected = range.length > 0;
        if (mode == TextReplaceMode::replaceAll || (mode == TextReplaceMode::smart && wasSelected)) {
            result.mayReplaceAll = true;
            // Accepted: a field that cannot be read is pasted into where it stands.
            if (unreadable) result.mayReplaceSelection = true;
        }
        if (mode == TextReplaceMode::replaceAll) continue;
        if (wasSelected) {
            result.mayReplaceReadRange = true;
        } else {
            result.mayReplaceSelection = true;
            if (refusesSelectedText) result.mayReplaceAll = true;  // accepted
        }
    }
}

void RandomUse::checkFields() {
    for (Run& run : runs_) {
        if (run.arrived || run.answeredAt > desktop_.now() + 1e-9) continue;
        for (const FakeTextField* target : run.targets) {
            if (const Field* field = fieldOf(target)) allowMannersOf(run, *field);
        }
    }
    for (Field& field : fields_)
        checkField(field);
}

void RandomUse::checkField(Field& field) {
    // Keys that wait have not taken effect, nor has what they were meant for.
    if (!isQuiet(*field.application)) return;
    std::vector<ExpectedText::Result> results;
    for (const Run& run : runs_) {
        const bool meant =
            std::find(run.targets.begin(), run.targets.end(), field.field) != run.targets.end();
        if (meant && !run.arrived && run.answeredAt <= desktop_.now() + 1e-9) results.push_back(run.result);
    }
    const ExpectedText::State real{field.field->value, field.field->selection};
    std::vector<int> arrived;
    if (!field.expected.explain(real, results, arrived)) {
        fail(QStringLiteral("%1 field %2 holds %3, its user left %4 (may come: %5)")
                 .arg(field.application->name.value_or(QString()))
                 .arg(field.field->id)
                 .arg(shown(real), shown(field.expected.withoutResults()))
                 .arg(shown(results)));
        return;
    }
    for (Run& run : runs_) {
        if (std::find(arrived.begin(), arrived.end(), run.result.run) == arrived.end()) continue;
        run.arrived = true;
        ++written_;
    }
}

bool RandomUse::wasWritten(const Run& run) const {
    const auto& events = desktop_.log.entries;
    return std::any_of(events.begin(), events.end(), [&](const FakeEventLog::Entry& event) {
        return qstrcmp(event.what, "written by accessibility") == 0 && event.detail.contains(run.result.text);
    });
}

void RandomUse::checkRuns() {
    for (Run& run : runs_) {
        if (run.arrived || run.answeredAt > desktop_.now() - 1e-6) continue;
        const bool pasted = pasted_.contains(run.result.text);
        const bool written = wasWritten(run);
        if (!pasted && !written && !handed_.contains(run.result.text))
            fail(QStringLiteral("%1 is nowhere").arg(run.result.text));
        // Handed over and no longer there: another result took its place meanwhile. It must not come again.
        const bool waits = std::any_of(run.targets.begin(), run.targets.end(), [this](const auto* target) {
            const Field* field = fieldOf(target);
            return field && !isQuiet(*field->application);
        });
        run.arrived = (pasted || written) && !waits;
    }
}

void RandomUse::checkProgram() {
    const SpaceGestureEngine& engine = veltrin_.delegate().engine();
    if (engine.eventTapSuspendCount() != 0) fail(QStringLiteral("a suspension is left"));
    const auto running = std::count_if(
        desktop_.keyEventTaps.taps.begin(), desktop_.keyEventTaps.taps.end(),
        [](const auto& tap) { return tap->isRunning() && tap->mask == KeyEventMask::keyDownAndKeyUp; });
    if (running != (veltrin_.settings().spaceGesturesEnabled() ? 1 : 0))
        fail(QStringLiteral("%1 gesture taps run").arg(running));
    const auto shown = desktop_.floatingPanels.shown();
    const bool choiceShown = std::any_of(
        shown.begin(), shown.end(), [](const auto* panel) { return panel->spec.kind == PanelKind::choice; });
    if (choiceShown != isChoiceWaiting()) fail(QStringLiteral("the choice waits unseen, or is seen in vain"));
    for (const auto& tap : desktop_.keyEventTaps.taps) {
        const auto claimed = std::count_if(tap->claimable.begin(), tap->claimable.end(),
                                           [](const ClaimableKey& key) { return key.flags == 0; });
        if (tap->isRunning() && tap->mask == KeyEventMask::keyDownAndKeyUp &&
            claimed != (isChoiceWaiting() ? 8 : 0))
            fail(QStringLiteral("%1 keys are claimed").arg(claimed));
    }
    if (!desktop_.keyboard.down.empty()) fail(QStringLiteral("a key is down"));
    const double blocked = desktop_.runLoop.blockedSeconds() - blockedBefore_;
    blockedBefore_ = desktop_.runLoop.blockedSeconds();
    const auto answered = std::count_if(runs_.begin(), runs_.end(),
                                        [this](const Run& run) { return run.answeredAt > checkedAt_; });
    if (blocked > longestBlock * static_cast<double>(1 + answered))
        fail(QStringLiteral("blocked for %1 s").arg(blocked));
}

void RandomUse::digest(const QString& text) {
    for (const QChar unit : text)
        digest_ = (digest_ ^ unit.unicode()) * 1099511628211ULL;
    digest_ = (digest_ ^ 0xFFFF) * 1099511628211ULL;
}

void RandomUse::fail(const QString& what) {
    failure_ += what + u'\n';
}

QString RandomUse::failure() const {
    if (failure_.isEmpty()) return {};
    QString text = QStringLiteral("seed %1, step %2: %3\nsteps:\n").arg(seed_).arg(steps_).arg(failure_);
    for (const QString& line : story_)
        text += QStringLiteral("  ") + line + u'\n';
    const QStringList events = desktop_.log.text().split(u'\n');
    text += QStringLiteral("runs:\n");
    for (const Run& run : runs_) {
        text += QStringLiteral("  %1 answered at %2%3, for")
                    .arg(run.result.text)
                    .arg(run.answeredAt, 0, 'f', 3)
                    .arg(run.arrived ? QStringLiteral(", arrived") : QString());
        for (const FakeTextField* target : run.targets)
            text += QStringLiteral(" field %1").arg(target ? target->id : 0);
        text += u'\n';
    }
    text += QStringLiteral("pasteboard:\n");
    const auto& offers = desktop_.pasteboard.history();
    for (auto offer = offers.end() - std::min<std::ptrdiff_t>(offersShown, std::ssize(offers));
         offer != offers.end(); ++offer) {
        text += QStringLiteral("  %1 %2 by %3%4\n")
                    .arg(offer->since, 0, 'f', 3)
                    .arg(shown(offer->text))
                    .arg(static_cast<int>(offer->owner))
                    .arg(offer->content == PasteboardContent::temporary ? QStringLiteral(" for a moment")
                                                                        : QString());
    }
    return text + QStringLiteral("events:\n  ") +
           events.mid(std::max<qsizetype>(0, events.size() - static_cast<qsizetype>(logTail)))
               .join(QStringLiteral("\n  ")) +
           u'\n';
}

}  // namespace veltrin

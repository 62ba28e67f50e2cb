#include "soak/SelectionSession.h"

#include "support/desktop/Waiting.h"

#include <algorithm>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

constexpr double setSeconds = 20;  // an application on a busy machine
constexpr double lookSeconds = 30;
/// Beyond every delay of a look, and so that the next click is no second one of the last.
constexpr double afterGesture = 0.65;
constexpr int textWidth = 320;
constexpr int mostLines = 5;

QString nameOf(int gesture) {
    static const QStringList names{u"a drag forwards"_s,
                                   u"a drag backwards"_s,
                                   u"a drag over lines"_s,
                                   u"a drag that returns"_s,
                                   u"a click that moves a little"_s,
                                   u"a double click"_s,
                                   u"a triple click"_s,
                                   u"a click"_s,
                                   u"a click with Shift"_s,
                                   u"a drag with Shift"_s,
                                   u"a click and a drag"_s};
    return names[gesture];
}

QString told(QPoint point) {
    return u"%1,%2"_s.arg(point.x()).arg(point.y());
}

}  // namespace

SelectionWorld::SelectionWorld() {
    // Browsers ask once, at their start, whether anybody wants accessibility.
    if (!text.accessibility.isProcessTrusted()) throw std::runtime_error("no accessibility");
}

void SelectionTally::add(const SelectionTally& other) {
    rounds += other.rounds;
    looks += other.looks;
    shown += other.shown;
    nothing += other.nothing;
    clicks += other.clicks;
    copies += other.copies;
    late += other.late;
    refused += other.refused;
    untold += other.untold;
    missed += other.missed;
    unknowing += other.unknowing;
}

QString SelectionTally::told() const {
    return u"%1 selections looked at, %2 shown, %3 with nothing to show, %4 right at the second look, "
           "%5 not tried for want of an answer, %6 copy keys (%7 where accessibility should have told, "
           "%8 unknowingly), %9 drags missed, %10 clicks not looked at"_s.arg(looks)
               .arg(shown)
               .arg(nothing)
               .arg(late)
               .arg(refused)
               .arg(copies)
               .arg(untold)
               .arg(unknowing)
               .arg(missed)
               .arg(clicks);
}

QStringList SelectionSession::applications() {
    return {u"mousepad"_s, u"qt-widgets"_s, u"xterm"_s, u"lxterminal"_s,         u"chromium"_s,
            u"firefox"_s,  u"zenity"_s,     u"gedit"_s, u"libreoffice-writer"_s, u"gnome-text-editor"_s};
}

const std::vector<SelectionSession::Place>& SelectionSession::allPlaces() {
    static const std::vector<Place> all{
        {"mousepad", "text", Rule::told, true},
        {"gedit", "text", Rule::told, true},
        {"gnome-text-editor", "text", Rule::told, true},
        {"qt-widgets", "text", Rule::told, true},
        {"qt-widgets", "line", Rule::told, false},
        {"qt-widgets", "password", Rule::never, false},
        {"chromium", "textarea", Rule::told, true},
        {"chromium", "input", Rule::told, false},
        {"chromium", "editable", Rule::told, true},
        {"chromium", "page", Rule::told, true},
        {"chromium", "password", Rule::never, false},
        {"chromium", "readonly", Rule::told, false},
        {"firefox", "textarea", Rule::told, true},
        {"firefox", "input", Rule::told, false},
        {"firefox", "editable", Rule::told, true},
        {"firefox", "page", Rule::told, true},
        {"firefox", "password", Rule::never, false},
        {"firefox", "readonly", Rule::told, false},
        {"libreoffice-writer", "text", Rule::told, false},
        {"xterm", "text", Rule::never, true},
        {"lxterminal", "text", Rule::copied, true},
        {"zenity", "", Rule::never, false},
    };
    return all;
}

SelectionSession::SelectionSession(SelectionWorld& world, const QString& application, quint64 seed)
    : world_(world), chance_(seed), application_(application, world.text, world.desktop, world.probe) {
    for (const Place& place : allPlaces()) {
        if (is(place.application)) places_.push_back(&place);
    }
    if (places_.empty()) throw std::runtime_error("nothing is known of selections there");
    if (!is("chromium") && !is("firefox")) return;
    // A page tells where its fields stand in it, and accessibility where the first of them stands.
    auto& first = dynamic_cast<PageField&>(application_.field(u"textarea"_s));
    first.set({u"first"_s, 0, 0});
    const QPoint border(5, 5);
    pageAt_ = world_.selection.placeOf(application_, 0, 5).topLeft() - first.box().topLeft() - border;
}

void SelectionSession::fail(const QString& what) const {
    throw Broken(story_ + u": "_s + what);
}

// MARK: A round

void SelectionSession::round() {
    ++tally_.rounds;
    place_ = places_[static_cast<std::size_t>(chance_.below(static_cast<int>(places_.size())))];
    story_ = u"round %1, %2 %3"_s.arg(++number_).arg(application_.name(), QLatin1String(place_->field));
    prepare();
    gesture(static_cast<Gesture>(chance_.below(static_cast<int>(Gesture::number))));
    if (!world_.selection.surface.icon || !chance_.percent(40)) return;
    // With the icon there still. A press where something is selected would drag that.
    static constexpr Gesture further[] = {Gesture::doubleClick, Gesture::tripleClick, Gesture::shiftClick,
                                          Gesture::clickAndDrag};
    story_ = begin_ + u", again with the icon there"_s;
    gesture(further[chance_.below(static_cast<int>(std::size(further)))]);
}

void SelectionSession::prepare() {
    RecordingSurface& surface = world_.selection.surface;
    surface.dismissIcon();
    surface.dismissPopup();
    surface.shown.clear();
    shownBefore_.clear();
    XDesktop& x = world_.desktop.x();
    if (x.activeWindow() != application_.window() && !x.activate(application_.window(), setSeconds))
        fail(u"its window cannot be made active"_s);

    const bool isPassword = QLatin1String(place_->field) == "password"_L1;
    const bool isWrapped = is("libreoffice-writer");
    const int most = isWrapped ? 40 : place_->hasLines ? 16 : 5;
    const int count = place_->hasLines && !isTerminal() && chance_.percent(4) ? 300 : chance_.below(most);
    text_ = u"first "_s + chance_.words(1 + count, {.mayBeHard = !isTerminal() && !isPassword,
                                                    .mayBreak = place_->hasLines});
    // What is selected elsewhere in the window would count as selected too.
    if (lastField_ && (!hasField() || lastField_ != &field())) lastField_->set({});
    lastField_ = hasField() ? &field() : nullptr;
    if (hasField()) {
        field().set({text_, 0, 0});
        if (!waitUntil(setSeconds, [this] { return field().state().text == text_; }))
            throw std::runtime_error((story_ + u": the test cannot set the field"_s).toStdString());
    }
    const auto breaks = static_cast<int>(text_.count(u'\n'));
    lines_ = isWrapped ? 2 : place_->hasLines ? std::min(breaks + 1, mostLines) : 1;
    area_ = textPlace();

    content_ = randomContentOfAnyOwner(chance_);
    story_ += u", with %1 on the clipboard"_s.arg(content_.told());
    if (content_.isSilent) {
        world_.clipboard.ownSilently();
    } else {
        world_.clipboard.own(content_.offered);
        if (content_.offered.contents.isEmpty()) world_.clipboard.disown();
    }
    // Whatever is selected by the mouse is seen by its taking this.
    world_.primary.ownText(u"nobody's"_s);
    begin_ = story_;
}

QRect SelectionSession::textPlace() {
    const QRect window = world_.desktop.x().geometry(application_.window());
    if (auto* field = hasField() ? dynamic_cast<PageField*>(&this->field()) : nullptr) {
        lineHeight_ = 20;
        const QRect box = field->box().translated(pageAt_);
        return {box.left() + 6, box.top() + 5, textWidth, lineHeight_ * lines_};
    }
    lineHeight_ = 18;
    QPoint at = window.topLeft() + QPoint(12, 10);
    if (is("gnome-text-editor")) {
        at = window.topLeft() + QPoint(30, 62);
    } else if (is("lxterminal")) {
        at += QPoint(4, 26);
    } else if (is("qt-widgets")) {
        const QString name =
            QLatin1String(place_->field).left(1).toString().toUpper() + QLatin1String(place_->field).mid(1);
        at = world_.probe.extents(world_.probe.waitForField(application_.program(), name)).topLeft() +
             QPoint(6, 5);
    } else if (hasField() && !isTerminal()) {
        const QRect first = world_.selection.placeOf(application_, 0, 5);
        lineHeight_ = first.height();
        at = first.topLeft();
    }
    return {at.x(), at.y(), textWidth, lineHeight_ * lines_};
}

QPoint SelectionSession::onLine(int line, int x) {
    return {area_.left() + x, area_.top() + lineHeight_ * line + lineHeight_ / 2 + chance_.below(5) - 2};
}

QPoint SelectionSession::anywhere() {
    // Mostly on the text, which is often shorter than its place.
    const int width = chance_.percent(70) ? textWidth / 3 : textWidth;
    return onLine(chance_.below(lines_), chance_.below(width));
}

// MARK: A gesture

void SelectionSession::gesture(Gesture gesture) {
    story_ += u", "_s + nameOf(static_cast<int>(gesture));
    const bool withShift = gesture == Gesture::shiftClick || gesture == Gesture::shiftDrag;
    const Look look = this->look([&] { play(gesture); });
    expectNothingDown();
    expectKeys(look, withShift);
    expectText();
    expectRightReason(gesture, look);
    expectShown(look);
    expectClipboard();
    shownBefore_ = look.shown;
}

void SelectionSession::play(Gesture gesture) {
    Typist& typist = world_.typist;
    const double step = 0.004 * (1 + chance_.below(5));
    const int line = chance_.below(lines_);
    const int left = chance_.below(textWidth / 3);
    const int right = left + 10 + chance_.below(textWidth - left - 10);
    const QPoint from = anywhere();
    const auto drag = [&](const QList<QPoint>& places) {
        QStringList way;
        for (const QPoint place : places)
            way << told(place);
        story_ += u" "_s + way.join(u'-');
        dragThrough(typist, places, step);
    };
    const auto click = [&](QPoint at, int count = 1) {
        story_ += u" "_s + told(at);
        typist.whileLoopRuns([at, count](Typist& hand) { hand.click(at, count); });
    };
    const auto& icon = world_.selection.surface.icon;
    const int height = world_.desktop.x().screen().height_in_pixels;
    isOnIcon_ = icon && icon->contains(QPointF(from.x(), height - from.y()));
    const double begin = monotonicSeconds();
    switch (gesture) {
        case Gesture::forwards:
            drag({onLine(line, left), onLine(line, right)});
            break;
        case Gesture::backwards:
            drag({onLine(line, right), onLine(line, left)});
            break;
        case Gesture::overLines:
            drag({onLine(0, left), onLine(lines_ - 1, right)});
            break;
        case Gesture::returning:
            drag({from, from + QPoint(20 + chance_.below(80), chance_.below(20)), from});
            break;
        case Gesture::nudge:
            drag({from, from + QPoint(chance_.below(9), chance_.below(9))});
            break;
        case Gesture::doubleClick:
            click(from, 2);
            break;
        case Gesture::tripleClick:
            click(from, 3);
            break;
        case Gesture::plainClick:
            click(from);
            break;
        case Gesture::shiftClick:
            typist.press(u"Shift"_s);
            click(from);
            typist.release(u"Shift"_s);
            break;
        case Gesture::shiftDrag:
            typist.press(u"Shift"_s);
            drag({onLine(line, left), onLine(line, right)});
            typist.release(u"Shift"_s);
            break;
        default:
            click(from);
            // So that it is no double click, wherever it is.
            runEventLoopFor(afterGesture);
            drag({onLine(line, left), onLine(line, right)});
            break;
    }
    gestureTook_ = monotonicSeconds() - begin;
}

bool SelectionSession::Look::has(const char* start) const {
    return std::any_of(lines.begin(), lines.end(),
                       [start](const QString& line) { return line.startsWith(QLatin1String(start)); });
}

/// Does something with the mouse, and waits until nothing is under way any more.
SelectionSession::Look SelectionSession::look(const std::function<void()>& doing, bool isByShortcut) {
    const LogCapture log;
    SelectionDesktop& selection = world_.selection;
    const auto shownBefore = selection.surface.shown.size();
    const int copiesBefore = selection.poster.posted;
    world_.keys.take();
    auto* page = hasField() ? dynamic_cast<PageField*>(&field()) : nullptr;
    const qsizetype keysBefore = page ? page->keys().size() : 0;
    doing();
    const double done = monotonicSeconds();
    Look look;
    const auto isOver = [&] {
        int open = isByShortcut ? 1 : 0;
        for (const QString& line : look.lines) {
            if (line.startsWith(u"SmartSelect trigger:")) {
                ++open;
            } else if (line.startsWith(u"SmartSelect ignored: debounce")) {
                --open;
            } else if (line.startsWith(u"SmartSelect no selected text:") ||
                       line.startsWith(u"SmartSelect show:") || line.startsWith(u"SmartSelect ignored: ") ||
                       line.startsWith(u"SmartSelect duplicate ignored:")) {
                open = 0;  // a later selection takes the place of an earlier one
            }
        }
        return open == 0;
    };
    const bool hasEnded = eventually(lookSeconds, [&] {
        if (monotonicSeconds() < done + afterGesture) return false;
        look.lines = log.lines();
        return isOver();
    });
    if (!hasEnded) fail(u"a look at the selection comes to no end"_s);
    look.presses = world_.keys.take();
    if (page) look.keysOfPage = page->keys().mid(keysBefore);
    look.selected = selected();
    look.copies = selection.poster.posted - copiesBefore;
    look.icons = static_cast<int>(selection.surface.shown.size() - shownBefore);
    if (look.icons > 0) look.shown = selection.surface.shown.back().text;
    return look;
}

QString SelectionSession::selected() {
    if (place_->rule == Rule::never) return {};
    if (place_->rule == Rule::told) return field().selected();
    return world_.primary.isOwner() ? QString() : world_.primary.text().value_or(QString());
}

}  // namespace veltrin

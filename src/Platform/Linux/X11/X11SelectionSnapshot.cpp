// The part of X11SelectionReader that reads everything at once.
#include "Platform/Linux/X11/X11SelectionReader.h"
#include "Platform/Linux/X11/X11SelectionTypes.h"

#include <algorithm>
#include <numeric>

namespace veltrin {
namespace {

using std::chrono::milliseconds;

/// Nobody offers more in earnest.
constexpr std::size_t mostTargets = 200;

std::vector<xcb_atom_t> atomsIn(const QByteArray& bytes) {
    X11Connection::Property property;
    property.format = 32;
    property.bytes = bytes;
    const auto words = property.words();
    std::vector<xcb_atom_t> atoms;
    for (const xcb_atom_t atom : words) {
        const bool isKnown = std::find(atoms.begin(), atoms.end(), atom) != atoms.end();
        if (atom != XCB_ATOM_NONE && !isKnown && atoms.size() < mostTargets) atoms.push_back(atom);
    }
    return atoms;
}

}  // namespace

/// With the names, in one round trip; what has no name or only describes is left out.
std::vector<X11SelectionReader::Listed> X11SelectionReader::named(
    const std::vector<xcb_atom_t>& targets) const {
    auto* xcb = connection_->xcb();
    std::vector<xcb_get_atom_name_cookie_t> questions;
    questions.reserve(targets.size());
    for (const xcb_atom_t target : targets)
        questions.push_back(xcb_get_atom_name(xcb, target));
    std::vector<Listed> listed;
    for (std::size_t i = 0; i < targets.size(); ++i) {
        const X11Reply<xcb_get_atom_name_reply_t> reply(xcb_get_atom_name_reply(xcb, questions[i], nullptr));
        if (!reply) continue;
        QString name = QString::fromLatin1(xcb_get_atom_name_name(reply.get()),
                                           xcb_get_atom_name_name_length(reply.get()));
        if (!SelectionTypes::isMeta(name)) listed.push_back({targets[i], std::move(name)});
    }
    return listed;
}

std::optional<std::vector<X11SelectionReader::Listed>> X11SelectionReader::listed(
    Clock::time_point deadline) {
    if (owner() == XCB_NONE && !connection_->isLost()) return std::vector<Listed>();
    const Answer answer = read(connection_->atom("TARGETS"), deadline);
    if (answer.status == Answer::Status::value) return named(atomsIn(answer.bytes));
    if (answer.status == Answer::Status::unanswered) {
        // An owner that ended meanwhile leaves an empty clipboard.
        if (owner() == XCB_NONE && !connection_->isLost()) return std::vector<Listed>();
        return std::nullopt;
    }
    // Old programs list nothing and have text.
    std::vector<Listed> text;
    for (const QString& type : SelectionTypes::plainText())
        text.push_back({atom(type), type});
    return text;
}

std::optional<QStringList> X11SelectionReader::types(milliseconds limit) {
    if (!isUsable() || connection_->isLost()) return std::nullopt;
    const auto found = listed(Clock::now() + limit);
    if (!found) return std::nullopt;
    QStringList names;
    for (const Listed& entry : *found)
        names << entry.name;
    return names;
}

std::optional<PasteboardSnapshot> X11SelectionReader::snapshot(milliseconds each, milliseconds all) {
    if (!isUsable() || connection_->isLost()) return std::nullopt;
    const auto deadline = Clock::now() + all;
    for (;;) {
        const auto before = changeCount();
        auto taken = take(each, deadline);
        // The types of one owner and those of the next would not belong together.
        if (changeCount() == before) return taken;
        if (Clock::now() >= deadline) return std::nullopt;
    }
}

std::optional<PasteboardSnapshot> X11SelectionReader::take(milliseconds each, Clock::time_point deadline) {
    const auto offered = listed(deadline);
    if (!offered) return std::nullopt;
    std::vector<std::size_t> order(offered->size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return SelectionTypes::rank((*offered)[a].name) < SelectionTypes::rank((*offered)[b].name);
    });

    std::vector<std::optional<PasteboardData>> found(offered->size());
    bool hasText = false;
    bool owesText = false;
    for (const std::size_t i : order) {
        const Listed& entry = (*offered)[i];
        const bool isText = SelectionTypes::plainText().contains(entry.name);
        const Answer answer = read(entry.target, std::min(Clock::now() + each, deadline), deadline);
        if (answer.status == Answer::Status::value) {
            found[i] = {entry.name, answer.bytes, SelectionTypes::formOf(nameOf(answer.type), answer.format)};
        }
        hasText = hasText || (isText && found[i]);
        owesText = owesText || (isText && answer.status == Answer::Status::unanswered);
    }
    if (owesText && !hasText) return std::nullopt;
    PasteboardItem item;
    for (auto& data : found) {
        if (data) item.data.push_back(std::move(*data));
    }
    PasteboardSnapshot snapshot;
    if (!offered->empty()) snapshot.items.push_back(std::move(item));
    return snapshot;
}

}  // namespace veltrin

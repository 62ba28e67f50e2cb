#include "Platform/Linux/X11/X11SelectionTypes.h"

#include "Platform/Linux/X11/X11SelectionReader.h"

#include <algorithm>

namespace veltrin::SelectionTypes {
namespace {

using namespace Qt::StringLiterals;

constexpr char16_t formSeparator = u'/';

/// "UTF8_STRING/8" in its two parts. What does not read so is taken for bytes of the target's own name.
std::pair<QString, std::uint8_t> partsOf(const PasteboardData& data) {
    const qsizetype at = data.form.lastIndexOf(formSeparator);
    const int format = data.form.mid(at + 1).toInt();
    const bool isGood =
        at > 0 && (format == 8 || format == 16 || format == 32) && data.bytes.size() % (format / 8) == 0;
    return isGood ? std::pair(data.form.left(at), static_cast<std::uint8_t>(format))
                  : std::pair(data.type, std::uint8_t{8});
}

}  // namespace

const QStringList& plainText() {
    static const QStringList all{u"UTF8_STRING"_s, u"text/plain;charset=utf-8"_s, u"STRING"_s, u"TEXT"_s};
    return all;
}

bool isMeta(const QString& type) {
    static const QStringList all{u"TARGETS"_s, u"TIMESTAMP"_s,        u"MULTIPLE"_s,        u"SAVE_TARGETS"_s,
                                 u"DELETE"_s,  u"INSERT_SELECTION"_s, u"INSERT_PROPERTY"_s, u"INCR"_s};
    return all.contains(type);
}

int rank(const QString& type) {
    if (const auto text = plainText().indexOf(type); text >= 0) return static_cast<int>(text);
    if (type == QLatin1String(secretHint)) return 10;
    const bool isPicture = type.startsWith(u"image/"_s) || type == u"PIXMAP" || type == u"BITMAP";
    return isPicture && type != u"image/png" ? 30 : 20;
}

QString textOf(const PasteboardData& data) {
    QByteArray bytes = data.bytes;
    if (bytes.endsWith('\0')) bytes.chop(1);
    return partsOf(data).first == u"STRING" ? QString::fromLatin1(bytes) : QString::fromUtf8(bytes);
}

QString formOf(const QString& type, int format) {
    return type + formSeparator + QString::number(format);
}

X11SelectionServer::Offer offerOf(const PasteboardSnapshot& snapshot, const X11SelectionReader& atoms) {
    X11SelectionServer::Offer offer;
    qsizetype textRank = plainText().size();
    // A selection has one item; should there ever be more, the first one that has a type gives it.
    for (const PasteboardItem& item : snapshot.items) {
        for (const PasteboardData& data : item.data) {
            if (isMeta(data.type)) continue;
            const xcb_atom_t target = atoms.atom(data.type);
            const bool isTaken = std::any_of(offer.kept.begin(), offer.kept.end(),
                                             [target](const auto& entry) { return entry.first == target; });
            if (target == XCB_ATOM_NONE || isTaken) continue;
            const auto [type, format] = partsOf(data);
            offer.kept.push_back({target, {atoms.atom(type), format, data.bytes}});
            if (data.type == QLatin1String(secretHint) && data.bytes.startsWith("secret"))
                offer.content = PasteboardContent::secret;
            const qsizetype text = plainText().indexOf(data.type);
            if (text < 0 || text >= textRank) continue;
            textRank = text;
            offer.utf8 = textOf(data).toUtf8();
        }
    }
    // The text that came in one form only, perhaps since the owner was slow, is offered in the usual one too.
    if (offer.utf8 && textRank > 0) {
        const xcb_atom_t utf8 = atoms.atom(plainText().front());
        offer.kept.push_back({utf8, {utf8, 8, *offer.utf8}});
    }
    return offer;
}

PasteboardSnapshot snapshotOf(const X11SelectionServer::Offer& offer, const X11SelectionReader& atoms) {
    PasteboardItem item;
    item.data.reserve(offer.kept.size());
    for (const auto& [target, content] : offer.kept) {
        item.data.push_back(
            {atoms.nameOf(target), content.bytes, formOf(atoms.nameOf(content.type), content.format)});
    }
    if (offer.kept.empty() && offer.utf8) {
        for (const QString& type : {u"UTF8_STRING"_s, u"text/plain;charset=utf-8"_s, u"text/plain"_s})
            item.data.push_back({type, *offer.utf8, formOf(type, 8)});
        item.data.push_back({u"STRING"_s, QString::fromUtf8(*offer.utf8).toLatin1(), formOf(u"STRING"_s, 8)});
        if (offer.content != PasteboardContent::lasting) {
            const QString hint = QLatin1String(secretHint);
            item.data.push_back({hint, "secret", formOf(hint, 8)});
        }
    }
    PasteboardSnapshot snapshot;
    if (!item.data.empty()) snapshot.items.push_back(std::move(item));
    return snapshot;
}

}  // namespace veltrin::SelectionTypes

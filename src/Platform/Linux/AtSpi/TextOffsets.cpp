#include "Platform/Linux/AtSpi/TextOffsets.h"

#include <algorithm>

namespace veltrin::AtSpi {
namespace {

constexpr QChar padding(0xFEFF);

bool isPairAt(const QString& text, qsizetype unit) {
    return unit + 1 < text.size() && text[unit].isHighSurrogate() && text[unit + 1].isLowSurrogate();
}

/// Gecko puts U+FEFF after each character beyond the basic plane, so that its UTF-16 offsets count as
/// characters.
QString withoutPadding(const QString& raw) {
    if (!raw.contains(padding)) return raw;
    QString text;
    text.reserve(raw.size());
    for (qsizetype i = 0; i < raw.size(); ++i) {
        text += raw[i];
        if (!isPairAt(raw, i)) continue;
        text += raw[++i];
        if (i + 1 < raw.size() && raw[i + 1] == padding) ++i;
    }
    return text;
}

/// Qt Quick parts lines by the separators of its documents.
QString withLineFeeds(QString raw) {
    raw.replace(QChar::LineSeparator, u'\n');
    raw.replace(QChar::ParagraphSeparator, u'\n');
    return raw;
}

QString plain(const QString& raw, Toolkit toolkit) {
    if (toolkit == Toolkit::gecko) return withoutPadding(raw);
    return toolkit == Toolkit::qt ? withLineFeeds(raw) : raw;
}

qint64 pairCount(const QString& text) {
    qint64 pairs = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (isPairAt(text, i)) ++pairs, ++i;
    }
    return pairs;
}

}  // namespace

Toolkit toolkitNamed(const QString& name, const QString& version, const QString& application) {
    if (application == u"soffice") return Toolkit::office;
    if (name.compare(u"gtk", Qt::CaseInsensitive) == 0) {
        return version.startsWith(u"3.") || version.startsWith(u"2.") ? Toolkit::gtk3 : Toolkit::gtk4;
    }
    if (name == u"Qt") return Toolkit::qt;
    if (name == u"Gecko") return Toolkit::gecko;
    if (name == u"Chromium") return Toolkit::chromium;
    return Toolkit::other;
}

TextOffsets::TextOffsets(const QString& raw, qint64 characterCount, Toolkit toolkit)
    : text_(plain(raw, toolkit)) {
    const qint64 pairs = pairCount(text_);
    hasPairs_ = pairs > 0;
    if (!hasPairs_ || toolkit == Toolkit::gecko) return;
    if (characterCount == text_.size() - pairs) {
        countsCodePoints_ = true;
    } else if (characterCount != text_.size()) {
        // The text changed between the two questions: go by what the toolkit is known for.
        countsCodePoints_ = toolkit != Toolkit::qt && toolkit != Toolkit::other;
    }
    convertsTwice_ = countsCodePoints_ && toolkit == Toolkit::chromium;
}

qint64 TextOffsets::toUtf16(qint64 offset) const {
    if (offset <= 0) return 0;
    if (!countsCodePoints_) return std::min<qint64>(offset, text_.size());
    qsizetype unit = 0;
    for (; offset > 0 && unit < text_.size(); --offset)
        unit += isPairAt(text_, unit) ? 2 : 1;
    return unit;
}

TextRange TextOffsets::toUtf16(const OffsetRange& range) const {
    const qint64 start = toUtf16(std::min(range.start, range.end));
    const qint64 end = toUtf16(std::max(range.start, range.end));
    return {start, end - start};
}

qint64 TextOffsets::toToolkit(qint64 utf16) const {
    const qint64 unit = std::clamp<qint64>(utf16, 0, text_.size());
    const bool cutsPair = hasPairs_ && unit > 0 && isPairAt(text_, unit - 1);
    if (!countsCodePoints_) return cutsPair ? unit - 1 : unit;
    qint64 offset = 0;
    for (qsizetype i = 0; i < unit;) {
        const qsizetype next = i + (isPairAt(text_, i) ? 2 : 1);
        if (next > unit) break;
        i = next;
        ++offset;
    }
    return offset;
}

OffsetRange TextOffsets::toToolkit(const TextRange& range) const {
    const qint64 start = std::clamp<qint64>(range.location, 0, text_.size());
    qint64 end = start + std::clamp<qint64>(range.length, 0, text_.size() - start);
    if (end > start && isPairAt(text_, end - 1)) ++end;
    return {toToolkit(start), toToolkit(end)};
}

OffsetRange TextOffsets::selection(const OffsetRange& reported) const {
    OffsetRange range{std::min(reported.start, reported.end), std::max(reported.start, reported.end)};
    if (convertsTwice_) range = {toUtf16(range.start), toUtf16(range.end)};
    return range;
}

OffsetRange TextOffsets::reportOf(const OffsetRange& actual) const {
    if (!convertsTwice_) return actual;
    const auto cutsPair = [this](qint64 unit) { return unit > 0 && isPairAt(text_, unit - 1); };
    if (cutsPair(actual.start) || cutsPair(actual.end)) return {};
    return {toToolkit(actual.start), toToolkit(actual.end)};
}

}  // namespace veltrin::AtSpi

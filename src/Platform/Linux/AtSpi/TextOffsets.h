#pragma once

#include "Platform/Accessibility.h"

#include <QString>

namespace veltrin::AtSpi {

/// The toolkits whose accessibility differs in what this program needs.
enum class Toolkit { other, gtk3, gtk4, qt, gecko, chromium, office };

/// From the name and the version that an application states of its toolkit, and from its own name:
/// LibreOffice states the one that its windows are drawn with.
Toolkit toolkitNamed(const QString& name, const QString& version, const QString& application = {});

/// A half-open range in the offsets of a toolkit.
struct OffsetRange {
    qint64 start = 0;
    qint64 end = 0;
    friend bool operator==(const OffsetRange&, const OffsetRange&) = default;
};

/// The whole text of an element, and the way between its toolkit's offsets and UTF-16 units. Toolkits count
/// code points or UTF-16 units; which one is read off the character count that came with the text. Every
/// integer is accepted as an offset and clamped into the text.
class TextOffsets {
public:
    TextOffsets() = default;
    /// `raw` as the element gave it, `characterCount` as it counts that text (negative: unknown).
    TextOffsets(const QString& raw, qint64 characterCount, Toolkit toolkit);

    /// The text, without the padding that one toolkit puts in, and with line feeds between its lines.
    const QString& text() const { return text_; }
    bool countsCodePoints() const { return countsCodePoints_; }
    /// The text's length in the toolkit's offsets.
    qint64 length() const { return toToolkit(text_.size()); }

    qint64 toUtf16(qint64 offset) const;
    TextRange toUtf16(const OffsetRange& range) const;
    /// An offset inside a surrogate pair moves before it.
    qint64 toToolkit(qint64 utf16) const;
    /// A range that cuts a surrogate pair grows to hold it.
    OffsetRange toToolkit(const TextRange& range) const;

    /// Puts right the selection `reported` by the toolkit. Chromium converts its selection from UTF-16 to
    /// code points twice over; that is undone here. Other toolkits' selections come back ordered, else
    /// unchanged.
    OffsetRange selection(const OffsetRange& reported) const;
    /// What the toolkit reports, ordered, when `actual` is selected; the inverse of `selection`. Chromium
    /// reports (0, 0) of a selection that it can't convert.
    OffsetRange reportOf(const OffsetRange& actual) const;
    /// False when `reported` is what Chromium says of a selection that it could not convert. Only to be asked
    /// where something is selected.
    bool isSelectionKnown(const OffsetRange& reported) const {
        return !convertsTwice_ || reported != OffsetRange{};
    }

private:
    QString text_;
    bool countsCodePoints_ = false;
    bool hasPairs_ = false;
    bool convertsTwice_ = false;
};

}  // namespace veltrin::AtSpi

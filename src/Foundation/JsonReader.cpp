#include "Foundation/JsonReader.h"

#include <QHash>
#include <QStringDecoder>

#include <charconv>
#include <cmath>
#include <limits>

namespace veltrin {
namespace {

constexpr int maximumDepth = 512;
constexpr std::size_t maximumElementValues = 1'000'000;

/// What a string cannot hold as it is: its end, an escape, a control character.
constexpr bool isSpecial(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\';
}

bool hasRepeatedMembers(const Json::Object& members) {
    constexpr std::size_t few = 24;
    if (members.size() > few) return true;  // looked at more closely by who drops them
    for (std::size_t i = 1; i < members.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (members[i].first == members[j].first) return true;
        }
    }
    return false;
}

/// Leaves one member of each name: the last value, at the first one's place. Members are appended while an
/// object is read, and looked over once when it ends, so that an object of very many stays cheap.
void dropRepeatedMembers(Json::Object& members) {
    QHash<QStringView, std::size_t> places;
    places.reserve(static_cast<qsizetype>(members.size()));
    std::vector<std::pair<std::size_t, std::size_t>> repeats;  // from, to
    for (std::size_t i = 0; i < members.size(); ++i) {
        const auto place = places.constFind(members[i].first);
        if (place == places.constEnd()) {
            places.insert(members[i].first, i);
        } else {
            repeats.emplace_back(i, *place);
        }
    }
    if (repeats.empty()) return;
    std::vector<bool> dropped(members.size(), false);
    for (const auto& [from, to] : repeats) {
        members[to].second = std::move(members[from].second);
        dropped[from] = true;
    }
    std::size_t index = 0;
    std::erase_if(members, [&](const Json::Member&) { return dropped[index++]; });
}

}  // namespace

JsonReader::JsonReader(QByteArrayView utf8)
    : begin_(utf8.begin()),
      at_(begin_),
      end_(utf8.end()),
      valuesLeft_(std::numeric_limits<std::size_t>::max()) {
    constexpr QByteArrayView byteOrderMark("\xef\xbb\xbf");
    if (utf8.startsWith(byteOrderMark)) at_ += byteOrderMark.size();
}

bool JsonReader::readDocument(Json& into) {
    return read(into) && isWhole();
}

bool JsonReader::readElements(const std::function<bool(const Json&)>& take) {
    if (!skipTo('[') || !enter()) return false;
    if (!skipTo(']')) {
        do {
            valuesLeft_ = maximumElementValues;
            Json element;
            if (!read(element) || !take(element)) return false;
        } while (skipTo(','));
        if (!skipTo(']')) return false;
    }
    return isWhole();
}

QByteArray JsonReader::error() const {
    if (depth_ > maximumDepth)
        return "JSON nested deeper than " + QByteArray::number(maximumDepth) + " levels";
    return "JSON syntax error at byte " + QByteArray::number(static_cast<qlonglong>(at_ - begin_));
}

/// A zero byte ends the text as well: a crash may leave some behind what was written.
bool JsonReader::isWhole() {
    skipBlanks();
    return at_ == end_ || *at_ == '\0';
}

bool JsonReader::read(Json& into) {
    if (skipTo('"')) {
        QString text;
        if (!readString(text)) return false;
        into = Json(std::move(text));
        return true;
    }
    switch (at_ == end_ ? '\0' : *at_) {
        case '{':
            return readObject(into);
        case '[':
            return readArray(into);
        case 't':
            return readWord("true", true, into);
        case 'f':
            return readWord("false", false, into);
        case 'n':
            return readWord("null", nullptr, into);
        default:
            return readNumber(into);
    }
}

/// The same for an element or a member's value.
bool JsonReader::readInside(Json& into) {
    return valuesLeft_-- > 0 && read(into);
}

bool JsonReader::readArray(Json& into) {
    ++at_;
    if (!enter()) return false;
    Json::Array elements;
    if (!skipTo(']')) {
        do {
            if (!readInside(elements.emplace_back())) return false;
        } while (skipTo(','));
        if (!skipTo(']')) return false;
    }
    --depth_;
    into = Json(std::move(elements));
    return true;
}

bool JsonReader::readObject(Json& into) {
    ++at_;
    if (!enter()) return false;
    Json::Object members;
    if (!skipTo('}')) {
        do {
            auto& [name, value] = members.emplace_back();
            if (!skipTo('"') || !readName(name) || !skipTo(':') || !readInside(value)) return false;
        } while (skipTo(','));
        if (!skipTo('}')) return false;
    }
    --depth_;
    if (hasRepeatedMembers(members)) dropRepeatedMembers(members);
    into = Json(std::move(members));
    return true;
}

/// From behind the opening quote.
bool JsonReader::readName(QString& into) {
    const char* start = at_;
    passPlain();
    const QByteArrayView utf8(start, at_ - start);
    if (utf8.isEmpty() || at_ == end_ || *at_ != '"') {
        at_ = start;
        return readString(into);
    }
    const qsizetype mixed =
        utf8.size() + qsizetype{7} * quint8(utf8.front()) + qsizetype{31} * quint8(utf8.back());
    Name& name = names_[static_cast<std::size_t>(mixed) % names_.size()];
    if (name.utf8 != utf8) {
        at_ = start;
        if (!readString(name.text)) return false;
        name.utf8 = utf8;
    } else {
        ++at_;
    }
    into = name.text;
    return true;
}

/// From behind the opening quote.
bool JsonReader::readString(QString& into) {
    const char* from = at_;
    passPlain();
    const char* plainEnd = at_;
    for (; end_ - at_ > 1 && *at_ == '\\'; passPlain())
        at_ += 2;
    const char* end = std::exchange(at_, plainEnd);
    if (end == end_ || *end != '"') return false;
    // A character never takes more units than bytes. The decoder keeps a mark of byte order, which is text
    // in here.
    using Flag = QStringDecoder::Flag;
    QStringDecoder decoder(QStringDecoder::Utf8, Flag::Stateless | Flag::ConvertInitialBom);
    into = QString(end - from, Qt::Uninitialized);
    QChar* out = into.data();
    for (;;) {
        out = decoder.appendToBuffer(out, QByteArrayView(from, at_ - from));
        if (decoder.hasError()) return false;
        if (at_++ == end) break;
        if (!readEscape(out)) return false;
        from = at_;
        passPlain();
    }
    into.truncate(out - into.constData());
    return true;
}

/// From behind the backslash.
bool JsonReader::readEscape(QChar*& out) {
    constexpr QByteArrayView escapes("\"\\/bfnrt");
    constexpr QByteArrayView meanings("\"\\/\b\f\n\r\t");
    const qsizetype index = escapes.indexOf(*at_);
    if (index >= 0) {
        *out++ = QLatin1Char(meanings[index]);
        ++at_;
        return true;
    }
    char16_t unit = 0;
    if (!pass('u') || !readUnit(unit) || QChar::isLowSurrogate(unit)) return false;
    *out++ = unit;
    if (!QChar::isHighSurrogate(unit)) return true;
    if (!pass('\\') || !pass('u') || !readUnit(unit) || !QChar::isLowSurrogate(unit)) return false;
    *out++ = unit;
    return true;
}

bool JsonReader::readUnit(char16_t& into) {
    constexpr int digits = 4;
    if (end_ - at_ < digits) return false;
    std::uint16_t unit = 0;
    if (std::from_chars(at_, at_ + digits, unit, 16).ptr != at_ + digits) return false;
    at_ += digits;
    into = unit;
    return true;
}

bool JsonReader::readNumber(Json& into) {
    const char* start = at_;
    bool isWholeNumber = true;
    if (!passNumber(isWholeNumber)) return false;
    std::int64_t whole = 0;
    if (isWholeNumber && std::from_chars(start, at_, whole).ec == std::errc()) {
        into = Json(whole);
        return true;
    }
    const double real = QString::fromLatin1(start, at_ - start).toDouble();  // too large is infinite
    if (!std::isfinite(real)) return false;
    into = Json(real);
    return true;
}

bool JsonReader::readWord(QByteArrayView word, Json meaning, Json& into) {
    if (!passWord(word)) return false;
    into = std::move(meaning);
    return true;
}

// MARK: Without values

bool JsonReader::passDocument() {
    return passValue() && isWhole();
}

bool JsonReader::passValue() {
    skipBlanks();
    const char* start = at_;
    switch (at_ == end_ ? '\0' : *at_) {
        case '"':
            ++at_;
            return passString();
        case '{':
            return passMembers('}');
        case '[':
            return passMembers(']');
        case 't':
            return passWord("true");
        case 'f':
            return passWord("false");
        case 'n':
            return passWord("null");
        default:
            break;
    }
    bool isWholeNumber = true;
    if (!passNumber(isWholeNumber)) return false;
    constexpr std::ptrdiff_t surelyFinite = 18;
    if (isWholeNumber && at_ - start <= surelyFinite) return true;
    double real = 0;
    if (std::from_chars(start, at_, real).ec == std::errc()) return std::isfinite(real);
    return std::isfinite(QString::fromLatin1(start, at_ - start).toDouble());  // too small is 0
}

/// The inside of an array or an object, by the character that ends it.
bool JsonReader::passMembers(char end) {
    ++at_;
    if (!enter()) return false;
    if (!skipTo(end)) {
        do {
            if (end == '}' && !(skipTo('"') && passString() && skipTo(':'))) return false;
            if (!passValue()) return false;
        } while (skipTo(','));
        if (!skipTo(end)) return false;
    }
    --depth_;
    return true;
}

/// From behind the opening quote.
bool JsonReader::passString() {
    for (;;) {
        passPlain();
        if (pass('"')) return true;
        QChar units[2];
        QChar* out = units;
        if (!pass('\\') || at_ == end_ || !readEscape(out)) return false;
    }
}

bool JsonReader::passNumber(bool& isWholeNumber) {
    pass('-');
    if (!pass('0') && !passDigits()) return false;
    if (pass('.')) {
        isWholeNumber = false;
        if (!passDigits()) return false;
    }
    if (pass('e') || pass('E')) {
        isWholeNumber = false;
        if (!pass('+')) pass('-');
        if (!passDigits()) return false;
    }
    return true;
}

bool JsonReader::passWord(QByteArrayView word) {
    if (!QByteArrayView(at_, end_ - at_).startsWith(word)) return false;
    at_ += word.size();
    return true;
}

// MARK: Steps

bool JsonReader::enter() {
    return ++depth_ <= maximumDepth;
}

/// Moves over white space, and over `c` when it stands there.
bool JsonReader::skipTo(char c) {
    skipBlanks();
    return pass(c);
}

void JsonReader::skipBlanks() {
    while (at_ != end_ && (*at_ == ' ' || *at_ == '\n' || *at_ == '\r' || *at_ == '\t'))
        ++at_;
}

bool JsonReader::pass(char c) {
    if (at_ == end_ || *at_ != c) return false;
    ++at_;
    return true;
}

bool JsonReader::passDigits() {
    const char* start = at_;
    while (at_ != end_ && *at_ >= '0' && *at_ <= '9')
        ++at_;
    return at_ != start;
}

/// Moves to the next special character, or to the end. In whole blocks without a branch, which the compiler
/// turns into vector instructions.
void JsonReader::passPlain() {
    constexpr std::ptrdiff_t block = 16;
    for (; end_ - at_ >= block; at_ += block) {
        unsigned char special = 0;
        for (std::ptrdiff_t i = 0; i < block; ++i)
            special = static_cast<unsigned char>(special | static_cast<unsigned char>(isSpecial(at_[i])));
        if (special != 0) break;
    }
    while (at_ != end_ && !isSpecial(*at_))
        ++at_;
}

}  // namespace veltrin

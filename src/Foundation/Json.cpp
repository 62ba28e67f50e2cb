#include "Foundation/Json.h"

#include <QHash>
#include <QLocale>

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>

namespace veltrin {
namespace {

constexpr int maximumDepth = 512;
constexpr std::size_t maximumElementValues = 1'000'000;

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

/// Builds a Json value from the parser's events; refuses texts that nest too deep to be walked safely.
class Builder : public nlohmann::json_sax<nlohmann::ordered_json> {
public:
    Builder() = default;
    /// Hands the elements of the outermost array to `take` instead of keeping them.
    explicit Builder(const std::function<bool(const Json&)>& take) : take_(&take) {}

    bool null() override { return put({}); }
    bool boolean(bool value) override { return put(value); }
    bool number_integer(number_integer_t value) override { return put(std::int64_t{value}); }
    bool number_unsigned(number_unsigned_t value) override {
        if (value > static_cast<number_unsigned_t>(std::numeric_limits<std::int64_t>::max()))
            return put(static_cast<double>(value));
        return put(static_cast<std::int64_t>(value));
    }
    bool number_float(number_float_t value, const string_t&) override { return put(value); }
    bool string(string_t& value) override { return put(QString::fromStdString(value)); }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return open(Json(Json::Object{})); }
    bool start_array(std::size_t) override { return open(Json(Json::Array{})); }
    bool key(string_t& value) override {
        keys_.back() = QString::fromStdString(value);
        return true;
    }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool parse_error(std::size_t position, const std::string&, const nlohmann::json::exception&) override {
        error_ = "JSON syntax error at byte " + QByteArray::number(static_cast<qulonglong>(position));
        return false;
    }

    Json take() { return std::move(root_); }
    QByteArray error() const { return error_; }

private:
    bool put(Json value) {
        if (open_.empty()) {
            root_ = std::move(value);
        } else if (Json::Array* array = open_.back().array()) {
            if (take_ != nullptr && open_.size() == 1) return hand(value);
            if (isTooLarge()) return false;
            array->push_back(std::move(value));
        } else {
            if (isTooLarge()) return false;
            open_.back().object()->emplace_back(std::move(keys_.back()), std::move(value));
        }
        return true;
    }
    bool hand(const Json& element) {
        values_ = 0;
        return (*take_)(element);
    }
    bool isTooLarge() { return take_ != nullptr && ++values_ > maximumElementValues; }
    bool open(Json value) {
        if (open_.size() >= maximumDepth) {
            error_ = "JSON nested deeper than " + QByteArray::number(maximumDepth) + " levels";
            return false;
        }
        open_.push_back(std::move(value));
        keys_.emplace_back();
        return true;
    }
    bool close() {
        Json value = std::move(open_.back());
        open_.pop_back();
        keys_.pop_back();
        if (Json::Object* members = value.object(); members != nullptr && hasRepeatedMembers(*members))
            dropRepeatedMembers(*members);
        return put(std::move(value));
    }

    Json root_;
    std::vector<Json> open_;
    std::vector<QString> keys_;
    const std::function<bool(const Json&)>* take_ = nullptr;
    std::size_t values_ = 0;  ///< inside the element that is being read
    QByteArray error_ = "JSON could not be read";
};

nlohmann::ordered_json toLibrary(const Json& value) {
    if (const auto text = value.toString()) return text->toStdString();
    if (const auto flag = value.toBool()) return *flag;
    if (value.isReal()) return value.toDouble().value_or(0);
    if (const auto number = value.toInteger()) return *number;
    if (const auto* array = value.array()) {
        auto result = nlohmann::ordered_json::array();
        for (const Json& element : *array)
            result.push_back(toLibrary(element));
        return result;
    }
    if (const auto* object = value.object()) {
        auto result = nlohmann::ordered_json::object();
        for (const auto& [key, member] : *object)
            result.push_back({key.toStdString(), toLibrary(member)});
        return result;
    }
    return nullptr;
}

QString withoutLoneSurrogates(QString text) {
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            ++i;
        } else if (text[i].isSurrogate()) {
            text[i] = QChar::ReplacementCharacter;
        }
    }
    return text;
}

/// Writes the form of `prettyPrinted`.
class PrettyPrinter {
public:
    void write(const Json& value, int depth) {
        if (const auto* array = value.array()) {
            writeAll(*array, '[', ']', depth, [&](const Json& element) { write(element, depth + 1); });
        } else if (const auto* object = value.object()) {
            writeAll(*object, '{', '}', depth, [&](const Json::Member& member) {
                writeText(member.first);
                out_ += " : ";
                write(member.second, depth + 1);
            });
        } else if (const auto text = value.toString()) {
            writeText(*text);
        } else if (const auto flag = value.toBool()) {
            out_ += *flag ? "true" : "false";
        } else if (const auto whole = value.toInteger()) {
            out_ += QByteArray::number(static_cast<qlonglong>(*whole));
        } else if (const auto real = value.toDouble(); real && std::isfinite(*real)) {
            out_ += QByteArray::number(*real, 'g', QLocale::FloatingPointShortest);
        } else {
            out_ += "null";
        }
    }
    QByteArray take() { return std::move(out_); }

private:
    template <typename Sequence, typename Write>
    void writeAll(const Sequence& sequence, char opening, char closing, int depth, const Write& writeOne) {
        out_ += opening;
        bool first = true;
        for (const auto& each : sequence) {
            if (!std::exchange(first, false)) out_ += ',';
            startLine(depth + 1);
            writeOne(each);
        }
        if (first) out_ += '\n';  // an empty one has an empty line inside
        startLine(depth);
        out_ += closing;
    }
    void startLine(int depth) {
        out_ += '\n';
        out_.append(qsizetype{2} * depth, ' ');
    }
    void writeText(const QString& text) {
        out_ += '"';
        const QByteArray utf8 = (text.isValidUtf16() ? text : withoutLoneSurrogates(text)).toUtf8();
        const char* from = utf8.cbegin();
        for (const char* at = from; at != utf8.cend(); ++at) {
            const auto byte = static_cast<unsigned char>(*at);
            if (byte >= 0x20 && byte != '"' && byte != '\\' && byte != '/') continue;
            out_.append(from, at - from);
            writeEscaped(*at);
            from = at + 1;
        }
        out_.append(from, utf8.cend() - from);
        out_ += '"';
    }
    void writeEscaped(char c) {
        switch (c) {
            case '\b':
                out_ += "\\b";
                return;
            case '\t':
                out_ += "\\t";
                return;
            case '\n':
                out_ += "\\n";
                return;
            case '\f':
                out_ += "\\f";
                return;
            case '\r':
                out_ += "\\r";
                return;
            case '"':
            case '\\':
            case '/':
                out_ += '\\';
                out_ += c;
                return;
            default:
                out_ += "\\u00";
                out_ += QByteArray(1, c).toHex();
        }
    }

    QByteArray out_;
};

}  // namespace

Json Json::parse(const QByteArray& utf8) {
    Builder builder;
    if (!nlohmann::ordered_json::sax_parse(utf8.begin(), utf8.end(), &builder))
        throw ParseError(builder.error());
    return builder.take();
}

std::optional<Json> Json::tryParse(const QByteArray& utf8) {
    try {
        return parse(utf8);
    } catch (const ParseError&) {
        return std::nullopt;
    }
}

bool Json::parseElements(const QByteArray& utf8, const std::function<bool(const Json&)>& take) {
    Builder builder(take);
    return nlohmann::ordered_json::sax_parse(utf8.begin(), utf8.end(), &builder) && builder.take().isArray();
}

QByteArray Json::prettyPrinted() const {
    PrettyPrinter printer;
    printer.write(*this, 0);
    return printer.take();
}

QByteArray Json::serialized(int indent) const {
    return QByteArray::fromStdString(
        toLibrary(*this).dump(indent, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

std::optional<QString> Json::toString() const {
    if (const auto* text = std::get_if<QString>(&value_)) return *text;
    return std::nullopt;
}

std::optional<bool> Json::toBool() const {
    if (const auto* flag = std::get_if<bool>(&value_)) return *flag;
    return std::nullopt;
}

std::optional<std::int64_t> Json::toInteger() const {
    if (const auto* number = std::get_if<std::int64_t>(&value_)) return *number;
    return std::nullopt;
}

std::optional<double> Json::toDouble() const {
    if (const auto* number = std::get_if<double>(&value_)) return *number;
    if (const auto* number = std::get_if<std::int64_t>(&value_)) return static_cast<double>(*number);
    return std::nullopt;
}

const Json* Json::find(QStringView key) const {
    const Object* members = object();
    if (members == nullptr) return nullptr;
    for (auto it = members->rbegin(); it != members->rend(); ++it) {
        if (it->first == key) return &it->second;
    }
    return nullptr;
}

void Json::set(const QString& key, Json value) {
    if (!isObject()) value_ = Object{};
    Object& members = *object();
    for (Member& member : members) {
        if (member.first == key) {
            member.second = std::move(value);
            return;
        }
    }
    members.emplace_back(key, std::move(value));
}

void Json::append(Json value) {
    if (!isArray()) value_ = Array{};
    array()->push_back(std::move(value));
}

}  // namespace veltrin

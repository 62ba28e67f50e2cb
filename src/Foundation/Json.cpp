#include "Foundation/Json.h"

#include "Foundation/JsonReader.h"

#include <QLocale>

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>

namespace veltrin {
namespace {

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
    Json value;
    if (QByteArray error = JsonReader::readDocument(utf8, value); !error.isEmpty())
        throw ParseError(std::move(error));
    return value;
}

std::optional<Json> Json::tryParse(const QByteArray& utf8) {
    std::optional<Json> value(std::in_place);
    if (!JsonReader::readDocument(utf8, *value).isEmpty()) value.reset();
    return value;
}

bool Json::parseElements(const QByteArray& utf8, const std::function<bool(const Json&)>& take) {
    return JsonReader::readElements(utf8, take);
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

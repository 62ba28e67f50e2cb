#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

namespace veltrin {

/// A JSON value that keeps what QJsonDocument loses: the order of an object's members, and the difference
/// between an integer and a real number. Plain value; copying copies.
class Json {
public:
    using Array = std::vector<Json>;
    using Member = std::pair<QString, Json>;
    using Object = std::vector<Member>;

    /// Thrown by `parse`; `what()` says where the text went wrong and never quotes it.
    class ParseError : public std::exception {
    public:
        explicit ParseError(QByteArray message) : message_(std::move(message)) {}
        const char* what() const noexcept override { return message_.constData(); }

    private:
        QByteArray message_;
    };

    Json() = default;  ///< null
    Json(std::nullptr_t) {}
    Json(bool value) : value_(value) {}
    Json(int value) : value_(std::int64_t{value}) {}
    Json(std::int64_t value) : value_(value) {}
    Json(double value) : value_(value) {}
    Json(QString value) : value_(std::move(value)) {}
    Json(const char16_t* value) : value_(QString::fromUtf16(value)) {}
    Json(const char* utf8) : value_(QString::fromUtf8(utf8)) {}
    Json(Array value) : value_(std::move(value)) {}
    Json(Object value) : value_(std::move(value)) {}

    /// Parses UTF-8 text (RFC 8259, at most 512 levels deep). Throws ParseError, also on invalid UTF-8. Of a
    /// member that an object names twice the last value stays, at the place of the first.
    static Json parse(const QByteArray& utf8);
    /// The same, with nothing instead of an exception.
    static std::optional<Json> tryParse(const QByteArray& utf8);

    /// Parses a text that is one array and hands over its elements one by one, so that a long text never
    /// stands in memory as values. False when the text is no array, when an element holds more than a million
    /// values, or when `take` answered false, which ends the parsing. Never throws of itself.
    static bool parseElements(const QByteArray& utf8, const std::function<bool(const Json&)>& take);

    /// Compact UTF-8 text, or indented by `indent` blanks a level when that is 0 or more. Lone surrogates
    /// become U+FFFD.
    QByteArray serialized(int indent = -1) const;
    /// The form of the files that a user may look into: two blanks a level, a blank on both sides of the
    /// colon, slashes escaped, a whole real number without a fraction. Lone surrogates become U+FFFD, a
    /// number that is not finite null.
    QByteArray prettyPrinted() const;

    bool isNull() const { return std::holds_alternative<std::monostate>(value_); }
    bool isObject() const { return std::holds_alternative<Object>(value_); }
    bool isArray() const { return std::holds_alternative<Array>(value_); }
    bool isString() const { return std::holds_alternative<QString>(value_); }
    bool isBool() const { return std::holds_alternative<bool>(value_); }
    bool isInteger() const { return std::holds_alternative<std::int64_t>(value_); }
    bool isReal() const { return std::holds_alternative<double>(value_); }
    bool isNumber() const { return isInteger() || isReal(); }

    /// The value in the asked form, or nothing when it has another one. `toDouble` also takes an integer.
    std::optional<QString> toString() const;
    std::optional<bool> toBool() const;
    std::optional<std::int64_t> toInteger() const;
    std::optional<double> toDouble() const;

    /// The elements or members; null when the value has another form.
    const Array* array() const { return std::get_if<Array>(&value_); }
    const Object* object() const { return std::get_if<Object>(&value_); }
    Array* array() { return std::get_if<Array>(&value_); }
    Object* object() { return std::get_if<Object>(&value_); }

    /// The member of that name, or null: also when this is no object.
    const Json* find(QStringView key) const;
    /// Sets a member, in place when it exists, else at the end. A value that is no object becomes one first.
    void set(const QString& key, Json value);
    /// Appends an element. A value that is no array becomes one first.
    void append(Json value);

    friend bool operator==(const Json& a, const Json& b) = default;

private:
    std::variant<std::monostate, bool, std::int64_t, double, QString, Array, Object> value_;
};

}  // namespace veltrin

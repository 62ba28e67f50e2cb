#include "Foundation/Json.h"

#include <nlohmann/json.hpp>

#include <limits>

namespace veltrin {
namespace {

constexpr int maximumDepth = 512;

/// Builds a Json value from the parser's events; refuses texts that nest too deep to be walked safely.
class Builder : public nlohmann::json_sax<nlohmann::ordered_json> {
public:
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
        } else if (open_.back().isArray()) {
            open_.back().append(std::move(value));
        } else {
            open_.back().set(keys_.back(), std::move(value));
        }
        return true;
    }
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
        return put(std::move(value));
    }

    Json root_;
    std::vector<Json> open_;
    std::vector<QString> keys_;
    QByteArray error_ = "JSON could not be read";
};

nlohmann::ordered_json toLibrary(const Json& value) {
    if (const auto text = value.toString()) return text->toStdString();
    if (const auto flag = value.toBool()) return *flag;
    if (value.isInteger()) return *value.toInteger();
    if (value.isReal()) return *value.toDouble();
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

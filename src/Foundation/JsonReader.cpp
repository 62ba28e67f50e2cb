#include "Foundation/JsonReader.h"

#include <QHash>
#include <QStringDecoder>

#include <simdjson.h>

#include <array>
#include <cmath>
#include <limits>
#include <string_view>

namespace veltrin::JsonReader {
namespace {

namespace ondemand = simdjson::ondemand;

constexpr int maximumDepth = 512;
constexpr std::size_t maximumElementValues = 1'000'000;

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

/// Between brackets, as the one element of an array: a value by itself is looked at less closely.
simdjson::padded_string bracketed(QByteArrayView utf8) {
    constexpr QByteArrayView byteOrderMark("\xef\xbb\xbf");
    if (utf8.startsWith(byteOrderMark)) utf8 = utf8.sliced(byteOrderMark.size());
    if (const auto zero = utf8.indexOf('\0'); zero >= 0) utf8 = utf8.first(zero);
    simdjson::padded_string text(static_cast<std::size_t>(utf8.size()) + 2);
    text.data()[0] = '[';
    std::copy(utf8.begin(), utf8.end(), text.data() + 1);
    text.data()[utf8.size() + 1] = ']';
    return text;
}

/// One text under way. The names that every record of a file repeats are made once.
class Reading {
public:
    explicit Reading(QByteArrayView utf8) : text_(bracketed(utf8)) {
        isBegun_ = parser_.iterate(text_).get(document_) == simdjson::SUCCESS;
    }

    /// Hands the text's one value to `take`.
    template <typename Take>
    bool readOne(const Take& take) {
        ondemand::array around;
        if (!isBegun_ || document_.get_array().get(around)) return false;
        int count = 0;
        for (auto&& each : around) {
            ondemand::value value;
            if (std::forward<decltype(each)>(each).get(value) || ++count > 1 || !take(value)) return false;
        }
        return count == 1 && document_.current_location().error() == simdjson::OUT_OF_BOUNDS;
    }

    bool read(ondemand::value value, Json& into) {
        ondemand::json_type type{};
        if (value.type().get(type)) return false;
        switch (type) {
            case ondemand::json_type::object:
                return readObject(value, into);
            case ondemand::json_type::array:
                return readArray(value, into);
            case ondemand::json_type::string:
                return readText(value, into);
            case ondemand::json_type::number:
                return readNumber(value, into);
            case ondemand::json_type::boolean:
                return readFlag(value, into);
            case ondemand::json_type::null:
                return readNull(value, into);
        }
        return false;
    }

    bool readElements(ondemand::value value, const std::function<bool(const Json&)>& take) {
        return eachElement(value, [&](ondemand::value each) {
            valuesLeft_ = maximumElementValues;
            Json element;
            return read(each, element) && take(element);
        });
    }

    /// Finds the same texts wrong as `read`.
    bool pass(ondemand::value value) {
        ondemand::json_type type{};
        if (value.type().get(type)) return false;
        if (type == ondemand::json_type::object) {
            return eachMember(value, [this](std::string_view name, ondemand::value each) {
                return isText(name) && pass(each);
            });
        }
        if (type == ondemand::json_type::array)
            return eachElement(value, [this](ondemand::value each) { return pass(each); });
        std::string_view text;
        if (type == ondemand::json_type::string) return !value.get_string().get(text) && isText(text);
        Json unused;
        return read(value, unused);
    }

    QByteArray error() {
        if (depth_ > maximumDepth)
            return "JSON nested deeper than " + QByteArray::number(maximumDepth) + " levels";
        const char* at = nullptr;
        if (!isBegun_ || document_.current_location().get(at)) return "JSON syntax error";
        constexpr qlonglong bracket = 1;
        return "JSON syntax error at byte " +
               QByteArray::number(static_cast<qlonglong>(at - text_.data()) - bracket);
    }

private:
    struct Name {
        std::string_view utf8;
        QString text;
    };

    bool enter() { return ++depth_ <= maximumDepth; }
    /// The same for an element or a member's value.
    bool readInside(ondemand::value value, Json& into) { return valuesLeft_-- > 0 && read(value, into); }

    template <typename Take>
    bool eachElement(ondemand::value value, const Take& take) {
        ondemand::array elements;
        if (value.get_array().get(elements) || !enter()) return false;
        for (auto&& each : elements) {
            ondemand::value element;
            if (std::forward<decltype(each)>(each).get(element) || !take(element)) return false;
        }
        --depth_;
        return true;
    }

    bool readArray(ondemand::value value, Json& into) {
        Json::Array elements;
        if (!eachElement(value,
                         [&](ondemand::value each) { return readInside(each, elements.emplace_back()); }))
            return false;
        into = Json(std::move(elements));
        return true;
    }

    template <typename Take>
    bool eachMember(ondemand::value value, const Take& take) {
        ondemand::object members;
        if (value.get_object().get(members) || !enter()) return false;
        for (auto&& each : members) {
            ondemand::field field;
            std::string_view name;
            if (std::forward<decltype(each)>(each).get(field) || field.unescaped_key().get(name) ||
                !take(name, field.value()))
                return false;
        }
        --depth_;
        return true;
    }

    bool readObject(ondemand::value value, Json& into) {
        Json::Object members;
        const bool isRead = eachMember(value, [&](std::string_view utf8, ondemand::value each) {
            auto& [name, member] = members.emplace_back();
            return readName(utf8, name) && readInside(each, member);
        });
        if (!isRead) return false;
        if (hasRepeatedMembers(members)) dropRepeatedMembers(members);
        into = Json(std::move(members));
        return true;
    }

    bool readName(std::string_view utf8, QString& into) {
        if (utf8.empty()) return true;
        const std::size_t mixed = utf8.size() + std::size_t{7} * static_cast<unsigned char>(utf8.front()) +
                                  std::size_t{31} * static_cast<unsigned char>(utf8.back());
        Name& name = names_[mixed % names_.size()];
        if (name.utf8 != utf8) {
            if (!decode(utf8, name.text)) return false;
            name.utf8 = utf8;
        }
        into = name.text;
        return true;
    }

    bool readText(ondemand::value value, Json& into) {
        std::string_view utf8;
        QString text;
        if (value.get_string().get(utf8) || !decode(utf8, text)) return false;
        into = Json(std::move(text));
        return true;
    }

    /// Not so when an escape has brought half of a pair.
    static bool isText(std::string_view utf8) {
        return QByteArrayView(utf8.data(), static_cast<qsizetype>(utf8.size())).isValidUtf8();
    }

    /// Refuses the same halves. Keeps a mark of byte order, which is text
    /// in here.
    static bool decode(std::string_view utf8, QString& into) {
        using Flag = QStringDecoder::Flag;
        QStringDecoder decoder(QStringDecoder::Utf8, Flag::Stateless | Flag::ConvertInitialBom);
        into = decoder.decode(QByteArrayView(utf8.data(), static_cast<qsizetype>(utf8.size())));
        return !decoder.hasError();
    }

    bool readNumber(ondemand::value value, Json& into) {
        std::int64_t whole = 0;
        if (!value.get_int64().get(whole)) {
            into = Json(whole);
            return true;
        }
        double real = 0;  // and what is past the integers
        if (value.get_double().get(real) || !std::isfinite(real)) return false;
        into = Json(real);
        return true;
    }

    bool readFlag(ondemand::value value, Json& into) {
        bool flag = false;
        if (value.get_bool().get(flag)) return false;
        into = Json(flag);
        return true;
    }

    bool readNull(ondemand::value value, Json& into) {
        bool isNull = false;
        if (value.is_null().get(isNull) || !isNull) return false;
        into = Json();
        return true;
    }

    simdjson::padded_string text_;
    ondemand::parser parser_;
    ondemand::document document_;
    bool isBegun_ = false;  ///< else the text as a whole is none, and the document must not be asked
    int depth_ = 0;
    std::size_t valuesLeft_ = std::numeric_limits<std::size_t>::max();
    std::array<Name, 64> names_;  ///< those of late, each at the place that its bytes give
};

}  // namespace

QByteArray readDocument(QByteArrayView utf8, Json& into) {
    Reading reading(utf8);
    const bool isRead = reading.readOne([&](ondemand::value value) { return reading.read(value, into); });
    return isRead ? QByteArray() : reading.error();
}

bool isDocument(QByteArrayView utf8) {
    Reading reading(utf8);
    return reading.readOne([&](ondemand::value value) { return reading.pass(value); });
}

bool readElements(QByteArrayView utf8, const std::function<bool(const Json&)>& take) {
    Reading reading(utf8);
    return reading.readOne([&](ondemand::value value) { return reading.readElements(value, take); });
}

}  // namespace veltrin::JsonReader

#include "Foundation/JsonReader.h"
#include "fuzz/FuzzInput.h"

#include <QStringDecoder>

#include <nlohmann/json.hpp>

using namespace veltrin;

namespace {

using Library = nlohmann::ordered_json;

QString fromLibrary(const std::string& text) {
    return QStringDecoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom).decode(text);
}

Json fromLibrary(const Library& value) {
    switch (value.type()) {
        case Library::value_t::boolean:
            return value.get<bool>();
        case Library::value_t::number_integer:
            return value.get<std::int64_t>();
        case Library::value_t::number_unsigned:
            return value.get<std::uint64_t>() > std::numeric_limits<std::int64_t>::max()
                       ? Json(value.get<double>())
                       : Json(value.get<std::int64_t>());
        case Library::value_t::number_float:
            return value.get<double>();
        case Library::value_t::string:
            return fromLibrary(value.get_ref<const std::string&>());
        case Library::value_t::array: {
            Json::Array elements;
            for (const Library& element : value)
                elements.push_back(fromLibrary(element));
            return elements;
        }
        case Library::value_t::object: {
            Json::Object members;
            for (const auto& [name, member] : value.items())
                members.emplace_back(fromLibrary(name), fromLibrary(member));
            return members;
        }
        default:
            return {};
    }
}

/// Our reader takes the same texts as a library that many use, and finds the same in them.
void readAsOthersDo(const QByteArray& text, const std::optional<Json>& value) {
    if (text.count('[') + text.count('{') > 512) return;  // deeper than is read here, maybe
    const Library theirs = Library::parse(text.begin(), text.end(), nullptr, false);
    fuzz::check(theirs.is_discarded() != value.has_value(), "what is JSON to others is to us");
    if (value) fuzz::check(fromLibrary(theirs) == value, "what others read is what we read");
}

void readByElements(const QByteArray& text, const std::optional<Json>& value) {
    Json::Array elements;
    const bool whole = Json::parseElements(text, [&](const Json& element) {
        elements.push_back(element);
        return true;
    });
    fuzz::check(whole == (value && value->isArray()), "an array is read by its elements as well");
    if (whole) fuzz::check(Json(elements) == value, "its elements are the same");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray text = fuzz::bytes(data, size);
    const auto value = Json::tryParse(text);
    readAsOthersDo(text, value);
    readByElements(text, value);
    if (const QString units = QString::fromUtf8(text); units.toUtf8() == text)
        fuzz::check(JsonReader::isDocument(text) == value.has_value(),
                    "what is read is valid, and nothing else");
    if (!value) return 0;
    fuzz::check(Json::tryParse(value->serialized()) == value, "a value survives its own text");
    fuzz::check(Json::tryParse(value->serialized(2)) == value, "a value survives its own indented text");
    fuzz::check(Json::tryParse(value->prettyPrinted()).has_value(), "the form of the files reads");
    return 0;
}

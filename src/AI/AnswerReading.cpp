#include "AI/AnswerReading.h"

namespace veltrin::AnswerReading {

std::optional<QString> string(const Json& object, std::initializer_list<QStringView> keys) {
    for (const QStringView key : keys) {
        const Json* member = object.find(key);
        if (member == nullptr) continue;
        if (auto text = member->toString()) return text;
    }
    return std::nullopt;
}

QString string(const Json& object, std::initializer_list<QStringView> keys, const QString& otherwise) {
    return string(object, keys).value_or(otherwise);
}

std::optional<double> number(const Json& object, std::initializer_list<QStringView> keys) {
    for (const QStringView key : keys) {
        const Json* member = object.find(key);
        if (member == nullptr) continue;
        if (const auto value = member->toDouble()) return value;
    }
    return std::nullopt;
}

QStringList strings(const Json& object, QStringView key) {
    QStringList texts;
    const Json* member = object.find(key);
    const Json::Array* array = member == nullptr ? nullptr : member->array();
    if (array == nullptr) return texts;
    for (const Json& element : *array) {
        if (auto text = element.toString()) texts.append(*std::move(text));
    }
    return texts;
}

std::vector<const Json*> objects(const Json& object, QStringView key) {
    std::vector<const Json*> found;
    const Json* member = object.find(key);
    const Json::Array* array = member == nullptr ? nullptr : member->array();
    if (array == nullptr) return found;
    for (const Json& element : *array) {
        if (element.isObject()) found.push_back(&element);
    }
    return found;
}

}  // namespace veltrin::AnswerReading

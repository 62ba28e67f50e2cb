#include "AI/TaskAnswers.h"

#include "Foundation/Text.h"

namespace veltrin::TaskAnswers {
namespace {

/// The pieces of a list whose fence and brackets are cut off.
QStringList pieces(const QString& answer, QStringView brackets) {
    QString list = answer;
    list.remove(QStringLiteral("```json")).remove(QStringLiteral("```"));
    return Text::trimmed(Text::trimmed(list), brackets).split(u',');
}

QStringList strings(const Json* value) {
    QStringList strings;
    const Json::Array* array = value == nullptr ? nullptr : value->array();
    if (array == nullptr) return strings;
    for (const Json& each : *array) {
        if (auto text = each.toString()) strings << *std::move(text);
    }
    return strings;
}

std::optional<QString> string(const Json& object, QStringView key) {
    const Json* value = object.find(key);
    return value == nullptr ? std::nullopt : value->toString();
}

}  // namespace

std::vector<std::size_t> indices(const QString& answer, std::size_t count) {
    std::vector<std::size_t> indices;
    for (const QString& piece : pieces(answer, u"[]{}")) {
        bool isNumber = false;
        const qlonglong number = Text::trimmed(piece).toLongLong(&isNumber, 10);
        if (isNumber && number >= 0 && static_cast<std::size_t>(number) < count)
            indices.push_back(static_cast<std::size_t>(number));
    }
    return indices;
}

QStringList tags(const QString& answer) {
    QStringList tags;
    for (const QString& piece : pieces(answer, u"[]")) {
        const QString tag = Text::trimmed(Text::trimmed(Text::trimmed(piece), u"\"'“”‘’「」"));
        if (!tag.isEmpty()) tags << tag;
    }
    return tags;
}

std::optional<StoredPrompt> prompt(const QString& answer, Date now) {
    const qsizetype first = answer.indexOf(u'{');
    if (first < 0) return std::nullopt;
    // Models close the fence they opened, so what follows the object does not count.
    const qsizetype last = answer.lastIndexOf(u'}');
    const auto json = Json::tryParse(answer.mid(first, last - first + 1).toUtf8());
    if (!json || !json->isObject()) return std::nullopt;
    const auto title = string(*json, u"title");
    const auto content = string(*json, u"content");
    if (!title || !content) return std::nullopt;
    StoredPrompt prompt;
    prompt.id = QUuid::createUuid();
    prompt.title = *title;
    prompt.content = *content;
    prompt.categoryTag = string(*json, u"categoryTag").value_or(prompt.categoryTag);
    prompt.tags = strings(json->find(u"tags"));
    prompt.source = QStringLiteral("ai");
    prompt.createdAt = now;
    prompt.updatedAt = now;
    return prompt;
}

}  // namespace veltrin::TaskAnswers

#include "AI/TaskAnswers.h"

#include "Foundation/Characters.h"
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

/// The whole answer as an object. Text around it is not cut off here: meant so.
std::optional<Json> wholeObject(const QString& answer) {
    auto json = Json::tryParse(answer.toUtf8());
    if (!json || !json->isObject()) return std::nullopt;
    return json;
}

std::optional<QString> trimmedString(const Json& object, QStringView key) {
    const auto text = string(object, key);
    return text ? std::optional(Text::trimmed(*text)) : std::nullopt;
}

/// The array under the key when all of it is strings.
std::optional<QStringList> allStrings(const Json& object, QStringView key) {
    const Json* value = object.find(key);
    return value == nullptr ? std::nullopt : RecordCodec<QStringList>::read(*value, {});
}

const QString& orIfEmpty(const QString& text, const QString& otherwise) {
    return text.isEmpty() ? otherwise : text;
}

constexpr qsizetype fallbackTermCharacters = 28;

MemoryActionPreset fallbackAction(const QString& description, Date now) {
    MemoryActionPreset action;
    action.id = QUuid::createUuid();
    action.title = QStringLiteral("自定义动作");
    action.description = QStringLiteral("按你的规则处理文本");
    action.instruction = orIfEmpty(description, QStringLiteral("保留原意，优化表达。"));
    action.icon = QStringLiteral("wand.and.stars");
    action.colorHex = QStringLiteral("#FFE066");
    action.createdAt = now;
    action.updatedAt = now;
    return action;
}

DictionaryTerm fallbackTerm(const QString& description, Date now) {
    DictionaryTerm term;
    term.id = QUuid::createUuid();
    term.term = orIfEmpty(Characters::prefix(description, fallbackTermCharacters), QStringLiteral("新词条"));
    term.meaning = orIfEmpty(description, QStringLiteral("用户自定义专有名词。"));
    term.context = QStringLiteral("Veltrin 私有词典");
    term.source = QStringLiteral("ai");
    term.createdAt = now;
    term.updatedAt = now;
    return term;
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

MemoryActionPreset memoryAction(const QString& answer, const QString& description, Date now) {
    MemoryActionPreset action = fallbackAction(description, now);
    const auto object = wholeObject(answer);
    if (!object) return action;
    action.title = trimmedString(*object, u"title").value_or(action.title);
    action.description = trimmedString(*object, u"description").value_or(action.description);
    action.instruction = trimmedString(*object, u"instruction").value_or(description);
    action.icon = trimmedString(*object, u"icon").value_or(action.icon);
    action.colorHex = trimmedString(*object, u"colorHex").value_or(action.colorHex);
    return action;
}

DictionaryTerm dictionaryTerm(const QString& answer, const QString& description, Date now) {
    DictionaryTerm term = fallbackTerm(description, now);
    const auto object = wholeObject(answer);
    if (!object) return term;
    term.term = string(*object, u"term").value_or(term.term);
    term.meaning = string(*object, u"meaning").value_or(QStringLiteral("用户自定义专有名词。"));
    term.context = string(*object, u"context").value_or(term.context);
    term.aliases = allStrings(*object, u"aliases").value_or(QStringList());
    return term;
}

}  // namespace veltrin::TaskAnswers

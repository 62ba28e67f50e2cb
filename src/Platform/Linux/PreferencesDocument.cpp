#include "Platform/Linux/PreferencesDocument.h"

#include <algorithm>

namespace veltrin {
namespace {

const QString dataMember = QStringLiteral("data");

std::optional<PreferenceValue> typed(const Json& member) {
    if (const auto text = member.toString()) return *text;
    if (const auto flag = member.toBool()) return *flag;
    if (const auto number = member.toDouble()) return *number;
    const Json::Object* object = member.object();
    if (object == nullptr || object->size() != 1 || object->front().first != dataMember) return std::nullopt;
    const auto base64 = object->front().second.toString();
    if (!base64) return std::nullopt;
    auto decoded = QByteArray::fromBase64Encoding(base64->toUtf8(), QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded) return std::nullopt;
    return std::move(decoded.decoded);
}

Json stored(const PreferenceValue& value) {
    if (const auto* flag = std::get_if<bool>(&value)) return *flag;
    if (const auto* number = std::get_if<double>(&value)) return *number;
    if (const auto* text = std::get_if<QString>(&value)) return *text;
    Json object;
    object.set(dataMember, QString::fromLatin1(std::get<QByteArray>(value).toBase64()));
    return object;
}

auto memberNamed(Json::Object& members, const QString& key) {
    return std::find_if(members.begin(), members.end(),
                        [&key](const Json::Member& member) { return member.first == key; });
}

}  // namespace

std::optional<PreferencesDocument> PreferencesDocument::decode(const QByteArray& utf8) {
    auto json = Json::tryParse(utf8);
    if (!json || !json->isObject()) return std::nullopt;
    PreferencesDocument document;
    document.members_ = std::move(*json->object());
    document.values_.reserve(static_cast<qsizetype>(document.members_.size()));
    for (const auto& [key, member] : document.members_) {
        if (const auto value = typed(member)) document.values_.insert(key, *value);
    }
    return document;
}

QByteArray PreferencesDocument::encode() const {
    return Json(members_).serialized(2) + '\n';
}

std::optional<PreferenceValue> PreferencesDocument::value(const QString& key) const {
    const auto found = values_.constFind(key);
    if (found == values_.constEnd()) return std::nullopt;
    return *found;
}

bool PreferencesDocument::set(const QString& key, const PreferenceValue& value) {
    const auto found = values_.constFind(key);
    if (found != values_.constEnd() && *found == value) return false;
    values_.insert(key, value);
    const auto member = memberNamed(members_, key);
    if (member == members_.end()) {
        members_.emplace_back(key, stored(value));
    } else {
        member->second = stored(value);
    }
    return true;
}

bool PreferencesDocument::remove(const QString& key) {
    const auto member = memberNamed(members_, key);
    if (member == members_.end()) return false;
    members_.erase(member);
    values_.remove(key);
    return true;
}

}  // namespace veltrin

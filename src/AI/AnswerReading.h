#pragma once

#include "Foundation/Json.h"

#include <QString>
#include <QStringList>

#include <initializer_list>
#include <optional>
#include <vector>

/// Reads models' JSON, which is never what was asked for: a member of another type counts as absent, and so
/// does an element of another type. Nothing here fails.
namespace veltrin::AnswerReading {

/// The first string under one of the keys.
std::optional<QString> string(const Json& object, std::initializer_list<QStringView> keys);
/// The same, else `otherwise`.
QString string(const Json& object, std::initializer_list<QStringView> keys, const QString& otherwise);
/// The first number under one of the keys.
std::optional<double> number(const Json& object, std::initializer_list<QStringView> keys);
/// The strings in the array under the key.
QStringList strings(const Json& object, QStringView key);
/// The objects in the array under the key; none when there is no array.
std::vector<const Json*> objects(const Json& object, QStringView key);

}  // namespace veltrin::AnswerReading

#pragma once

#include "Foundation/Json.h"

#include <QByteArrayView>

#include <functional>

/// Reads JSON texts into `Json` values. A mark of byte order before a text is passed over, and so is what
/// follows a zero byte behind it: a crash may leave some behind what was written.
namespace veltrin::JsonReader {

/// The text as one value; see Json::parse. When it is none, what is returned says why, without a word of the
/// text; empty when all went well.
QByteArray readDocument(QByteArrayView utf8, Json& into);

/// Whether the text is one value. Makes none, so that it costs a fraction of reading.
bool isDocument(QByteArrayView utf8);

/// The text as one array, element by element; see Json::parseElements.
bool readElements(QByteArrayView utf8, const std::function<bool(const Json&)>& take);

}  // namespace veltrin::JsonReader

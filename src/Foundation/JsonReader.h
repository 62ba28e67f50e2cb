#pragma once

#include "Foundation/Json.h"

#include <QByteArrayView>

#include <array>
#include <cstddef>
#include <functional>

namespace veltrin {

/// Reads one JSON text straight out of its bytes, for `Json`. The stores' files are why it is quick: strings
/// are looked through in blocks and decoded once, and the names that every record of a file repeats are made
/// once. The bytes must outlive it. A mark of byte order before the text is passed over, and so is what
/// follows a zero byte behind it. After false it is not to be asked for more.
class JsonReader {
public:
    explicit JsonReader(QByteArrayView utf8);

    /// The text as one value; see Json::parse.
    bool readDocument(Json& into);
    /// Whether the text, which must be valid UTF-8, is one value. Makes none, so that it costs a fraction of
    /// reading.
    bool passDocument();
    /// The text as one array, element by element; see Json::parseElements.
    bool readElements(const std::function<bool(const Json&)>& take);

    /// Why and where the reading ended; without a word of the text.
    QByteArray error() const;

private:
    bool read(Json& into);
    bool readInside(Json& into);
    bool readArray(Json& into);
    bool readObject(Json& into);
    bool readName(QString& into);
    bool readString(QString& into);
    bool readEscape(QChar*& out);
    bool readUnit(char16_t& into);
    bool readNumber(Json& into);
    bool readWord(QByteArrayView word, Json meaning, Json& into);
    bool passValue();
    bool passMembers(char end);
    bool passString();
    bool passNumber(bool& isWholeNumber);
    bool passWord(QByteArrayView word);
    bool isWhole();

    bool enter();
    void skipBlanks();
    bool skipTo(char c);
    bool pass(char c);
    bool passDigits();
    void passPlain();

    struct Name {
        QByteArrayView utf8;
        QString text;
    };

    const char* const begin_;
    const char* at_;
    const char* const end_;
    int depth_ = 0;
    std::size_t valuesLeft_;
    std::array<Name, 64> names_;  ///< those of late, each at the place that its bytes give
};

}  // namespace veltrin

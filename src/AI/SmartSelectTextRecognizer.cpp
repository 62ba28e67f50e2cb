#include "AI/SmartSelectTextRecognizer.h"

#include "Foundation/JsonReader.h"
#include "Foundation/Text.h"

#include <QList>

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using Kind = SmartSelectRecognition::Kind;
using Words = std::span<const std::u16string_view>;

// All but the symbols are looked for in the lower-cased text.
constexpr auto urlStarts =
    std::to_array<QStringView>({u"http://", u"https://", u"www.", u"figma.com/", u"github.com/"});
constexpr auto errorWords = std::to_array<std::u16string_view>(
    {u"traceback", u"exception", u"stack trace", u"error:", u"fatal error", u"uncaught"});
constexpr auto codeKeywords = std::to_array<std::u16string_view>(
    {u"import ", u"func ", u"class ", u"struct ", u"enum ", u"let ", u"var ", u"const ", u"function ",
     u"return ", u"def ", u"select ", u"from ", u"where ", u"#include", u"console.log", u"=>", u"async "});
constexpr auto codeSymbols =
    std::to_array<std::u16string_view>({u"{", u"}", u";", u"->", u"()", u"&&", u"||"});
constexpr auto emailWords =
    std::to_array<std::u16string_view>({u"subject:", u"dear ", u"best regards", u"thanks,"});
constexpr auto languageWords =
    std::to_array<std::u16string_view>({u"import swiftui", u"var body", u"python", u" from "});

constexpr auto wordLists =
    std::to_array<Words>({errorWords, codeKeywords, codeSymbols, emailWords, languageWords});

/// Which of the words above stand in a text, found in one pass over it.
class WordsInText {
public:
    explicit WordsInText(QStringView lowercased) {
        for (const Words& list : wordLists) {
            for (const std::u16string_view word : list)
                candidates_[word.front()].push_back(word);
        }
        const std::u16string_view text(lowercased.utf16(), static_cast<std::size_t>(lowercased.size()));
        for (std::size_t at = 0; at < text.size(); ++at) {
            if (text[at] < candidates_.size()) look(text.substr(at));
        }
    }

    bool has(std::u16string_view word) const { return found_.contains(word); }
    qsizetype count(Words words) const {
        return std::ranges::count_if(words, [this](std::u16string_view word) { return has(word); });
    }
    bool hasAny(Words words) const { return count(words) > 0; }

private:
    void look(std::u16string_view from) {
        auto& words = candidates_[from.front()];
        std::erase_if(words, [&](std::u16string_view word) {
            const bool isHere = from.starts_with(word);
            if (isHere) found_.push_back(word);
            return isHere;
        });
    }

    std::array<std::vector<std::u16string_view>, 128> candidates_;  ///< not found yet, by their first letter
    QList<std::u16string_view> found_;
};

bool isJSON(const QString& text) {
    const bool isEnclosed =
        (text.startsWith(u'{') && text.endsWith(u'}')) || (text.startsWith(u'[') && text.endsWith(u']'));
    return isEnclosed && JsonReader::isDocument(text.toUtf8());
}

bool isURL(const QString& text, const QString& lowercased) {
    const bool isOneWord = std::ranges::none_of(text, [](QChar c) { return c.isSpace(); });
    return isOneWord &&
           std::ranges::any_of(urlStarts, [&](QStringView start) { return lowercased.startsWith(start); });
}

/// Calls `use` with each line until it answers false.
template <typename Use>
void forEachLine(QStringView text, const Use& use) {
    qsizetype start = 0;
    for (qsizetype at = 0; at <= text.size(); ++at) {
        if (at < text.size() && !Text::isLineBreak(text[at])) continue;
        if (!use(text.sliced(start, at - start))) return;
        start = at + 1;
    }
}

bool hasIndentedLine(const QString& text) {
    bool isIndented = false;
    forEachLine(text, [&](QStringView line) {
        isIndented = line.startsWith(u"    ") || line.startsWith(u'\t');
        return !isIndented;
    });
    return isIndented;
}

bool looksLikeError(const WordsInText& words) {
    return words.hasAny(errorWords);
}

bool looksLikeCode(const QString& text, const WordsInText& words) {
    const auto keywordHits = words.count(codeKeywords);
    const auto symbolHits = words.count(codeSymbols);
    return keywordHits >= 2 || (keywordHits >= 1 && symbolHits >= 2) ||
           (symbolHits >= 2 && hasIndentedLine(text));
}

bool looksLikeEmail(const WordsInText& words) {
    return words.hasAny(emailWords);
}

bool looksLikeChat(const QString& text) {
    qsizetype lines = 0;
    qsizetype spoken = 0;
    forEachLine(text, [&](QStringView line) {
        const bool isEmpty = std::ranges::all_of(line, [](QChar c) { return c == u' ' || c == u'\t'; });
        lines += isEmpty ? 0 : 1;
        spoken += line.contains(u':') || line.contains(u'：') ? 1 : 0;
        return true;
    });
    return lines >= 2 && spoken * 2 >= lines;
}

std::optional<QString> detectLanguage(const WordsInText& words) {
    if (words.has(u"import swiftui") || words.has(u"func ") || (words.has(u"let ") && words.has(u"var body")))
        return u"Swift"_s;
    if (words.has(u"function ") || words.has(u"const ") || words.has(u"console.log") || words.has(u"=>"))
        return u"JavaScript"_s;
    if (words.has(u"def ") || words.has(u"traceback") || (words.has(u"import ") && words.has(u"python")))
        return u"Python"_s;
    if (words.has(u"select ") && words.has(u" from ")) return u"SQL"_s;
    if (words.has(u"#include")) return u"C/C++"_s;
    return std::nullopt;
}

struct KindWords {
    const char16_t* title;
    const char16_t* label;
    const char16_t* englishTitle;
    const char16_t* englishLabel;
};

const KindWords& wordsOf(Kind kind) {
    static constexpr auto all = std::to_array<KindWords>({{u"代码", u"代码解释", u"Code", u"Code reader"},
                                                          {u"JSON", u"JSON 解析", u"JSON", u"JSON reader"},
                                                          {u"链接", u"链接识别", u"Link", u"Link reader"},
                                                          {u"错误", u"错误分析", u"Error", u"Error reader"},
                                                          {u"邮件", u"邮件识别", u"Email", u"Email reader"},
                                                          {u"对话", u"对话识别", u"Chat", u"Chat reader"},
                                                          {u"文本", u"文本识别", u"Text", u"Text reader"}});
    static_assert(all.size() == caseCount<Kind>);
    return all[static_cast<std::size_t>(kind)];
}

}  // namespace

SmartSelectRecognition SmartSelectTextRecognizer::recognize(const QString& text) {
    const QString trimmed = Text::trimmed(text);
    if (trimmed.isEmpty()) return {Kind::text, std::nullopt, 0.2};
    if (isJSON(trimmed)) return {Kind::json, std::nullopt, 0.94};
    const QString lowercased = trimmed.toLower();
    if (isURL(trimmed, lowercased)) return {Kind::url, std::nullopt, 0.92};
    const WordsInText words(lowercased);
    if (looksLikeError(words)) return {Kind::error, detectLanguage(words), 0.88};
    if (looksLikeCode(trimmed, words)) return {Kind::code, detectLanguage(words), 0.86};
    if (looksLikeEmail(words)) return {Kind::email, std::nullopt, 0.74};
    if (looksLikeChat(trimmed)) return {Kind::chat, std::nullopt, 0.7};
    return {Kind::text, std::nullopt, 0.55};
}

QString SmartSelectRecognition::displayTitle(bool usesEnglish) const {
    const KindWords& words = wordsOf(kind);
    const QString title = QString::fromUtf16(usesEnglish ? words.englishTitle : words.title);
    return kind == Kind::code && language ? title + u" · "_s + *language : title;
}

QString SmartSelectRecognition::label(bool usesEnglish) const {
    const KindWords& words = wordsOf(kind);
    return QString::fromUtf16(usesEnglish ? words.englishLabel : words.label);
}

}  // namespace veltrin

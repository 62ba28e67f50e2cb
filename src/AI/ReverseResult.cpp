#include "AI/ReverseResult.h"

#include "Foundation/Text.h"

#include <algorithm>
#include <optional>
#include <span>

namespace veltrin {
namespace {

constexpr const char16_t* modelNames[] = {u"Midjourney", u"Stable Diffusion", u"DALL·E", u"Flux", u"Sora",
                                          u"GPT",        u"Claude",           u"Gemini"};
constexpr const char16_t* sectionNames[] = {u"中文描述", u"英文 Prompt", u"Prompt", u"风格",
                                            u"构图",     u"色彩",        u"材质"};
/// A longer line is a sentence that happens to begin like a header.
constexpr qsizetype longestName = 24;
/// What may stand around a header's name, colons apart.
constexpr QStringView ornaments = u"#*【】[]-•· \t\r";

struct Section {
    QString name;
    QString text;
};

bool isColon(QChar c) {
    return c == u':' || c == u'：';
}

bool isNamed(QStringView name, std::span<const char16_t* const> names) {
    return std::any_of(names.begin(), names.end(), [name](const char16_t* each) {
        return name.startsWith(QStringView(each), Qt::CaseInsensitive);
    });
}

bool isMarked(QStringView front) {
    const auto stands = [front](QStringView open, QStringView close) {
        return front.startsWith(open) && front.endsWith(close);
    };
    return front.startsWith(u'#') || stands(u"【", u"】") || stands(u"**", u"**");
}

/// The header in a line: its bare name and what follows on the line. Only the names that are looked for make
/// a header, so that a prompt keeps headings of its own.
std::optional<Section> header(QStringView line) {
    const auto colon = std::find_if(line.begin(), line.end(), isColon);
    const QStringView front = line.left(colon - line.begin()).trimmed();
    const QString name = Text::trimmed(front, ornaments);
    const bool named = isNamed(name, sectionNames) || isNamed(name, modelNames);
    if (!named || name.size() > longestName || (colon == line.end() && !isMarked(front))) return std::nullopt;
    if (colon == line.end()) return Section{name, {}};
    // "**name:** text" closes its asterisks behind the colon.
    return Section{name, Text::trimmed(line.mid(colon + 1 - line.begin()), u"* \t\r")};
}

std::vector<Section> sections(const QString& text) {
    std::vector<Section> sections;
    for (const QString& line : text.split(u'\n')) {
        if (auto opened = header(line)) {
            sections.push_back(*std::move(opened));
        } else if (!sections.empty()) {
            QString& open = sections.back().text;
            if (!open.isEmpty()) open += u'\n';
            open += line;
        }
    }
    for (Section& each : sections)
        each.text = Text::trimmed(each.text);
    return sections;
}

/// The text of the first section whose name begins with `name` and that has one; empty when there is none.
QString extractSection(const std::vector<Section>& sections, QStringView name) {
    for (const Section& each : sections) {
        if (each.name.startsWith(name, Qt::CaseInsensitive) && !each.text.isEmpty()) return each.text;
    }
    return {};
}

bool dividesKeywords(QChar c) {
    return QStringView(u"、,，;；\n").contains(c);
}

QStringList extractKeywords(const std::vector<Section>& sections, QStringView category) {
    const QString text = extractSection(sections, category);
    QStringList keywords;
    for (auto at = text.begin(); at != text.end();) {
        const auto end = std::find_if(at, text.end(), dividesKeywords);
        const QString keyword = Text::trimmed(QStringView(at, end), u"-*•·。. \t\r");
        if (!keyword.isEmpty()) keywords.append(keyword);
        at = end == text.end() ? end : end + 1;
    }
    return keywords;
}

}  // namespace

ReverseResult ReverseResult::read(const QString& text) {
    const std::vector<Section> found = sections(text);
    ReverseResult result;
    result.cnDescription = extractSection(found, u"中文描述");
    for (const QStringView name : {QStringView(u"英文 Prompt"), QStringView(u"Prompt")}) {
        if (result.enPrompt.isEmpty()) result.enPrompt = extractSection(found, name);
    }
    if (result.enPrompt.isEmpty()) result.enPrompt = text;
    for (const char16_t* model : modelNames) {
        if (const QString prompt = extractSection(found, model); !prompt.isEmpty())
            result.modelVersions.push_back({QString::fromUtf16(model), prompt});
    }
    result.styleKeywords = extractKeywords(found, u"风格");
    result.compositionKeywords = extractKeywords(found, u"构图");
    result.colorKeywords = extractKeywords(found, u"色彩");
    result.materialKeywords = extractKeywords(found, u"材质");
    return result;
}

bool ReverseMaterial::hasInput(const QString& text, bool fileIsChosen) {
    return fileIsChosen || !Text::isBlank(text);
}

QString ReverseMaterial::material(const QString& text) {
    const QString trimmed = Text::trimmed(text);
    return trimmed.isEmpty() ? QStringLiteral("图片素材") : trimmed;
}

}  // namespace veltrin

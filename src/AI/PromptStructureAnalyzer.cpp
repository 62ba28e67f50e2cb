#include "AI/PromptStructureAnalyzer.h"

#include "Foundation/Text.h"

#include <algorithm>
#include <span>
#include <vector>

namespace veltrin::PromptStructureAnalyzer {
namespace {

using Kind = PromptStructureKind;
using Blocks = std::map<Kind, QString>;
using Words = std::span<const char16_t* const>;

constexpr const char16_t* roleLabels[] = {u"角色", u"身份", u"扮演", u"Role"};
constexpr const char16_t* taskLabels[] = {u"任务", u"目标", u"要做什么", u"Task"};
constexpr const char16_t* contextLabels[] = {u"上下文", u"背景", u"场景", u"材料", u"Context"};
constexpr const char16_t* constraintLabels[] = {u"约束", u"限制", u"要求", u"不要", u"注意", u"Constraint"};
constexpr const char16_t* outputLabels[] = {u"输出格式", u"格式", u"输出", u"Output"};

constexpr const char16_t* roleWords[] = {u"你是", u"扮演", u"act as"};
constexpr const char16_t* constraintWords[] = {u"不要", u"必须", u"别", u"must"};
constexpr const char16_t* outputWords[] = {u"输出", u"格式", u"json", u"markdown"};

Words labels(Kind kind) {
    switch (kind) {
        case Kind::role:
            return roleLabels;
        case Kind::task:
            return taskLabels;
        case Kind::context:
            return contextLabels;
        case Kind::constraint:
            return constraintLabels;
        case Kind::output:
            return outputLabels;
    }
    return {};
}

/// The hint for a kind that is missing; empty for the task, which no content misses.
QString hint(Kind kind) {
    switch (kind) {
        case Kind::role:
            return QStringLiteral("补上角色后，模型会更容易选择专业视角和判断标准。");
        case Kind::task:
            return {};
        case Kind::context:
            return QStringLiteral("补上上下文后，模型会少猜测场景和目标用户。");
        case Kind::constraint:
            return QStringLiteral("补上约束后，可以减少跑题、虚构和过度发挥。");
        case Kind::output:
            return QStringLiteral("补上输出格式后，结果会更可控，也更适合复制使用。");
    }
    return {};
}

/// What stands behind `label` and its colon; none when `line` does not begin with them.
std::optional<QStringView> textBehind(QStringView line, QStringView label) {
    if (!line.startsWith(label) || line.size() == label.size()) return std::nullopt;
    const QChar colon = line[label.size()];
    if (colon != u':' && colon != u'：') return std::nullopt;
    return line.mid(label.size() + 1).trimmed();
}

struct Opening {
    Kind kind;
    QStringView text;
};

/// The block that a trimmed line opens, if it begins with a label.
std::optional<Opening> opening(QStringView line) {
    for (const QStringView mark : {QStringView(u"- "), QStringView(u"## ")}) {
        if (!line.startsWith(mark)) continue;
        line = line.mid(mark.size()).trimmed();
        break;
    }
    for (const Kind kind : allCases<Kind>()) {
        for (const char16_t* label : labels(kind)) {
            if (const auto text = textBehind(line, label)) return Opening{kind, *text};
        }
    }
    return std::nullopt;
}

/// Appends a line; a label that comes twice goes on with its block.
void append(QString& block, QStringView line) {
    if (!block.isEmpty()) block += u'\n';
    block += line;
}

Blocks explicitBlocks(QStringView content) {
    Blocks blocks;
    QString* open = nullptr;
    for (const QStringView line : content.split(u'\n')) {
        const QStringView text = line.trimmed();
        if (text.isEmpty()) continue;
        if (const auto opened = opening(text)) {
            open = &blocks[opened->kind];
            append(*open, opened->text);
        } else if (open != nullptr) {
            append(*open, line.endsWith(u'\r') ? line.chopped(1) : line);
        }
    }
    return blocks;
}

constexpr bool endsSentence(QChar c) {
    return c == u'。' || c == u'.' || c == u'!' || c == u'?' || c == u'\n';
}

/// Where the earliest of the words begins; -1 when there is none.
qsizetype firstOf(const QString& lower, Words words) {
    qsizetype first = -1;
    for (const char16_t* word : words) {
        const qsizetype at = lower.indexOf(QStringView(word));
        if (at >= 0 && (first < 0 || at < first)) first = at;
    }
    return first;
}

/// The trimmed sentence of that number, counted from 0.
QString sentence(QStringView content, qsizetype number) {
    const auto endFrom = [&](auto from) { return std::find_if(from, content.end(), endsSentence); };
    auto begin = content.begin();
    for (; number > 0; --number)
        begin = endFrom(begin) + 1;
    return Text::trimmed(content.mid(begin - content.begin(), endFrom(begin) - begin));
}

/// Looks for the words, which hold no sentence's end, in the lower-cased content, and takes their sentence
/// from the content itself. Sentences are matched by number: lower-casing may change a text's length.
void addFallbacks(Blocks& blocks, const QString& content) {
    const QString lower = content.toLower();
    const auto add = [&](Kind kind, Words words) {
        const qsizetype at = blocks.contains(kind) ? -1 : firstOf(lower, words);
        if (at < 0) return;
        const auto number = std::count_if(lower.begin(), lower.begin() + at, endsSentence);
        blocks.emplace(kind, sentence(content, number));
    };
    add(Kind::role, roleWords);
    add(Kind::constraint, constraintWords);
    add(Kind::output, outputWords);
    blocks.emplace(Kind::task, content);
}

std::vector<Kind> missingKinds(const Blocks& blocks) {
    std::vector<Kind> missing;
    for (const Kind kind : allCases<Kind>()) {
        const auto block = blocks.find(kind);
        if (block == blocks.end() || block->second.isEmpty()) missing.push_back(kind);
    }
    return missing;
}

QStringList notes(const std::vector<Kind>& missing) {
    if (missing.empty()) return {QStringLiteral("当前提示词已经表达了核心任务，但结构还可以补齐。")};
    QStringList notes;
    for (const Kind kind : missing) {
        if (const QString text = hint(kind); !text.isEmpty()) notes.append(text);
    }
    return notes;
}

}  // namespace

PromptStructureAnalysis analyze(const QString& title, const QString& content) {
    PromptStructureAnalysis analysis;
    analysis.title = title;
    analysis.content = Text::trimmed(content);
    analysis.blocks = explicitBlocks(analysis.content);
    if (!analysis.content.isEmpty()) addFallbacks(analysis.blocks, analysis.content);
    analysis.missing = missingKinds(analysis.blocks);
    analysis.notes = notes(analysis.missing);
    return analysis;
}

}  // namespace veltrin::PromptStructureAnalyzer

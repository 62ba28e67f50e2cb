#include "AI/AgentOutputGuard.h"

#include "Foundation/Characters.h"
#include "Foundation/Text.h"

#include <algorithm>
#include <array>

namespace veltrin::AgentOutputGuard {
namespace {

/// Compared with the lower-cased output. Longer than OutputContractValidator's list, and meant so.
constexpr auto markers = std::to_array<const char16_t*>(
    {u"请你为以下", u"请为以下", u"为以下文本", u"为以下提示词", u"下面这段", u"以下提示词", u"以下文本",
     u"待处理文本", u"原始提示词", u"system prompt"});
constexpr auto openings = std::to_array<const char16_t*>({u"请你", u"请为", u"任务："});

/// An output that is no longer than its source by more than this is a rewrite: a user's own "请你帮忙" stays
/// allowed.
constexpr qsizetype rewriteCushion = 12;

}  // namespace

bool detectMetaInstructionLeak(const QString& output, const QString& sourceText) {
    const QString compact = Text::lineBreaksAsBlanks(Text::trimmed(output));
    if (compact.isEmpty()) return false;
    const QString lowered = compact.toLower();
    if (Text::containsAny(lowered, markers)) return true;
    const QString source = Text::trimmed(sourceText);
    if (source.isEmpty()) return false;
    if (Characters::count(source) + rewriteCushion >= Characters::count(compact)) return false;
    return std::any_of(openings.begin(), openings.end(),
                       [&](const char16_t* opening) { return lowered.startsWith(QStringView(opening)); });
}

}  // namespace veltrin::AgentOutputGuard

#include "Playbooks/VisualDesignPlaybook.h"

#include "Foundation/Text.h"

#include <array>

namespace veltrin::VisualDesignPlaybook {
namespace {

constexpr auto minimalistWords = std::to_array<const char16_t*>({u"极简", u"minimal"});

}  // namespace

QString guidance(const ActionSpec& actionSpec, const ContextDocument& context) {
    if (actionSpec.domain != IntentDomain::visualDesign) return {};
    if (Text::containsAny(context.text, minimalistWords, Qt::CaseInsensitive))
        return QStringLiteral(
            "视觉设计标准：极简主义海报风格应尽量减少视觉元素，只保留必要信息。强调大面积留白、清晰视觉中心、"
            "克制构图、"
            "明确层级、比例、位置、间距、形状与色彩关系。色彩高度克制，常用低饱和色、黑白灰或少量单一强调色。"
            "图形应简化、"
            "几何化、平面化；文字排版清楚、稀疏、有呼吸感。避免复杂背景、过度纹理、堆叠元素和强视觉噪音。");
    return QStringLiteral("视觉设计标准：明确主体、构图、层级、色彩、材质、排版和限制条件。");
}

}  // namespace veltrin::VisualDesignPlaybook

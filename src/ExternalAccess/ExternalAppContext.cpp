#include "ExternalAccess/ExternalAppContext.h"

#include "ExternalAccess/AttributeReading.h"
#include "Foundation/Text.h"

#include <algorithm>
#include <array>

namespace veltrin {

namespace {

struct SceneRule {
    std::array<const char16_t*, 4> words;  ///< in small letters; null where there are fewer
    const char16_t* hint;
};

constexpr SceneRule sceneRules[] = {
    {{u"chatgpt", u"claude", u"gemini", u"deepseek"},
     u"大语言模型对话场景：优先优化提示词结构、目标、约束和输出格式。"},
    {{u"cursor", u"antigravity", u"xcode", u"vscode"},
     u"开发工具场景：注意代码、注释、提交信息和技术表达的准确性。"},
    {{u"notion", u"feishu", u"lark", nullptr}, u"文档写作场景：注重结构、标题层级和可读性。"},
};

}  // namespace

ExternalAppContext ExternalAppContext::make(const QString& appName, const QString& bundleIdentifier,
                                            const QString& windowTitle) {
    return {appName, bundleIdentifier, windowTitle, inferScene(appName, bundleIdentifier, windowTitle)};
}

QString ExternalAppContext::inferScene(const QString& appName, const QString& bundleIdentifier,
                                       const QString& windowTitle) {
    if (bundleIdentifier == u"com.tencent.xinWeChat" || appName.contains(u"微信"))
        return QStringLiteral("微信聊天场景：回复应自然、短句优先、语气像真人聊天。");
    const QString all = (appName + u' ' + bundleIdentifier + u' ' + windowTitle).toLower();
    for (const SceneRule& rule : sceneRules) {
        const bool fits = std::any_of(rule.words.begin(), rule.words.end(), [&](const char16_t* word) {
            return word != nullptr && all.contains(QStringView(word));
        });
        if (fits) return QString::fromUtf16(rule.hint);
    }
    return QStringLiteral("通用文本场景：保留原意，按用户选择的动作改写。");
}

QString ExternalAppContext::focusedWindowTitle(Accessibility& accessibility, qint32 pid) {
    const AXElementRef application = accessibility.applicationElement(pid);
    const auto window = readAttribute<AXElementRef>(accessibility, application, AXAttribute::focusedWindow);
    if (!window.value) return {};
    return readAttribute<QString>(accessibility, *window.value, AXAttribute::title).value.value_or(QString());
}

}  // namespace veltrin

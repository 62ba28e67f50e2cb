#include "ExternalAccess/SmartSelectClipboardFallbackPolicy.h"

#include "Foundation/Text.h"

#include <array>
#include <span>

namespace veltrin {
namespace {

using Tokens = std::span<const char16_t* const>;

constexpr auto nonTextSelectionAppTokens = std::to_array<const char16_t*>(
    {u"com.apple.finder", u"com.apple.photos", u"com.adobe.lightroom", u"com.adobe.bridge", u"eagle"});
/// File managers and picture collections of this desktop.
constexpr auto nonTextSelectionDesktopTokens = std::to_array<const char16_t*>(
    {u"nautilus", u"thunar", u"dolphin", u"nemo", u"pcmanfm", u"caja", u"org.gnome.eog", u"loupe",
     u"ristretto", u"gwenview", u"shotwell", u"darktable", u"digikam", u"org.gnome.photos"});

constexpr auto browserBundleTokens = std::to_array<const char16_t*>(
    {u"com.apple.safari", u"com.google.chrome", u"com.google.antigravity", u"com.microsoft.edgemac",
     u"org.mozilla.firefox", u"com.brave.browser", u"com.operasoftware.opera", u"com.vivaldi.vivaldi",
     u"org.chromium.chromium", u"company.thebrowser.browser", u"com.kagi.kagimac", u"com.perplexity.comet"});
/// As this desktop's browsers are called.
constexpr auto browserDesktopTokens = std::to_array<const char16_t*>(
    {u"firefox", u"chromium", u"google-chrome", u"brave-browser", u"microsoft-edge", u"opera",
     u"vivaldi-stable", u"org.gnome.epiphany", u"org.kde.falkon", u"org.kde.konqueror", u"librewolf"});
constexpr auto browserNameTokens = std::to_array<const char16_t*>(
    {u"safari", u"chrome", u"antigravity", u"firefox", u"brave browser", u"opera", u"vivaldi", u"chromium",
     u"arc", u"microsoft edge", u"kagi", u"comet"});

constexpr auto aiConversationBundleTokens = std::to_array<const char16_t*>(
    {u"com.openai.chat", u"com.openai.codex", u"com.anthropic.claude", u"com.anthropic.claudefordesktop"});
constexpr auto aiConversationNameTokens = std::to_array<const char16_t*>({u"chatgpt", u"codex", u"claude"});

constexpr auto weChatBundleTokens =
    std::to_array<const char16_t*>({u"com.tencent.xinwechat", u"com.tencent.wechat"});
constexpr auto weChatNameTokens = std::to_array<const char16_t*>({u"wechat", u"微信"});

bool has(const QString& text, Tokens tokens) {
    return Text::containsAny(text.toLower(), tokens);
}

}  // namespace

bool SmartSelectClipboardFallbackPolicy::isNonTextSelectionApp(const QString& name,
                                                               const QString& bundleIdentifier) {
    return has(bundleIdentifier, nonTextSelectionAppTokens) || has(name, nonTextSelectionAppTokens) ||
           has(bundleIdentifier, nonTextSelectionDesktopTokens) || has(name, nonTextSelectionDesktopTokens);
}

bool SmartSelectClipboardFallbackPolicy::isWeChatApp(const QString& name, const QString& bundleIdentifier) {
    return has(bundleIdentifier, weChatBundleTokens) || has(name, weChatNameTokens);
}

bool SmartSelectClipboardFallbackPolicy::isBrowserLikeApp(const QString& name,
                                                          const QString& bundleIdentifier) {
    return has(bundleIdentifier, browserBundleTokens) || has(bundleIdentifier, browserDesktopTokens) ||
           has(name, browserNameTokens);
}

bool SmartSelectClipboardFallbackPolicy::isAIConversationApp(const QString& name,
                                                             const QString& bundleIdentifier) {
    return has(bundleIdentifier, aiConversationBundleTokens) || has(name, aiConversationNameTokens);
}

bool SmartSelectClipboardFallbackPolicy::shouldAttemptPassiveClipboardFallback(
    PassiveTrigger, const QString& name, const QString& bundleIdentifier, bool hasFocusedTextElement) {
    if (isNonTextSelectionApp(name, bundleIdentifier)) return false;
    return hasFocusedTextElement || isWeChatApp(name, bundleIdentifier) ||
           isBrowserLikeApp(name, bundleIdentifier) || isAIConversationApp(name, bundleIdentifier);
}

}  // namespace veltrin

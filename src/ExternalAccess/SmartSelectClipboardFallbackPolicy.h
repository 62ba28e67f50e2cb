#pragma once

#include <QString>

namespace veltrin {

/// In which applications a selection may be read by a copy key that the user did not press. Tokens are looked
/// for as parts of the lower-cased name and identifier, so that a short one matches any name that contains
/// it: meant so.
struct SmartSelectClipboardFallbackPolicy {
    SmartSelectClipboardFallbackPolicy() = delete;

    enum class PassiveTrigger { drag, multiClick };

    /// What is selected in these is files or pictures.
    static bool isNonTextSelectionApp(const QString& name, const QString& bundleIdentifier);
    static bool isWeChatApp(const QString& name, const QString& bundleIdentifier);
    static bool isBrowserLikeApp(const QString& name, const QString& bundleIdentifier);
    static bool isAIConversationApp(const QString& name, const QString& bundleIdentifier);

    /// The trigger changes nothing: meant so.
    static bool shouldAttemptPassiveClipboardFallback(PassiveTrigger trigger, const QString& name,
                                                      const QString& bundleIdentifier,
                                                      bool hasFocusedTextElement);
};

}  // namespace veltrin

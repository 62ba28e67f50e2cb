#include "ExternalAccess/SmartSelectClipboardFallbackPolicy.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using Policy = SmartSelectClipboardFallbackPolicy;
using Trigger = Policy::PassiveTrigger;

bool mayCopy(const QString& name, const QString& identifier, bool hasTextElement) {
    const bool byDrag =
        Policy::shouldAttemptPassiveClipboardFallback(Trigger::drag, name, identifier, hasTextElement);
    EXPECT_EQ(byDrag, Policy::shouldAttemptPassiveClipboardFallback(Trigger::multiClick, name, identifier,
                                                                    hasTextElement))
        << "the trigger changes nothing";
    return byDrag;
}

TEST(SmartSelectClipboardFallbackPolicyTest, aPlainApplicationIsCopiedFromOnlyWithATextElement) {
    EXPECT_TRUE(mayCopy(u"Mousepad"_s, u"org.xfce.mousepad"_s, true));
    EXPECT_FALSE(mayCopy(u"Mousepad"_s, u"org.xfce.mousepad"_s, false));
    EXPECT_FALSE(mayCopy(u"unknown"_s, u"unknown"_s, false));
}

TEST(SmartSelectClipboardFallbackPolicyTest, browsersAndConversationsAreCopiedFromWithoutOne) {
    for (const auto& [name, identifier] : std::initializer_list<std::pair<QString, QString>>{
             {u"Firefox"_s, u"org.mozilla.firefox"_s},
             {u"x"_s, u"com.google.Chrome.beta"_s},
             {u"Microsoft Edge"_s, u"x"_s},
             {u"Firefox ESR"_s, u"firefox-esr"_s},
             {u"Chromium"_s, u"chromium"_s},
             {u"ChatGPT"_s, u"x"_s},
             {u"x"_s, u"com.anthropic.ClaudeForDesktop"_s},
             {u"微信"_s, u"x"_s},
             {u"WeChat"_s, u"x"_s},
             {u"x"_s, u"com.tencent.xinWeChat"_s},
         }) {
        EXPECT_TRUE(mayCopy(name, identifier, false)) << qPrintable(name) << ' ' << qPrintable(identifier);
    }
}

TEST(SmartSelectClipboardFallbackPolicyTest, fileManagersAndPicturesNever) {
    for (const auto& [name, identifier] : std::initializer_list<std::pair<QString, QString>>{
             {u"Finder"_s, u"com.apple.finder"_s},
             {u"Eagle"_s, u"x"_s},
             {u"Files"_s, u"org.gnome.Nautilus"_s},
             {u"Thunar"_s, u"thunar"_s},
             {u"Dolphin"_s, u"org.kde.dolphin"_s},
         }) {
        EXPECT_FALSE(mayCopy(name, identifier, true)) << qPrintable(name);
        EXPECT_FALSE(mayCopy(name, identifier, false)) << qPrintable(name);
    }
}

TEST(SmartSelectClipboardFallbackPolicyTest, aShortTokenMatchesAnyNameThatHoldsIt) {
    EXPECT_TRUE(Policy::isBrowserLikeApp(u"Search Everywhere"_s, u"x"_s)) << "\"arc\" stands in it: meant";
    EXPECT_FALSE(Policy::isBrowserLikeApp(u"x"_s, u"search"_s)) << "name tokens count for names only";
}

TEST(SmartSelectClipboardFallbackPolicyTest, theListsAreToldApart) {
    EXPECT_TRUE(Policy::isWeChatApp(u"WECHAT"_s, u""_s));
    EXPECT_FALSE(Policy::isBrowserLikeApp(u"WECHAT"_s, u""_s));
    EXPECT_TRUE(Policy::isAIConversationApp(u""_s, u"COM.OPENAI.CODEX"_s));
    EXPECT_FALSE(Policy::isWeChatApp(u"x"_s, u"com.openai.chat"_s));
}

}  // namespace
}  // namespace veltrin

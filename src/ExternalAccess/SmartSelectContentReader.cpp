#include "ExternalAccess/SmartSelectContentReader.h"

#include "ExternalAccess/AttributeReading.h"
#include "ExternalAccess/SmartSelectClipboardFallbackPolicy.h"
#include "Foundation/Characters.h"
#include "Foundation/MVPLog.h"
#include "Foundation/Text.h"
#include "Gesture/SpaceGesturePolicy.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace veltrin {
namespace {

using Policy = SmartSelectClipboardFallbackPolicy;

constexpr int deepest = 6;
constexpr int mostChildren = 120;
constexpr std::size_t mostWindows = 8;
/// Of one window: a page's first 120 paragraphs with all their parts are far fewer.
constexpr int mostElements = 2000;
constexpr AXTreeLimits treeLimits{deepest, mostChildren, mostElements};

constexpr const char* textRoles[] = {"axtextarea", "axtextfield", "axstatictext", "axwebarea", "axdocument"};
const QLatin1StringView passwordRole("axsecuretextfield");

bool isTextRole(const QString& lowered) {
    return std::any_of(std::begin(textRoles), std::end(textRoles),
                       [&lowered](const char* role) { return lowered == QLatin1String(role); });
}

std::optional<QString> nonEmpty(std::optional<QString> text) {
    return text && !text->isEmpty() ? text : std::nullopt;
}

Policy::PassiveTrigger passiveTrigger(SmartSelectTriggerReason reason) {
    return reason == SmartSelectTriggerReason::drag ? Policy::PassiveTrigger::drag
                                                    : Policy::PassiveTrigger::multiClick;
}

/// What an element says of its selection, all of it of one moment.
struct SelectionReading {
    std::optional<QString> selectedText;
    std::optional<TextRange> range;
    std::optional<QString> value;
};

SelectionReading selectionOf(Accessibility& accessibility, const AXElementRef& element) {
    auto read = accessibility.copyAttributeValues(
        element, {AXAttribute::selectedText, AXAttribute::selectedTextRange, AXAttribute::value});
    return {attributeReading<QString>(std::move(read[0])).value,
            attributeReading<TextRange>(std::move(read[1])).value,
            attributeReading<QString>(std::move(read[2])).value};
}

std::optional<QString> axSelectedText(const SelectionReading& from) {
    return nonEmpty(from.selectedText);
}

std::optional<QString> extractSelectedTextViaRange(const SelectionReading& from) {
    if (!from.range || from.range->length < 1 || from.range->location < 0) return std::nullopt;
    const auto value = nonEmpty(from.value);
    if (!value || from.range->location > value->size() - from.range->length) return std::nullopt;
    return value->mid(from.range->location, from.range->length);
}

QString axStringAttribute(AXResult<AXValue> read) {
    return attributeReading<QString>(std::move(read)).value.value_or(QString());
}

struct Roles {
    QString role;  ///< both in lower case
    QString subrole;
    bool isText() const {
        return isTextRole(role) || isTextRole(subrole) || subrole.contains(u"text") ||
               subrole.contains(u"document");
    }
    bool isPassword() const { return role == passwordRole || subrole == passwordRole; }
};

Roles rolesOf(Accessibility& accessibility, const AXElementRef& element) {
    auto read = accessibility.copyAttributeValues(element, {AXAttribute::role, AXAttribute::subrole});
    return {axStringAttribute(std::move(read[0])).toLower(), axStringAttribute(std::move(read[1])).toLower()};
}

}  // namespace

QCoro::Task<std::optional<SmartSelectedContent>> SmartSelectContentReader::readSelectedContent(
    SmartSelectTriggerReason reason, QPointF fallbackAnchorPoint) {
    const auto front = workspace_.frontmostApplication();
    if (!front) co_return std::nullopt;
    const bool isSelf = front->bundleIdentifier == workspace_.mainBundleIdentifier();
    if (isSelf && !SpaceGestureAppPolicy::bypassSelfBlacklist) co_return std::nullopt;
    const Application app{accessibility_.applicationElement(front->processIdentifier),
                          front->localizedName.value_or(QStringLiteral("unknown")),
                          front->bundleIdentifier.value_or(QStringLiteral("unknown"))};
    MVPLog::write("SmartSelect read begin:", "app:", app.appName, "bundle:", app.bundleIdentifier);
    if (accessibility_.isProcessTrusted()) {
        if (Found content = readSelectedContentViaAX(app)) {
            MVPLog::write("SmartSelect AX read success:", "source:", content->source,
                          "length:", Characters::count(content->text));
            co_return content;
        }
    }
    MVPLog::write("SmartSelect AX unavailable; trying clipboard fallback");
    AXElementRef focused;
    if (!shouldUseSmartSelectClipboardFallback(reason, app, focused)) {
        MVPLog::write("SmartSelect clipboard fallback skipped:", "app:", app.appName,
                      "bundle:", app.bundleIdentifier);
        co_return std::nullopt;
    }
    auto task = clipboardCopy_.copySelectedTextViaClipboard(focused);
    const std::optional<QString> text = co_await task;
    // Only what is the coroutine's own from here on: the reader may be gone.
    if (!text || Text::isBlank(*text)) {
        MVPLog::write("SmartSelect clipboard read failed or empty");
        co_return std::nullopt;
    }
    MVPLog::write("SmartSelect clipboard read success:", "length:", Characters::count(*text));
    SmartSelectedContent content;
    content.text = *text;
    content.anchorPoint = fallbackAnchorPoint;
    content.source = QStringLiteral("clipboardSelection");
    content.appName = app.appName;
    content.bundleIdentifier = app.bundleIdentifier;
    co_return content;
}

// MARK: Accessibility

SmartSelectContentReader::Found SmartSelectContentReader::readSelectedContentViaAX(const Application& app) {
    const auto focused =
        readAttribute<AXElementRef>(accessibility_, app.element, AXAttribute::focusedUIElement);
    if (!focused.value) {
        MVPLog::write("SmartSelect AX focused unavailable:", code(focused.error));
        return readSelectedContentInAppTree(app);
    }
    if (Found content = contentOf(*focused.value, "AXFocusedSelectedText", "AXFocusedRange", app))
        return content;
    // A browser tells of its bullets as of any text, in the page around the field too. Nobody selects them
    // for a reply, and what is still selected elsewhere is not what the mouse selected now.
    if (rolesOf(accessibility_, *focused.value).isPassword()) return std::nullopt;
    const AXTree tree = accessibility_.copyTree(*focused.value, treeLimits);
    if (Found content = findSelectedContentInChildren(tree, 0, app)) return content;
    return readSelectedContentInAppTree(app);
}

SmartSelectContentReader::Found SmartSelectContentReader::contentOf(const AXElementRef& element,
                                                                    const char* textSource,
                                                                    const char* rangeSource,
                                                                    const Application& app) {
    const SelectionReading selection = selectionOf(accessibility_, element);
    SmartSelectedContent content;
    if (auto text = axSelectedText(selection)) {
        content.text = std::move(*text);
        content.source = QLatin1String(textSource);
    } else if (auto ranged = extractSelectedTextViaRange(selection)) {
        content.text = std::move(*ranged);
        content.source = QLatin1String(rangeSource);
    } else {
        return std::nullopt;
    }
    content.anchorPoint = selectedTextAnchorPoint(element, selection.range);
    content.appName = app.appName;
    content.bundleIdentifier = app.bundleIdentifier;
    return content;
}

std::optional<QPointF> SmartSelectContentReader::selectedTextAnchorPoint(
    const AXElementRef& from, const std::optional<TextRange>& range) {
    if (!range || range->length < 1) return std::nullopt;
    const auto bounds = attributeReading<QRectF>(accessibility_.copyParameterizedAttributeValue(
                                                     from, AXAttribute::boundsForRange, AXValue(*range)))
                            .value;
    if (!bounds || !std::isfinite(bounds->width()) || !std::isfinite(bounds->height()) ||
        bounds->width() <= 0 || bounds->height() <= 0)
        return std::nullopt;
    // Counted from the top, and handed on as it is: meant so.
    return QPointF(bounds->x() + bounds->width(), bounds->y());
}

SmartSelectContentReader::Found SmartSelectContentReader::findSelectedContentInChildren(
    const AXTree& of, int depth, const Application& app) {
    if (depth > deepest) return std::nullopt;
    if (of.mayHaveSelectedText) {
        if (Found content = contentOf(of.element, "AXTreeSelectedText", "AXTreeRange", app)) return content;
    }
    for (const auto* list : {&of.children, &of.contents, &of.selectedChildren}) {
        for (const AXTree& child : *list) {
            if (Found content = findSelectedContentInChildren(child, depth + 1, app)) return content;
        }
    }
    return std::nullopt;
}

SmartSelectContentReader::Found SmartSelectContentReader::readSelectedContentInAppTree(
    const Application& app) {
    const auto search = [&](const AXElementRef& window) {
        return findSelectedContentInChildren(accessibility_.copyTree(window, treeLimits), 0, app);
    };
    const auto focused =
        readAttribute<AXElementRef>(accessibility_, app.element, AXAttribute::focusedWindow).value;
    if (focused) {
        if (Found content = search(*focused)) return content;
    }
    const auto windows =
        readAttribute<std::vector<AXElementRef>>(accessibility_, app.element, AXAttribute::windows).value;
    if (!windows) return std::nullopt;
    for (std::size_t i = 0; i < std::min(windows->size(), mostWindows); ++i) {
        const AXElementRef& window = (*windows)[i];
        // What was looked through just now has nothing now either.
        if (!window || (focused && window->isEqual(**focused))) continue;
        if (Found content = search(window)) return content;
    }
    return std::nullopt;
}

// MARK: The copy key

bool SmartSelectContentReader::shouldUseSmartSelectClipboardFallback(SmartSelectTriggerReason reason,
                                                                     const Application& app,
                                                                     AXElementRef& focused) {
    const QString& name = app.appName;
    const QString& bundle = app.bundleIdentifier;
    if (Policy::isNonTextSelectionApp(name, bundle)) {
        MVPLog::write("SmartSelect clipboard fallback blocked non-text app:", name, bundle);
        return false;
    }
    if (!accessibility_.isProcessTrusted()) {
        MVPLog::write("SmartSelect clipboard fallback blocked: AX not trusted");
        return false;
    }
    const auto allows = [&](bool hasFocusedTextElement) {
        return Policy::shouldAttemptPassiveClipboardFallback(passiveTrigger(reason), name, bundle,
                                                             hasFocusedTextElement);
    };
    const auto element =
        readAttribute<AXElementRef>(accessibility_, app.element, AXAttribute::focusedUIElement).value;
    if (!element) {
        const bool decision = allows(false);
        MVPLog::write(decision ? "SmartSelect clipboard fallback allowed without focused element"
                               : "SmartSelect clipboard fallback blocked: focused element unavailable",
                      "reason:", rawValue(reason), "app:", name, "bundle:", bundle);
        return decision;
    }
    focused = *element;
    const Roles roles = rolesOf(accessibility_, focused);
    // A password is copied by nobody, whatever its role is called.
    const bool decision = !roles.isPassword() && allows(roles.isText());
    if (!decision)
        MVPLog::write("SmartSelect clipboard fallback blocked role:", roles.role, "subrole:", roles.subrole,
                      "reason:", rawValue(reason));
    return decision;
}

}  // namespace veltrin

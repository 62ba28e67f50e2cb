#pragma once

#include "ExternalAccess/SmartSelectClipboardCopy.h"
#include "ExternalAccess/SmartSelectedContent.h"
#include "Platform/Accessibility.h"
#include "Platform/Workspace.h"

#include <QCoro/QCoroTask>

namespace veltrin {

/// What is selected in the application in front: by accessibility, from the focused element to its whole
/// window, and where that gives nothing by a copy key, in applications where none does harm. Main thread.
/// Accessibility is read synchronously and bounded; a copy lets the main thread go on.
class SmartSelectContentReader {
public:
    SmartSelectContentReader(Accessibility& accessibility, Workspace& workspace,
                             SmartSelectClipboardCopy& clipboardCopy)
        : accessibility_(accessibility), workspace_(workspace), clipboardCopy_(clipboardCopy) {}

    /// None when nothing is selected or nothing may be read. What accessibility gives may be blank.
    QCoro::Task<std::optional<SmartSelectedContent>> readSelectedContent(SmartSelectTriggerReason reason,
                                                                         QPointF fallbackAnchorPoint);

private:
    /// The application that is read, with "unknown" for what it does not say.
    struct Application {
        AXElementRef element;
        QString appName;
        QString bundleIdentifier;
    };
    using Found = std::optional<SmartSelectedContent>;

    Found readSelectedContentViaAX(const Application& app);
    Found readSelectedContentInAppTree(const Application& app);
    Found findSelectedContentInChildren(const AXTree& of, int depth, const Application& app);
    /// Its selected text by either way, under the name of the way.
    Found contentOf(const AXElementRef& element, const char* textSource, const char* rangeSource,
                    const Application& app);
    std::optional<QPointF> selectedTextAnchorPoint(const AXElementRef& from,
                                                   const std::optional<TextRange>& range);
    /// Whether a copy key may be pressed; if so, `focused` is the element that has the focus, if any.
    bool shouldUseSmartSelectClipboardFallback(SmartSelectTriggerReason reason, const Application& app,
                                               AXElementRef& focused);

    Accessibility& accessibility_;
    Workspace& workspace_;
    SmartSelectClipboardCopy& clipboardCopy_;
};

}  // namespace veltrin

#pragma once

#include "Data/AppSettings.h"
#include "ExternalAccess/ExternalAIAction.h"
#include "ExternalAccess/WritebackTargetSnapshot.h"
#include "Platform/Workspace.h"

namespace veltrin {

/// Whether a result may still be written into the field it was made for, and how much of the field it
/// replaces. What can be compared and differs means "copy"; what cannot be read any more is mostly forgiven,
/// on purpose. Main thread.
class WritebackTargetValidator {
public:
    WritebackTargetValidator(Accessibility& accessibility, Workspace& workspace, const AppSettings& settings)
        : accessibility_(accessibility), workspace_(workspace), settings_(settings) {}

    /// True: do not write.
    bool shouldCopyResultInsteadOfWriteback(const WritebackTargetSnapshot& snapshot);

    bool shouldForceReplaceAll(const ExternalGestureAIAction& action, const ExternalTextReadResult& read);
    /// The same for any replace mode: dictation has a setting of its own.
    bool shouldForceReplaceAll(TextReplaceMode mode, const ExternalTextReadResult& read);
    bool smartShouldReplaceAll(const ExternalTextReadResult& read);

    bool isOriginalTextElementStillFocused(const AXElementRef& element, qint32 processIdentifier);
    bool isTextElementWritable(const AXElementRef& element);
    std::optional<QString> currentSelectedText(const AXElementRef& element);

private:
    Accessibility& accessibility_;
    Workspace& workspace_;
    const AppSettings& settings_;
};

}  // namespace veltrin

#pragma once

#include "Platform/Accessibility.h"
#include "support/fake/FakeWorkspace.h"

namespace veltrin {

/// Accessibility of the simulated applications. Each question meets, in this order: the right to ask, a
/// process that is gone, one that hangs (the first question costs time, the later ones fail at once until it
/// answers again), a program without accessibility, the fault that was set for the attribute, and at last the
/// plain answer.
class FakeAccessibility final : public Accessibility {
public:
    FakeAccessibility(FakeRunLoop& loop, FakeWorkspace& workspace, FakeEventLog& log)
        : loop_(loop), workspace_(workspace), log_(log) {}

    bool isProcessTrusted() const override { return trusted; }
    bool promptForTrust() override;
    AXElementRef applicationElement(qint32 processIdentifier) override;
    AXResult<AXValue> copyAttributeValue(const AXElementRef& element, AXAttribute attribute) override;
    AXResult<AXValue> copyParameterizedAttributeValue(const AXElementRef& element, AXAttribute attribute,
                                                      const AXValue& parameter) override;
    AXError setAttributeValue(const AXElementRef& element, AXAttribute attribute,
                              const AXValue& value) override;
    AXResult<bool> isAttributeSettable(const AXElementRef& element, AXAttribute attribute) override;

    /// The element that stands for a field or a window.
    AXElementRef elementOf(const FakeTextField& field) const;
    AXElementRef elementOf(const FakeApplication& application, const FakeWindow& window) const;

    bool trusted = true;
    bool trustedOnPrompt = false;  ///< whether the prompt brings the right
    int prompts = 0;
    int questions = 0;    ///< calls into applications, writes included
    double callCost = 0;  ///< seconds that each call costs
    double hungCallCost = 0.25;

private:
    struct Target;
    AXError reach(const AXElementRef& element, Target& target);
    AXResult<AXValue> readApplication(const FakeApplication& application, AXAttribute attribute) const;
    AXResult<AXValue> readWindow(const FakeApplication& application, const FakeWindow& window,
                                 AXAttribute attribute) const;
    AXResult<AXValue> readField(const FakeApplication& application, const FakeTextField& field,
                                AXAttribute attribute) const;
    AXError write(FakeTextField& field, AXAttribute attribute, const AXValue& value);
    bool isSettable(const FakeTextField& field, AXAttribute attribute) const;
    /// Takes the fault that meets this question; blocks for its cost.
    std::optional<FakeAXFault> takeFault(FakeAXFaults& faults, AXAttribute attribute);

    FakeRunLoop& loop_;
    FakeWorkspace& workspace_;
    FakeEventLog& log_;
    qint32 knownHung_ = 0;
};

}  // namespace veltrin

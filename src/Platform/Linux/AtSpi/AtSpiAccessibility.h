#pragma once

#include "Platform/Accessibility.h"

#include <memory>

namespace veltrin {

class TopLevelWindows;
struct TopLevelWindow;

namespace AtSpi {
class AtSpiElement;
class AtSpiWorker;
struct PlacedRectangle;
}  // namespace AtSpi

/// What somebody who is about to post keys must know of an element.
struct ElementState {
    bool isAnswered = false;  ///< false: the application did not say; the rest means nothing then
    bool isFocused = false;
    bool isEditable = false;  ///< the user can type in it; true of terminals
    bool isPassword = false;
    bool isTerminal = false;
};

/// Accessibility over the AT-SPI bus. One thread of its own listens to focus changes and talks to
/// applications; every operation waits for it, at most 0.6 s. Without the bus everything fails at once with
/// `apiDisabled`, and the bus is sought again from time to time.
class AtSpiAccessibility final : public Accessibility {
public:
    /// `windows` may be null: then no window has a title or a frame. It must outlive this object.
    explicit AtSpiAccessibility(TopLevelWindows* windows);
    ~AtSpiAccessibility() override;

    bool isProcessTrusted() const override;
    bool promptForTrust() override;
    AXElementRef applicationElement(qint32 processIdentifier) override;
    AXResult<AXValue> copyAttributeValue(const AXElementRef& element, AXAttribute attribute) override;
    std::vector<AXResult<AXValue>> copyAttributeValues(const AXElementRef& element,
                                                       const std::vector<AXAttribute>& attributes) override;
    /// Of windows and objects; the lists come with the tree only, not as attributes.
    AXTree copyTree(const AXElementRef& element, const AXTreeLimits& limits) override;
    AXResult<AXValue> copyParameterizedAttributeValue(const AXElementRef& element, AXAttribute attribute,
                                                      const AXValue& parameter) override;
    AXError setAttributeValue(const AXElementRef& element, AXAttribute attribute,
                              const AXValue& value) override;
    AXResult<bool> isAttributeSettable(const AXElementRef& element, AXAttribute attribute) override;

    ElementState inspect(const AXElementRef& element);
    /// Of the element that has the focus in that process.
    ElementState inspectFocused(qint32 processIdentifier);

private:
    AXResult<AXValue> ofApplication(const AtSpi::AtSpiElement& application, AXAttribute attribute);
    AXResult<AXValue> ofWindow(const AtSpi::AtSpiElement& window, AXAttribute attribute);
    AXResult<AXValue> ofObject(const AtSpi::AtSpiElement& object, AXAttribute attribute);
    std::vector<AXResult<AXValue>> ofObject(const AtSpi::AtSpiElement& object,
                                            const std::vector<AXAttribute>& attributes);
    AXResult<AXValue> focusedElement(qint32 processIdentifier);
    AXResult<QRectF> frame(const AtSpi::AtSpiElement& object);
    AXResult<QRectF> onDesktop(const AtSpi::PlacedRectangle& placed, qint32 processIdentifier,
                               const std::optional<TopLevelWindow>& window);
    struct ToldWindow;
    AXResult<ToldWindow> windowAsTold(const TopLevelWindow& window, qint32 processIdentifier);
    double pixelsPerPoint(const TopLevelWindow& window, qint32 processIdentifier);
    std::optional<TopLevelWindow> frontWindow(qint32 processIdentifier) const;

    TopLevelWindows* windows_;
    std::unique_ptr<AtSpi::AtSpiWorker> worker_;
    /// Of the window that was asked about last; a new size asks anew.
    struct {
        quint32 window = 0;
        QSizeF size;
        double pixelsPerPoint = 1;
    } scale_;
};

}  // namespace veltrin

#pragma once

#include "Platform/Linux/AtSpi/AtSpiAccessibility.h"
#include "Platform/Linux/X11/PostTargetInspector.h"

namespace veltrin {

/// The accessibility adapter's answer in the key poster's words. Main thread; bounded as the adapter is.
class FieldInspector final : public PostTargetInspector {
public:
    explicit FieldInspector(AtSpiAccessibility& accessibility) : accessibility_(accessibility) {}
    PostTargetState inspect(const AXElementRef& element) override;

private:
    bool isFocusElsewhere(const AXElementRef& element);

    AtSpiAccessibility& accessibility_;
};

}  // namespace veltrin

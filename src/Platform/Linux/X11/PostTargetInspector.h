#pragma once

#include "Platform/Accessibility.h"

namespace veltrin {

/// What must be known of a field before a key is posted into it.
struct PostTargetState {
    bool answered = false;  ///< its application answered in time; without it the rest says nothing
    bool isEditable = false;
    bool isPassword = false;
    bool isElsewhere = false;  ///< another field of the application has the focus
};

/// Looks at a field through accessibility. Main thread; bounded.
class PostTargetInspector {
public:
    virtual ~PostTargetInspector() = default;
    virtual PostTargetState inspect(const AXElementRef& element) = 0;
};

}  // namespace veltrin

#pragma once

#include <QStringList>

namespace veltrin {

/// What the desktop says about the user's wishes.
class SystemEnvironment {
public:
    virtual ~SystemEnvironment() = default;
    /// The user's languages, most wanted first, as "zh-CN", "en-GB"; may be empty.
    virtual QStringList preferredLanguages() const = 0;
    virtual bool effectiveAppearanceIsDark() const = 0;
};

}  // namespace veltrin

#pragma once

#include <QStringList>

namespace veltrin {

/// What the desktop says about the user's wishes and places.
class SystemEnvironment {
public:
    virtual ~SystemEnvironment() = default;
    /// The user's languages, most wanted first, as "zh-CN", "en-GB"; may be empty.
    virtual QStringList preferredLanguages() const = 0;
    virtual bool effectiveAppearanceIsDark() const = 0;
    /// The folder under which programs keep the user's data, as an absolute path; it need not exist.
    virtual QString applicationSupportDirectory() const = 0;
};

}  // namespace veltrin

#pragma once

#include "Platform/SystemEnvironment.h"

namespace veltrin {

class DesktopAppearance;

/// The user's languages from the locale, folders from the freedesktop variables, the look from the desktop.
class LinuxSystemEnvironment final : public SystemEnvironment {
public:
    explicit LinuxSystemEnvironment(const DesktopAppearance& appearance) : appearance_(appearance) {}

    QStringList preferredLanguages() const override;
    bool effectiveAppearanceIsDark() const override;
    QString applicationSupportDirectory() const override;

private:
    const DesktopAppearance& appearance_;
};

}  // namespace veltrin

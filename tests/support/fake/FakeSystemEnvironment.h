#pragma once

#include "Platform/SystemEnvironment.h"

namespace veltrin {

class FakeSystemEnvironment : public SystemEnvironment {
public:
    QStringList preferredLanguages() const override { return languages; }
    bool effectiveAppearanceIsDark() const override { return dark; }

    QStringList languages;
    bool dark = false;
};

}  // namespace veltrin

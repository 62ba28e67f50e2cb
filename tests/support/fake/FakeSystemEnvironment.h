#pragma once

#include "Platform/SystemEnvironment.h"

namespace veltrin {

class FakeSystemEnvironment : public SystemEnvironment {
public:
    QStringList preferredLanguages() const override { return languages; }
    bool effectiveAppearanceIsDark() const override { return dark; }
    QString applicationSupportDirectory() const override { return supportDirectory; }

    QStringList languages;
    bool dark = false;
    QString supportDirectory;  ///< none unless a test has made one
};

}  // namespace veltrin

#include "Platform/Linux/LinuxSystemEnvironment.h"

#include "Platform/DesktopAppearance.h"

#include <QLocale>
#include <QStandardPaths>

namespace veltrin {

QStringList LinuxSystemEnvironment::preferredLanguages() const {
    // The C locale names no language.
    QStringList languages = QLocale::system().uiLanguages();
    languages.removeAll(QStringLiteral("C"));
    return languages;
}

bool LinuxSystemEnvironment::effectiveAppearanceIsDark() const {
    return appearance_.isDark();
}

QString LinuxSystemEnvironment::applicationSupportDirectory() const {
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
}

}  // namespace veltrin

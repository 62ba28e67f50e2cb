#include "Data/DataDirectory.h"

#include "Foundation/Files.h"

namespace veltrin {

QString appSupportDir(const SystemEnvironment& environment) {
    const QString base = environment.applicationSupportDirectory();
    if (base.isEmpty()) qFatal("The desktop names no folder for application data.");
    QString folder = base + QStringLiteral("/Veltrin");
    Files::makePrivateFolder(folder);
    return folder;
}

}  // namespace veltrin

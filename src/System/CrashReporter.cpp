#include "System/CrashReporter.h"

#include "Platform/SystemLog.h"

namespace veltrin {

void CrashReporter::start() {
    log_.watchForCrashes();
    log_.info(QStringLiteral("com.veltrin.app"), QStringLiteral("crash"),
              QStringLiteral("CrashReporter started"));
}

}  // namespace veltrin

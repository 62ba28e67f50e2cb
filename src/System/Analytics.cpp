#include "System/Analytics.h"

#include "Data/AppSettings.h"
#include "Platform/SystemLog.h"

#include <utility>

namespace veltrin {

OSLogAnalyticsBackend::OSLogAnalyticsBackend(SystemLog& log, QString subsystem, QString category)
    : log_(log), subsystem_(std::move(subsystem)), category_(std::move(category)) {
}

void OSLogAnalyticsBackend::record(const QString& event) {
    log_.info(subsystem_, category_, event);
}

void Analytics::setBackends(std::vector<std::unique_ptr<AnalyticsBackend>> backends) {
    backends_ = std::move(backends);
}

void Analytics::track(const QString& event) {
    if (!settings_.analyticsEnabled()) return;
    for (const auto& backend : backends_)
        backend->record(event);
}

}  // namespace veltrin

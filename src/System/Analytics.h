#pragma once

#include <QString>

#include <memory>
#include <vector>

namespace veltrin {

class AppSettings;
class SystemLog;

/// Where events go.
class AnalyticsBackend {
public:
    virtual ~AnalyticsBackend() = default;
    virtual void record(const QString& event) = 0;
};

/// The desktop's own log: events stay on this machine.
class OSLogAnalyticsBackend final : public AnalyticsBackend {
public:
    OSLogAnalyticsBackend(SystemLog& log, QString subsystem, QString category);
    void record(const QString& event) override;

private:
    SystemLog& log_;
    QString subsystem_;
    QString category_;
};

/// What happened in the program, by name alone: an event carries nothing of the user's. Silent while the
/// user's switch is off.
class Analytics {
public:
    explicit Analytics(const AppSettings& settings) : settings_(settings) {}

    void setBackends(std::vector<std::unique_ptr<AnalyticsBackend>> backends);
    void track(const QString& event);

private:
    const AppSettings& settings_;
    std::vector<std::unique_ptr<AnalyticsBackend>> backends_;
};

}  // namespace veltrin

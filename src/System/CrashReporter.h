#pragma once

namespace veltrin {

class SystemLog;

/// Sees to it that a crash leaves its trace in the desktop's log. Nothing is sent anywhere.
class CrashReporter {
public:
    explicit CrashReporter(SystemLog& log) : log_(log) {}

    void start();

private:
    SystemLog& log_;
};

}  // namespace veltrin

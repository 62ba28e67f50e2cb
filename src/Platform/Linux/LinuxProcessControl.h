#pragma once

#include "Platform/ProcessControl.h"

#include <functional>

namespace veltrin {

/// This process on Linux. How it ends in the ordinary way is told by its owner.
class LinuxProcessControl final : public ProcessControl {
public:
    /// `beforeRelaunch` runs when another process is about to be started in this one's place.
    LinuxProcessControl(std::function<void()> onTerminate, std::function<void()> beforeRelaunch)
        : onTerminate_(std::move(onTerminate)), beforeRelaunch_(std::move(beforeRelaunch)) {}

    std::optional<QString> launchDetached(const QString& program, const QStringList& arguments) override;
    void terminate() override { onTerminate_(); }
    [[noreturn]] void exitImmediately(int status) override;
    void closeAllWindows() override;
    void systemLog(const QString& line) override;

private:
    std::function<void()> onTerminate_;
    std::function<void()> beforeRelaunch_;
};

}  // namespace veltrin

#pragma once

#include "Platform/ProcessControl.h"
#include "support/fake/FakeEventLog.h"
#include "support/fake/FakeRunLoop.h"

#include <utility>
#include <vector>

namespace veltrin {

/// Records what the program does to its own process; nothing ends.
class FakeProcessControl final : public ProcessControl {
public:
    FakeProcessControl(FakeRunLoop& loop, FakeEventLog& log) : loop_(loop), log_(log) {}

    struct Launch {
        QString program;
        QStringList arguments;
    };

    std::optional<QString> launchDetached(const QString& program, const QStringList& arguments) override {
        note("launch");
        if (launchFailure) return launchFailure;
        launches.push_back({program, arguments});
        return std::nullopt;
    }
    void terminate() override {
        note("terminate");
        ++terminations;
    }
    void exitImmediately(int status) override {
        note("exit");
        exitStatus = status;
    }
    void closeAllWindows() override {
        note("close windows");
        ++windowClosings;
    }
    void systemLog(const QString& line) override { systemLines += line; }

    std::vector<Launch> launches;
    std::optional<QString> launchFailure;  ///< the words with which a launch fails
    int terminations = 0;
    int windowClosings = 0;
    std::optional<int> exitStatus;
    QStringList systemLines;

private:
    void note(const char* what) { log_.add(loop_.now(), what); }

    FakeRunLoop& loop_;
    FakeEventLog& log_;
};

}  // namespace veltrin

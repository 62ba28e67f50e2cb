#pragma once

#include "Platform/Workspace.h"
#include "support/fake/FakeApplication.h"

namespace veltrin {

/// The running applications and which of them is in front.
class FakeWorkspace final : public Workspace {
public:
    FakeWorkspace(FakeRunLoop& loop, FakePasteboard& pasteboard, FakeEventLog& log);

    std::optional<RunningApplication> frontmostApplication() const override;
    std::optional<RunningApplication> runningApplication(qint32 processIdentifier) const override;
    bool activate(qint32 processIdentifier, ActivateOptions options) override;
    QString mainBundleIdentifier() const override { return mainBundle; }
    std::optional<QString> executablePath() const override { return executable; }

    /// Starts an application. It does not come to front.
    FakeApplication& launch(const QString& name, const std::optional<QString>& bundleIdentifier);
    /// This program as other programs see it; its process never hangs or quits here.
    FakeApplication& program() { return *applications.front(); }
    FakeApplication* application(qint32 pid) const;
    /// The application in front; none when there is none.
    FakeApplication* front() const;
    /// The user brings an application to front, or leaves the desktop with nothing in front.
    void bringToFront(FakeApplication* application);
    /// The user clicks into a field: its window and its application come to front.
    void focus(FakeTextField& field);

    struct Activation {
        qint32 pid;
        ActivateOptions options;
    };

    std::vector<std::unique_ptr<FakeApplication>> applications;
    std::vector<Activation> activations;  ///< what the program asked for
    bool refusesActivation = false;
    double activationLatency = 0;  ///< seconds until an activation takes effect
    QString mainBundle = QStringLiteral("com.veltrin.app");
    std::optional<QString> executable = QStringLiteral("/usr/bin/veltrin");

private:
    static RunningApplication describe(const FakeApplication& application);

    FakeRunLoop& loop_;
    FakePasteboard& pasteboard_;
    FakeEventLog& log_;
    qint32 front_ = 0;
    qint32 lastPid_ = 4000;
};

}  // namespace veltrin

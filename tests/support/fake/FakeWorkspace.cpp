#include "support/fake/FakeWorkspace.h"

#include <algorithm>

namespace veltrin {

FakeWorkspace::FakeWorkspace(FakeRunLoop& loop, FakePasteboard& pasteboard, FakeEventLog& log)
    : loop_(loop), pasteboard_(pasteboard), log_(log) {
    launch(QStringLiteral("Veltrin"), mainBundle);
}

RunningApplication FakeWorkspace::describe(const FakeApplication& application) {
    RunningApplication description;
    description.processIdentifier = application.pid;
    description.localizedName = application.name;
    description.bundleIdentifier = application.bundleIdentifier;
    description.icon = application.icon;
    description.window = application.activeWindow ? application.activeWindow->id : 0;
    return description;
}

std::optional<RunningApplication> FakeWorkspace::frontmostApplication() const {
    const FakeApplication* application = front();
    return application ? std::optional<RunningApplication>(describe(*application)) : std::nullopt;
}

std::optional<RunningApplication> FakeWorkspace::runningApplication(qint32 processIdentifier) const {
    const FakeApplication* found = application(processIdentifier);
    if (!found || !found->isRunning()) return std::nullopt;
    return describe(*found);
}

bool FakeWorkspace::activate(qint32 processIdentifier, ActivateOptions options) {
    activations.push_back({processIdentifier, options});
    const FakeApplication* found = application(processIdentifier);
    if (!found || !found->isRunning()) return false;
    if (refusesActivation || front_ == processIdentifier) return true;
    const auto comeToFront = [this, processIdentifier] {
        const FakeApplication* still = application(processIdentifier);
        if (still && still->isRunning()) bringToFront(application(processIdentifier));
    };
    if (activationLatency > 0)
        loop_.inWorld(activationLatency, comeToFront);
    else
        comeToFront();
    return true;
}

FakeApplication& FakeWorkspace::launch(const QString& name, const std::optional<QString>& bundleIdentifier) {
    applications.push_back(std::make_unique<FakeApplication>(loop_, pasteboard_, log_, ++lastPid_));
    FakeApplication& application = *applications.back();
    application.name = name;
    application.bundleIdentifier = bundleIdentifier;
    return application;
}

FakeApplication* FakeWorkspace::application(qint32 pid) const {
    const auto found = std::find_if(applications.begin(), applications.end(),
                                    [pid](const auto& candidate) { return candidate->pid == pid; });
    return found == applications.end() ? nullptr : found->get();
}

FakeApplication* FakeWorkspace::front() const {
    FakeApplication* found = application(front_);
    return found && found->isRunning() ? found : nullptr;
}

void FakeWorkspace::bringToFront(FakeApplication* application) {
    front_ = application ? application->pid : 0;
    log_.add(loop_.now(), "in front", application ? application->name.value_or(QString()) : QString());
}

void FakeWorkspace::focus(FakeTextField& field) {
    for (const auto& application : applications) {
        FakeWindow* window = application->windowOf(field);
        if (!window) continue;
        window->focusedField = &field;
        application->activeWindow = window;
        if (front_ != application->pid) bringToFront(application.get());
        return;
    }
}

}  // namespace veltrin

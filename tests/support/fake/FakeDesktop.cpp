#include "support/fake/FakeDesktop.h"

#include <vector>

namespace veltrin {

FakeDesktop::FakeDesktop() {
    pasteboard.answers = [this](qint32 pid) {
        const FakeApplication* owner = workspace.application(pid);
        return owner && owner->state() == FakeApplication::State::running;
    };
}

FakeDesktop::~FakeDesktop() = default;

Desktop FakeDesktop::desktop() {
    return {runLoop, keyEventTaps, mouseEventTaps, keyPoster,      accessibility,  pasteboard, workspace,
            screens, preferences,  httpClient,     floatingPanels, processControl, environment};
}

void FakeDesktop::forgetRecords() {
    std::erase_if(floatingPanels.records, [](const auto& record) { return record->closed; });
    std::erase_if(keyEventTaps.taps, [](const auto& tap) { return !tap->exists; });
    std::erase_if(mouseEventTaps.taps, [](const auto& tap) { return !tap->exists; });
    log.entries.clear();
    keyPoster.records.clear();
    preferences.writes.clear();
    httpClient.requests.clear();
    workspace.activations.clear();
    processControl.launches.clear();
    processControl.systemLines.clear();
    soundOutput.played.clear();
}

}  // namespace veltrin

#include "Platform/Linux/TerminationSignals.h"

#include <QSocketNotifier>

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

namespace veltrin {
namespace {

constexpr int caught[] = {SIGTERM, SIGINT, SIGHUP};
int pipeEnds[2] = {-1, -1};
volatile std::sig_atomic_t seen = 0;

/// Runs in signal context: only async-signal-safe calls.
void onCaught(int number) {
    if (seen != 0) _exit(128 + number);
    seen = 1;
    const char byte = 1;
    [[maybe_unused]] const auto written = write(pipeEnds[1], &byte, 1);
}

}  // namespace

TerminationSignals::TerminationSignals(std::function<void()> onSignal) {
    if (pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0) return;
    notifier_ = std::make_unique<QSocketNotifier>(pipeEnds[0], QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, [this, onSignal = std::move(onSignal)] {
        notifier_->setEnabled(false);
        onSignal();
    });
    struct sigaction action {};
    action.sa_handler = onCaught;
    action.sa_flags = SA_RESTART;
    for (const int number : caught)
        sigaction(number, &action, nullptr);
}

TerminationSignals::~TerminationSignals() {
    for (const int number : caught)
        std::signal(number, SIG_DFL);
    notifier_.reset();
    for (int& end : pipeEnds) {
        if (end >= 0) close(end);
        end = -1;
    }
}

}  // namespace veltrin

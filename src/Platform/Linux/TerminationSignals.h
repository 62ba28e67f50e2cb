#pragma once

#include <QObject>

#include <functional>

class QSocketNotifier;

namespace veltrin {

/// Turns SIGTERM, SIGINT and SIGHUP into a call on the run loop, so that the program ends in the ordinary
/// way. A second signal ends the process at once. One object a process.
class TerminationSignals : public QObject {
    Q_OBJECT
public:
    explicit TerminationSignals(std::function<void()> onSignal);
    ~TerminationSignals() override;

private:
    std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace veltrin

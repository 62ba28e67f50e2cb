#pragma once

#include <QStringList>

#include <memory>

class QApplication;

namespace veltrin {

class SingleInstance;

/// Builds the adapters of this desktop, hands them to the core objects by constructor, and starts the
/// delegate. The only place that knows which adapter stands for which port.
class CompositionRoot {
public:
    CompositionRoot(QApplication& application, SingleInstance& instance);
    ~CompositionRoot();

    void launch();
    /// Opens addresses that the program was started with.
    void open(const QStringList& urls);
    /// Ends the process in the ordinary way.
    void terminate();

private:
    struct Objects;
    std::unique_ptr<Objects> objects_;
};

}  // namespace veltrin

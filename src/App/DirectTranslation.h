#pragma once

#include "Foundation/Lifetime.h"

#include <QCoro/QCoroTask>

namespace veltrin {

class ExternalActionHandler;
class ExternalTextInputLocator;
class ExternalTextInputReader;
class SpaceGestureEngine;

/// Three taps or the translation shortcut: reads the focused field and translates it, with nothing to choose.
class DirectTranslation {
public:
    DirectTranslation(SpaceGestureEngine& engine, ExternalTextInputLocator& locator,
                      ExternalTextInputReader& reader, ExternalActionHandler& actions)
        : engine_(engine), locator_(locator), reader_(reader), actions_(actions) {}

    /// Begins on the next turn of the run loop and returns at once: the caller stands in the path of a key.
    void start(class RunLoop& runLoop);

private:
    QCoro::Task<void> run();

    SpaceGestureEngine& engine_;
    ExternalTextInputLocator& locator_;
    ExternalTextInputReader& reader_;
    ExternalActionHandler& actions_;
    Lifetime lifetime_;
};

}  // namespace veltrin

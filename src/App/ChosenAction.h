#pragma once

#include "ExternalAccess/ExternalAIAction.h"
#include "Foundation/Lifetime.h"

#include <QCoro/QCoroTask>
#include <QRectF>

#include <optional>

namespace veltrin {

class ExternalActionHandler;
class ExternalTextInputReader;
class RunLoop;
class SpaceGestureEngine;

/// An action chosen by a key or a click while a panel was open, such as the slash key's search for a command.
/// Only after the choice is the field read, when the panel has left and the field has the focus again.
class ChosenAction {
public:
    ChosenAction(RunLoop& runLoop, SpaceGestureEngine& engine, ExternalTextInputReader& reader,
                 ExternalActionHandler& actions)
        : runLoop_(runLoop), engine_(engine), reader_(reader), actions_(actions) {}

    /// Returns at once; the panel is already on its way out. `anchor` is where it stood.
    void start(ExternalGestureAIAction action, std::optional<QRectF> anchor);

private:
    QCoro::Task<void> run(ExternalGestureAIAction action, std::optional<QRectF> anchor);

    RunLoop& runLoop_;
    SpaceGestureEngine& engine_;
    ExternalTextInputReader& reader_;
    ExternalActionHandler& actions_;
    Lifetime lifetime_;
};

}  // namespace veltrin

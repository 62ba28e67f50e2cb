#include "App/DirectTranslation.h"

#include "App/ExternalActionHandler.h"
#include "ExternalAccess/ExternalTextInputLocator.h"
#include "ExternalAccess/ExternalTextInputReader.h"
#include "Gesture/SpaceGestureEngine.h"
#include "Platform/RunLoop.h"

namespace veltrin {

void DirectTranslation::start(RunLoop& runLoop) {
    runLoop.post(lifetime_.bind([this] { run(); }));
}

QCoro::Task<void> DirectTranslation::run() {
    // The anchor comes first, and the tap is off only for the read.
    const auto anchor = locator_.bestAnchorRect();
    engine_.setEventTapEnabled(false, QStringLiteral("external text read"));
    auto read = reader_.readFocusedText();
    engine_.setEventTapEnabled(true, QStringLiteral("external text read finished"));
    ExternalTextSession session{std::move(read), anchor};
    auto action = actions_.handleExternalAIAction(ExternalGestureAIAction::translate(), std::move(session));
    co_await action;
}

}  // namespace veltrin

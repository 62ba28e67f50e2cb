#include "App/ChosenAction.h"

#include "App/ExternalActionHandler.h"
#include "ExternalAccess/ExternalTextInputReader.h"
#include "Gesture/SpaceGestureEngine.h"
#include "Platform/RunLoop.h"

#include <utility>

namespace veltrin {
namespace {

constexpr double focusReturnSeconds = 0.05;

}  // namespace

void ChosenAction::start(ExternalGestureAIAction action, std::optional<QRectF> anchor) {
    runLoop_.afterDetached(focusReturnSeconds, lifetime_.bind([this, action = std::move(action), anchor] {
        run(action, anchor);
    }));
}

QCoro::Task<void> ChosenAction::run(ExternalGestureAIAction action, std::optional<QRectF> anchor) {
    engine_.setEventTapEnabled(false, QStringLiteral("external text read"));
    auto read = reader_.readFocusedText();
    engine_.setEventTapEnabled(true, QStringLiteral("external text read finished"));
    ExternalTextSession session{std::move(read), anchor};
    auto task = actions_.handleExternalAIAction(std::move(action), std::move(session));
    co_await task;
}

}  // namespace veltrin

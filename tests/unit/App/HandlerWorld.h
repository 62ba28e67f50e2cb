#pragma once

#include "App/ExternalActionHandler.h"
#include "Debug/MVPDebugPanel.h"
#include "Engines/ExpressionRunner.h"
#include "Expression/ExpressionMemoryStore.h"
#include "ExternalAccess/ExternalTextInputReader.h"
#include "ExternalAccess/WritebackTargetValidator.h"
#include "Foundation/Json.h"
#include "Gesture/SpaceGestureEngine.h"
#include "Session/UserBehaviorTracker.h"
#include "System/InteractionSoundPlayer.h"
#include "support/fake/FakeDesktop.h"
#include "support/fake/LogCapture.h"
#include "support/fake/TaskWorld.h"

#include <QTemporaryDir>

namespace veltrin {

/// The handler of the gestures' actions with everything it is bound to, on the simulated desktop.
struct HandlerWorld {
    void modelAnswers(const QString& text) {
        Json body;
        body.set(QStringLiteral("response"), text);
        desktop.httpClient.answer(200, body.serialized());
    }

    LogCapture log;
    FakeDesktop desktop;
    NotificationCenter notifications;
    AppSettings settings{desktop.preferences, notifications, desktop.environment};
    OllamaClient client{desktop.httpClient, settings};
    ExpressionMemoryStore memory{desktop.preferences};
    QTemporaryDir folder;
    UserBehaviorTracker tracker{folder.path(), desktop.runLoop};
    SpaceGestureEngine engine{desktop.runLoop, desktop.keyEventTaps, desktop.preferences, desktop.pasteboard};
    MVPDebugPanel panel{desktop.runLoop, desktop.floatingPanels, desktop.screens, desktop.pasteboard,
                        desktop.preferences};
    ExternalTextInputReader reader{desktop.accessibility, desktop.workspace, desktop.preferences};
    PasteboardLoan loan{desktop.pasteboard, desktop.runLoop};
    ExternalTextWriteback writeback{desktop.accessibility, desktop.workspace, loan, desktop.keyPoster,
                                    desktop.runLoop};
    WritebackTargetValidator validator{desktop.accessibility, desktop.workspace, settings};
    ExpressionRunner expressions{client};
    TaskMaterial material;
    ModelTasks tasks{client, settings, desktop.runLoop, material.closures()};
    InteractionSoundPlayer sounds{desktop.runLoop, desktop.soundOutput, settings};
    ExternalActionHandler handler{{desktop.runLoop, desktop.accessibility, settings, engine, panel, writeback,
                                   validator, expressions, memory, tracker, client, tasks, sounds}};
};

}  // namespace veltrin

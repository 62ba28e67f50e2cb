#pragma once

#include "AI/AgentTeamManager.h"
#include "App/SmartSelectOverlay.h"
#include "Data/AppSettings.h"
#include "Data/HistoryStore.h"
#include "Data/PromptStore.h"
#include "Platform/SoundOutput.h"
#include "System/InteractionSoundPlayer.h"
#include "support/fake/FakeHttpClient.h"
#include "support/fake/FakeSystemEnvironment.h"

#include <QByteArray>

namespace veltrin {

/// The icon and the popup over a selection with everything they stand on but the windows and the clipboard:
/// no sound, and a model that answers as it is told.
class SelectionHost {
public:
    SelectionHost(RunLoop& runLoop, FloatingPanels& panels, const Screens& screens, Pasteboard& pasteboard,
                  Preferences& preferences, const QString& folder);

    SmartSelectOverlay& overlay() { return overlay_; }
    AppSettings& settings() { return settings_; }
    /// What the model says next; an empty text is a failure.
    void modelSays(const QString& text);
    /// From now on the model waits until `release`.
    void hold() { http_.holding = true; }
    void release();
    /// What the popup shows, "title|subtitle|recogniser|text"; empty without one.
    QByteArray shown() const;
    /// The newest prompt's title.
    QByteArray saved() const;

private:
    struct NoSound final : SoundOutput {
        std::unique_ptr<PlayingSound> play(const QByteArray&) override { return nullptr; }
    };

    NotificationCenter notifications_;
    FakeSystemEnvironment environment_;
    AppSettings settings_;
    FakeHttpClient http_;
    OllamaClient client_{http_, settings_};
    NoSound sound_;
    InteractionSoundPlayer sounds_;
    AgentTeamManager agents_;
    HistoryStore history_;
    PromptStore prompts_;
    SmartSelectOverlay overlay_;
};

}  // namespace veltrin

#pragma once

#include "RoadFixture.h"
#include "support/fake/LogCapture.h"

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>

namespace veltrin {

/// Two taps, the choice beside the caret, and one key.
class ChoiceTest : public RoadTest {
protected:
    ChoiceTest() {
        field.frame = QRectF(700, 300, 600, 300);  // away from the edges of the screen
    }
    std::size_t soundsPlayed() const { return desktop.soundOutput.played.size(); }

    /// The program runs, and the choice is open. The caret stands in the text: behind its end is no character
    /// whose place could be asked for, and the choice would stand below the whole field.
    void openChoice() {
        launch();
        field.placeCaret(3);
        veltrin.tapOptimize();
        ASSERT_TRUE(isOpen());
    }
    bool isWaiting() { return veltrin.delegate().optimizeInteraction().isWaiting(); }
    /// Waiting and shown are one.
    bool isOpen() {
        const bool shown = choice() != nullptr;
        EXPECT_EQ(shown, isWaiting());
        return shown;
    }
    const FakeFloatingPanels::Record* choice() const {
        const auto shown = desktop.floatingPanels.shown();
        const auto found = std::find_if(shown.begin(), shown.end(), [](const auto* record) {
            return record->spec.kind == PanelKind::choice;
        });
        return found == shown.end() ? nullptr : *found;
    }
    void press(qint64 keyCode, quint64 flags = 0) {
        desktop.keyboard.chord(keyCode, flags);
        desktop.runLoop.runDue();
    }
    /// Where the character after the caret stands, from the bottom left.
    QRectF caret() const {
        const QRectF rect = field.boundsOf({field.selection.location, 1});
        return {rect.x(), 1080 - rect.bottom(), rect.width(), rect.height()};
    }
    /// Where a choice stands below a rectangle, away from the edges.
    static QPointF below(const QRectF& rect) {
        return {rect.x() + rect.width() / 2 - 155, rect.y() - 248 - 10};
    }
    bool logged(const QString& line) const { return log.lines().contains(line); }
    /// The prompt asks for what an action says.
    bool askedFor(const char* words) const {
        return veltrin.model.lastPrompt.contains(QString::fromUtf8(words));
    }
    /// The key went to the application, whole.
    bool reachedEditor(qint64 keyCode) const {
        return editor.pressesOf(keyCode) == 1 && editor.releasesOf(keyCode) == 1;
    }
    bool keptFromEditor(qint64 keyCode) const {
        return editor.pressesOf(keyCode) == 0 && editor.releasesOf(keyCode) == 0;
    }
    /// The claims of the running taps but those of shortcuts.
    int choiceKeysClaimed() const {
        int count = 0;
        for (const auto& tap : desktop.keyEventTaps.taps) {
            for (const ClaimableKey& key : tap->claimable)
                count += tap->isRunning() && (key.flags == 0) ? 1 : 0;
        }
        return count;
    }
    /// Quick actions of these slots, named after them.
    void storeActions(const std::vector<int>& slots) {
        veltrin.dataFolder = folder.path();
        std::vector<MemoryActionPreset> actions;
        for (const int slot : slots) {
            MemoryActionPreset action;
            action.id = QUuid::createUuid();
            action.title = QStringLiteral("Action%1").arg(slot);
            action.description = action.title;
            action.instruction = QStringLiteral("Write it shorter.");
            action.isQuickAction = true;
            action.shortcutSlot = slot;
            actions.push_back(action);
        }
        QFile file(folder.filePath(QStringLiteral("memory_actions.json")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(*writeRecords(actions));
    }

    LogCapture log;
    QTemporaryDir folder;
};

}  // namespace veltrin

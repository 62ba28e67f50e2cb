#pragma once

#include "AI/AgentTeamManager.h"
#include "App/SmartSelectOverlay.h"
#include "Data/HistoryStore.h"
#include "Data/PromptStore.h"
#include "unit/App/HandlerWorld.h"

namespace veltrin {

/// The icon and the popup over a selection with everything they stand on, on the simulated desktop.
struct SmartSelectWorld : HandlerWorld {
    SmartSelectOverlay::Parts parts() {
        return {desktop.runLoop, desktop.floatingPanels,
                desktop.screens, desktop.pasteboard,
                agents,          settings,
                sounds,          history,
                prompts,         expressions};
    }
    /// Opens the popup over a text as the user does.
    void open(const QString& text) {
        overlay->showIcon({600, 500}, text);
        click(PanelAction::open);
    }
    /// What the user clicks; false when it does not show.
    bool click(PanelAction action) {
        const bool done = desktop.floatingPanels.act(
            action == PanelAction::open ? PanelKind::selectionIcon : PanelKind::selectionPopup, action);
        desktop.runLoop.runDue();
        return done;
    }
    const FakeFloatingPanels::Record* icon() const {
        return desktop.floatingPanels.shownPanel(PanelKind::selectionIcon);
    }
    const FakeFloatingPanels::Record* popup() const {
        return desktop.floatingPanels.shownPanel(PanelKind::selectionPopup);
    }
    /// What the popup shows; it must.
    const SelectionContent& content() const { return popup()->spec.selection; }
    QString pasteboard() const { return desktop.pasteboard.string().text; }
    /// Puts an agent of that name into a slot.
    void assign(int slot, const QString& name, const QString& systemPrompt = QStringLiteral("语气亲切。")) {
        AgentProfile agent = AgentProfile::made({});
        agent.name = name;
        agent.icon = QStringLiteral("bubble.left.fill");
        agent.colorHex = QStringLiteral("#FDDC8A");
        agent.systemPrompt = systemPrompt;
        agents.append(agent);
        agents.assignAgent(agent.id, QStringLiteral("smartSelect"), slot);
    }

    AgentTeamManager agents{folder.path(), desktop.preferences, desktop.runLoop};
    HistoryStore history{folder.path(), desktop.runLoop};
    PromptStore prompts{folder.path(), desktop.runLoop};
    std::optional<SmartSelectOverlay> overlay{std::in_place, parts()};
};

}  // namespace veltrin

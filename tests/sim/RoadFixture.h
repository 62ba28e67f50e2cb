#pragma once

#include "support/fake/FakeKeyCodes.h"
#include "support/fake/SimulatedVeltrin.h"

#include <gtest/gtest.h>

namespace veltrin {

using Reply = SimulatedModel::Reply;

/// The program runs, an editor with one field has the keyboard, and the user has copied something before.
class RoadTest : public testing::Test {
protected:
    RoadTest() {
        desktop.pasteboard.put(QStringLiteral("mine"));
        desktop.focus(field);
        field.placeCaret(field.value.size());
    }
    ~RoadTest() override { EXPECT_TRUE(desktop.keyboard.down.empty()); }

    void launch() {
        veltrin.launch();
        ASSERT_TRUE(veltrin.runUntilIdle());
    }
    void store(const char* key, PreferenceValue value) {
        desktop.preferences.values.insert_or_assign(QString::fromUtf8(key), std::move(value));
    }
    void replaceOnlyTheCurrentPlace() { store("translation_replace_mode", QStringLiteral("current")); }
    void modelAnswers(const char* text, double delay = 0.2) {
        veltrin.model.answers(Reply::text(QString::fromUtf8(text), delay));
    }
    /// Lets the run come to its end.
    void finish() { EXPECT_TRUE(veltrin.runUntilIdle()); }
    std::optional<QString> message() const { return desktop.floatingPanels.shownText(PanelKind::text); }
    std::optional<QString> pill() const { return desktop.floatingPanels.shownText(PanelKind::statusPill); }
    QString copied() const { return desktop.pasteboard.peek().value_or(QStringLiteral("(nothing)")); }
    /// How the latest run ended, as the expression memory keeps it.
    std::optional<bool> remembered() {
        const auto events = veltrin.expressionMemory().load();
        return events.empty() ? std::nullopt : events.front().writebackSucceeded;
    }

    SimulatedVeltrin veltrin;
    FakeDesktop& desktop = veltrin.desktop;
    FakeApplication& editor = desktop.launch(QStringLiteral("Editor"), QStringLiteral("org.example.Editor"));
    FakeTextField& field = editor.addField(QStringLiteral("Guten Tag"));
    FakeApplication& browser =
        desktop.launch(QStringLiteral("Browser"), QStringLiteral("org.example.Browser"));
    FakeTextField& address = browser.addField(QStringLiteral("example.org"));
};

}  // namespace veltrin

#pragma once

#include "ExternalAccess/ExternalTextInputReader.h"
#include "ExternalAccess/ExternalTextWriteback.h"
#include "support/fake/FakeDesktop.h"
#include "support/fake/LogCapture.h"

#include <gtest/gtest.h>

#include <memory>

namespace veltrin::test {

class ScriptedClipboardRoad final : public ClipboardTextAccess {
public:
    ExternalTextReadResult readFocusedText(const QString&, const QString&, const PostTarget&) override {
        return {};
    }
    bool write(const QString& text, const ExternalTextReadResult&) override {
        written << text;
        return succeeds;
    }

    bool succeeds = true;
    QStringList written;
};

class WritebackTest : public testing::Test {
protected:
    WritebackTest() {
        desktop.focus(field);
        desktop.pasteboard.put(QStringLiteral("user's"));
    }
    ExternalTextReadResult read() {
        return ExternalTextInputReader(desktop.accessibility, desktop.workspace, desktop.preferences)
            .readFocusedText();
    }
    ExternalTextReadResult readSelecting(qint64 location, qint64 length) {
        field.select(location, length);
        return read();
    }
    ExternalTextWritebackResult apply(const QString& text, const ExternalTextReadResult& to,
                                      bool all = false) {
        auto result = writer->apply(text, to, all);
        desktop.advance(0.1);  // the keys arrive
        return result;
    }
    std::optional<QString> pasteboard() const { return desktop.pasteboard.peek(); }
    /// No paste can be posted, so that only direct writing is left.
    void refusePaste() { desktop.keyPoster.refusal = QStringLiteral("no"); }

    FakeDesktop desktop;
    FakeApplication& editor = desktop.launch(QStringLiteral("Editor"), QStringLiteral("org.editor"));
    FakeTextField& field = editor.addField(QStringLiteral("0123456789abcde fin"));
    ScriptedClipboardRoad road;
    std::unique_ptr<PasteboardLoan> loan =
        std::make_unique<PasteboardLoan>(desktop.pasteboard, desktop.runLoop);
    std::unique_ptr<ExternalTextWriteback> writer = std::make_unique<ExternalTextWriteback>(
        desktop.accessibility, desktop.workspace, *loan, desktop.keyPoster, desktop.runLoop, &road);
};

inline const ExternalTextWritebackResult pasted{true, WritebackStrategy::clipboardPaste,
                                                QStringLiteral("Applied via paste"), std::nullopt};
inline const ExternalTextWritebackResult written{true, WritebackStrategy::axValue, QStringLiteral("Applied"),
                                                 std::nullopt};
inline const ExternalTextWritebackResult failed{
    false, WritebackStrategy::none, QStringLiteral("Write failed"), WritebackFailure::writeFailed};

}  // namespace veltrin::test

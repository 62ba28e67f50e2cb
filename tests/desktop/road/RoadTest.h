#pragma once

#include "Foundation/Json.h"
#include "support/desktop/AtSpiProbe.h"
#include "support/desktop/ClipboardProbe.h"
#include "support/desktop/DesktopTest.h"
#include "support/desktop/Program.h"
#include "support/desktop/Typist.h"
#include "support/desktop/Waiting.h"
#include "support/service/ModelService.h"
#include "support/service/ServiceBehaviours.h"

#include <memory>
#include <optional>

namespace veltrin {

/// The program itself on the shared desktop, beside a stand-in model service and foreign editors.
class RoadTest : public DesktopTest {
protected:
    static inline const QString answer =
        QStringLiteral("Bonjour le monde, voilà 你好 👩‍👩‍👧.");

    void SetUp() override;
    void TearDown() override;

    /// Starts the program with these preferences over the ordinary ones (which name the stand-in service),
    /// and returns when its gestures work.
    Program& startProgram(const Json::Object& preferences = {});
    /// Starts it and returns at once.
    Program& startProgramUnready(const Json::Object& preferences = {}, const Environment& extra = {});
    Program& program() { return *program_; }

    ModelService& service() { return *service_; }
    /// From now on the service answers like this to everything but the question what models there are.
    void serve(const ServiceBehaviour& behaviour);
    /// The requests for a text, the warm-up's left out.
    std::vector<ServiceRequest> generations() const;
    bool waitForGeneration(std::size_t count = 1, double seconds = 5);

    /// The field of an editor that has just come up, once keys go there: its window is the active one, and
    /// the application says that the field has the focus.
    ProbedField fieldInFront(const Program& editor);

    /// Types `text` after a pause that makes it ordinary typing of its own, then waits out the idle guards.
    void typeSentence(const QString& text);
    /// Three taps that mean a translation.
    void tapTranslate();

    /// What the program has logged so far.
    QString log() const;
    bool waitForLog(const QString& line, double seconds = 5) const;
    int logCount(const QString& line) const;
    /// The windows of the program that are on the screen.
    QList<QRect> panels();

    QString logFile() const { return desktop().file(QStringLiteral("veltrin.log")); }
    QString preferencesFile() const {
        return desktop().configHome() + QStringLiteral("/Veltrin/preferences.json");
    }
    void writePreferences(const Json::Object& preferences);

    RealDesktop& desktop() const { return RealDesktop::shared(); }

private:
    std::unique_ptr<ModelService> service_;
    std::unique_ptr<Program> program_;
};

}  // namespace veltrin

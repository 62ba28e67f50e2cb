#include "desktop/road/RoadTest.h"

#include "support/Slowdown.h"

#include <QDir>
#include <QFile>

namespace veltrin {

void RoadTest::SetUp() {
    DesktopTest::SetUp();
    QFile::remove(logFile());
    QDir(desktop().configHome() + QStringLiteral("/Veltrin")).removeRecursively();
    service_ = std::make_unique<ModelService>();
    serve(ServiceBehaviours::success(answer));
}

void RoadTest::serve(const ServiceBehaviour& behaviour) {
    const auto models = ServiceBehaviours::models({QStringLiteral("qwen3:8b")});
    service_->setDefault([behaviour, models](const ServiceRequest& request) {
        return request.wire == ServiceWire::localTags ? models(request) : behaviour(request);
    });
}

void RoadTest::TearDown() {
    if (program_ && program_->isRunning()) {
        program_->terminate();
        EXPECT_TRUE(program_->waitForExit(10)) << "the program did not end on SIGTERM";
    }
    if (HasFailure()) {
        const QByteArray printed = program_ ? program_->output() : QByteArray();
        std::fprintf(stderr, "---- the program's output\n%s\n----\n", printed.constData());
    }
    program_.reset();
    service_.reset();
    DesktopTest::TearDown();
}

void RoadTest::writePreferences(const Json::Object& preferences) {
    QDir().mkpath(desktop().configHome() + QStringLiteral("/Veltrin"));
    QFile file(preferencesFile());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(Json(preferences).serialized(2));
}

Program& RoadTest::startProgramUnready(const Json::Object& preferences, const Environment& extra) {
    Json all(Json::Object{{QStringLiteral("ollama_endpoint"), service_->url()},
                          {QStringLiteral("translation_target_lang"), QStringLiteral("fr")}});
    for (const auto& [key, value] : preferences)
        all.set(key, value);
    writePreferences(*all.object());
    QFile::remove(logFile());
    program_ = std::make_unique<Program>(desktop(),
                                         QStringList{QStringLiteral(VELTRIN_BINARY_DIR "/bin/veltrin"),
                                                     QStringLiteral("--log-file"), logFile()},
                                         extra);
    return *program_;
}

Program& RoadTest::startProgram(const Json::Object& preferences) {
    startProgramUnready(preferences);
    EXPECT_TRUE(waitForLog(QStringLiteral("SpaceGestureEngine started successfully"), 20))
        << qPrintable(log());
    EXPECT_TRUE(waitForLog(QStringLiteral("Ollama warmup"), 20)) << qPrintable(log());
    return *program_;
}

std::vector<ServiceRequest> RoadTest::generations() const {
    auto requests = service_->requests();
    std::erase_if(requests, [](const ServiceRequest& request) {
        return request.wire == ServiceWire::localTags || request.prompt() == u"Reply OK.";
    });
    return requests;
}

bool RoadTest::waitForGeneration(std::size_t count, double seconds) {
    return waitUntil(seconds, [&] { return generations().size() >= count; });
}

ProbedField RoadTest::fieldInFront(const Program& editor) {
    const ProbedField field = atspi().waitForField(editor);
    EXPECT_TRUE(waitUntil(10 * patience, [&] {
        if (x().activeWindow() != editor.window()) x().activate(editor.window(), 1);
        return x().activeWindow() == editor.window() && atspi().read(field).focused;
    })) << "the field has not come to the front";
    return field;
}

void RoadTest::typeSentence(const QString& text) {
    typist().type(text);
    typist().pause(0.6);
}

void RoadTest::tapTranslate() {
    typist().tapSpace(3, 0.13);
}

QString RoadTest::log() const {
    QFile file(logFile());
    if (!file.open(QIODevice::ReadOnly)) return {};
    return QString::fromUtf8(file.readAll());
}

bool RoadTest::waitForLog(const QString& line, double seconds) const {
    return waitUntil(seconds, [&] { return log().contains(line); });
}

int RoadTest::logCount(const QString& line) const {
    return static_cast<int>(log().count(line));
}

QList<QRect> RoadTest::panels() {
    QList<QRect> found;
    for (const xcb_window_t window : x().rootChildren()) {
        if (x().processOf(window) == program_->pid() && x().isViewable(window)) found << x().geometry(window);
    }
    return found;
}

}  // namespace veltrin

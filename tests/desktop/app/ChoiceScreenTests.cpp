#include "desktop/app/ChoiceTest.h"

#include <QDir>
#include <QFile>

namespace veltrin {
namespace {

using namespace ServiceBehaviours;

/// A desktop of its own with screens of its own.
class ChoiceOnScreens : public testing::Test {
protected:
    void begin(const QList<QRect>& monitors, const QRect& window) {
        makeDesktop(monitors);
        startProgram();
        typeInto(Program::mousepad(*desktop_), window);
    }
    void makeDesktop(const QList<QRect>& monitors) {
        DesktopOptions options;
        options.monitors = monitors;
        desktop_.emplace(options);
    }
    void startProgram() {
        service_.setDefault(success(QStringLiteral("Better.")));
        const QString folder = desktop_->configHome() + QStringLiteral("/Veltrin");
        QDir().mkpath(folder);
        QFile file(folder + QStringLiteral("/preferences.json"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(Json(Json::Object{{QStringLiteral("ollama_endpoint"), service_.url()}}).serialized());
        file.close();
        program_.emplace(*desktop_,
                         QStringList{QStringLiteral(VELTRIN_BINARY_DIR "/bin/veltrin"),
                                     QStringLiteral("--log-file"), desktop_->file(QStringLiteral("v.log"))});
        ASSERT_TRUE(waitUntil(20, [&] {
            return program_->output().contains("SpaceGestureEngine started successfully");
        })) << program_->output().constData();
    }
    /// Types a word into an editor that is moved there, and taps for the choice.
    void typeInto(Program editor, const QRect& window) {
        editor_.emplace(std::move(editor));
        desktop_->x().moveResize(editor_->window(), window);
        AtSpiProbe atspi(*desktop_);
        atspi.waitForField(*editor_);
        Typist typist(*desktop_);
        typist.type(QStringLiteral("words"));
        typist.pause(0.7);
        typist.tapSpace(2, 0.13);
    }
    QRect panel(QSize size) {
        QRect found;
        waitUntil(5, [&] {
            for (const xcb_window_t window : desktop_->x().rootChildren()) {
                const QRect geometry = desktop_->x().geometry(window);
                if (geometry.size() == size && desktop_->x().processOf(window) == program_->pid())
                    found = geometry;
            }
            return !found.isNull();
        });
        return found;
    }
    std::optional<RealDesktop> desktop_;
    ModelService service_;
    std::optional<Program> program_;
    std::optional<Program> editor_;
};

TEST_F(ChoiceOnScreens, theChoiceStaysOnTheScreenOfItsAnchor) {
    begin({QRect(0, 0, 1000, 700), QRect(1000, 0, 800, 600)}, QRect(1010, 60, 500, 300));
    const QRect choice = panel(choiceSize);
    ASSERT_FALSE(choice.isNull()) << program_->output().constData();
    EXPECT_TRUE(QRect(1000, 0, 800, 600).adjusted(12, 12, -12, -12).contains(choice))
        << choice.x() << "," << choice.y();
    Typist(*desktop_).chord(QStringLiteral("Escape"));
}

TEST_F(ChoiceOnScreens, atTheBottomOfAScreenItKeepsItsMargin) {
    begin({QRect(0, 0, 1000, 600), QRect(1000, 0, 800, 600)}, QRect(300, 450, 500, 120));
    const QRect choice = panel(choiceSize);
    ASSERT_FALSE(choice.isNull()) << program_->output().constData();
    EXPECT_EQ(choice.bottom() + 1, 600 - 12);
    Typist(*desktop_).chord(QStringLiteral("Escape"));
}

/// As a display of small pixels is set up: texts are twice as large, and with them everything of ours.
TEST_F(ChoiceOnScreens, whereEverythingIsTwiceAsLargeItStandsBelowTheCaret) {
    makeDesktop({QRect(0, 0, 2560, 1600)});
    XDesktop& x = desktop_->x();
    const QByteArray resources = "Xft.dpi:\t192\n";
    xcb_change_property(x.connection(), XCB_PROP_MODE_REPLACE, x.root(), XCB_ATOM_RESOURCE_MANAGER,
                        XCB_ATOM_STRING, 8, static_cast<quint32>(resources.size()), resources.constData());
    x.sync();
    startProgram();
    typeInto(Program::mousepad(*desktop_), QRect(1100, 300, 1000, 600));
    const QRect choice = panel(choiceSize * 2);
    ASSERT_FALSE(choice.isNull()) << program_->output().constData();
    AtSpiProbe atspi(*desktop_);
    const ProbedField field = atspi.waitForField(*editor_);
    const qsizetype end = atspi.text(field).size();
    const QRect last = atspi.rangeExtents(field, end - 1, end);
    EXPECT_NEAR(choice.center().x(), last.right(), 12);
    EXPECT_NEAR(choice.top(), last.bottom() + 10, 6);
    if (const QString folder = qEnvironmentVariable("VELTRIN_SCREENSHOTS"); !folder.isEmpty())
        x.screenshot(folder + QStringLiteral("/enlarged.png"));
    Typist(*desktop_).chord(QStringLiteral("Escape"));
}

}  // namespace
}  // namespace veltrin

#include "support/desktop/DesktopTest.h"

#include <algorithm>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

/// How a desktop test is written: foreign programs on the shared desktop, a person at the keyboard and the
/// mouse, and what came of it read back by somebody else.
class SampleTest : public DesktopTest {};

TEST_F(SampleTest, textIsCarriedFromOneProgramToAnother) {
    // Programs are ready (on the screen and active) when they are returned, and ended with the test.
    Program source = Program::mousepad(desktop(), u"Grüße 👍 from the first program"_s);
    Program target = Program::qtEditor(desktop(), {u"--windows"_s, u"2"_s, u"--title"_s, u"Notes"_s});
    EXPECT_EQ(target.windows().size(), 2);
    EXPECT_EQ(x().title(x().activeWindow()), u"Notes"_s);

    // The user's clipboard, which the last one to copy takes over.
    clipboard().ownText(u"from before"_s);
    const int changes = clipboard().ownerChanges();

    // A field without a name is the focused one.
    ASSERT_TRUE(x().activate(source.window()));
    const ProbedField from = atspi().waitForField(source);
    atspi().select(from, 0, 8);
    EXPECT_EQ(atspi().read(from).selectedText(), u"Grüße 👍"_s);
    typist().chord(u"Ctrl+C"_s);
    ASSERT_TRUE(waitUntil(2, [&] { return clipboard().ownerChanges() > changes; }));
    EXPECT_EQ(clipboard().text(), u"Grüße 👍"_s);

    // By mouse into the one-line field of the window in front.
    ASSERT_TRUE(x().activate(target.windows().last()));
    QList<ProbedField> lines = atspi().fields(target.pid());
    lines.removeIf([](const ProbedField& field) { return field.name != u"Line"; });
    ASSERT_EQ(lines.size(), 2);
    for (const ProbedField& line : lines)
        atspi().setText(line, u"-> "_s);
    typist().click(atspi().extents(atspi().waitForField(target, u"Line"_s)).center());
    typist().tap(u"End"_s);

    // Where the test's own process has a part to play, its event loop runs while somebody types.
    typist().whileLoopRuns([](Typist& person) {
        person.chord(u"Ctrl+V"_s);
        person.tapSpace(3, 0.12);
        person.type(u"done"_s);
    });
    EXPECT_TRUE(waitUntil(5,
                          [&] {
                              return std::ranges::any_of(lines, [&](const ProbedField& line) {
                                  return atspi().text(line) == u"-> Grüße 👍   done"_s;
                              });
                          }))
        << atspi().text(lines[0]).toStdString() << " | " << atspi().text(lines[1]).toStdString();

    // What was on the screen, for tests of how something looks.
    EXPECT_TRUE(x().screenshot(desktop().file(u"end.png"_s)));
    // The fixture checks that no key, button or modifier stayed down.
}

}  // namespace
}  // namespace veltrin

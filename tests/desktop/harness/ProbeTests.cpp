#include "support/desktop/DesktopTest.h"

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

class Harness : public DesktopTest {};

TEST_F(Harness, whatIsTypedIntoMousepadIsReadBack) {
    Program program = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(program);
    typist().type(u"Dear all,\nsee (you) at 5:30!"_s);
    EXPECT_EQ(atspi().waitForText(field, u"Dear all,\nsee (you) at 5:30!"_s),
              u"Dear all,\nsee (you) at 5:30!"_s);
    const ProbedText read = atspi().read(field);
    EXPECT_EQ(read.caret, read.text.size());
    EXPECT_TRUE(read.focused);
}

TEST_F(Harness, selectionsAndCaretsCountUtf16WhateverTheToolkitCounts) {
    const QString text = u"a😀b你好 tail"_s;
    for (const bool isQt : {false, true}) {
        SCOPED_TRACE(isQt ? "Qt" : "GTK");
        Program program =
            isQt ? Program::qtEditor(desktop(), {u"--text"_s, text}) : Program::mousepad(desktop(), text);
        const ProbedField field = atspi().waitForField(program);
        EXPECT_EQ(atspi().waitForText(field, text), text);
        atspi().select(field, 3, 6);
        EXPECT_EQ(atspi().read(field).selectedText(), u"b你好"_s);
        atspi().setCaret(field, 4);
        const ProbedText read = atspi().read(field);
        EXPECT_EQ(read.caret, 4);
        EXPECT_TRUE(read.selections.isEmpty());
    }
}

TEST_F(Harness, everyKindOfEditorIsReadAndWritten) {
    const QString text = u"first line"_s;
    using Start = Program (*)(RealDesktop&, const QString&);
    for (const Start start :
         {&Program::mousepad, &Program::gedit, &Program::gnomeTextEditor, &Program::zenityEntry}) {
        const double begin = monotonicSeconds();
        Program program = start(desktop(), text);
        SCOPED_TRACE(x().title(program.window()).toStdString());
        const ProbedField field = atspi().waitForField(program);
        std::printf("%s: ready in %.0f ms\n", qPrintable(x().title(program.window())),
                    (monotonicSeconds() - begin) * 1000);
        EXPECT_EQ(atspi().waitForText(field, text), text);
        atspi().select(field, 0, 5);
        EXPECT_EQ(atspi().read(field).selectedText(), u"first"_s);
        typist().type(u"last"_s);
        EXPECT_EQ(atspi().waitForText(field, u"last line"_s), u"last line"_s);
        atspi().setText(field, u"anew"_s);
        EXPECT_EQ(atspi().text(field), u"anew"_s);
    }
}

TEST_F(Harness, aPasswordFieldIsKnownAsOne) {
    Program program = Program::qtEditor(desktop(), {u"--focus"_s, u"password"_s});
    const ProbedField field = atspi().waitForField(program);
    EXPECT_TRUE(field.password);
    EXPECT_EQ(field.name, u"Password"_s);
    Program other = Program::zenityPassword(desktop());
    EXPECT_TRUE(atspi().waitForField(other).password);
}

TEST_F(Harness, theClipboardComesBackByteForByte) {
    ClipboardSnapshot content = ClipboardSnapshot::ofText(u"plain ✓"_s);
    content.contents[u"text/html"_s] = "<b>plain ✓</b>";
    content.contents[u"application/x-veltrin-test"_s] = QByteArray("\0\1\xff", 3);
    content.contents[u"image/png"_s] = QByteArray(1500000, 'p') + QByteArray("\0end", 4);
    clipboard().own(content);
    ClipboardProbe reader(desktop());
    EXPECT_EQ(reader.snapshot(), content);
    EXPECT_EQ(reader.text(), u"plain ✓"_s);
    EXPECT_EQ(reader.read(u"image/gif"_s).status, ClipboardProbe::Answer::Status::refused);
    EXPECT_EQ(clipboard().requests().first().target, u"TARGETS"_s);

    clipboard().ownText(u"other"_s);
    EXPECT_NE(reader.snapshot(), content);
    EXPECT_TRUE(waitUntil(1, [&] { return reader.ownerChanges() == 1; }));
    EXPECT_EQ(clipboard().ownerChanges(), 2);
}

TEST_F(Harness, aSilentOwnerLeavesAReaderWithoutAnswer) {
    clipboard().ownSilently();
    ClipboardProbe reader(desktop());
    EXPECT_EQ(reader.read(u"UTF8_STRING"_s, 0.1).status, ClipboardProbe::Answer::Status::unanswered);
    EXPECT_EQ(clipboard().requests().size(), 1);
    clipboard().disown();
    EXPECT_FALSE(reader.hasOwner());
    EXPECT_EQ(reader.read(u"UTF8_STRING"_s).status, ClipboardProbe::Answer::Status::refused);
}

TEST_F(Harness, aProgramPastesWhatTheProbeOwns) {
    Program program = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(program);
    clipboard().ownText(u"pasted ✓"_s);
    typist().chord(u"Ctrl+V"_s);
    EXPECT_EQ(atspi().waitForText(field, u"pasted ✓"_s), u"pasted ✓"_s);
    typist().chord(u"Ctrl+A"_s);
    typist().chord(u"Ctrl+C"_s);
    EXPECT_TRUE(waitUntil(2, [&] { return !clipboard().isOwner(); }));
    EXPECT_EQ(clipboard().text(), u"pasted ✓"_s);
}

TEST_F(Harness, aStoppedProgramAnswersNothingUntilItGoesOn) {
    Program program = Program::mousepad(desktop(), u"text"_s);
    const ProbedField field = atspi().waitForField(program);
    program.stop();
    EXPECT_THROW(atspi().read(field), std::runtime_error);
    program.resume();
    EXPECT_EQ(atspi().text(field), u"text"_s);
}

}  // namespace
}  // namespace veltrin

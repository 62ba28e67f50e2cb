#include "Platform/Linux/X11/X11KeyPoster.h"
#include "Platform/Linux/X11/X11Pasteboard.h"
#include "desktop/x11/KeyTapTest.h"
#include "support/desktop/DesktopTest.h"

#include <ostream>
#include <string>

namespace veltrin {
namespace {

struct Layout {
    const char* name;  ///< as setxkbmap knows it
    int group;         ///< the one that is switched to
    /// The keys that mean Q, Z, C and V in that group, by what they carry in the first one, as X names it.
    const char* q;
    const char* z;
    const char* c;
    const char* v;
};
std::ostream& operator<<(std::ostream& out, const Layout& layout) {
    return out << layout.name << " group " << layout.group;
}

constexpr Layout layouts[] = {
    {"us", 0, "q", "z", "c", "v"},
    {"de", 0, "q", "z", "c", "v"},
    {"fr", 0, "q", "z", "c", "v"},
    {"ru", 0, "Cyrillic_shorti", "Cyrillic_ya", "Cyrillic_es", "Cyrillic_em"},
    {"cn", 0, "q", "z", "c", "v"},
    {"us,ru", 1, "q", "z", "c", "v"},
    {"ru,us", 0, "Cyrillic_shorti", "Cyrillic_ya", "Cyrillic_es", "Cyrillic_em"},
    {"ru,us", 1, "Cyrillic_shorti", "Cyrillic_ya", "Cyrillic_es", "Cyrillic_em"},
    {"us,de", 1, "q", "y", "c", "v"},
};

/// Loads the layout and switches to its group, as a layout switcher or an input method does.
void use(RealDesktop& desktop, const Layout& layout) {
    desktop.setKeyboardLayout(QString::fromLatin1(layout.name));
    const auto connection = X11Connection::open(desktop.display().toLatin1());
    xcb_xkb_latch_lock_state(connection->xcb(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1,
                             static_cast<quint8>(layout.group), 0, 0, 0);
    connection->roundTrip();
}

class KeyLayout : public KeyTapTest, public testing::WithParamInterface<Layout> {
protected:
    ~KeyLayout() override { use(desktop, layouts[0]); }
};

TEST_P(KeyLayout, shortcutsMeanTheirLettersAndAreClaimedBeforeAndAfterTheChange) {
    const auto& layout = GetParam();
    start({{KeyCode::q, KeyFlags::option, false}, {6, KeyFlags::option, false}});  // Q and Z
    answer = [](const KeyEvent& event) { return (event.flags & KeyFlags::option) == 0; };
    type([](Typist& t) { t.chord(QStringLiteral("Alt+z")); });
    ASSERT_TRUE(waitForEvents(2));
    use(desktop, layout);
    // The grabs move once the burst of notices is over: until then a key is told but not swallowed.
    ASSERT_TRUE(waitUntil(10, [&] {
        client.clear();
        type([&](Typist& t) {
            t.chord(QStringLiteral("Alt+") + QString::fromLatin1(layout.z));
            t.tap(QStringLiteral("F9"));
        });
        // Where it was claimed, the tap of a silent key stands in for it.
        return client.waitForKeys(6) && client.text().find("z") == std::string::npos &&
               client.text().find("_ya") == std::string::npos &&
               client.text().find("+y") == std::string::npos;
    })) << client.text();
    // The application has its key before it is told of.
    constexpr qint64 f9 = 101;
    ASSERT_TRUE(eventually(5, [&] {
        return !events.empty() && events.back().keyCode == f9 && events.back().type == KeyEventType::keyUp;
    }));
    events.clear();
    client.clear();
    type([&](Typist& t) {
        t.chord(QStringLiteral("Alt+") + QString::fromLatin1(layout.q));
        t.chord(QStringLiteral("Alt+") + QString::fromLatin1(layout.z));
        t.tap(QString::fromLatin1(layout.c));
        t.tap(QString::fromLatin1(layout.v));
    });
    ASSERT_TRUE(waitForEvents(8));
    EXPECT_EQ(words(events), "+12 -12 +6 -6 +8 -8 +9 -9");
    ASSERT_TRUE(waitUntil(3, [&] { return client.presses() >= 4; }));
    int letters = 0;
    for (const auto& key : client.keys())
        letters += key.isPress && (key.state & XCB_MOD_MASK_1) != 0 && key.code < 60 ? 1 : 0;
    EXPECT_EQ(letters, 0) << client.text();
}

INSTANTIATE_TEST_SUITE_P(Layouts, KeyLayout, testing::ValuesIn(layouts));

/// Copying and pasting in foreign editors under each layout, by posted keys.
class PostedKeys : public DesktopTest {
protected:
    PostedKeys()
        : connection(X11Connection::open(desktop().display().toLatin1())),
          windows(*connection),
          poster(windows, {}) {}

    void TearDown() override {
        use(desktop(), layouts[0]);
        DesktopTest::TearDown();
    }
    bool post(Program& program, qint64 key) {
        KeyPost chord;
        chord.keyCode = key;
        chord.flags = KeyFlags::command;
        chord.target.processIdentifier = program.pid();
        chord.target.window = program.window();
        // A program that has just been told of a new keymap may be too busy to answer at first.
        return waitUntil(5, [&] { return bool(poster.post(chord)); });
    }
    /// Selects all, copies, and pastes twice over it; then pastes another text over all.
    void copyAndPaste(Program& program, const ProbedField& field, bool hasLatinLetters = true) {
        const QString text = atspi().text(field);
        ASSERT_FALSE(text.isEmpty());
        X11Pasteboard pasteboard(desktop().display().toLatin1());
        ASSERT_TRUE(pasteboard.setString(QStringLiteral("before"), PasteboardContent::lasting));
        const auto selectAll = [&] {
            // Without Latin letters nothing that could be posted means it.
            if (hasLatinLetters) return post(program, KeyCode::a);
            atspi().select(field, 0, atspi().text(field).size());
            return true;
        };
        ASSERT_TRUE(selectAll());
        ASSERT_TRUE(post(program, KeyCode::c));
        ASSERT_TRUE(waitUntil(5, [&] { return clipboard().text() == text; }))
            << qPrintable(clipboard().text().value_or(QString()));
        ASSERT_TRUE(post(program, KeyCode::v));
        ASSERT_TRUE(post(program, KeyCode::v));
        EXPECT_EQ(atspi().waitForText(field, text + text), text + text);
        ASSERT_TRUE(selectAll());
        ASSERT_TRUE(pasteboard.setString(QStringLiteral("w\u00F6rter \u4F60"), PasteboardContent::temporary));
        ASSERT_TRUE(post(program, KeyCode::v));
        EXPECT_EQ(atspi().waitForText(field, QStringLiteral("w\u00F6rter \u4F60")),
                  QStringLiteral("w\u00F6rter \u4F60"));
    }
    void tryEveryLayout(Program& program) {
        const auto field = atspi().waitForField(program);
        for (const auto& layout : layouts) {
            SCOPED_TRACE(testing::Message() << layout);
            use(desktop(), layout);
            copyAndPaste(program, field, std::string(layout.name) != "ru");
            if (HasFatalFailure()) return;
        }
        use(desktop(), layouts[0]);
        for (const auto* lock : {"Caps_Lock", "Num_Lock"})
            typist().tap(QString::fromLatin1(lock));
        {
            SCOPED_TRACE("with Caps Lock and Num Lock");
            copyAndPaste(program, field);
        }
        for (const auto* lock : {"Caps_Lock", "Num_Lock"})
            typist().tap(QString::fromLatin1(lock));
    }

    std::unique_ptr<X11Connection> connection;
    X11Windows windows;
    X11KeyPoster poster;
};

TEST_F(PostedKeys, copyAndPasteInAGtk3EditorUnderEveryLayout) {
    auto editor = Program::mousepad(desktop(), QStringLiteral("the text"));
    tryEveryLayout(editor);
}

TEST_F(PostedKeys, copyAndPasteInAGtk4EditorUnderEveryLayout) {
    auto editor = Program::gnomeTextEditor(desktop(), QStringLiteral("the text"));
    tryEveryLayout(editor);
}

TEST_F(PostedKeys, copyAndPasteInAQtEditorUnderEveryLayout) {
    auto editor = Program::qtEditor(desktop(), {QStringLiteral("--text"), QStringLiteral("the text")});
    tryEveryLayout(editor);
}

}  // namespace
}  // namespace veltrin

#include "UI/Shortcuts/ShortcutCaptureModel.h"
#include "support/fake/FakePreferences.h"
#include "ui/InterfaceTest.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QKeyEvent>

#include <functional>

namespace veltrin {
namespace {

class ShortcutCapturing : public InterfaceTest {
protected:
    QQuickItem* makeRow(CustomShortcutAction action) {
        model_ = std::make_unique<ShortcutCaptureModel>(preferences_, *ShortcutCustomizer::row(action));
        QQuickItem* row = make(QStringLiteral("ShortcutCustomizer"),
                               {{QStringLiteral("title"), QStringLiteral("优化")},
                                {QStringLiteral("model"), QVariant::fromValue(model_.get())}});
        window().show();
        window().requestActivate();
        QCoreApplication::processEvents();
        return row;
    }
    bool press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QKeyEvent down(QEvent::KeyPress, key, modifiers);
        QCoreApplication::sendEvent(&window(), &down);
        return down.isAccepted();
    }
    /// What can be read on the row and its parts.
    QStringList words(QQuickItem* row) {
        QStringList found;
        const std::function<void(QAccessibleInterface*)> walk = [&](QAccessibleInterface* element) {
            found.append(element->text(QAccessible::Name));
            for (int index = 0; index < element->childCount(); ++index)
                walk(element->child(index));
        };
        walk(QAccessible::queryAccessibleInterface(row));
        return found;
    }
    std::optional<QString> stored(const char* key) { return preferences_.string(QString::fromLatin1(key)); }

    FakePreferences preferences_;
    std::unique_ptr<ShortcutCaptureModel> model_;
};

TEST_F(ShortcutCapturing, showsTheDefaultAndItsButtons) {
    QQuickItem* row = makeRow(CustomShortcutAction::voice);
    ASSERT_NE(row, nullptr);
    const QStringList all = words(row);
    EXPECT_TRUE(all.contains(QStringLiteral("Alt Space")));
    EXPECT_TRUE(all.contains(QStringLiteral("自定义")));
    EXPECT_TRUE(all.contains(QStringLiteral("恢复默认")));
}

TEST_F(ShortcutCapturing, waitsForKeysAndStoresWhatIsPressed) {
    QQuickItem* row = makeRow(CustomShortcutAction::optimize);
    ASSERT_NE(row, nullptr);
    model_->beginCapture();
    EXPECT_TRUE(words(row).contains(QStringLiteral("按下按键...")));
    EXPECT_TRUE(press(Qt::Key_K, Qt::ControlModifier | Qt::ShiftModifier));
    EXPECT_FALSE(model_->isRecording());
    EXPECT_EQ(stored("shortcut_optimize"), QStringLiteral("⌘⇧|K"));
    EXPECT_EQ(model_->keys(),
              (QStringList{QStringLiteral("Ctrl"), QStringLiteral("Shift"), QStringLiteral("K")}));
}

TEST_F(ShortcutCapturing, swallowsEveryKeyWhileItWaits) {
    ASSERT_NE(makeRow(CustomShortcutAction::voice), nullptr);
    model_->beginCapture();
    for (const int key : {Qt::Key_A, Qt::Key_Tab, Qt::Key_Return, Qt::Key_Left, Qt::Key_F1}) {
        EXPECT_TRUE(press(key));
        EXPECT_TRUE(model_->isRecording());
    }
    EXPECT_TRUE(press(Qt::Key_Space)) << "without a modifier it is not taken either";
    EXPECT_TRUE(model_->isRecording());
    EXPECT_TRUE(press(Qt::Key_Space, Qt::AltModifier | Qt::MetaModifier));
    EXPECT_EQ(stored("shortcut_voice"), QStringLiteral("⌥⌃|Space"));
    EXPECT_FALSE(press(Qt::Key_A)) << "afterwards keys belong to the window again";
}

TEST_F(ShortcutCapturing, aModifierAloneIsNoKey) {
    ASSERT_NE(makeRow(CustomShortcutAction::optimize), nullptr);
    model_->beginCapture();
    for (const int key :
         {Qt::Key_Shift, Qt::Key_Control, Qt::Key_Alt, Qt::Key_Super_L, Qt::Key_CapsLock, Qt::Key_AltGr})
        press(key);
    EXPECT_TRUE(model_->isRecording());
    EXPECT_FALSE(stored("shortcut_optimize"));
}

TEST_F(ShortcutCapturing, escapeCancels) {
    ASSERT_NE(makeRow(CustomShortcutAction::optimize), nullptr);
    model_->beginCapture();
    EXPECT_TRUE(press(Qt::Key_Escape));
    EXPECT_FALSE(model_->isRecording());
    EXPECT_FALSE(stored("shortcut_optimize"));
}

TEST_F(ShortcutCapturing, losingTheFocusEndsIt) {
    QQuickItem* row = makeRow(CustomShortcutAction::optimize);
    ASSERT_NE(row, nullptr);
    QQuickItem* other = makeFrom("VtButton { text: 'x' }");
    ASSERT_NE(other, nullptr);
    model_->beginCapture();
    other->forceActiveFocus();
    EXPECT_FALSE(model_->isRecording());
}

TEST_F(ShortcutCapturing, restoringRemovesWhatWasStored) {
    preferences_.set(QStringLiteral("shortcut_voice"), QStringLiteral("⌘|Space"));
    QQuickItem* row = makeRow(CustomShortcutAction::voice);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(model_->keys(), (QStringList{QStringLiteral("Ctrl"), QStringLiteral("Space")}));
    model_->restoreDefaults();
    EXPECT_FALSE(stored("shortcut_voice"));
    EXPECT_EQ(model_->keys(), (QStringList{QStringLiteral("Alt"), QStringLiteral("Space")}));
}

TEST_F(ShortcutCapturing, anArrowIsNamedLikeAFunctionKey) {
    // The capture's names by position, which the matching does not share: meant so.
    ASSERT_NE(makeRow(CustomShortcutAction::optimize), nullptr);
    model_->beginCapture();
    press(Qt::Key_Left, Qt::ControlModifier);
    EXPECT_EQ(stored("shortcut_optimize"), QStringLiteral("⌘|F2"));
    model_->beginCapture();
    press(Qt::Key_F2, Qt::ControlModifier);
    EXPECT_EQ(stored("shortcut_optimize"), QStringLiteral("⌘|?"));
}

TEST_F(ShortcutCapturing, theVoiceRowSaysWhatItTakes) {
    QQuickItem* row = makeRow(CustomShortcutAction::voice);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(model_->captureHint(), QStringLiteral("按修饰键 + Space"));
}

}  // namespace
}  // namespace veltrin

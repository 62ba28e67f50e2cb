#include "Data/AppSettings.h"
#include "Platform/DesktopAppearance.h"
#include "Platform/Linux/LinuxDesktopAppearance.h"
#include "UI/Design/LookSource.h"
#include "UI/Design/VtFonts.h"
#include "UI/Design/VtTheme.h"
#include "support/fake/FakePreferences.h"
#include "support/fake/FakeSystemEnvironment.h"
#include "ui/InterfaceTest.h"

#include <QDBusConnection>
#include <QDir>
#include <QFile>
#include <QFontInfo>
#include <QGuiApplication>
#include <QRawFont>
#include <QTemporaryDir>

namespace veltrin {
namespace {

class FakeDesktopAppearance final : public DesktopAppearance {
public:
    bool isDark() const override { return dark; }
    bool reducesMotion() const override { return reduced; }
    bool dark = false;
    bool reduced = false;
};

class Look : public InterfaceTest {
protected:
    FakePreferences preferences_;
    NotificationCenter notifications_;
    FakeSystemEnvironment environment_;
    AppSettings settings_{preferences_, notifications_, environment_};
    FakeDesktopAppearance desktop_;
};

TEST_F(Look, popupsFollowTheSettingAndTheDesktopOnlyWhenItSaysSo) {
    const LookSource source(look_, settings_, desktop_);
    EXPECT_FALSE(look_.popupDark());
    desktop_.dark = true;
    desktop_.changed.notify();
    EXPECT_TRUE(look_.popupDark());
    settings_.popupAppearance.set(PopupAppearance::light);
    EXPECT_FALSE(look_.popupDark());
    settings_.popupAppearance.set(PopupAppearance::invertedBlack);
    desktop_.dark = false;
    desktop_.changed.notify();
    EXPECT_TRUE(look_.popupDark());
}

TEST_F(Look, windowsFollowTheirOwnSetting) {
    const LookSource source(look_, settings_, desktop_);
    settings_.appAppearance.set(AppAppearanceMode::dark);
    EXPECT_TRUE(look_.windowDark());
    EXPECT_FALSE(look_.popupDark());
    settings_.appAppearance.set(AppAppearanceMode::light);
    EXPECT_FALSE(look_.windowDark());
}

TEST_F(Look, theLanguageAndTheMotionFollow) {
    const LookSource source(look_, settings_, desktop_);
    EXPECT_FALSE(look_.english());
    settings_.interfaceLanguage.set(AppLanguage::english);
    EXPECT_TRUE(look_.english());
    desktop_.reduced = true;
    desktop_.changed.notify();
    EXPECT_TRUE(look_.reducedMotion());
}

TEST_F(Look, textsOnTheScreenChangeWithTheLanguage) {
    QQuickItem* text = makeFrom("VtText { text: L.t('设置', 'Settings') }");
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->property("text").toString(), QStringLiteral("设置"));
    look_.setEnglish(true);
    EXPECT_EQ(text->property("text").toString(), QStringLiteral("Settings"));
    look_.setEnglish(false);
    EXPECT_EQ(text->property("text").toString(), QStringLiteral("设置"));
}

TEST_F(Look, coloursOnTheScreenChangeWithTheAppearance) {
    QQuickItem* window = makeFrom("VtText { text: 'a' }");
    QQuickItem* popup = makeFrom("VtText { text: 'a'; theme: PopupTheme.current }");
    ASSERT_TRUE(window != nullptr && popup != nullptr);
    EXPECT_EQ(window->property("color").value<QColor>(), Tokens::windowLight().text);
    look_.setWindowDark(true);
    EXPECT_EQ(window->property("color").value<QColor>(), Tokens::windowDark().text);
    EXPECT_EQ(popup->property("color").value<QColor>(), Tokens::popupLight().text);
    look_.setPopupDark(true);
    EXPECT_EQ(popup->property("color").value<QColor>(), Tokens::popupInvertedBlack().text);
}

TEST_F(Look, nothingTakesTimeWhenTheUserWantsLessMotion) {
    QQuickItem* item =
        makeFrom("Item { property int quick: VtTheme.quick; property int slow: VtTheme.slow }");
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->property("quick").toInt(), 120);
    look_.setReducedMotion(true);
    EXPECT_EQ(item->property("quick").toInt(), 0);
    EXPECT_EQ(item->property("slow").toInt(), 0);
}

TEST_F(Look, latinTextIsInterAndChineseHasItsOwnForms) {
    EXPECT_EQ(QGuiApplication::font().families(), VtFonts::families());
    const QFontInfo latin(QGuiApplication::font());
    EXPECT_EQ(latin.family(), QStringLiteral("Inter"));
    // What stands at its place in the list has the characters.
    QFont chinese;
    chinese.setFamily(QStringLiteral("Noto Sans CJK SC"));
    EXPECT_EQ(QFontInfo(chinese).family(), QStringLiteral("Noto Sans CJK SC"));
    EXPECT_TRUE(QRawFont::fromFont(chinese).supportsCharacter(QChar(u'优')));
}

TEST_F(Look, aMissingFontIsPassedOver) {
    QFont font;
    font.setFamilies(QStringList{QStringLiteral("No Such Family")} + VtFonts::families());
    EXPECT_EQ(QFontInfo(font).family(), QStringLiteral("Inter"));
}

// MARK: The desktop's look without a portal

class DesktopLook : public testing::Test {
protected:
    void writeSettings(const QByteArray& text) {
        QDir(folder_.path()).mkpath(QStringLiteral("gtk-3.0"));
        QFile file(folder_.filePath(QStringLiteral("gtk-3.0/settings.ini")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    QTemporaryDir folder_;
};

TEST_F(DesktopLook, isLightAndMovesWhereNobodySaysAnything) {
    const LinuxDesktopAppearance look(QDBusConnection(QStringLiteral("no bus")), folder_.path());
    EXPECT_FALSE(look.isDark());
    EXPECT_FALSE(look.reducesMotion());
}

TEST_F(DesktopLook, followsGtksSettings) {
    writeSettings("[Settings]\ngtk-application-prefer-dark-theme=1\ngtk-enable-animations = false\n");
    const LinuxDesktopAppearance look(QDBusConnection(QStringLiteral("no bus")), folder_.path());
    EXPECT_TRUE(look.isDark());
    EXPECT_TRUE(look.reducesMotion());
}

TEST_F(DesktopLook, takesAThemesNameForItsDarkness) {
    writeSettings("[Settings]\ngtk-theme-name=Adwaita-dark\n");
    const LinuxDesktopAppearance look(QDBusConnection(QStringLiteral("no bus")), folder_.path());
    EXPECT_TRUE(look.isDark());
}

TEST_F(DesktopLook, outlivesSettingsThatAreNone) {
    writeSettings(QByteArray("\xFF\xFE==\n=\n[") + QByteArray(1000000, 'x'));
    const LinuxDesktopAppearance look(QDBusConnection(QStringLiteral("no bus")), folder_.path());
    EXPECT_FALSE(look.isDark());
}

}  // namespace
}  // namespace veltrin

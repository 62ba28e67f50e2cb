#include "App/AppMenu.h"

#include <QStringList>

#include <gtest/gtest.h>

namespace veltrin {
namespace {

QStringList lines(const AppSubmenu& menu) {
    QStringList lines;
    for (const AppMenuItem& item : menu.items)
        lines << (item.isSeparator() ? QStringLiteral("-") : item.title + u'|' + item.keyEquivalent);
    return lines;
}

TEST(AppMenuTest, theApplicationMenuBearsTheProcessName) {
    const AppSubmenu menu = AppMenu::appMenuItem(QStringLiteral("Veltrin"));
    EXPECT_EQ(menu.title, QStringLiteral("Veltrin"));
    EXPECT_FALSE(menu.isWindowsMenu);
    EXPECT_EQ(lines(menu), (QStringList{QStringLiteral("About Veltrin|"), QStringLiteral("-"),
                                        QStringLiteral("Hide Veltrin|⌘H"), QStringLiteral("Hide Others|⌥⌘H"),
                                        QStringLiteral("Show All|"), QStringLiteral("-"),
                                        QStringLiteral("Quit Veltrin|⌘Q")}));
}

TEST(AppMenuTest, theEditMenu) {
    const AppSubmenu menu = AppMenu::editMenuItem();
    EXPECT_EQ(menu.title, QStringLiteral("Edit"));
    EXPECT_EQ(lines(menu),
              (QStringList{QStringLiteral("Undo|⌘Z"), QStringLiteral("Redo|⇧⌘Z"), QStringLiteral("-"),
                           QStringLiteral("Cut|⌘X"), QStringLiteral("Copy|⌘C"), QStringLiteral("Paste|⌘V"),
                           QStringLiteral("Paste and Match Style|⌥⇧⌘V"), QStringLiteral("Delete|"),
                           QStringLiteral("-"), QStringLiteral("Select All|⌘A")}));
}

TEST(AppMenuTest, theWindowMenuIsTheWindowsMenu) {
    const AppSubmenu menu = AppMenu::windowMenuItem();
    EXPECT_EQ(menu.title, QStringLiteral("Window"));
    EXPECT_TRUE(menu.isWindowsMenu);
    EXPECT_EQ(lines(menu), (QStringList{QStringLiteral("Minimize|⌘M"), QStringLiteral("Zoom|")}));
}

}  // namespace
}  // namespace veltrin

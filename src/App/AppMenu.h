#pragma once

#include <QString>

#include <vector>

namespace veltrin {

/// One line of a menu: a title with its key equivalent, or a separator. English only, in both interface
/// languages.
struct AppMenuItem {
    QString title;          ///< empty for a separator
    QString keyEquivalent;  ///< in the product's symbols, as "⌥⌘H"; empty when there is none
    bool isSeparator() const { return title.isEmpty(); }
};

struct AppSubmenu {
    QString title;
    std::vector<AppMenuItem> items;
    bool isWindowsMenu = false;
};

/// The application's main menu, as data; the interface builds its real menu from it.
namespace AppMenu {
AppSubmenu appMenuItem(const QString& processName);
AppSubmenu editMenuItem();
AppSubmenu windowMenuItem();
}  // namespace AppMenu

}  // namespace veltrin

#include "App/AppMenu.h"

namespace veltrin::AppMenu {
namespace {
const AppMenuItem separator{};
}

AppSubmenu appMenuItem(const QString& processName) {
    return {processName,
            {{QStringLiteral("About ") + processName, {}},
             separator,
             {QStringLiteral("Hide ") + processName, QStringLiteral("⌘H")},
             {QStringLiteral("Hide Others"), QStringLiteral("⌥⌘H")},
             {QStringLiteral("Show All"), {}},
             separator,
             {QStringLiteral("Quit ") + processName, QStringLiteral("⌘Q")}}};
}

AppSubmenu editMenuItem() {
    return {QStringLiteral("Edit"),
            {{QStringLiteral("Undo"), QStringLiteral("⌘Z")},
             {QStringLiteral("Redo"), QStringLiteral("⇧⌘Z")},
             separator,
             {QStringLiteral("Cut"), QStringLiteral("⌘X")},
             {QStringLiteral("Copy"), QStringLiteral("⌘C")},
             {QStringLiteral("Paste"), QStringLiteral("⌘V")},
             {QStringLiteral("Paste and Match Style"), QStringLiteral("⌥⇧⌘V")},
             {QStringLiteral("Delete"), {}},
             separator,
             {QStringLiteral("Select All"), QStringLiteral("⌘A")}}};
}

AppSubmenu windowMenuItem() {
    return {QStringLiteral("Window"),
            {{QStringLiteral("Minimize"), QStringLiteral("⌘M")}, {QStringLiteral("Zoom"), {}}},
            true};
}

}  // namespace veltrin::AppMenu

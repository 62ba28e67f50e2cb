#include "App/GalleryMode.h"

#include "Platform/Linux/FilePreferences.h"
#include "Platform/Linux/LinuxDesktopAppearance.h"
#include "Platform/Linux/X11/X11Connection.h"
#include "Platform/Linux/X11/X11Keymap.h"
#include "UI/Design/VtLook.h"
#include "UI/Gallery/Gallery.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QTemporaryDir>

#include <cstdio>

namespace veltrin {
namespace {

const QString galleryOption = QStringLiteral("gallery");
const QString themeOption = QStringLiteral("gallery-theme");
const QString languageOption = QStringLiteral("gallery-language");
const QString pictureOption = QStringLiteral("gallery-picture");

}  // namespace

void GalleryMode::addOptions(QCommandLineParser& parser) {
    parser.addOptions({
        {galleryOption, QStringLiteral("Show every element of the interface, for developers.")},
        {themeOption, QStringLiteral("In that page: light or dark, else the desktop's."),
         QStringLiteral("theme")},
        {languageOption, QStringLiteral("In that page: zh or en."), QStringLiteral("language"),
         QStringLiteral("zh")},
        {pictureOption, QStringLiteral("Write that page to <file> and end."), QStringLiteral("file")},
    });
}

bool GalleryMode::isWanted(const QCommandLineParser& parser) {
    return parser.isSet(galleryOption);
}

int GalleryMode::run(const QCommandLineParser& parser) {
    VtLook look(nullptr);
    look.setEnglish(parser.value(languageOption) == u"en");
    LinuxDesktopAppearance appearance;
    const auto follow = [&] {
        const bool isDark =
            parser.isSet(themeOption) ? parser.value(themeOption) == u"dark" : appearance.isDark();
        look.setWindowDark(isDark);
        look.setPopupDark(isDark);
    };
    follow();
    const Subscription subscription = appearance.changed.subscribe(follow);
    // What is tried on the page is nobody's setting.
    const QTemporaryDir folder;
    FilePreferences preferences(folder.filePath(QStringLiteral("preferences.json")));
    const auto connection = X11Connection::open();
    const auto keymap = X11Keymap::load(*connection);
    Gallery gallery(look, preferences, [keymap](const PressedKey& key) {
        return keymap ? keymap->virtualCode(static_cast<X11Keymap::Keycode>(key.scanCode), key.group)
                      : keyCodeByMeaning(key);
    });
    if (gallery.window() == nullptr) {
        std::fprintf(stderr, "%s\n", qPrintable(gallery.problem()));
        return 1;
    }
    if (parser.isSet(pictureOption)) {
        look.setReducedMotion(true);  // the same picture every time
        return gallery.save(parser.value(pictureOption)) ? 0 : 1;
    }
    QGuiApplication::setQuitOnLastWindowClosed(true);
    gallery.window()->show();
    return QGuiApplication::exec();
}

}  // namespace veltrin

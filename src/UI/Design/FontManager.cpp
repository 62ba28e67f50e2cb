#include "UI/Design/FontManager.h"

#include "Foundation/MVPLog.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFontDatabase>

namespace veltrin {
namespace {

/// As such a file begins, whichever outlines it holds.
bool looksLikeFont(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return false;
    const QByteArray tag = file.read(4);
    return tag == "OTTO" || tag == QByteArray("\0\1\0\0", 4) || tag == "true" || tag == "ttcf";
}

}  // namespace

QString FontManager::applicationFonts() {
    return QCoreApplication::applicationDirPath() + QStringLiteral("/../share/veltrin/Fonts");
}

void FontManager::registerAll(const QString& folder) {
    const QDir fonts(folder);
    for (const QString& name : fonts.entryList({QStringLiteral("*.otf")}, QDir::Files, QDir::Name))
        registerFont(fonts.filePath(name));
}

bool FontManager::registerFont(const QString& path) {
    if (!looksLikeFont(path)) {
        MVPLog::write(QStringLiteral("FontManager: failed to create CGFont from ") + path);
        return false;
    }
    if (QFontDatabase::addApplicationFont(path) >= 0) return true;
    MVPLog::write(QStringLiteral("FontManager: register failed for ") + path);
    return false;
}

}  // namespace veltrin

#pragma once

#include <QString>

namespace veltrin::FontManager {

/// The folder of fonts that come with the program; it may be missing.
QString applicationFonts();
/// Registers every "otf" font of the folder. One that is broken is logged and left out. Needs a
/// QGuiApplication.
void registerAll(const QString& folder = applicationFonts());
/// False when there is no such font, or it cannot be used.
bool registerFont(const QString& path);

}  // namespace veltrin::FontManager

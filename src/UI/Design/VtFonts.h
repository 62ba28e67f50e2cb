#pragma once

#include <QStringList>

namespace veltrin::VtFonts {

/// The families of the interface, the most wanted first. A missing one is passed over; Chinese stands before
/// the system's own choice, which would often be the Japanese forms.
QStringList families();

/// Makes them the application's font. After the application object, before the first window.
void install();

}  // namespace veltrin::VtFonts

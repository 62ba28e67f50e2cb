#pragma once

#include "support/fields/FieldDriver.h"

#include <QRectF>

namespace veltrin {

/// Where a passage of a field is on the screen, by the pixels within `area` that selecting it changes; empty
/// when none do. Leaves it selected.
QRectF passageOnScreen(XDesktop& x, const QRect& area, FieldDriver& field, qsizetype start, qsizetype end);

}  // namespace veltrin

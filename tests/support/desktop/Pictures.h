#pragma once

#include <QImage>
#include <QRect>

namespace veltrin {

/// The smallest rectangle that holds all pixels in which two pictures of one size differ.
QRect difference(const QImage& before, const QImage& after);

}  // namespace veltrin

#include "support/desktop/Pictures.h"

#include <algorithm>

namespace veltrin {

QRect difference(const QImage& before, const QImage& after) {
    QRect found;
    for (int y = 0; y < before.height(); ++y) {
        const auto* a = reinterpret_cast<const QRgb*>(before.constScanLine(y));
        const auto* b = reinterpret_cast<const QRgb*>(after.constScanLine(y));
        if (std::equal(a, a + before.width(), b)) continue;
        for (int x = 0; x < before.width(); ++x) {
            if (a[x] != b[x]) found = found.united(QRect(x, y, 1, 1));
        }
    }
    return found;
}

}  // namespace veltrin

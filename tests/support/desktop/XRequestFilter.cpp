#include "support/desktop/XRequestFilter.h"

#include <algorithm>

namespace veltrin {
namespace {

constexpr char queryExtension = 98;

qsizetype padded(qsizetype length) {
    return (length + 3) / 4 * 4;
}

}  // namespace

quint32 XRequestFilter::number(qsizetype at, int bytes) const {
    quint32 value = 0;
    for (int index = 0; index < bytes; ++index) {
        const qsizetype place = isBigEndian_ ? at + index : at + bytes - 1 - index;
        value = value << 8U | static_cast<quint8>(pending_.at(place));
    }
    return value;
}

qsizetype XRequestFilter::headLength() const {
    if (!isSetUp_) {
        // Byte order, versions, then the lengths of an authorisation's name and data.
        if (pending_.size() < 12) return 0;
        return 12 + padded(number(6, 2)) + padded(number(8, 2));
    }
    if (pending_.size() < 4) return 0;
    if (const quint32 words = number(2, 2); words != 0) return qsizetype(words) * 4;
    // A zero says that the length stands in the next four bytes (BIG-REQUESTS).
    return pending_.size() < 8 ? 0 : qsizetype(number(4, 4)) * 4;
}

void XRequestFilter::rename(QByteArray& request) const {
    for (const QByteArray& name : missing_) {
        // A name of the same length, which no server knows.
        if (request.mid(8, name.size()) == name && request.size() == 8 + padded(name.size())) {
            request.replace(8, name.size(), QByteArray(name.size(), '-'));
        }
    }
}

QByteArray XRequestFilter::pass(const QByteArray& received) {
    QByteArray out;
    pending_ += received;
    for (;;) {
        const qsizetype skipped = std::min(unchanged_, pending_.size());
        out += pending_.left(skipped);
        pending_.remove(0, skipped);
        unchanged_ -= skipped;
        if (pending_.isEmpty() || unchanged_ > 0) return out;

        if (!isSetUp_) isBigEndian_ = pending_.at(0) == 'B';
        const qsizetype length = headLength();
        if (length == 0) return out;
        if (!isSetUp_ || pending_.at(0) != queryExtension) {
            isSetUp_ = true;
            unchanged_ = length;
            continue;
        }
        if (pending_.size() < length) return out;
        QByteArray request = pending_.left(length);
        pending_.remove(0, length);
        rename(request);
        out += request;
    }
}

}  // namespace veltrin

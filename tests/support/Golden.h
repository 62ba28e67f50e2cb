#pragma once

#include <QFile>
#include <QString>

#include <stdexcept>

namespace veltrin {

/// A text that was written down by hand: the file of that name under tests/unit/AI/golden, without the line
/// feed that ends it.
inline QString golden(const QString& name) {
    QFile file(QStringLiteral(VELTRIN_SOURCE_DIR "/tests/unit/AI/golden/") + name + QStringLiteral(".txt"));
    if (!file.open(QIODevice::ReadOnly)) throw std::runtime_error("no golden file " + name.toStdString());
    QString text = QString::fromUtf8(file.readAll());
    if (text.endsWith(u'\n')) text.chop(1);
    return text;
}

}  // namespace veltrin

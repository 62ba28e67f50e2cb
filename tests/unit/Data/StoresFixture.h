#pragma once

#include "support/fake/FakeRunLoop.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <vector>

namespace veltrin {

/// The titles of records, in their order.
template <typename R>
QStringList titles(const std::vector<R>& records) {
    QStringList titles;
    for (const R& each : records)
        titles << each.title;
    return titles;
}

/// A data directory of the test's own and a clock.
class StoresFixture : public testing::Test {
protected:
    StoresFixture() { loop.wallStart = 1795255200.0 - loop.now(); }  // 2026-11-21T10:00:00Z

    QString folder() const { return home_.path() + QStringLiteral("/Veltrin"); }
    QString path(const QString& name) const { return folder() + u'/' + name; }
    void put(const QString& name, const QByteArray& bytes) const {
        QDir().mkpath(folder());
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }
    QByteArray bytesOf(const QString& name) const {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }

    FakeRunLoop loop;

private:
    QTemporaryDir home_;
};

}  // namespace veltrin

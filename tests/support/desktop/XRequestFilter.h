#pragma once

#include <QByteArray>
#include <QList>

namespace veltrin {

/// Reads the stream of requests of one X client and renames the extensions it asks for that shall be missing.
class XRequestFilter {
public:
    explicit XRequestFilter(QList<QByteArray> missing) : missing_(std::move(missing)) {}

    /// Takes what a client sent and gives what goes on to the server now. Incomplete requests wait for their
    /// rest only where they may have to be changed.
    QByteArray pass(const QByteArray& received);

private:
    QList<QByteArray> missing_;
    QByteArray pending_;
    qsizetype unchanged_ = 0;  ///< bytes still to pass of a request that was seen to be another one
    bool isSetUp_ = false;
    bool isBigEndian_ = false;

    quint32 number(qsizetype at, int bytes) const;
    /// Length of what stands at the head of `pending_`; 0 when too little of it has come to say.
    qsizetype headLength() const;
    void rename(QByteArray& request) const;
};

}  // namespace veltrin

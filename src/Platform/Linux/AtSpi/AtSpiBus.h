#pragma once

#include "Platform/Linux/AtSpi/AtSpiProtocol.h"

#include <QDBusConnection>
#include <QDBusPendingCall>
#include <QObject>
#include <QSemaphore>
#include <QTimer>

#include <atomic>
#include <chrono>

namespace veltrin::AtSpi {

using Milliseconds = std::chrono::milliseconds;

/// The connection to the accessibility bus: found through the session bus, kept, and sought again with
/// growing intervals when it is not there or breaks. It also remembers which applications have stopped
/// answering. Lives on the worker's thread; only `isReady` and `waitForFirstAttempt` are for others.
class AtSpiBus : public QObject {
    Q_OBJECT

public:
    AtSpiBus();
    ~AtSpiBus() override;

    /// Turns accessibility on, connects, and asks the registry for a sign of life; retries for ever if that
    /// fails. Takes at most some seconds, when the bus has to be launched.
    void connectNow();

    /// Whether the registry has answered on the connection that stands. Any thread.
    bool isReady() const { return isReady_.load(std::memory_order_acquire); }
    /// Waits until `connectNow` was through once. Any thread.
    bool waitForFirstAttempt(Milliseconds limit);

    /// Sends a call; the reply, or the time-out, comes through the result.
    QDBusPendingCall send(const ObjectAddress& to, const char* interface, const char* method,
                          const QVariantList& arguments, Milliseconds timeout) const;
    QDBusConnection connection() const { return connection_; }

    /// How long an answer of that connection is worth waiting for: 250 ms; once it has failed to answer, 50
    /// ms now and then and nothing in between, until it answers.
    Milliseconds patience(const QString& bus);
    void noteSilence(const QString& bus);
    void noteAnswer(const QString& bus);

Q_SIGNALS:
    void opened();
    void registryRestarted();
    void applicationGone(const QString& bus);

private Q_SLOTS:
    void nameOwnerChanged(const QString& name, const QString& former, const QString& owner);
    void disconnected();

private:
    struct Silence {
        std::chrono::steady_clock::time_point lastWait;
    };
    QString addressFromSession();
    bool open();
    void close();

    QDBusConnection connection_;
    std::atomic<bool> isReady_ = false;
    QSemaphore firstAttempt_;
    QTimer retry_;
    Milliseconds retryInterval_;
    bool hasReportedFailure_ = false;
    QHash<QString, Silence> silent_;
};

}  // namespace veltrin::AtSpi

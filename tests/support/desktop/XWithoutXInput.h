#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace veltrin {

/// A display that is a desktop's own server but for some extensions it seems not to have: a forwarder between
/// its clients and the real server. By default XInput is missing. Clients ask by QueryExtension, which is
/// what is changed; ListExtensions still tells the truth. MIT-SHM is always missing, since descriptors do not
/// pass through here.
///
/// Works on a thread of its own from construction to destruction, which cuts all connections.
class XWithoutXInput {
public:
    /// `server` is the real display, ":N". Throws std::runtime_error when no display number is free.
    explicit XWithoutXInput(const QString& server, QList<QByteArray> missing = {"XInputExtension"});
    ~XWithoutXInput();
    XWithoutXInput(const XWithoutXInput&) = delete;
    XWithoutXInput& operator=(const XWithoutXInput&) = delete;

    /// The display to give to clients, ":M".
    QString display() const { return display_; }
    /// Cuts all present connections, as a dying server would; new ones are still taken.
    void cutConnections() { cut_ = true; }

private:
    class Connection;

    QByteArray serverSocket_;
    QList<QByteArray> missing_;
    QString display_;
    QByteArray socketPath_;
    QByteArray lockPath_;
    int listener_ = -1;
    std::atomic<bool> ends_ = false;
    std::atomic<bool> cut_ = false;
    std::vector<std::unique_ptr<Connection>> connections_;
    std::thread thread_;

    void claimDisplay();
    void run();
    void accept();
};

}  // namespace veltrin

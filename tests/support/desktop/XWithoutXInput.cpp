#include "support/desktop/XWithoutXInput.h"

#include "support/desktop/XRequestFilter.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <stdexcept>

namespace veltrin {
namespace {

sockaddr_un addressOf(const QByteArray& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::copy_n(path.constData(), std::min<std::size_t>(path.size(), sizeof address.sun_path - 1),
                address.sun_path);
    return address;
}

int newSocket() {
    return socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
}

}  // namespace

/// One client and the server's side of it. Never blocks: what one side does not take yet waits here, and
/// nothing more is read for it meanwhile.
class XWithoutXInput::Connection {
public:
    Connection(int client, int server, const QList<QByteArray>& missing)
        : client_{client, {}}, server_{server, {}}, filter_(missing) {}
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() {
        close(client_.descriptor);
        close(server_.descriptor);
    }

    pollfd clientPoll() const { return pollOf(client_, server_); }
    pollfd serverPoll() const { return pollOf(server_, client_); }

    /// Moves what can be moved; false when one side is gone.
    bool serve(const pollfd& client, const pollfd& server) {
        if (client.revents & (POLLIN | POLLHUP)) {
            const auto received = receive(client_);
            if (!received) return false;
            server_.waiting += filter_.pass(*received);
        }
        if (server.revents & (POLLIN | POLLHUP)) {
            const auto received = receive(server_);
            if (!received) return false;
            client_.waiting += *received;
        }
        return send(client_) && send(server_);
    }

private:
    struct Side {
        int descriptor;
        QByteArray waiting;  ///< what goes out to this side
    };
    Side client_;
    Side server_;
    XRequestFilter filter_;

    static pollfd pollOf(const Side& side, const Side& other) {
        const int events = (other.waiting.isEmpty() ? POLLIN : 0) | (side.waiting.isEmpty() ? 0 : POLLOUT);
        return {side.descriptor, static_cast<short>(events), 0};
    }

    static std::optional<QByteArray> receive(const Side& side) {
        QByteArray buffer(65536, Qt::Uninitialized);
        const ssize_t got = read(side.descriptor, buffer.data(), static_cast<std::size_t>(buffer.size()));
        if (got < 0 && errno == EAGAIN) return QByteArray();
        if (got <= 0) return std::nullopt;
        buffer.truncate(got);
        return buffer;
    }

    static bool send(Side& side) {
        if (side.waiting.isEmpty()) return true;
        const ssize_t sent = ::send(side.descriptor, side.waiting.constData(),
                                    static_cast<std::size_t>(side.waiting.size()), MSG_NOSIGNAL);
        if (sent < 0) return errno == EAGAIN;
        side.waiting.remove(0, sent);
        return true;
    }
};

XWithoutXInput::XWithoutXInput(const QString& server, QList<QByteArray> missing)
    : serverSocket_("/tmp/.X11-unix/X" + server.mid(1).toLatin1()), missing_(std::move(missing)) {
    missing_.append("MIT-SHM");
    claimDisplay();
    thread_ = std::thread([this] { run(); });
}

XWithoutXInput::~XWithoutXInput() {
    ends_ = true;
    thread_.join();
    connections_.clear();
    close(listener_);
    unlink(socketPath_.constData());
    unlink(lockPath_.constData());
}

void XWithoutXInput::claimDisplay() {
    for (int number = 200; number < 1000; ++number) {
        const QByteArray digits = QByteArray::number(number);
        lockPath_ = "/tmp/.X" + digits + "-lock";
        socketPath_ = "/tmp/.X11-unix/X" + digits;
        // The lock as an X server writes it, so that none takes the number while this process lives.
        const int lock = open(lockPath_.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0444);
        if (lock < 0) continue;
        const QByteArray owner = QByteArray::number(getpid()).rightJustified(10) + '\n';
        const bool written =
            write(lock, owner.constData(), static_cast<std::size_t>(owner.size())) == owner.size();
        close(lock);

        const sockaddr_un address = addressOf(socketPath_);
        listener_ = newSocket();
        if (written && bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
            listen(listener_, 64) == 0) {
            display_ = QLatin1Char(':') + QString::fromLatin1(digits);
            return;
        }
        close(listener_);
        unlink(lockPath_.constData());
    }
    throw std::runtime_error("no display number is free");
}

void XWithoutXInput::accept() {
    const int client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (client < 0) return;
    const int server = newSocket();
    const sockaddr_un address = addressOf(serverSocket_);
    if (connect(server, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        close(client);
        close(server);
        return;
    }
    connections_.push_back(std::make_unique<Connection>(client, server, missing_));
}

void XWithoutXInput::run() {
    while (!ends_) {
        if (cut_.exchange(false)) connections_.clear();
        std::vector<pollfd> polls{{listener_, POLLIN, 0}};
        for (const auto& connection : connections_) {
            polls.push_back(connection->clientPoll());
            polls.push_back(connection->serverPoll());
        }
        if (poll(polls.data(), polls.size(), 20) <= 0) continue;
        std::vector<std::unique_ptr<Connection>> alive;
        for (std::size_t index = 0; index < connections_.size(); ++index) {
            if (connections_[index]->serve(polls[1 + 2 * index], polls[2 + 2 * index])) {
                alive.push_back(std::move(connections_[index]));
            }
        }
        connections_ = std::move(alive);
        if (polls[0].revents & POLLIN) accept();
    }
}

}  // namespace veltrin

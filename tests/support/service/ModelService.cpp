#include "support/service/ModelService.h"

#include "support/service/RequestReader.h"
#include "support/service/ServiceBehaviours.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>
#include <QTimer>

#include <sys/socket.h>

#include <atomic>
#include <cmath>
#include <ctime>
#include <deque>
#include <mutex>
#include <stdexcept>

namespace veltrin {
namespace {

double monotonicSeconds() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

int milliseconds(double seconds) {
    return static_cast<int>(std::lround(seconds * 1e3));
}

/// One client's connection, deleted when that is gone. Requests that come while one is answered wait for its
/// end.
class Connection final : public QObject {
public:
    using Answerer = std::function<ServiceAnswer(ServiceRequest)>;

    Connection(QTcpSocket* socket, int number, Answerer answerer, QObject* parent)
        : QObject(parent), socket_(socket), number_(number), answerer_(std::move(answerer)) {
        socket_->setParent(this);
        connect(socket_, &QTcpSocket::readyRead, this, [this] { read(); });
        connect(socket_, &QTcpSocket::disconnected, this, &QObject::deleteLater);
        connect(&pace_, &QTimer::timeout, this, [this] { sendPiece(); });
        pace_.setTimerType(Qt::PreciseTimer);
    }

private:
    void read() {
        reader_.feed(socket_->readAll());
        takeNext();
    }

    void takeNext() {
        if (answering_) return;
        if (reader_.wantsContinue()) socket_->write("HTTP/1.1 100 Continue\r\n\r\n");
        auto request = reader_.take();
        if (!request) {
            if (reader_.failed()) socket_->abort();
            return;
        }
        answering_ = true;
        request->connection = number_;
        request->arrival = monotonicSeconds();
        answer_ = answerer_(std::move(*request));
        QTimer::singleShot(milliseconds(answer_.delay), Qt::PreciseTimer, this, [this] { begin(); });
    }

    void begin() {
        rest_ = answer_.bytes().left(answer_.cutAfter);
        if (answer_.pause > 0) {
            pace_.start(milliseconds(answer_.pause));
            return;
        }
        socket_->write(rest_);
        end();
    }

    void sendPiece() {
        socket_->write(rest_.left(answer_.piece));
        rest_ = rest_.mid(answer_.piece);
        if (!rest_.isEmpty()) return;
        pace_.stop();
        end();
    }

    void end() {
        switch (answer_.ending) {
            case ServiceEnding::silent:
                return;
            case ServiceEnding::close:
                socket_->disconnectFromHost();
                return;
            case ServiceEnding::reset:
                resetConnection();
                return;
            case ServiceEnding::keepAlive:
                break;
        }
        answering_ = false;
        takeNext();
    }

    void resetConnection() {
        socket_->flush();
        const linger now{1, 0};
        setsockopt(static_cast<int>(socket_->socketDescriptor()), SOL_SOCKET, SO_LINGER, &now, sizeof now);
        socket_->abort();
    }

    QTcpSocket* socket_;
    const int number_;
    const Answerer answerer_;
    RequestReader reader_;
    ServiceAnswer answer_;
    bool answering_ = false;
    QByteArray rest_;
    QTimer pace_;
};

}  // namespace

class ModelService::Server {
public:
    explicit Server(quint16 port) {
        fallback_ =
            [ok = ServiceBehaviours::success(QStringLiteral("ok")),
             models = ServiceBehaviours::models({QStringLiteral("qwen3:8b"), QStringLiteral("llama3.1:8b")})](
                const ServiceRequest& request) {
                return request.wire == ServiceWire::localTags ? models(request) : ok(request);
            };
        thread_.setObjectName(QStringLiteral("model service"));
        context_.moveToThread(&thread_);
        thread_.start();
        inThread([this, port] { listen(port); });
        if (port_ == 0) {
            stop();
            throw std::runtime_error("the model service cannot listen");
        }
    }
    ~Server() { stop(); }

    quint16 port() const { return port_; }

    void enqueue(ServiceBehaviour behaviour) {
        const std::lock_guard lock(mutex_);
        queue_.push_back(std::move(behaviour));
    }
    void setDefault(ServiceBehaviour behaviour) {
        const std::lock_guard lock(mutex_);
        fallback_ = std::move(behaviour);
    }
    void setObserver(std::function<void(const ServiceRequest&)> observer) {
        const std::lock_guard lock(mutex_);
        observer_ = std::move(observer);
    }
    std::vector<ServiceRequest> requests() const {
        const std::lock_guard lock(mutex_);
        return requests_;
    }
    void forget() {
        const std::lock_guard lock(mutex_);
        requests_.clear();
    }
    int openConnections() const { return open_; }

private:
    void inThread(const std::function<void()>& action) {
        QMetaObject::invokeMethod(&context_, action, Qt::BlockingQueuedConnection);
    }

    void listen(quint16 port) {
        listener_ = std::make_unique<QTcpServer>();
        QObject::connect(listener_.get(), &QTcpServer::newConnection, listener_.get(), [this] {
            while (QTcpSocket* socket = listener_->nextPendingConnection()) {
                auto answerer = [this](ServiceRequest request) { return answer(std::move(request)); };
                const auto* connection =
                    new Connection(socket, ++connections_, std::move(answerer), listener_.get());
                ++open_;
                QObject::connect(connection, &QObject::destroyed, [this] { --open_; });
            }
        });
        if (listener_->listen(QHostAddress::LocalHost, port)) port_ = listener_->serverPort();
    }

    void stop() {
        inThread([this] { listener_.reset(); });
        thread_.quit();
        thread_.wait();
    }

    ServiceAnswer answer(ServiceRequest request) {
        ServiceBehaviour behaviour;
        std::function<void(const ServiceRequest&)> observer;
        {
            const std::lock_guard lock(mutex_);
            requests_.push_back(request);
            observer = observer_;
            behaviour = fallback_;
            if (!queue_.empty()) {
                behaviour = std::move(queue_.front());
                queue_.pop_front();
            }
        }
        if (observer) observer(request);
        return behaviour(request);
    }

    QThread thread_;
    QObject context_;
    std::unique_ptr<QTcpServer> listener_;  // lives on the thread
    int connections_ = 0;
    quint16 port_ = 0;
    std::atomic<int> open_ = 0;

    mutable std::mutex mutex_;  // guards what follows
    std::deque<ServiceBehaviour> queue_;
    ServiceBehaviour fallback_;
    std::function<void(const ServiceRequest&)> observer_;
    std::vector<ServiceRequest> requests_;
};

ModelService::ModelService(quint16 port) : server_(std::make_unique<Server>(port)) {
}
ModelService::~ModelService() = default;

quint16 ModelService::port() const {
    return server_->port();
}

QString ModelService::url(const QString& path) const {
    return QStringLiteral("http://127.0.0.1:%1%2").arg(QString::number(port()), path);
}

void ModelService::enqueue(ServiceBehaviour behaviour) {
    server_->enqueue(std::move(behaviour));
}
void ModelService::setDefault(ServiceBehaviour behaviour) {
    server_->setDefault(std::move(behaviour));
}
void ModelService::setObserver(std::function<void(const ServiceRequest&)> observer) {
    server_->setObserver(std::move(observer));
}
std::vector<ServiceRequest> ModelService::requests() const {
    return server_->requests();
}
void ModelService::forget() {
    server_->forget();
}
int ModelService::openConnections() const {
    return server_->openConnections();
}

}  // namespace veltrin

#include "support/fields/PageServer.h"

#include <QFile>
#include <QHash>
#include <QJsonDocument>
#include <QPointer>
#include <QSemaphore>
#include <QTcpServer>
#include <QTcpSocket>

#include <mutex>
#include <stdexcept>

namespace veltrin {
namespace {

QByteArray answerOf(const QByteArray& type, const QByteArray& body) {
    return "HTTP/1.1 200 OK\r\nContent-Type: " + type +
           "\r\nCache-Control: no-store\r\nContent-Length: " + QByteArray::number(body.size()) +
           "\r\nConnection: close\r\n\r\n" + body;
}

QByteArray page() {
    QFile file(QStringLiteral(VELTRIN_SOURCE_DIR "/tests/support/fields/fields.html"));
    if (!file.open(QIODevice::ReadOnly)) throw std::runtime_error("no page");
    return file.readAll();
}

/// Length of the request at the front of `bytes`, head and body; 0 when it is not complete.
qsizetype requestLength(const QByteArray& bytes) {
    const auto head = bytes.indexOf("\r\n\r\n");
    if (head < 0) return 0;
    const auto named = bytes.left(head).toLower().indexOf("content-length:");
    const auto from = named + 15;
    const auto body =
        named < 0 ? 0 : bytes.mid(from, bytes.indexOf('\r', from) - from).trimmed().toLongLong();
    return bytes.size() >= head + 4 + body ? head + 4 + body : 0;
}

}  // namespace

/// Lives on the server's thread; `answers` and `answered` are for both.
class PageServer::Worker : public QObject {
public:
    Worker() : page_(page()) {}

    void listen() {
        server_ = new QTcpServer(this);
        connect(server_, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket* socket = server_->nextPendingConnection())
                take(socket);
        });
        if (server_->listen(QHostAddress::LocalHost)) port = server_->serverPort();
    }
    void put(const QByteArray& question) {
        question_ = question;
        hand();
    }
    QJsonObject answer() {
        const std::lock_guard lock(mutex_);
        return answer_;
    }

    quint16 port = 0;
    QSemaphore answered;

private:
    void take(QTcpSocket* socket) {
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
            QByteArray& bytes = received_[socket];
            bytes += socket->readAll();
            if (requestLength(bytes) == 0) return;
            serve(socket, bytes);
            received_.remove(socket);
        });
        connect(socket, &QObject::destroyed, this, [this, socket] { received_.remove(socket); });
    }

    void serve(QTcpSocket* socket, const QByteArray& request) {
        if (request.startsWith("GET /next")) {
            waiting_ = socket;
            hand();
            return;
        }
        if (request.startsWith("POST /answer")) {
            {
                const std::lock_guard lock(mutex_);
                answer_ = QJsonDocument::fromJson(request.mid(request.indexOf("\r\n\r\n") + 4)).object();
            }
            answered.release();
            reply(socket, answerOf("text/plain", {}));
            return;
        }
        reply(socket,
              answerOf("text/html; charset=utf-8", request.startsWith("GET / ") ? page_ : QByteArray()));
    }

    void hand() {
        if (!waiting_ || question_.isEmpty()) return;
        reply(waiting_, answerOf("application/json", question_));
        question_.clear();
        waiting_.clear();
    }

    static void reply(QTcpSocket* socket, const QByteArray& bytes) {
        socket->write(bytes);
        socket->disconnectFromHost();
    }

    QByteArray page_;
    QTcpServer* server_ = nullptr;
    QPointer<QTcpSocket> waiting_;
    QHash<QObject*, QByteArray> received_;
    QByteArray question_;
    std::mutex mutex_;
    QJsonObject answer_;
};

PageServer::PageServer() : worker_(std::make_unique<Worker>()) {
    worker_->moveToThread(&thread_);
    thread_.start();
    QMetaObject::invokeMethod(
        worker_.get(), [this] { worker_->listen(); }, Qt::BlockingQueuedConnection);
    if (worker_->port == 0) throw std::runtime_error("no port for the page");
}

PageServer::~PageServer() {
    // Its sockets and their notifiers end on their own thread.
    QObject::connect(
        &thread_, &QThread::finished, worker_.get(), [this] { worker_.reset(); }, Qt::DirectConnection);
    thread_.quit();
    thread_.wait();
}

QString PageServer::url() const {
    return QStringLiteral("http://127.0.0.1:%1/").arg(worker_->port);
}

QJsonObject PageServer::ask(QJsonObject question, double seconds) {
    const int id = ++lastId_;
    question.insert(QStringLiteral("id"), id);
    QMetaObject::invokeMethod(
        worker_.get(),
        [this, line = QJsonDocument(question).toJson(QJsonDocument::Compact)] { worker_->put(line); },
        Qt::QueuedConnection);
    while (worker_->answered.tryAcquire(1, static_cast<int>(seconds * 1000))) {
        const QJsonObject answer = worker_->answer();
        // An answer to a question that was given up may still come.
        if (answer.value(QStringLiteral("id")).toInt() == id) return answer;
    }
    throw std::runtime_error("the page does not answer");
}

}  // namespace veltrin

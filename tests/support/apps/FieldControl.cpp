#include "support/apps/FieldControl.h"

#include <QJsonDocument>
#include <QLocalSocket>

#include <utility>

namespace veltrin {

FieldControl::FieldControl(const QString& socket, QHash<QString, Field> fields) : fields_(std::move(fields)) {
    if (socket.isEmpty()) return;
    QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this] {
        QLocalSocket* connection = server_.nextPendingConnection();
        QObject::connect(connection, &QLocalSocket::disconnected, connection, &QObject::deleteLater);
        QObject::connect(connection, &QLocalSocket::readyRead, connection, [this, connection] {
            while (connection->canReadLine()) {
                const QJsonObject request = QJsonDocument::fromJson(connection->readLine()).object();
                connection->write(QJsonDocument(answer(request)).toJson(QJsonDocument::Compact) + '\n');
            }
        });
    });
    if (!server_.listen(socket)) qFatal("no control socket");
}

QJsonObject FieldControl::answer(const QJsonObject& request) const {
    const auto field = fields_.constFind(request.value(QStringLiteral("field")).toString());
    if (field == fields_.cend()) return {};
    const QString action = request.value(QStringLiteral("do")).toString();
    if (action == QStringLiteral("set")) field->setText(request.value(QStringLiteral("text")).toString());
    if (action != QStringLiteral("state")) {
        field->select(request.value(QStringLiteral("start")).toInt(),
                      request.value(QStringLiteral("end")).toInt());
    }
    return field->state();
}

}  // namespace veltrin

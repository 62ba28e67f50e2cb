#include "Platform/Linux/SingleInstance.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDeadlineTimer>
#include <QThread>

#include <algorithm>
#include <cmath>

namespace veltrin {
namespace {

constexpr unsigned long retryMicroseconds = 50'000;
constexpr int activationMilliseconds = 2'000;
/// Of one call; whoever hands over more means harm.
constexpr qsizetype mostUrls = 64;

}  // namespace

SingleInstance::SingleInstance(QString name) : name_(std::move(name)), bus_(QDBusConnection::sessionBus()) {
}

SingleInstance::~SingleInstance() {
    release();
}

QString SingleInstance::objectPath() const {
    QString path = name_;
    return u'/' + path.replace(u'.', u'/');
}

SingleInstance::Outcome SingleInstance::acquire(double seconds) {
    if (!bus_.isConnected() || bus_.interface() == nullptr) return Outcome::noSession;
    const QDeadlineTimer deadline(std::llround(seconds * 1000));
    // The object stands before the name, so that whoever finds the name can also call.
    bus_.registerObject(objectPath(), this, QDBusConnection::ExportAllSlots);
    for (;;) {
        const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply =
            bus_.interface()->registerService(name_, QDBusConnectionInterface::DontQueueService,
                                              QDBusConnectionInterface::DontAllowReplacement);
        if (!reply.isValid()) return Outcome::noSession;
        if (reply.value() == QDBusConnectionInterface::ServiceRegistered) {
            owner_ = true;
            return Outcome::first;
        }
        if (deadline.hasExpired()) return Outcome::another;
        QThread::usleep(retryMicroseconds);
    }
}

void SingleInstance::release() {
    if (!owner_) return;
    owner_ = false;
    bus_.unregisterObject(objectPath());
    bus_.unregisterService(name_);
}

bool SingleInstance::callOther(const QString& method, const QVariantList& arguments) {
    auto call = QDBusMessage::createMethodCall(name_, objectPath(),
                                               QStringLiteral("org.freedesktop.Application"), method);
    call.setArguments(arguments);
    return bus_.call(call, QDBus::Block, activationMilliseconds).type() == QDBusMessage::ReplyMessage;
}

bool SingleInstance::activateOther() {
    return callOther(QStringLiteral("Activate"), {QVariantMap{}});
}

bool SingleInstance::openInOther(const QStringList& urls) {
    return callOther(QStringLiteral("Open"), {urls, QVariantMap{}});
}

void SingleInstance::Activate(const QVariantMap&) {
    if (activated) activated();
}

void SingleInstance::Open(const QStringList& uris, const QVariantMap&) {
    std::vector<QUrl> urls;
    for (const QString& uri : uris.first(std::min(uris.size(), mostUrls)))
        urls.emplace_back(uri, QUrl::StrictMode);
    if (opened) opened(urls);
}

}  // namespace veltrin

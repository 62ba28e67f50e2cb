#include "soak/ResourceCount.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDir>
#include <QFile>

#include <unistd.h>
#include <xcb/res.h>

#include <stdexcept>
#include <vector>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

const QString busName = u"soak-accessibility"_s;

QDBusConnection accessibilityBus() {
    const QString session = u"soak-session"_s;
    QString address;
    {
        auto connection =
            QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), session);
        const QDBusReply<QString> reply = connection.call(QDBusMessage::createMethodCall(
            u"org.a11y.Bus"_s, u"/org/a11y/bus"_s, u"org.a11y.Bus"_s, u"GetAddress"_s));
        address = reply.value();
    }
    QDBusConnection::disconnectFromBus(session);
    return QDBusConnection::connectToBus(address, busName);
}

}  // namespace

ResourceCount::ResourceCount(XDesktop& x) : x_(x), bus_(accessibilityBus()) {
    if (!bus_.isConnected()) throw std::runtime_error("no accessibility bus to count at");
}

ResourceCount::~ResourceCount() {
    QDBusConnection::disconnectFromBus(busName);
}

/// Of all connections of this process but the one that counts.
int ResourceCount::matchRules() {
    const QDBusMessage reply = bus_.call(
        QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                       u"org.freedesktop.DBus.Debug.Stats"_s, u"GetAllMatchRules"_s));
    if (reply.type() != QDBusMessage::ReplyMessage) throw std::runtime_error("the bus counts no match rules");
    const auto argument = reply.arguments().value(0).value<QDBusArgument>();
    QMap<QString, QStringList> rules;
    argument >> rules;
    int count = 0;
    for (auto entry = rules.begin(); entry != rules.end(); ++entry) {
        if (entry.key() == bus_.baseService()) continue;
        const QDBusReply<uint> process = bus_.interface()->servicePid(entry.key());
        if (process.isValid() && process.value() == QCoreApplication::applicationPid())
            count += static_cast<int>(entry.value().size());
    }
    return count;
}

QStringList ResourceCount::xKinds(int* total) {
    xcb_connection_t* connection = x_.connection();
    const xcb_res_client_id_spec_t everybody{0, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const XReply<xcb_res_query_client_ids_reply_t> ids(xcb_res_query_client_ids_reply(
        connection, xcb_res_query_client_ids(connection, 1, &everybody), nullptr));
    if (!ids) throw std::runtime_error("the X server counts no resources");
    QStringList kinds;
    for (auto id = xcb_res_query_client_ids_ids_iterator(ids.get()); id.rem > 0;
         xcb_res_client_id_value_next(&id)) {
        if (xcb_res_client_id_value_value_length(id.data) < 1) continue;
        if (static_cast<pid_t>(*xcb_res_client_id_value_value(id.data)) != getpid()) continue;
        const XReply<xcb_res_query_client_resources_reply_t> held(xcb_res_query_client_resources_reply(
            connection, xcb_res_query_client_resources(connection, id.data->spec.client), nullptr));
        if (!held) continue;
        const auto* types = xcb_res_query_client_resources_types(held.get());
        for (int i = 0; i < xcb_res_query_client_resources_types_length(held.get()); ++i) {
            const XReply<xcb_get_atom_name_reply_t> name(xcb_get_atom_name_reply(
                connection, xcb_get_atom_name(connection, types[i].resource_type), nullptr));
            const QString kind = name ? QString::fromLatin1(xcb_get_atom_name_name(name.get()),
                                                            xcb_get_atom_name_name_length(name.get()))
                                      : QString();
            // Others' interest in our windows: Chromium asks about every window there is.
            if (kind == u"ShapeEvent") continue;
            *total += static_cast<int>(types[i].count);
            kinds << u"%1 %2 %3"_s.arg(id.data->spec.client, 0, 16).arg(kind).arg(types[i].count);
        }
    }
    kinds.sort();
    return kinds;
}

Resources ResourceCount::now() {
    Resources resources;
    resources.matchRules = matchRules();
    resources.xKinds = xKinds(&resources.xResources);
    resources.descriptors = static_cast<int>(
        QDir(u"/proc/self/fd"_s).entryList(QDir::NoDotAndDotDot | QDir::System | QDir::Files).size());
    QFile statm(u"/proc/self/statm"_s);
    if (!statm.open(QIODevice::ReadOnly)) throw std::runtime_error("no account of memory");
    const double pages = statm.readAll().split(' ').value(1).toDouble();
    resources.megabytes = pages * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0);
    return resources;
}

}  // namespace veltrin

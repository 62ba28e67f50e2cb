#include "Platform/Linux/AtSpi/ApplicationDirectory.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace veltrin::AtSpi {
namespace {

constexpr Milliseconds learningTimeout{2000};

const ObjectAddress daemon{QLatin1String(Name::daemon), QLatin1String(Name::daemonPath)};
const ObjectAddress desktop{QLatin1String(Name::registry), QLatin1String(Name::rootPath)};
constexpr char processQuestion[] = "GetConnectionUnixProcessID";

}  // namespace

ApplicationDirectory::ApplicationDirectory(AtSpiBus& bus) : bus_(bus) {
    connect(&bus, &AtSpiBus::opened, this, [this] {
        processes_.clear();
        asked_.clear();
        toolkits_.clear();
    });
    connect(&bus, &AtSpiBus::applicationGone, this, [this](const QString& gone) {
        processes_.remove(gone);
        asked_.remove(gone);
        toolkits_.remove(gone);
    });
}

QStringList ApplicationDirectory::busesOf(qint32 processIdentifier, Conversation& conversation) {
    QStringList known = processes_.keys(processIdentifier);
    if (!known.isEmpty()) return known;
    QStringList unknown;
    for (const ObjectAddress& child : conversation.ask(desktop, Name::accessible, "GetChildren").objects()) {
        if (!processes_.contains(child.bus) && !unknown.contains(child.bus)) unknown << child.bus;
    }
    askProcesses(unknown, conversation);
    return processes_.keys(processIdentifier);
}

void ApplicationDirectory::askProcesses(const QStringList& buses, Conversation& conversation) {
    std::vector<Pending> questions;
    for (const QString& bus : buses) {
        questions.push_back(conversation.call(daemon, Name::daemon, processQuestion, {bus}));
    }
    for (qsizetype i = 0; i < buses.size(); ++i) {
        const Reply reply = conversation.reply(std::move(questions[static_cast<std::size_t>(i)]));
        if (reply.ok()) processes_.insert(buses[i], static_cast<qint32>(reply.number()));
    }
}

void ApplicationDirectory::learn(const QString& bus) {
    if (asked_.contains(bus) || processes_.contains(bus)) return;
    asked_.insert(bus);
    const QDBusPendingCall question =
        bus_.send(daemon, Name::daemon, processQuestion, {bus}, learningTimeout);
    auto* watcher = new QDBusPendingCallWatcher(question, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, bus, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<uint> reply = *watcher;
        if (!reply.isError() && asked_.contains(bus))
            processes_.insert(bus, static_cast<qint32>(reply.value()));
    });
}

Toolkit ApplicationDirectory::toolkitOf(const QString& bus, Conversation& conversation) {
    const auto found = toolkits_.constFind(bus);
    if (found != toolkits_.cend()) return *found;
    const ObjectAddress root{bus, QLatin1String(Name::rootPath)};
    Pending name = conversation.property(root, Name::application, "ToolkitName");
    Pending version = conversation.property(root, Name::application, "Version");
    Pending application = conversation.property(root, Name::accessible, "Name");
    const Reply nameReply = conversation.reply(std::move(name));
    const Reply versionReply = conversation.reply(std::move(version));
    const Reply applicationReply = conversation.reply(std::move(application));
    if (conversation.hasGivenUp()) return Toolkit::other;
    const Toolkit toolkit = toolkitNamed(nameReply.text(), versionReply.text(), applicationReply.text());
    if (nameReply.ok()) toolkits_.insert(bus, toolkit);
    return toolkit;
}

}  // namespace veltrin::AtSpi

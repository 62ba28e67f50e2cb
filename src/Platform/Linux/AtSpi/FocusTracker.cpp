#include "Platform/Linux/AtSpi/FocusTracker.h"

#include "Platform/Linux/AtSpi/FocusWalk.h"

namespace veltrin::AtSpi {
namespace {

constexpr Milliseconds registrationTimeout{2000};

// As the registry names them; applications send nothing that nobody has registered for.
constexpr const char* wantedEvents[] = {"object:state-changed:focused", "window:activate"};

/// Something that holds fields and is none; a web page is none of these, and too large to look through.
bool isContainer(Role role) {
    return role == Role::panel || role == Role::scrollPane || role == Role::splitPane ||
           role == Role::rootPane || role == Role::frame || role == Role::window || role == Role::dialog;
}

}  // namespace

FocusTracker::FocusTracker(AtSpiBus& bus, ApplicationDirectory& directory)
    : bus_(bus), directory_(directory) {
    connect(&bus, &AtSpiBus::opened, this, &FocusTracker::listen);
    connect(&bus, &AtSpiBus::registryRestarted, this, &FocusTracker::registerEvents);
    connect(&bus, &AtSpiBus::applicationGone, this, [this](const QString& gone) {
        focusedPaths_.remove(gone);
        woken_.remove(gone);
    });
}

void FocusTracker::listen() {
    focusedPaths_.clear();
    woken_.clear();
    QDBusConnection connection = bus_.connection();
    // The daemon compares the first argument, so that other state changes never reach this process.
    connection.connect(QString(), QString(), QLatin1String(Name::objectEvent), QStringLiteral("StateChanged"),
                       {QStringLiteral("focused")}, QString(), this, SLOT(stateChanged(QDBusMessage)));
    connection.connect(QString(), QString(), QLatin1String(Name::windowEvent), QStringLiteral("Activate"),
                       this, SLOT(windowActivated(QDBusMessage)));
    registerEvents();
}

void FocusTracker::registerEvents() {
    const ObjectAddress registry{QLatin1String(Name::registry), QLatin1String(Name::registryPath)};
    for (const char* event : wantedEvents) {
        bus_.send(registry, Name::registry, "RegisterEvent",
                  {QString::fromLatin1(event), QStringList(), QString()}, registrationTimeout);
    }
}

void FocusTracker::stateChanged(const QDBusMessage& event) {
    directory_.learn(event.service());
    // What loses the focus is kept: whether it still has it is asked before it is given out.
    if (event.arguments().value(1).toInt() != 0) focusedPaths_.insert(event.service(), event.path());
}

void FocusTracker::windowActivated(const QDBusMessage& event) {
    directory_.learn(event.service());
    if (woken_.contains(event.service())) return;
    woken_.insert(event.service());
    // A browser's page tells nothing until its objects are asked for attributes; others do not mind.
    bus_.send({event.service(), event.path()}, Name::accessible, "GetAttributes", {}, registrationTimeout);
}

AXResult<ObjectAddress> FocusTracker::focusedObject(qint32 processIdentifier, bool isActive,
                                                    Conversation& conversation) {
    const QStringList buses = directory_.busesOf(processIdentifier, conversation);
    std::optional<ObjectAddress> former;
    for (const QString& bus : buses) {
        const auto tracked = focusedPaths_.constFind(bus);
        if (tracked == focusedPaths_.cend()) continue;
        const ObjectAddress object{bus, *tracked};
        Pending role = conversation.call(object, Name::accessible, "GetRole");
        const Reply states = conversation.ask(object, Name::accessible, "GetState");
        const Reply roleReply = conversation.reply(std::move(role));
        if (states.ok() && states.states().has(State::focused)) {
            if (!isContainer(static_cast<Role>(roleReply.number()))) return object;
            // LibreOffice says of the pane around a document, last of all, that it has the focus.
            const Toolkit toolkit = directory_.toolkitOf(bus, conversation);
            const auto field = focusedFieldInside(object, toolkit, conversation);
            if (!field) return object;
            focusedPaths_.insert(bus, field->path);
            return *field;
        }
        if (states.ok() && !states.states().has(State::defunct)) {
            former = object;
        } else if (states.error == AXError::invalidUIElement) {
            focusedPaths_.remove(bus);
        }
    }
    if (former && !isActive) return *former;
    for (const QString& bus : buses) {
        const Toolkit toolkit = directory_.toolkitOf(bus, conversation);
        if (const auto found = walkToFocus(bus, toolkit, conversation)) {
            focusedPaths_.insert(bus, found->path);
            return *found;
        }
    }
    return conversation.hasGivenUp() ? AXError::cannotComplete : AXError::noValue;
}

}  // namespace veltrin::AtSpi

#pragma once

#include "Platform/Linux/AtSpi/ApplicationDirectory.h"

#include <QDBusMessage>

namespace veltrin::AtSpi {

/// Remembers the last focused object of every application by listening to focus events, and finds it by a
/// walk where none was heard. Worker thread only.
class FocusTracker : public QObject {
    Q_OBJECT

public:
    FocusTracker(AtSpiBus& bus, ApplicationDirectory& directory);

    /// The object that has the focus in that process. `isActive`: the process owns the active window; in one
    /// that does not, the object that had the focus last counts, since toolkits take the focus flag off in
    /// the background.
    AXResult<ObjectAddress> focusedObject(qint32 processIdentifier, bool isActive,
                                          Conversation& conversation);

private Q_SLOTS:
    void stateChanged(const QDBusMessage& event);
    void windowActivated(const QDBusMessage& event);

private:
    void listen();
    void registerEvents();

    AtSpiBus& bus_;
    ApplicationDirectory& directory_;
    QHash<QString, QString> focusedPaths_;  // by connection
    QSet<QString> woken_;                   // connections that were asked to build their trees
};

}  // namespace veltrin::AtSpi

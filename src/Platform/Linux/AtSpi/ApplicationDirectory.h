#pragma once

#include "Platform/Linux/AtSpi/Conversation.h"
#include "Platform/Linux/AtSpi/TextOffsets.h"

#include <QSet>
#include <QStringList>

namespace veltrin::AtSpi {

/// Which connections of the accessibility bus belong to which process, and the toolkits behind them.
/// Remembered until the connection goes. Worker thread only.
class ApplicationDirectory : public QObject {
    Q_OBJECT

public:
    explicit ApplicationDirectory(AtSpiBus& bus);

    /// The connections of a process; empty when it has none or the bus does not say.
    QStringList busesOf(qint32 processIdentifier, Conversation& conversation);
    /// Asks for the process behind a connection that has been heard of, without waiting.
    void learn(const QString& bus);
    Toolkit toolkitOf(const QString& bus, Conversation& conversation);

private:
    void askProcesses(const QStringList& buses, Conversation& conversation);

    AtSpiBus& bus_;
    QHash<QString, qint32> processes_;
    QSet<QString> asked_;
    QHash<QString, Toolkit> toolkits_;
};

}  // namespace veltrin::AtSpi

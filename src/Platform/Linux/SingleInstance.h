#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <functional>

namespace veltrin {

/// One running program a session: it owns its name on the session bus, and a second start brings the first to
/// front. Speaks org.freedesktop.Application, so that a desktop's launcher can do the same.
class SingleInstance : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
public:
    enum class Outcome {
        first,      ///< this process is the one
        another,    ///< another one runs
        noSession,  ///< there is no session bus to ask; the process runs unguarded
    };

    explicit SingleInstance(QString name);
    ~SingleInstance() override;

    /// Tries to become the one instance, waiting at most `seconds` for a former one that is on its way out.
    Outcome acquire(double seconds);
    /// Gives the name back, so that a relaunched program need not wait for this process to end.
    void release();
    /// Asks the running instance to come to front; false when it did not answer within 2 s.
    bool activateOther();

    /// Called when another start asks this instance to come to front.
    std::function<void()> activated;

public Q_SLOTS:
    void Activate(const QVariantMap& platformData);

private:
    QString objectPath() const;

    QString name_;
    QDBusConnection bus_;
    bool owner_ = false;
};

}  // namespace veltrin

#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <functional>
#include <vector>

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

    /// Hands addresses to the running instance; false when it did not answer within 2 s.
    bool openInOther(const QStringList& urls);

    /// Called when another start asks this instance to come to front.
    std::function<void()> activated;
    /// Called with the addresses that another start, or the desktop, hands over. Anybody may have made them.
    std::function<void(const std::vector<QUrl>&)> opened;

public Q_SLOTS:
    void Activate(const QVariantMap& platformData);
    void Open(const QStringList& uris, const QVariantMap& platformData);

private:
    QString objectPath() const;
    bool callOther(const QString& method, const QVariantList& arguments);

    QString name_;
    QDBusConnection bus_;
    bool owner_ = false;
};

}  // namespace veltrin

#pragma once

#include "Platform/SystemEnvironment.h"

#include <QObject>

#include <optional>

class QDBusVariant;

namespace veltrin {

/// The user's languages from the locale, and the desktop's light or dark look from the settings portal. The
/// look is asked for without waiting; until the portal answers, and where there is none, it is light.
class LinuxSystemEnvironment final : public QObject, public SystemEnvironment {
    Q_OBJECT
public:
    LinuxSystemEnvironment();

    QStringList preferredLanguages() const override;
    bool effectiveAppearanceIsDark() const override { return dark_; }
    QString applicationSupportDirectory() const override;

private Q_SLOTS:
    void onSettingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    bool dark_ = false;
};

}  // namespace veltrin

#pragma once

#include "Platform/DesktopAppearance.h"

#include <QObject>

#include <optional>

class QDBusVariant;
class QDBusConnection;

namespace veltrin {

/// The desktop's look from its settings portal. It is asked without waiting; until it answers, and where
/// there is none or it has no opinion, GTK's settings file and then the palette tell whether the look is
/// dark.
class LinuxDesktopAppearance final : public QObject, public DesktopAppearance {
    Q_OBJECT
public:
    LinuxDesktopAppearance();
    /// With the settings portal on a bus of the caller's, and the folder that has GTK's settings.
    LinuxDesktopAppearance(QDBusConnection bus, const QString& configFolder);

    bool isDark() const override { return portalDark_.value_or(fallbackDark_); }
    bool reducesMotion() const override { return !animations_.value_or(fallbackAnimations_); }

private Q_SLOTS:
    void onSettingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void ask(QDBusConnection& bus, const QString& group, const QString& key);
    void take(const QString& group, const QString& key, const QVariant& value);
    void readGtkSettings(const QString& configFolder);

    std::optional<bool> portalDark_;
    std::optional<bool> animations_;
    bool fallbackDark_ = false;
    bool fallbackAnimations_ = true;
};

}  // namespace veltrin

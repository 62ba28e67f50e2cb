#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace veltrin {

struct RunningApplication {
    qint32 processIdentifier = 0;
    std::optional<QString> localizedName;
    std::optional<QString> bundleIdentifier;  ///< on Linux the desktop file id
    quint64 window = 0;             ///< the desktop's own name of its active window; 0 when it has none
    std::optional<QString> icon{};  ///< the name of its icon in the desktop's theme, or the icon's file
};

enum class ActivateOptions { none, ignoringOtherApps };

/// The running applications and which of them has the keyboard. Main thread; never blocks on a foreign
/// process.
class Workspace {
public:
    virtual ~Workspace() = default;

    virtual std::optional<RunningApplication> frontmostApplication() const = 0;
    /// The application of a process that still runs.
    virtual std::optional<RunningApplication> runningApplication(qint32 processIdentifier) const = 0;
    /// Brings an application to front; does nothing when it already is. False when it is gone.
    virtual bool activate(qint32 processIdentifier, ActivateOptions options) = 0;

    /// Identity of this program.
    virtual QString mainBundleIdentifier() const = 0;
    virtual std::optional<QString> executablePath() const = 0;
};

}  // namespace veltrin

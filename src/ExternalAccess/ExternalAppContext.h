#pragma once

#include "Platform/Accessibility.h"

#include <QString>

namespace veltrin {

/// The application around the text.
struct ExternalAppContext {
    QString appName;
    QString bundleIdentifier;
    QString windowTitle;
    QString sceneHint;  ///< one line for the prompts, worked out by `inferScene`

    static ExternalAppContext make(const QString& appName, const QString& bundleIdentifier,
                                   const QString& windowTitle);
    static QString inferScene(const QString& appName, const QString& bundleIdentifier,
                              const QString& windowTitle);
    /// Title of the process's focused window; empty on any failure.
    static QString focusedWindowTitle(Accessibility& accessibility, qint32 pid);

    friend bool operator==(const ExternalAppContext&, const ExternalAppContext&) = default;
};

}  // namespace veltrin

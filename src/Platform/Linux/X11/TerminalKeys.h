#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace veltrin {

/// How a terminal program wants to be told to copy and paste.
enum class TerminalKeys {
    withShift,  ///< Ctrl+Shift+C and Ctrl+Shift+V; Ctrl+C alone would interrupt the running program
    none,       ///< it has no such keys
};

/// The keys of a terminal by its window's WM_CLASS or its application id; none when it is no known terminal.
std::optional<TerminalKeys> terminalKeys(const QStringList& windowClass, const QString& applicationId);

}  // namespace veltrin

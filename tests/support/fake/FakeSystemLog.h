#pragma once

#include "Platform/SystemLog.h"

#include <QStringList>

namespace veltrin {

/// Keeps what it is told.
class FakeSystemLog final : public SystemLog {
public:
    void info(const QString& subsystem, const QString& category, const QString& text) override {
        lines << subsystem + u' ' + category + QStringLiteral(": ") + text;
    }
    void watchForCrashes() override { isWatching = true; }

    QStringList lines;
    bool isWatching = false;
};

}  // namespace veltrin

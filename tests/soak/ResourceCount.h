#pragma once

#include "support/desktop/XDesktop.h"

#include <QDBusConnection>
#include <QStringList>

namespace veltrin {

/// What this process holds in other processes and of its own.
struct Resources {
    int matchRules = 0;    ///< at the accessibility bus
    int xResources = 0;    ///< windows, pixmaps, cursors… of all its connections to the X server
    QStringList xKinds;    ///< the same, by client and kind
    int descriptors = 0;   ///< open files
    double megabytes = 0;  ///< resident memory
};

/// Counts them, past everything that is under test: by the bus's and the X server's own books.
class ResourceCount {
public:
    explicit ResourceCount(XDesktop& x);
    ~ResourceCount();
    ResourceCount(const ResourceCount&) = delete;
    ResourceCount& operator=(const ResourceCount&) = delete;

    /// Throws std::runtime_error when one of the books cannot be read.
    Resources now();

private:
    int matchRules();
    QStringList xKinds(int* total);

    XDesktop& x_;
    QDBusConnection bus_;
};

}  // namespace veltrin

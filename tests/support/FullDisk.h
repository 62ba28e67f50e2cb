#pragma once

#include <sys/resource.h>

#include <csignal>

namespace veltrin {

/// Lets no file grow past `bytes` while it lives: what a full disk looks like to a writer.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &former_);
        formerAction_ = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{bytes, former_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &former_);
        std::signal(SIGXFSZ, formerAction_);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit former_{};
    void (*formerAction_)(int) = nullptr;
};

}  // namespace veltrin

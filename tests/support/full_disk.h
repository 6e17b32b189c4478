// SPDX-License-Identifier: MIT
#pragma once

#ifndef _WIN32

#include <csignal>
#include <cstddef>
#include <sys/resource.h>

namespace korvalite::core::test {

// During its lifetime, no file of this process grows beyond a number of bytes: writes past that
// fail, as on a full disk. Do not print or expect anything meanwhile, as standard output may be a
// file too.
class FullDisk {
public:
    explicit FullDisk(std::size_t bytesThatFit) {
        oldHandler_ = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &oldLimit_);
        rlimit limit = oldLimit_;
        limit.rlim_cur = bytesThatFit;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &oldLimit_);
        std::signal(SIGXFSZ, oldHandler_);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit oldLimit_{};
    void (*oldHandler_)(int) = nullptr;
};

}  // namespace korvalite::core::test

#endif

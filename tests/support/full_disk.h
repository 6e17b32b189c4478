// SPDX-License-Identifier: MIT
#pragma once

#ifndef _WIN32

#include <csignal>
#include <cstddef>
#include <sys/resource.h>

namespace korvalite::test {

// While it lives, no file of this process grows beyond so many bytes: writes behind them fail, as
// on a full disk. Print and expect nothing meanwhile, standard output may be a file too.
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

}  // namespace korvalite::test

#endif

// SPDX-License-Identifier: MIT
#pragma once

#ifndef _WIN32

#include <sys/resource.h>

namespace korvalite::core::test {

// During its lifetime, this process can open no file, whatever its rights. Open files stay open,
// and files can be deleted.
class NoMoreFiles {
public:
    NoMoreFiles() {
        getrlimit(RLIMIT_NOFILE, &oldLimit_);
        rlimit limit = oldLimit_;
        limit.rlim_cur = 0;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    ~NoMoreFiles() { setrlimit(RLIMIT_NOFILE, &oldLimit_); }
    NoMoreFiles(const NoMoreFiles&) = delete;
    NoMoreFiles& operator=(const NoMoreFiles&) = delete;

private:
    rlimit oldLimit_{};
};

}  // namespace korvalite::core::test

#endif

// SPDX-License-Identifier: MIT
#pragma once

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

namespace korvalite::bench {

/// Runs work() in a process of its own, which keeps its memory out of the next measurement. False
/// if it says so or does not come back.
template <typename Work>
bool inOwnProcess(Work work) {
    std::fflush(stdout);
    const pid_t child = fork();
    if (child < 0) return false;
    if (child == 0) {
        const bool isDone = work();
        std::fflush(stdout);
        _exit(isDone ? 0 : 1);
    }
    int status = 0;
    return waitpid(child, &status, 0) == child && status == 0;
}

/// The most resident memory that this process has had.
inline long peakBytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss * 1024;
}

}  // namespace korvalite::bench

// SPDX-License-Identifier: MIT
#pragma once

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

namespace korvalite::core::bench {

/// Runs work() in its own process, which keeps its memory out of the next measurement. False if it
/// returns false or the process dies.
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

/// The peak resident memory of this process.
inline long peakBytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss * 1024;
}

}  // namespace korvalite::core::bench

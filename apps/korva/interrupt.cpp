// SPDX-License-Identifier: MIT
#include "korva/interrupt.h"

#include "korva/exit_code.h"
#include "korva/io/partial_file.h"
#include "platform/platform.h"

#include <korvalite/korvalite.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <system_error>
#include <thread>

namespace korva {

namespace {

std::atomic<bool> interrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may not lock");

extern "C" void onInterrupt(int signal) {
    interrupted = true;
    std::signal(signal, SIG_DFL);
}

/// Not all work reports its progress: a mesh of many millions of triangles keeps some of it busy
/// for seconds.
void cutOffWhatGoesOn() {
    constexpr int kStep = 50;
    constexpr int kPatience = 700;
    while (!isInterrupted())
        korvalite::core::platform::sleepMilliseconds(kStep);
    korvalite::core::platform::sleepMilliseconds(kPatience);
    PartialFile::abandonAll();
    std::fputs("Cancelled.\n", stderr);
    std::_Exit(static_cast<int>(ExitCode::Cancelled));
}

}  // namespace

void catchInterrupts() {
    std::signal(SIGINT, onInterrupt);
    std::signal(SIGTERM, onInterrupt);
    try {
        std::thread(cutOffWhatGoesOn).detach();
    } catch (const std::system_error&) {
        // Without a thread to spare, work ends where it sees the flag.
    }
}

bool isInterrupted() {
    return interrupted;
}

void throwIfInterrupted() {
    if (isInterrupted()) throw korvalite::Error(korvalite::ErrorCode::Cancelled, "Cancelled.");
}

}  // namespace korva

// SPDX-License-Identifier: MIT
#include "korva/interrupt.h"

#include <korvalite/korvalite.h>

#include <csignal>

namespace korva {

namespace {

volatile std::sig_atomic_t interrupted = 0;

extern "C" void onInterrupt(int signal) {
    interrupted = 1;
    std::signal(signal, SIG_DFL);
}

}  // namespace

void catchInterrupts() {
    std::signal(SIGINT, onInterrupt);
    std::signal(SIGTERM, onInterrupt);
}

bool isInterrupted() {
    return interrupted != 0;
}

void throwIfInterrupted() {
    if (isInterrupted()) throw korvalite::Error(korvalite::ErrorCode::Cancelled, "Cancelled.");
}

}  // namespace korva

// SPDX-License-Identifier: MIT
#include "korva/command_line.h"
#include "korva/interrupt.h"

#include <csignal>

int main(int argc, char** argv) {
#ifdef SIGPIPE
    std::signal(SIGPIPE, SIG_IGN);  // a write to a closed pipe fails instead
#endif
    korva::catchInterrupts();
    return static_cast<int>(korva::runCommandLine({argv + (argc > 0 ? 1 : 0), argv + argc}));
}

// SPDX-License-Identifier: MIT
#include "base/heap_string.h"
#include "platform/platform.h"
#include "shell/entry_point.h"

int main(int argc, char** argv) {
    const std::string tail = korvalite::core::platform::commandTail(argc, argv);
    return korvalite::core::runKorvalite(korvalite::core::HeapString(tail.c_str()));
}

// SPDX-License-Identifier: MIT
#include "lanes/kernels.h"

#include "lanes/kernel_table.h"

#include <cstdlib>

namespace korvalite::core::lanes {

namespace {

#if defined(KORVALITE_HAS_LANES)
const Kernels* widest() {
    return __builtin_cpu_supports("avx2") != 0 ? &kAvx2Kernels : &kSse2Kernels;
}
#else
const Kernels* widest() {
    return nullptr;
}
#endif

}  // namespace

const Kernels* kernelsNamed([[maybe_unused]] std::string_view name) {
#if defined(KORVALITE_HAS_LANES)
    if (name == kSse2Kernels.name) return &kSse2Kernels;
    if (name == kAvx2Kernels.name && widest() == &kAvx2Kernels) return &kAvx2Kernels;
#endif
    return nullptr;
}

const Kernels* kernels() {
    static const Kernels* const chosen = [] {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing in the program changes the environment
        const char* const name = std::getenv("KORVALITE_LANES");
        return name == nullptr || *name == '\0' ? widest() : kernelsNamed(name);
    }();
    return chosen;
}

}  // namespace korvalite::core::lanes

// SPDX-License-Identifier: MIT
//
// Accesses to data that another thread may be writing at this moment, where either value will do.
// Relaxed: each access by itself is whole, and nothing is said of their order. They cost what plain
// ones cost.
#pragma once

#include <atomic>

namespace korvalite {

template <typename T>
[[nodiscard]] T loadRelaxed(const T& source) {
    // The reference is only read through.
    return std::atomic_ref<T>(const_cast<T&>(source)).load(std::memory_order_relaxed);
}

template <typename T>
void storeRelaxed(T& target, T value) {
    std::atomic_ref<T>(target).store(value, std::memory_order_relaxed);
}

}  // namespace korvalite

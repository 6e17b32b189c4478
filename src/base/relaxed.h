// SPDX-License-Identifier: MIT
//
// Accesses to data that another thread may be writing at the same moment, where either value will
// do. Each access is atomic, but their order is not guaranteed. They cost as much as plain ones.
#pragma once

#include <atomic>

namespace korvalite::core {

template <typename T>
[[nodiscard]] T loadRelaxed(const T& source) {
    // The reference is only read.
    return std::atomic_ref<T>(const_cast<T&>(source)).load(std::memory_order_relaxed);
}

template <typename T>
void storeRelaxed(T& target, T value) {
    std::atomic_ref<T>(target).store(value, std::memory_order_relaxed);
}

}  // namespace korvalite::core

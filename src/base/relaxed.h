// SPDX-License-Identifier: MIT
//
// Accesses to data that another thread may be writing at the same moment, where either value will
// do. Each access is atomic, but unless a function says otherwise their order is not guaranteed.
// On common processors they cost as much as plain ones.
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

/// A pair that is ordered: whoever loads the value also sees everything written before its store.
template <typename T>
[[nodiscard]] T loadAcquire(const T& source) {
    return std::atomic_ref<T>(const_cast<T&>(source)).load(std::memory_order_acquire);
}

template <typename T>
void storeRelease(T& target, T value) {
    std::atomic_ref<T>(target).store(value, std::memory_order_release);
}

}  // namespace korvalite::core

// SPDX-License-Identifier: MIT
//
// Replaces the allocation functions of the test program, including the array and nothrow forms:
// those of a sanitizer would not call the plain ones. Over-aligned types are not counted.
#include "support/allocation_counter.h"

#include "support/allocation_limit.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>
#include <utility>

namespace {

constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

std::atomic<std::uint64_t> allocations{0};
std::atomic<std::uint64_t> allocatedBytes{0};
std::atomic<std::int64_t> live{0};
std::atomic<std::size_t> mostBytesAtOnce{kNoLimit};

// Counts down to the allocation that fails; nothing fails at 0.
thread_local std::uint64_t leftHere = 0;
thread_local const std::function<void()>* atFailureHere = nullptr;
std::atomic<std::uint64_t> leftElsewhere{0};
thread_local bool isExempt = false;  // from leftElsewhere

bool failsHere() {
    if (leftHere == 0 || --leftHere != 0) return false;
    if (atFailureHere != nullptr && *atFailureHere) (*atFailureHere)();
    return true;
}

bool failsElsewhere() {
    if (isExempt) return false;
    std::uint64_t left = leftElsewhere.load(std::memory_order_relaxed);
    while (left != 0 &&
           !leftElsewhere.compare_exchange_weak(left, left - 1, std::memory_order_relaxed)) {
    }
    return left == 1;
}

}  // namespace

namespace korvalite::core::test {

std::uint64_t AllocationCounter::total() {
    return allocations.load(std::memory_order_relaxed);
}

std::uint64_t AllocationCounter::totalBytes() {
    return allocatedBytes.load(std::memory_order_relaxed);
}

std::int64_t LiveAllocations::total() {
    return live.load(std::memory_order_relaxed);
}

AllocationLimit::AllocationLimit(std::size_t bytes) {
    mostBytesAtOnce.store(bytes, std::memory_order_relaxed);
}

AllocationLimit::~AllocationLimit() {
    mostBytesAtOnce.store(kNoLimit, std::memory_order_relaxed);
}

FailingAllocation::FailingAllocation(std::uint64_t nth, std::function<void()> atFailure)
    : atFailure_(std::move(atFailure)) {
    atFailureHere = &atFailure_;
    leftHere = nth;
}

FailingAllocation::~FailingAllocation() {
    leftHere = 0;
    atFailureHere = nullptr;
}

bool FailingAllocation::hasFailed() {
    return leftHere == 0;
}

FailingAllocationElsewhere::FailingAllocationElsewhere(std::uint64_t nth) {
    isExempt = true;
    leftElsewhere.store(nth, std::memory_order_relaxed);
}

FailingAllocationElsewhere::~FailingAllocationElsewhere() {
    leftElsewhere.store(0, std::memory_order_relaxed);
    isExempt = false;
}

bool FailingAllocationElsewhere::hasFailed() {
    return leftElsewhere.load(std::memory_order_relaxed) == 0;
}

}  // namespace korvalite::core::test

void* operator new(std::size_t size) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    allocatedBytes.fetch_add(size, std::memory_order_relaxed);
    if (failsHere() || failsElsewhere()) throw std::bad_alloc();
    if (size > mostBytesAtOnce.load(std::memory_order_relaxed)) throw std::bad_alloc();
    if (void* memory = std::malloc(size != 0 ? size : 1)) {
        live.fetch_add(1, std::memory_order_relaxed);
        return memory;
    }
    throw std::bad_alloc();
}

void* operator new[](std::size_t size) {
    return operator new(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
    return operator new(size, tag);
}

void operator delete(void* memory) noexcept {
    if (memory != nullptr) live.fetch_sub(1, std::memory_order_relaxed);
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}
void operator delete[](void* memory) noexcept {
    operator delete(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    operator delete(memory);
}

// SPDX-License-Identifier: MIT
//
// Memory for arrays as long as the mesh, which the decimation reads in no order at all.
#pragma once

#include <cstddef>
#include <new>
#include <utility>
#include <vector>

namespace korvalite::platform {

// Asks the system for large pages in a range that has not been touched yet: walking a mesh of
// millions misses the address cache at nearly every step otherwise. A hint; short ranges and
// systems without it do nothing.
void adviseLargePages(void* begin, std::size_t byteCount);

// Zeroed memory that takes no room until it is touched, where the system can do that; null if there
// is none left. Release with freeZeroed.
void* allocateZeroed(std::size_t byteCount);
void freeZeroed(void* memory);

}  // namespace korvalite::platform

namespace korvalite {

/// Room for `count` items, in large pages where there are any. For an empty vector.
template <typename Item>
void reserveLarge(std::vector<Item>& items, std::size_t count) {
    items.reserve(count);
    platform::adviseLargePages(items.data(), count * sizeof(Item));
}

template <typename Item>
struct ZeroPagesAllocator;

/// The same for a vector whose allocator sees to the pages.
template <typename Item>
void reserveLarge(std::vector<Item, ZeroPagesAllocator<Item>>& items, std::size_t count) {
    items.reserve(count);
}

/// Gives a vector items that are all zero bytes without touching them, so that the part of an array
/// that is never used takes no memory. An array that shrinks and grows again within its capacity
/// finds what it left there.
template <typename Item>
struct ZeroPagesAllocator {
    using value_type = Item;

    ZeroPagesAllocator() = default;
    template <typename Other>
    explicit ZeroPagesAllocator(const ZeroPagesAllocator<Other>& /*other*/) {}

    Item* allocate(std::size_t count) {
        if (count > static_cast<std::size_t>(-1) / sizeof(Item)) throw std::bad_alloc();
        void* const memory = platform::allocateZeroed(count * sizeof(Item));
        if (memory == nullptr) throw std::bad_alloc();
        return static_cast<Item*>(memory);
    }
    void deallocate(Item* memory, std::size_t /*count*/) { platform::freeZeroed(memory); }

    void construct(Item* /*place*/) {}
    template <typename... Arguments>
    void construct(Item* place, Arguments&&... arguments) {
        ::new (static_cast<void*>(place)) Item(std::forward<Arguments>(arguments)...);
    }

    friend bool operator==(const ZeroPagesAllocator&, const ZeroPagesAllocator&) { return true; }
};

}  // namespace korvalite

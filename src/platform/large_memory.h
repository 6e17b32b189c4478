// SPDX-License-Identifier: MIT
//
// Memory for arrays as long as the mesh, which the decimation accesses in random order.
#pragma once

#include <cstddef>
#include <new>
#include <utility>
#include <vector>

namespace korvalite::core::platform {

// Asks the system for large pages in a range that has not been touched yet: without them, walking a
// mesh of millions of triangles misses the TLB at nearly every step. A hint, which has no effect on
// short ranges and on systems without large pages.
void adviseLargePages(void* begin, std::size_t byteCount);

// Zeroed memory that, where the system supports it, takes up no RAM until it is touched; null if
// out of memory. Release it with freeZeroed.
void* allocateZeroed(std::size_t byteCount);
void freeZeroed(void* memory);

}  // namespace korvalite::core::platform

namespace korvalite::core {

/// Reserves room for `count` items, in large pages where available. REQUIRES: `items` is empty.
template <typename Item>
void reserveLarge(std::vector<Item>& items, std::size_t count) {
    items.reserve(count);
    platform::adviseLargePages(items.data(), count * sizeof(Item));
}

template <typename Item>
struct ZeroPagesAllocator;

/// The same for a vector whose allocator takes care of the pages.
template <typename Item>
void reserveLarge(std::vector<Item, ZeroPagesAllocator<Item>>& items, std::size_t count) {
    items.reserve(count);
}

/// Gives a vector items of all zero bytes without touching them, so the unused part of an array
/// takes no memory. An array that shrinks and grows again within its capacity gets its old items
/// back.
template <typename Item>
struct ZeroPagesAllocator {
    using value_type = Item;  // NOLINT(readability-identifier-naming): the standard's name

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

}  // namespace korvalite::core

// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace korvalite::core {

/// A std::vector that also takes the 32-bit index of a vertex, triangle or corner, without a cast.
/// REQUIRES: the index is not negative.
///
/// Always inlined, so that builds for debugging and for sanitizers do not pay for it.
template <typename Item, typename Allocator = std::allocator<Item>>
class IndexedArray : public std::vector<Item, Allocator> {
    using Base = std::vector<Item, Allocator>;

public:
    using Base::Base;
    using Base::operator[];

    IndexedArray() = default;
    IndexedArray(Base items)  // NOLINT(google-explicit-constructor): it is a vector of the same
        : Base(std::move(items)) {}

    [[nodiscard, gnu::always_inline]] typename Base::reference operator[](std::int32_t index) {
        return Base::operator[](static_cast<std::size_t>(index));
    }
    [[nodiscard, gnu::always_inline]] typename Base::const_reference
    operator[](std::int32_t index) const {
        return Base::operator[](static_cast<std::size_t>(index));
    }
    [[nodiscard, gnu::always_inline]] typename Base::reference operator[](std::uint32_t index) {
        return Base::operator[](std::size_t{index});
    }
    [[nodiscard, gnu::always_inline]] typename Base::const_reference
    operator[](std::uint32_t index) const {
        return Base::operator[](std::size_t{index});
    }
};

using IndexList = IndexedArray<std::int32_t>;

/// The index of nothing.
inline constexpr std::int32_t kNone = -1;

}  // namespace korvalite::core

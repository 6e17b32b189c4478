// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace korva {

/// Prefetches memory that will be read soon.
inline void fetchAhead([[maybe_unused]] const void* address) {
#if defined(__GNUC__)
    __builtin_prefetch(address);
#endif
}

/// Numbers different things from 0 in the order in which they come, and finds them again. Holds
/// only the numbers, in 6 to 12 bytes each; the things themselves are in arrays of the caller.
/// There can be at most 2^31.
class IndexTable {
public:
    /// The number of things so far, which is the index of the next new one.
    [[nodiscard]] std::uint32_t size() const { return size_; }

    /// Makes room for `more` new things. hashOf(i) is the hash of thing i.
    template <typename HashOf>
    void makeRoom(std::size_t more, const HashOf& hashOf) {
        const std::size_t needed = (size_ + more) / 2 * 3 + 3;
        if (needed <= slots_.size()) return;
        const std::size_t count = std::bit_ceil(std::max(needed, kFewest));
        // The old slots are not needed to fill the new ones, so both are never in memory at once.
        std::vector<std::uint32_t>().swap(slots_);
        slots_.resize(count, kFree);
        indexBits_ = static_cast<unsigned>(std::countr_zero(count));
        for (std::uint32_t i = 0; i < size_; ++i) {
            const std::uint32_t hash = hashOf(i);
            std::size_t slot = slotOf(hash);
            while (slots_[slot] != kFree)
                slot = next(slot);
            slots_[slot] = tagOf(hash) | i;
        }
    }

    /// The index of the thing for which isSame(index) holds, or the next index if there is none.
    /// A new one needs room from makeRoom().
    template <typename IsSame>
    std::uint32_t findOrAdd(std::uint32_t hash, const IsSame& isSame) {
        const std::uint32_t tag = tagOf(hash);
        std::size_t slot = slotOf(hash);
        for (; slots_[slot] != kFree; slot = next(slot)) {
            const std::uint32_t index = slots_[slot] & indexMask();
            if ((tag | index) == slots_[slot] && isSame(index)) return index;
        }
        slots_[slot] = tag | size_;
        return size_++;
    }

    /// Prefetches the slot where the search for the hash begins.
    void fetchSlot(std::uint32_t hash) const { fetchAhead(&slots_[slotOf(hash)]); }

    /// The index that the search for the hash meets first, or one that is not below size().
    [[nodiscard]] std::uint32_t firstGuess(std::uint32_t hash) const {
        return slots_[slotOf(hash)] & indexMask();
    }

private:
    static constexpr std::uint32_t kFree = 0xFFFFFFFF;  // its index is not below size()
    static constexpr std::size_t kFewest = 256;

    // The upper bits of a hash choose the slot. The rest are in the slot above the index, where
    // they save most comparisons of things that differ.
    [[nodiscard]] std::size_t slotOf(std::uint32_t hash) const {
        return std::uint64_t{hash} >> (32U - indexBits_);
    }
    [[nodiscard]] std::uint32_t tagOf(std::uint32_t hash) const {
        return static_cast<std::uint32_t>(std::uint64_t{hash} << indexBits_);
    }
    [[nodiscard]] std::uint32_t indexMask() const {
        return static_cast<std::uint32_t>(slots_.size() - 1);
    }
    [[nodiscard]] std::size_t next(std::size_t slot) const {
        return (slot + 1) & (slots_.size() - 1);
    }

    std::vector<std::uint32_t> slots_;
    unsigned indexBits_ = 0;
    std::uint32_t size_ = 0;
};

[[nodiscard]] inline std::uint32_t hashOfWords(std::uint32_t a, std::uint32_t b, std::uint32_t c) {
    std::uint64_t hash = (a | std::uint64_t{b} << 32U) * 0x9E3779B97F4A7C15U;
    hash = (hash ^ hash >> 32U) + c;
    hash *= 0xD6E8FEB86659FD93U;
    hash ^= hash >> 32U;
    return static_cast<std::uint32_t>((hash * 0xD6E8FEB86659FD93U) >> 32U);
}

}  // namespace korva

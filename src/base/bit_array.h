// SPDX-License-Identifier: MIT
//
// One bit per vertex, triangle or UV coordinate: bit i is in byte i / 8 with the mask 1 << (i % 8).
//
// Thread safety: one thread may Test a bit while another Sets or Clears others. Several items share
// a byte, so writers need a lock even if they write different bits. Everything else is for one
// thread.
#pragma once

#include "base/cache.h"
#include "base/relaxed.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace korvalite::core {

class BitArray {
public:
    /// False for any index out of range, including negative ones.
    [[nodiscard]] bool Test(std::int32_t index) const {
        if (static_cast<std::uint32_t>(index) >= static_cast<std::uint32_t>(count_)) return false;
        const auto i = static_cast<std::uint32_t>(index);
        return ((std::uint32_t{loadRelaxed(bytes_[i >> 3U])} >> (i & 7U)) & 1U) != 0;
    }
    [[nodiscard]] bool Test(std::uint32_t index) const {
        return Test(static_cast<std::int32_t>(index));
    }

    /// Hints that this bit will be tested soon; no effect for an index out of range.
    void prefetchBit(std::int32_t index) const {
        const auto i = static_cast<std::uint32_t>(index);
        if (i < static_cast<std::uint32_t>(count_)) prefetch(&bytes_[i >> 3U]);
    }

    /// REQUIRES: index < count().
    void Set(std::uint32_t index) {
        std::uint8_t& byte = bytes_[index >> 3U];
        storeRelaxed(byte, static_cast<std::uint8_t>(loadRelaxed(byte) | mask(index)));
    }
    void Clear(std::uint32_t index) {
        std::uint8_t& byte = bytes_[index >> 3U];
        storeRelaxed(byte, static_cast<std::uint8_t>(loadRelaxed(byte) & ~mask(index)));
    }
    void Set(std::int32_t index) { Set(static_cast<std::uint32_t>(index)); }
    void Clear(std::int32_t index) { Clear(static_cast<std::uint32_t>(index)); }
    template <typename Index>
    void Assign(Index index, bool value) {
        value ? Set(index) : Clear(index);
    }

    /// Makes room for n bits and clears every byte.
    void Reset(std::int32_t n);

    /// Makes room for n bits; the bits from the old count upward become `fill`, and so do the spare
    /// bits of the last byte.
    void Resize(std::int32_t n, bool fill);

    /// Copies the bits of `other` and clears any after them.
    void Assign(const BitArray& other);

    [[nodiscard]] std::int32_t CountSet() const;

    /// Empties the array and frees its storage.
    void Free();

    [[nodiscard]] std::int32_t count() const { return count_; }

    /// The (count() + 7) / 8 bytes that hold the bits, for files.
    [[nodiscard]] std::uint8_t* data() { return bytes_.data(); }
    [[nodiscard]] const std::uint8_t* data() const { return bytes_.data(); }
    [[nodiscard]] std::size_t byteCount() const { return bytesFor(count_); }

private:
    static std::size_t bytesFor(std::int32_t n) { return (static_cast<std::size_t>(n) + 7) / 8; }
    static std::uint8_t mask(std::uint32_t index) {
        return static_cast<std::uint8_t>(1U << (index & 7U));
    }

    std::vector<std::uint8_t> bytes_;  // its size is the capacity
    std::int32_t count_ = 0;
};

}  // namespace korvalite::core

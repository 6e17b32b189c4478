// SPDX-License-Identifier: MIT
//
// One bit per vertex, triangle or UV coordinate: bit i lives in byte i / 8 under the mask 1 << (i %
// 8).
//
// Thread safety: one thread may test a bit while another changes others. Bits of several items
// share a byte, so that writers need a lock even where they write different bits. Test, Set and
// Clear of one bit alone are meant; the rest is for one thread.
#pragma once

#include "platform/prefetch.h"
#include "platform/relaxed.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace korvalite {

class BitArray {
public:
    /// False for every index that is not below count(), negative ones included.
    [[nodiscard]] bool Test(std::int32_t index) const {
        if (static_cast<std::uint32_t>(index) >= static_cast<std::uint32_t>(count_)) return false;
        const auto i = static_cast<std::uint32_t>(index);
        return ((std::uint32_t{loadRelaxed(bytes_[i >> 3U])} >> (i & 7U)) & 1U) != 0;
    }
    [[nodiscard]] bool Test(std::uint32_t index) const {
        return Test(static_cast<std::int32_t>(index));
    }

    /// A hint that Test will be asked for this bit; none for an index that is not below count().
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

    /// Makes room for n bits; the bits from the old count upward become `fill`. Whole bytes are
    /// filled, so that the spare bits behind the last one carry `fill` too.
    void Resize(std::int32_t n, bool fill);

    /// Takes over the bits of `other` and clears what lies behind them.
    void Assign(const BitArray& other);

    [[nodiscard]] std::int32_t CountSet() const;

    /// Back to the empty state; the storage is returned.
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

}  // namespace korvalite

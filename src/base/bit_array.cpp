// SPDX-License-Identifier: MIT
#include "base/bit_array.h"

#include <algorithm>
#include <bit>

namespace korvalite::core {

void BitArray::Reset(std::int32_t n) {
    if (bytes_.size() < bytesFor(n)) {
        Free();
        bytes_.resize(bytesFor(n));
    }
    count_ = n;
    std::fill(bytes_.begin(), bytes_.end(), std::uint8_t{0});
}

void BitArray::Resize(std::int32_t n, bool fill) {
    // COMPAT: the spare bits of the last byte are filled too; they are bytes of .kvm files.
    const std::uint8_t filler = fill ? 0xFF : 0x00;
    const std::size_t keptBytes = bytesFor(std::min(count_, n));
    if (bytes_.size() < bytesFor(n)) bytes_.resize(bytesFor(n));
    std::fill(bytes_.begin() + static_cast<std::ptrdiff_t>(keptBytes), bytes_.end(), filler);
    if (count_ < n && count_ % 8 != 0) {
        const auto newBits =
            static_cast<std::uint8_t>(0xFFU << (static_cast<unsigned>(count_) % 8));
        std::uint8_t& partial = bytes_[static_cast<std::size_t>(count_) / 8];
        partial = static_cast<std::uint8_t>(fill ? partial | newBits : partial & ~newBits);
    }
    count_ = n;
}

void BitArray::Assign(const BitArray& other) {
    Reset(other.count_);
    std::copy_n(other.bytes_.begin(), other.byteCount(), bytes_.begin());
    if (const auto tail = static_cast<unsigned>(count_) % 8; tail != 0) {
        std::uint8_t& partial = bytes_[byteCount() - 1];
        partial = static_cast<std::uint8_t>(partial & ((1U << tail) - 1));
    }
}

std::int32_t BitArray::CountSet() const {
    std::int32_t set = 0;
    const auto wholeBytes = static_cast<std::size_t>(count_) / 8;
    for (std::size_t i = 0; i < wholeBytes; ++i)
        set += std::popcount(bytes_[i]);
    if (const auto tail = static_cast<unsigned>(count_) % 8; tail != 0) {
        set += std::popcount(static_cast<std::uint8_t>(bytes_[wholeBytes] & ((1U << tail) - 1)));
    }
    return set;
}

void BitArray::Free() {
    std::vector<std::uint8_t>().swap(bytes_);
    count_ = 0;
}

}  // namespace korvalite::core

// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace korvalite::core::test {

// Returns the bytes of a fuzz input one by one; zeros when they are used up.
class ByteReader {
public:
    ByteReader(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}

    bool isEmpty() const { return left_ == 0; }

    std::uint8_t byte() {
        if (left_ == 0) return 0;
        --left_;
        return *data_++;
    }
    bool flag() { return (byte() & 1U) != 0; }

    // 0 to limit - 1; 0 for a limit of 0.
    std::uint32_t below(std::uint32_t limit) { return limit == 0 ? 0 : byte() % limit; }

private:
    const std::uint8_t* data_;
    std::size_t left_;
};

}  // namespace korvalite::core::test

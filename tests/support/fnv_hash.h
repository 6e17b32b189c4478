// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace korvalite::core::test {

// FNV-1a with 64 bits: enough to detect changed bytes.
constexpr std::uint64_t fnvHash(std::string_view bytes) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char byte : bytes) {
        hash ^= static_cast<unsigned char>(byte);
        hash *= 0x100000001B3U;
    }
    return hash;
}
static_assert(fnvHash("") == 0xCBF29CE484222325U);
static_assert(fnvHash("a") == 0xAF63DC4C8601EC8CU);
static_assert(fnvHash("foobar") == 0x85944171F73967E8U);

// 16 hexadecimal digits.
inline std::string fnvText(std::string_view bytes) {
    std::string text;
    const std::uint64_t hash = fnvHash(bytes);
    for (int shift = 60; shift >= 0; shift -= 4)
        text += "0123456789abcdef"[(hash >> shift) & 0xFU];
    return text;
}

}  // namespace korvalite::core::test

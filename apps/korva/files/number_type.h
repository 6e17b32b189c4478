// SPDX-License-Identifier: MIT
//
// The types of numbers in binary files, and how to load them.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace korva {

enum class NumberType { Int8, UInt8, Int16, UInt16, Int32, UInt32, Float32, Float64 };

[[nodiscard]] constexpr std::size_t byteSizeOf(NumberType type) {
    constexpr std::size_t kSizes[] = {1, 1, 2, 2, 4, 4, 4, 8};
    return kSizes[static_cast<std::size_t>(type)];
}

/// Calls the action with a zero of the type.
template <typename Action>
auto withTypeOf(NumberType type, Action action) {
    switch (type) {
    case NumberType::Int8: return action(std::int8_t{});
    case NumberType::UInt8: return action(std::uint8_t{});
    case NumberType::Int16: return action(std::int16_t{});
    case NumberType::UInt16: return action(std::uint16_t{});
    case NumberType::Int32: return action(std::int32_t{});
    case NumberType::UInt32: return action(std::uint32_t{});
    case NumberType::Float32: return action(float{});
    case NumberType::Float64: break;
    }
    return action(double{});
}

// Compilers turn these into single instructions.
constexpr std::uint16_t byteSwapped(std::uint16_t word) {
    return static_cast<std::uint16_t>((word >> 8) | (word << 8));
}

constexpr std::uint32_t byteSwapped(std::uint32_t word) {
    return (word >> 24U) | ((word >> 8U) & 0xFF00U) | ((word << 8U) & 0xFF0000U) | (word << 24U);
}

constexpr std::uint64_t byteSwapped(std::uint64_t word) {
    return (std::uint64_t{byteSwapped(static_cast<std::uint32_t>(word))} << 32U) |
           byteSwapped(static_cast<std::uint32_t>(word >> 32U));
}

/// Loads a number from any address, in the byte order of this machine or, if swapped, the other.
template <typename Value, bool isSwapped = false>
[[nodiscard]] Value loadNumber(const char* from) {
    if constexpr (isSwapped && sizeof(Value) > 1) {
        using Word = std::conditional_t<
            sizeof(Value) == 2, std::uint16_t,
            std::conditional_t<sizeof(Value) == 4, std::uint32_t, std::uint64_t>>;
        return std::bit_cast<Value>(byteSwapped(loadNumber<Word>(from)));
    } else {
        Value value{};
        std::memcpy(&value, from, sizeof value);
        return value;
    }
}

}  // namespace korva

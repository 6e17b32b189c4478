// SPDX-License-Identifier: MIT
#include "korva/numbers.h"

#include <array>
#include <cstddef>
#include <cstdio>

namespace korva {

std::string withCommas(std::uint64_t number) {
    std::string text = std::to_string(number);
    for (std::size_t i = text.size(); i > 3; i -= 3)
        text.insert(i - 3, 1, ',');
    return text;
}

std::string withDigits(double number, int digits) {
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%.*g", digits, number);
    return text.data();
}

}  // namespace korva

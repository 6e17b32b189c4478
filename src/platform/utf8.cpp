// SPDX-License-Identifier: MIT
#include "platform/utf8.h"

#include <cstdint>

namespace korvalite::core::platform {

namespace {

bool continuesCharacter(char c) {
    return (static_cast<std::uint8_t>(c) & 0xC0U) == 0x80U;
}

// The length in bytes of the first character of a non-empty text; 0 if it is malformed.
std::size_t firstCharacterLength(std::string_view text) {
    const auto lead = static_cast<std::uint8_t>(text[0]);
    if (lead < 0x80) return 1;
    if (lead < 0xC2 || lead > 0xF4) return 0;
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (text.size() < length) return 0;
    for (std::size_t i = 1; i < length; ++i)
        if (!continuesCharacter(text[i])) return 0;
    const auto second = static_cast<std::uint8_t>(text[1]);
    const bool overlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
    const bool surrogate = lead == 0xED && second > 0x9F;
    const bool aboveUnicode = lead == 0xF4 && second > 0x8F;
    return overlong || surrogate || aboveUnicode ? 0 : length;
}

}  // namespace

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = firstCharacterLength(text);
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

std::string_view cutAtCharacter(std::string_view text, std::size_t byteCount) {
    if (text.size() <= byteCount) return text;
    std::size_t end = byteCount;
    if (isUtf8(text)) {
        while (continuesCharacter(text[end]))
            --end;
    }
    return text.substr(0, end);
}

}  // namespace korvalite::core::platform

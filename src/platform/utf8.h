// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

namespace korvalite::core::platform {

// Whether the bytes are well-formed UTF-8: no overlong forms, surrogates, code points above
// U+10FFFF or truncated characters.
bool isUtf8(std::string_view text);

// The longest prefix of at most `byteCount` bytes that ends at a character boundary. Text that is
// not UTF-8 is cut at `byteCount`. The result is a view into the argument.
std::string_view cutAtCharacter(std::string_view text, std::size_t byteCount);

}  // namespace korvalite::core::platform

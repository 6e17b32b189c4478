// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

namespace korvalite::platform {

// Whether the bytes are well-formed UTF-8: no overlong form, no surrogate, nothing above U+10FFFF,
// no character cut short.
bool isUtf8(std::string_view text);

// The longest beginning of at most `byteCount` bytes that ends between two characters. Text that is
// not UTF-8 has unknown characters and is cut at `byteCount`. The result views the argument.
std::string_view cutAtCharacter(std::string_view text, std::size_t byteCount);

}  // namespace korvalite::platform

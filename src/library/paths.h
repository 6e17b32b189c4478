// SPDX-License-Identifier: MIT
#pragma once

#include "base/heap_string.h"

#include <filesystem>
#include <string>

namespace korvalite {

/// The path in the encoding of the core, which is UTF-8 on Windows and the path's own bytes
/// elsewhere.
inline core::HeapString pathText(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return core::HeapString(std::string(text.begin(), text.end()));
}

}  // namespace korvalite

// SPDX-License-Identifier: MIT
//
// The log. Its texts document each step where it happens but are never written anywhere;
// placeholders such as "%d" are not filled in.
#pragma once

#include "base/heap_string.h"

namespace korvalite {

/// Frees the text.
inline void DebugLog([[maybe_unused]] HeapString text) {}

/// For literals: has no cost.
inline void DebugLog([[maybe_unused]] const char* text) {}

}  // namespace korvalite

// SPDX-License-Identifier: MIT
//
// The log of the system: its texts are the vocabulary of what happens, kept at their places, and go
// nowhere. Placeholders such as "%d" are never filled.
#pragma once

#include "shell/base/heap_string.h"

namespace korvalite {

/// Releases the text.
inline void DebugLog([[maybe_unused]] HeapString text) {}

/// For literals: costs nothing at all.
inline void DebugLog([[maybe_unused]] const char* text) {}

}  // namespace korvalite

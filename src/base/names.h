// SPDX-License-Identifier: MIT
//
// Helpers for file names and number texts.
#pragma once

#include "base/heap_string.h"

#include <cstdint>

namespace korvalite::core {

/// A path in `folder` (or just `name`, if that is empty) with no regular file, found by
/// IncrementFileName. Another process may take it first: create the file exclusively, and on a
/// collision continue with IncrementFileName.
HeapString GetFreeFilePath(const HeapString& folder, const HeapString& name);

/// Increments the number at the end of the file's stem: "a.data", "a1.data", ... "a9.data",
/// "a10.data". A dot in a folder's name does not start a suffix. Null gives "1".
HeapString IncrementFileName(const HeapString& path);

/// Formats a count for progress texts: 999 is "999", 12345 is "12.3k", 1234567 is "1.2m"; the
/// decimal is truncated, not rounded. Not for numbers below -999, which lose their thousands.
HeapString FormatCount(std::int32_t count);

}  // namespace korvalite::core

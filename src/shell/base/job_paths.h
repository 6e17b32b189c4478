// SPDX-License-Identifier: MIT
//
// The two process-wide names of a job, and helpers for file names and number texts. The names may
// only be changed on the main thread and between decimation runs.
#pragma once

#include "shell/base/heap_string.h"

#include <cstdint>

namespace korvalite {

/// The folder of the job file, for scratch files. Removes one `/` or `\` at the end of `path`.
void SetJobDirectory(const HeapString& path);
const HeapString& JobDirectory();

/// The name of the current mesh in progress texts.
void SetCurrentMeshName(const HeapString& name);
const HeapString& CurrentMeshName();

/// A path in JobDirectory (or just `name`, if there is none) with no regular file, found by
/// IncrementFileName. Another process may take it first: create the file exclusively, and on a
/// collision continue with IncrementFileName.
HeapString GetFreeFilePath(const HeapString& name);

/// Increments the number at the end of the file's stem: "a.data", "a1.data", ... "a9.data",
/// "a10.data". A dot in a folder's name does not start a suffix. Null gives "1".
HeapString IncrementFileName(const HeapString& path);

/// Formats a count for progress texts: 999 is "999", 12345 is "12.3k", 1234567 is "1.2m"; the
/// decimal is truncated, not rounded. Not for numbers below -999, which lose their thousands.
HeapString FormatCount(std::int32_t count);

}  // namespace korvalite

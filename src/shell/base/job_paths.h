// SPDX-License-Identifier: MIT
//
// The two process-wide names of a job, and the making of file names and number texts from them.
// The names are written on the main thread, between decimation runs only.
#pragma once

#include "shell/base/heap_string.h"

#include <cstdint>

namespace korvalite {

/// The folder of the job file, for scratch files. One `/` or `\` at the end of `path` is cut.
void SetJobDirectory(const HeapString& path);
const HeapString& JobDirectory();

/// The mesh being worked on, as progress texts name it.
void SetCurrentMeshName(const HeapString& name);
const HeapString& CurrentMeshName();

/// A path in JobDirectory (or `name` alone, if there is none) that no regular file has, found by
/// IncrementFileName. Another process may take it first: create it exclusively, and on a collision
/// go on with IncrementFileName.
HeapString GetFreeFilePath(const HeapString& name);

/// Counts up the number at the end of the file's stem: "a.data", "a1.data", ... "a9.data",
/// "a10.data". A dot in a folder's name starts no suffix. Null gives "1".
HeapString IncrementFileName(const HeapString& path);

/// The short number of progress texts: 999 is "999", 12345 is "12.3k", 1234567 is "1.2m"; the
/// decimal is cut, not rounded. Meant for counts: of a number below -999 only what remains of the
/// last thousand is shown.
HeapString FormatCount(std::int32_t count);

}  // namespace korvalite

// SPDX-License-Identifier: MIT
//
// The parser of job files. It never complains: it skips what it does not understand.
#pragma once

#include "shell/job_config.h"

#include <span>

namespace korvalite::core {

struct ConfigKeyEntry {
    const char* key;
    void (*handler)(const HeapString& value, JobConfig& job);
};

/// All keys. A line is matched against the last key first, and the first match wins, so a key that
/// is a prefix of another must come before it.
std::span<const ConfigKeyEntry> keyTable();

/// Resets everything to its default and removes all entries.
void ResetJobConfig(JobConfig& job);

/// Adds the contents of the file; entries are prepended, so the last one comes first. False if the
/// file cannot be opened or is empty. The text ends at the first zero byte.
bool LoadJobFile(const HeapString& path, JobConfig& job);

/// False for "No", "0", "False" and "#f" in any case; true for anything else, even an empty text.
bool ParseBool(const HeapString& text);

}  // namespace korvalite::core

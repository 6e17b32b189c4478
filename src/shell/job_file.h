// SPDX-License-Identifier: MIT
//
// The parser of job files. It never complains: what it does not understand, it skips.
#pragma once

#include "shell/job_config.h"

#include <span>

namespace korvalite {

struct ConfigKeyEntry {
    const char* key;
    void (*handler)(const HeapString& value, JobConfig& job);
};

/// All keys. A line is tried with the last one first and the first match takes it, so a key that
/// another one begins with stands before that one.
std::span<const ConfigKeyEntry> keyTable();

/// Every default, and no entries.
void ResetJobConfig(JobConfig& job);

/// Adds what the file says; the entries come to stand in front of each other, the last one first.
/// False if the file cannot be opened or has no bytes. The text ends at the first zero byte.
bool LoadJobFile(const HeapString& path, JobConfig& job);

/// False for "No", "0", "False" and "#f" in any letter case; true for all else, also for nothing.
bool ParseBool(const HeapString& text);

}  // namespace korvalite

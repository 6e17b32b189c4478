// SPDX-License-Identifier: MIT
//
// The log: a line for each step, in builds with KORVALITE_DEBUG_LOG only.
#pragma once

#include <string>

namespace korvalite::core {

/// A line of the log: the arguments in a printf format.
[[gnu::format(printf, 1, 2)]] std::string debugLogText(const char* format, ...);

#ifdef KORVALITE_DEBUG_LOG
/// Writes the line to standard error. From any thread; lines do not mix.
[[gnu::format(printf, 1, 2)]] void DebugLog(const char* format, ...);
#else
/// Does nothing, but the compiler still checks the arguments against the format.
[[gnu::format(printf, 1, 2)]] inline void DebugLog(const char*, ...) {}
#endif

/// A flag for "%s".
constexpr const char* trueOrFalse(bool flag) {
    return flag ? "true" : "false";
}

}  // namespace korvalite::core

// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace korvalite::platform {

// What remains of a raw command line behind the program's own name and the white space that
// follows it. A character below 33 is white space; double quotes in the name keep blanks inside it.
// The tail is neither split nor unquoted nor trimmed at its end. The result views the argument.
std::string_view commandTailOf(std::string_view rawCommandLine);

}  // namespace korvalite::platform

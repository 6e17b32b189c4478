// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace korvalite::core::platform {

// The rest of a raw command line after the program's own name and the white space that follows it.
// Characters below 33 are white space; double quotes keep blanks in the name. The tail is not
// split, unquoted or trimmed at its end. The result is a view into the argument.
std::string_view commandTailOf(std::string_view rawCommandLine);

}  // namespace korvalite::core::platform

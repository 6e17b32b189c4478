// SPDX-License-Identifier: MIT
#include "platform/command_line.h"

#include <cstddef>

namespace korvalite::core::platform {

namespace {

// Compared as unsigned: the bytes above 127 in a UTF-8 name are not white space.
bool isWhiteSpace(char c) {
    return static_cast<unsigned char>(c) < 33;
}

}  // namespace

// COMPAT: the tail is neither unquoted nor trimmed; hosts pass a path with blanks as it is.
std::string_view commandTailOf(std::string_view rawCommandLine) {
    std::size_t at = 0;
    bool quoted = false;
    while (at < rawCommandLine.size() && (quoted || !isWhiteSpace(rawCommandLine[at]))) {
        if (rawCommandLine[at] == '"') quoted = !quoted;
        ++at;
    }
    while (at < rawCommandLine.size() && isWhiteSpace(rawCommandLine[at]))
        ++at;
    return rawCommandLine.substr(at);
}

}  // namespace korvalite::core::platform

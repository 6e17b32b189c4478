// SPDX-License-Identifier: MIT
#include "base/debug_log.h"

#include <cstdarg>
#include <cstdio>

namespace korvalite::core {

namespace {

[[gnu::format(printf, 1, 0)]] std::string formatted(const char* format, std::va_list arguments) {
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    if (length < 0) return {};
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

}  // namespace

std::string debugLogText(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::string text = formatted(format, arguments);
    va_end(arguments);
    return text;
}

#ifdef KORVALITE_DEBUG_LOG
void DebugLog(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const std::string line = formatted(format, arguments) + '\n';
    va_end(arguments);
    std::fputs(line.c_str(), stderr);
}
#endif

}  // namespace korvalite::core

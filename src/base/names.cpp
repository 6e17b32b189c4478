// SPDX-License-Identifier: MIT
#include "base/names.h"

#include "platform/platform.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace korvalite::core {

namespace {

std::size_t stemEnd(const std::string& path) {
    const std::size_t dot = path.rfind('.');
    const std::size_t separator = path.find_last_of("/\\");
    const bool isSuffix =
        dot != std::string::npos && (separator == std::string::npos || dot > separator);
    return isSuffix ? dot : path.size();
}

}  // namespace

HeapString GetFreeFilePath(const HeapString& folder, const HeapString& name) {
    HeapString path = folder.empty() ? name : folder + "/" + name;
    while (platform::isRegularFile(path.c_str()))
        path = IncrementFileName(path);
    return path;
}

HeapString IncrementFileName(const HeapString& path) {
    std::string text(path.view());
    const std::size_t end = stemEnd(text);
    std::size_t runStart = end;
    while (runStart > 0 && text[runStart - 1] == '9')
        --runStart;

    std::fill(text.begin() + static_cast<std::ptrdiff_t>(runStart),
              text.begin() + static_cast<std::ptrdiff_t>(end), '0');
    const bool hasDigitBefore =
        runStart > 0 && text[runStart - 1] >= '0' && text[runStart - 1] <= '8';
    if (hasDigitBefore)
        ++text[runStart - 1];
    else
        text.insert(runStart, 1, '1');
    return HeapString(text);
}

HeapString FormatCount(std::int32_t count) {
    const std::int32_t millions = count / 1'000'000;
    const std::int32_t thousands = (count - millions * 1'000'000) / 1000;
    const std::int32_t rest = count - millions * 1'000'000 - thousands * 1000;
    char text[32];
    if (millions >= 1)
        std::snprintf(text, sizeof text, "%d.%dm", millions, thousands / 100);
    else if (thousands >= 1)
        std::snprintf(text, sizeof text, "%d.%dk", thousands, rest / 100);
    else
        std::snprintf(text, sizeof text, "%d", rest);
    return text;
}

}  // namespace korvalite::core

// SPDX-License-Identifier: MIT
#include "korva/picture/picture_size.h"

#include <korvalite/korvalite.h>

#include <charconv>
#include <string_view>

namespace korva {

namespace {

bool parseLength(std::string_view text, std::size_t& length) {
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, length);
    return error == std::errc() && stop == end && length >= 16 && length <= 16384;
}

}  // namespace

PictureSize parsePictureSize(const std::string& text) {
    const std::size_t cross = text.find('x');
    PictureSize size{};
    if (cross != std::string::npos &&
        parseLength(std::string_view(text).substr(0, cross), size.width) &&
        parseLength(std::string_view(text).substr(cross + 1), size.height))
        return size;
    throw korvalite::Error(korvalite::ErrorCode::BadOption,
                           "The size " + text +
                               " is not possible; write width x height in pixels, each from 16 to "
                               "16384, as in 1600x900.");
}

}  // namespace korva

// SPDX-License-Identifier: MIT
#include "korva/files/obj/obj_line.h"

#include "korva/files/words.h"
#include "korva/io/input_file.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace korva {

std::string_view ObjLine::takeWord() {
    const std::string_view word = peekWord();
    at_ += word.size();
    return word;
}

float ObjLine::takeFloat() {
    const std::string_view word = takeWord();
    float value = 0;
    if (!parseFloat(word, value)) fail(quoted(word) + " is not a number.");
    return value;
}

std::size_t ObjLine::takeFloats(std::span<float> to) {
    std::size_t count = 0;
    while (count < to.size() && hasMore())
        to[count++] = takeFloat();
    return count;
}

ObjCorner ObjLine::takeCorner() {
    const char* const word = at_;
    const auto nextIs = [this](char c) { return at_ != end_ && *at_ == c; };
    const auto atWordEnd = [this] { return at_ == end_ || isBlank(*at_); };
    ObjCorner corner;
    corner.vertex = takeIndex(word);
    if (nextIs('/')) {
        ++at_;
        corner.hasUV = !atWordEnd() && !nextIs('/');
        if (corner.hasUV) corner.uv = takeIndex(word);
    }
    if (nextIs('/')) {
        ++at_;
        corner.hasNormal = !atWordEnd();
        if (corner.hasNormal) takeIndex(word);
    }
    if (!atWordEnd()) failAtWord(word, " is not a corner of a face.");
    return corner;
}

void ObjLine::fail(const std::string& reason) const {
    failToRead(path_, "line " + std::to_string(number_) + ": " + reason);
}

std::string_view ObjLine::peekWord() const {
    const char* const wordEnd = std::find_if(at_, end_, isBlank);
    return {at_, static_cast<std::size_t>(wordEnd - at_)};
}

std::int64_t ObjLine::takeIndex(const char* wordBegin) {
    std::int64_t index = 0;
    const auto [end, problem] = std::from_chars(at_, end_, index);
    if (problem == std::errc::result_out_of_range)
        failAtWord(wordBegin, " has an index that is too large.");
    if (problem != std::errc()) failAtWord(wordBegin, " is not a corner of a face.");
    if (index == 0) failAtWord(wordBegin, " has index 0, but indices count from 1.");
    at_ = end;
    return index;
}

void ObjLine::failAtWord(const char* wordBegin, const char* reason) {
    at_ = wordBegin;
    fail(quoted(peekWord()) + reason);
}

}  // namespace korva

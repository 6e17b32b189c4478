// SPDX-License-Identifier: MIT
#pragma once

#include "korva/io/output_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <string_view>
#include <type_traits>

namespace korva {

/// A line that is put together before it goes to the file: faster than writing its parts.
class TextLine {
public:
    explicit TextLine(std::string_view keyword = {}) { add(keyword); }

    void add(std::string_view text) { end_ = std::copy(text.begin(), text.end(), end_); }

    /// Floats have the fewest digits that read back as the same.
    template <typename Number>
    requires std::is_arithmetic_v<Number>
    void add(Number number) { end_ = std::to_chars(end_, text_.data() + text_.size(), number).ptr; }
    template <typename Number>
    void add(char separator, Number number) {
        *end_++ = separator;
        add(number);
    }

    void writeTo(OutputFile& file) {
        *end_++ = '\n';
        file.write(text_.data(), static_cast<std::size_t>(end_ - text_.data()));
    }

private:
    // Enough for a face of OBJ with nine indices of 10 digits, or a vertex of OFF with seven
    // floats.
    std::array<char, 160> text_;
    char* end_ = text_.data();
};

}  // namespace korva

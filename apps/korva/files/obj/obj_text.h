// SPDX-License-Identifier: MIT
#pragma once

#include "korva/io/input_file.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace korva {

/// The lines of an OBJ file, where those that end in a backslash are joined with the next.
class ObjText {
public:
    explicit ObjText(InputFile& file) : file_(file) {}

    /// False at the end. The view is valid until the next call.
    bool next(std::string_view& line);

    /// Of the line that was taken last, or its first part; from 1 on.
    [[nodiscard]] std::uint64_t lineNumber() const { return lineNumber_; }

private:
    void join(std::string_view& line);

    InputFile& file_;
    std::uint64_t lineNumber_ = 0;
    std::uint64_t linesTaken_ = 0;
    std::string joined_;
};

}  // namespace korva

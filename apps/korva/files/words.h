// SPDX-License-Identifier: MIT
#pragma once

#include "korva/io/input_file.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace korva {

/// Removes the UTF-8 byte order mark that some programs write at the start of a text file.
void skipByteOrderMark(std::string_view& text);

/// Takes the next word from the start of a line, empty at its end. Words end at blanks and control
/// characters.
[[nodiscard]] std::string_view takeWord(std::string_view& line);

/// The words of a text file, one by one. A word is valid until the next one is taken.
class Words {
public:
    explicit Words(InputFile& file) : file_(file) {}

    /// Empty at the end of the file.
    [[nodiscard]] std::string_view next();
    /// The next word of this line, empty at its end.
    [[nodiscard]] std::string_view nextOfLine() { return takeWord(rest_); }
    /// Leaves out the rest of this line.
    void skipLine() { rest_ = {}; }
    /// Goes to the next line. False at the end of the file.
    bool nextLine();
    /// What follows '#' is not part of the lines.
    void skipComments() { hasComments_ = true; }

    /// The number of the line of the last word, counted from 1.
    [[nodiscard]] std::size_t line() const { return line_; }
    /// Throws a korvalite::Error: "line N: REASON".
    [[noreturn]] void fail(const std::string& reason) const;

private:
    InputFile& file_;
    std::string_view rest_;
    std::size_t line_ = 0;
    bool hasComments_ = false;
};

/// The nearest float; infinity or 0 if it is beyond the range of floats. Reads "nan" and "inf",
/// too. False if the word is anything else.
[[nodiscard]] bool parseFloat(std::string_view word, float& value);

/// A number without its leading plus, which std::from_chars does not take.
[[nodiscard]] std::string_view withoutPlus(std::string_view word);

/// False if the word is not a whole number below 2^64.
[[nodiscard]] bool parseCount(std::string_view word, std::size_t& value);

/// Whether a word is `small`, which is in lower case, in any case.
[[nodiscard]] bool isWord(std::string_view word, std::string_view small);

/// A word for a message, in quotes: its first characters, without what cannot be printed.
[[nodiscard]] std::string quoted(std::string_view word);

/// A name from a file, fit for a message: short and without control characters.
[[nodiscard]] std::string printable(std::string_view name);

}  // namespace korva

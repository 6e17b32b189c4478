// SPDX-License-Identifier: MIT
#pragma once

#include <korvalite/korvalite.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace korva {

/// Shows on standard error how far a command is: a bar with the time left on a terminal, a line for
/// each ten percent elsewhere, or nothing.
class ProgressBar {
public:
    enum class Style { Bar, Lines, None };

    /// A part of the work, with its share of the time.
    struct Part {
        std::string name;
        double share;
    };

    ProgressBar(Style style, std::vector<Part> parts, std::FILE* stream = stderr);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// The style that suits the stream.
    static Style styleFor(std::FILE* stream);

    /// Shows that `done` of `total` of a part are done; a total of 0 means that it is unknown.
    void show(std::size_t part, std::uint64_t done, std::uint64_t total);

    /// Takes the bar off the screen, so that a line can be printed. The next show draws it again.
    void clear();

private:
    void draw(std::size_t part);
    [[nodiscard]] std::string timeLeft() const;

    Style style_;
    std::vector<Part> parts_;
    std::FILE* stream_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point lastDraw_;
    double shown_ = 0;  // of all the work, from 0 to 1; never goes back
    int lines_ = 0;     // printed so far, one for each ten percent
    std::size_t width_ = 0;
};

}  // namespace korva

// SPDX-License-Identifier: MIT
#pragma once

#include "korva/progress_bar.h"

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace korva {

/// How a command talks to people: results go to standard output, everything else to standard
/// error.
struct Console {
    bool quiet = false;  // nothing on standard error but failures
    bool json = false;   // the result is one JSON object

    /// A sentence about what is being done.
    void say(const std::string& sentence) const {
        if (!quiet) std::fprintf(stderr, "%s\n", sentence.c_str());
    }

    void say(const std::vector<std::string>& sentences) const {
        for (const std::string& sentence : sentences)
            say(sentence);
    }

    [[nodiscard]] ProgressBar progress(std::vector<ProgressBar::Part> parts) const {
        return {quiet ? ProgressBar::Style::None : ProgressBar::styleFor(stderr), std::move(parts)};
    }
};

}  // namespace korva

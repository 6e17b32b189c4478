// SPDX-License-Identifier: MIT
#pragma once

#include <korvalite/korvalite.h>

#include <locale>
#include <sstream>

namespace korvalite {

/// Throws Error(BadOption) unless the value of the option is from `least` to `most`.
template <typename Number>
void requireBetween(const char* name, Number value, Number least, Number most) {
    if (value >= least && value <= most) return;
    std::ostringstream sentence;
    sentence.imbue(std::locale::classic());
    sentence << name << " is " << value << "; it must be from " << least << " to " << most << '.';
    throw Error(ErrorCode::BadOption, sentence.str());
}

inline void requireThreads(int threads) {
    requireBetween("threads", threads, 1, 1024);
}

}  // namespace korvalite

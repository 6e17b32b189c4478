// SPDX-License-Identifier: MIT
#include "korva/level_list.h"

#include "korva/goal.h"

#include <algorithm>
#include <cstddef>
#include <string>

namespace korva {

namespace {

using korvalite::Target;

bool isFiner(const Target& a, const Target& b) {
    return a.unit() == Target::Unit::Percent ? a.percentage() > b.percentage()
                                             : a.count() > b.count();
}

}  // namespace

std::vector<Target> parseLevels(std::string_view text) {
    std::vector<Target> levels;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        levels.push_back(parseTarget(text.substr(begin, end - begin)));
        begin = end + 1;
    }
    for (const Target& level : levels)
        if (level.unit() != levels.front().unit())
            throw korvalite::Error(korvalite::ErrorCode::BadOption,
                                   "'" + std::string(text) +
                                       "' mixes units: write all levels in %, v or t.");
    std::ranges::stable_sort(levels, isFiner);
    return levels;
}

std::vector<Target> halvedLevels(int count) {
    std::vector<Target> levels;
    float percent = 100;
    for (int i = 0; i < count; ++i)
        levels.push_back(Target::percent(percent /= 2));
    return levels;
}

}  // namespace korva

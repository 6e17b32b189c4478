// SPDX-License-Identifier: MIT
#include "korva/nearest_name.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

namespace korva {

namespace {

/// Insertions, deletions and replacements that turn one word into the other (Levenshtein, 1966).
std::size_t editsBetween(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string nearestName(const std::string& word, std::span<const std::string> names) {
    std::string best;
    std::size_t fewest = std::max<std::size_t>(2, word.size() / 2);
    for (const std::string& name : names) {
        const std::size_t edits = editsBetween(word, name);
        if (edits >= fewest) continue;
        fewest = edits;
        best = name;
    }
    return best;
}

}  // namespace korva

// SPDX-License-Identifier: MIT
#include "korva/goal.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>

namespace korva {

namespace {

using korvalite::Target;

/// What a text should be, and what to say if it is something else.
struct Wanted {
    const char* name;
    const char* examples;
    const char* units;  // for a number without one; empty if it needs none
};

constexpr Wanted kTarget{"a target",
                         "write for example 10%, 50000v (vertices) or 100000t (triangles).",
                         "add v for vertices, t for triangles, or % for a share of the vertices."};
constexpr Wanted kGoal{
    "a target",
    "write for example 10%, 50000v (vertices), 100000t (triangles) or 0.2mm (largest error).",
    "add v for vertices, t for triangles, % for a share of the vertices, or u for the largest "
    "error."};
constexpr Wanted kLimit{
    "a limit",
    "write for example 0.2 (in the unit of the coordinates), 0.2mm, or 0.1% (of the diagonal).",
    ""};

[[noreturn]] void refuse(std::string_view text, const Wanted& wanted, const char* hint) {
    throw korvalite::Error(korvalite::ErrorCode::BadOption,
                           "'" + std::string(text) + "' is not " + wanted.name + ": " + hint);
}

std::string withoutBlanks(std::string_view text) {
    std::string kept;
    for (const char c : text)
        if (c != ' ' && c != '_') kept.push_back(c);
    return kept;
}

/// Takes a suffix off the end, whatever its case. Returns whether it was there.
bool takeSuffix(std::string& text, std::string_view small) {
    if (text.size() < small.size()) return false;
    const std::size_t begin = text.size() - small.size();
    for (std::size_t i = 0; i < small.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(text[begin + i])) != small[i]) return false;
    text.resize(begin);
    return true;
}

double takeScale(std::string& text) {
    if (takeSuffix(text, "k")) return 1e3;
    return takeSuffix(text, "m") ? 1e6 : 1;
}

double numberIn(std::string_view whole, const std::string& digits, const Wanted& wanted) {
    double number = 0;
    const char* end = digits.data() + digits.size();
    const auto [rest, failure] = std::from_chars(digits.data(), end, number);
    if (failure != std::errc() || rest != end || !(number >= 0) || !std::isfinite(number))
        refuse(whole, wanted, wanted.examples);
    return number;
}

std::uint32_t countIn(std::string_view whole, std::string digits, const Wanted& wanted) {
    const double scale = takeScale(digits);
    const double count = std::round(numberIn(whole, digits, wanted) * scale);
    if (count > std::numeric_limits<std::int32_t>::max())
        refuse(whole, wanted, "the number is too large.");
    return static_cast<std::uint32_t>(count);
}

Target targetIn(std::string_view text, const Wanted& wanted) {
    std::string rest = withoutBlanks(text);
    if (takeSuffix(rest, "%")) {
        const double percent = numberIn(text, rest, wanted);
        if (percent > 100) refuse(text, wanted, "a share is at most 100%.");
        return Target::percent(static_cast<float>(percent));
    }
    if (takeSuffix(rest, "v")) return Target::vertices(countIn(text, rest, wanted));
    if (takeSuffix(rest, "t")) return Target::triangles(countIn(text, rest, wanted));
    takeScale(rest);
    static_cast<void>(numberIn(text, rest, wanted));
    refuse(text, wanted, wanted.units);
}

}  // namespace

Target parseTarget(std::string_view text) {
    return targetIn(text, kTarget);
}

ErrorLimit parseErrorLimit(std::string_view text) {
    std::string rest = withoutBlanks(text);
    ErrorLimit limit;
    if (takeSuffix(rest, "%"))
        limit.unit = ErrorLimit::Unit::PercentOfDiagonal;
    else if (takeSuffix(rest, "mm"))
        limit.unit = ErrorLimit::Unit::Millimetres;
    else
        takeSuffix(rest, "u");
    limit.value = numberIn(text, rest, kLimit);
    return limit;
}

Goal parseGoal(std::string_view text) {
    std::string rest = withoutBlanks(text);
    Goal goal;
    if (takeSuffix(rest, "mm") || takeSuffix(rest, "u"))
        goal.limit = parseErrorLimit(text);
    else
        goal.target = targetIn(text, kGoal);
    return goal;
}

double ErrorLimit::forMesh(double diagonal, double millimetre) const {
    switch (unit) {
    case Unit::Coordinates: break;
    case Unit::Millimetres: return value * millimetre;
    case Unit::PercentOfDiagonal: return value / 100 * diagonal;
    }
    return value;
}

}  // namespace korva

// SPDX-License-Identifier: MIT
#include "korva/goal.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace korva {

namespace {

using korvalite::Target;

constexpr const char* kTargetHint =
    "write for example 10%, 50000v (vertices), 100000t (triangles) or 0.2mm (largest error).";
constexpr const char* kLimitHint =
    "write for example 0.2 (in the unit of the coordinates), 0.2mm, or 0.1% (of the diagonal).";

[[noreturn]] void refuse(std::string_view text, const std::string& hint,
                         const char* what = "a target") {
    throw korvalite::Error(korvalite::ErrorCode::BadOption,
                           "'" + std::string(text) + "' is not " + what + ": " + hint);
}

std::string withoutBlanks(std::string_view text) {
    std::string kept;
    for (const char c : text)
        if (c != ' ' && c != '_') kept.push_back(c);
    return kept;
}

/// Takes a suffix off the end, in either case. False if there is another.
bool takeSuffix(std::string& text, std::string_view small) {
    if (text.size() < small.size()) return false;
    const std::size_t begin = text.size() - small.size();
    for (std::size_t i = 0; i < small.size(); ++i)
        if (text[begin + i] != small[i] && text[begin + i] + ('a' - 'A') != small[i]) return false;
    text.resize(begin);
    return true;
}

double takeScale(std::string& text) {
    if (takeSuffix(text, "k")) return 1e3;
    return takeSuffix(text, "m") ? 1e6 : 1;
}

double numberIn(std::string_view whole, const std::string& digits, const char* what = "a target",
                const char* hint = kTargetHint) {
    double number = 0;
    const char* end = digits.data() + digits.size();
    const auto [rest, failure] = std::from_chars(digits.data(), end, number);
    if (failure != std::errc() || rest != end || !(number >= 0) || !std::isfinite(number))
        refuse(whole, hint, what);
    return number;
}

std::uint32_t countIn(std::string_view whole, std::string digits) {
    const double scale = takeScale(digits);
    const double count = std::round(numberIn(whole, digits) * scale);
    if (count > std::numeric_limits<std::int32_t>::max()) refuse(whole, "the number is too large.");
    return static_cast<std::uint32_t>(count);
}

}  // namespace

Target parseTarget(std::string_view text) {
    std::string rest = withoutBlanks(text);
    if (takeSuffix(rest, "%")) {
        const double percent = numberIn(text, rest);
        if (percent > 100) refuse(text, "a share is at most 100%.");
        return Target::percent(static_cast<float>(percent));
    }
    if (takeSuffix(rest, "v")) return Target::vertices(countIn(text, rest));
    if (takeSuffix(rest, "t")) return Target::triangles(countIn(text, rest));
    const std::string number(text);
    refuse(text, "say of what: " + number + "v for vertices, " + number + "t for triangles, " +
                     number + "%, or " + number + "u for the largest error.");
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
    limit.value = numberIn(text, rest, "a limit", kLimitHint);
    return limit;
}

Goal parseGoal(std::string_view text) {
    std::string rest = withoutBlanks(text);
    Goal goal;
    if (takeSuffix(rest, "mm") || takeSuffix(rest, "u"))
        goal.limit = parseErrorLimit(text);
    else
        goal.target = parseTarget(text);
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

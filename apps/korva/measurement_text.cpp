// SPDX-License-Identifier: MIT
#include "korva/measurement_text.h"

#include "korva/numbers.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace korva {

namespace {

using korvalite::Distances;
using korvalite::Measurement;

std::string formatted(const char* format, double number) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, number);
    return text.data();
}

std::string numberText(double number) {
    return withDigits(number, 6);
}

std::string percentText(double part, double whole) {
    return whole == 0 ? "-" : formatted("%.4f %%", 100 * part / whole);
}

std::string degreesText(double degrees) {
    return formatted("%.2f", degrees);
}

/// A change from 0 has no percentage.
std::string changeText(double from, double to) {
    return from == 0 ? "-" : formatted("%+.4f %%", 100 * (to - from) / std::abs(from));
}

std::string row(const char* name, const std::array<std::string, 3>& cells) {
    std::array<char, 160> text{};
    std::snprintf(text.data(), text.size(), "%-25s %13s %13s %13s\n", name, cells[0].c_str(),
                  cells[1].c_str(), cells[2].c_str());
    return text.data();
}

template <typename Text>
std::string distanceRows(const Measurement& m, const Text& text) {
    const Distances& a = m.fromAToB;
    const Distances& b = m.fromBToA;
    return row("  largest", {text(a.largest), text(b.largest), text(m.largest)}) +
           row("  no point farther than", {text(a.atMost), text(b.atMost), text(m.atMost)}) +
           row("  RMS", {text(a.rms), text(b.rms), text(m.rms)}) +
           row("  95 % are within",
               {text(a.percentile95), text(b.percentile95), text(m.percentile95)});
}

nlohmann::json jsonOf(const Distances& d) {
    return {
        {"largest", d.largest},
        {"atMost", d.atMost},
        {"rms", d.rms},
        {"percentile95", d.percentile95},
        {"largestAt", d.largestAt},
        {"largestTo", d.largestTo},
        {"meanNormalAngle", d.meanNormalAngle},
        {"largestNormalAngle", d.largestNormalAngle},
        {"samples", d.samples},
    };
}

}  // namespace

std::string tableOf(const Measurement& m) {
    const auto percent = [&](double distance) { return percentText(distance, m.diagonalA); };
    const Distances& a = m.fromAToB;
    const Distances& b = m.fromBToA;
    const double largestAngle = std::max(a.largestNormalAngle, b.largestNormalAngle);
    return row("distance", {"A to B", "B to A", "both"}) + distanceRows(m, numberText) +
           row("in % of A's diagonal", {"", "", numberText(m.diagonalA)}) +
           distanceRows(m, percent) + row("angle of normals, degrees", {"", "", ""}) +
           row("  mean", {degreesText(a.meanNormalAngle), degreesText(b.meanNormalAngle), ""}) +
           row("  largest", {degreesText(a.largestNormalAngle), degreesText(b.largestNormalAngle),
                             degreesText(largestAngle)}) +
           row("", {"A", "B", "change"}) +
           row("area", {numberText(m.areaA), numberText(m.areaB), changeText(m.areaA, m.areaB)}) +
           row("volume",
               {numberText(m.volumeA), numberText(m.volumeB), changeText(m.volumeA, m.volumeB)});
}

nlohmann::json jsonOf(const Measurement& m) {
    return {
        {"aToB", jsonOf(m.fromAToB)},
        {"bToA", jsonOf(m.fromBToA)},
        {"largest", m.largest},
        {"atMost", m.atMost},
        {"rms", m.rms},
        {"percentile95", m.percentile95},
        {"area", {{"a", m.areaA}, {"b", m.areaB}}},
        {"volume", {{"a", m.volumeA}, {"b", m.volumeB}}},
        {"diagonal", m.diagonalA},
    };
}

}  // namespace korva

// SPDX-License-Identifier: MIT
#include "korva/measured_error.h"

#include "korva/numbers.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace korva {

namespace {

double percentOf(double part, double whole) {
    return whole > 0 ? 100 * part / whole : 0;
}

}  // namespace

void MeasuredError::add(const korvalite::Measurement& measurement) {
    const double newArea = measurement.areaA + measurement.areaB;
    const double squares = rms * rms * area + measurement.rms * measurement.rms * newArea;
    area += newArea;
    rms = area > 0 ? std::sqrt(squares / area) : 0;
    largest = std::max(largest, measurement.largest);
    atMost = std::max(atMost, measurement.atMost);
    diagonal = std::max(diagonal, measurement.diagonalA);
}

std::string sentenceOf(const MeasuredError& error) {
    return "No point is farther than " + withDigits(error.atMost) + " from the input (" +
           withDigits(percentOf(error.atMost, error.diagonal)) + "% of its diagonal); the RMS is " +
           withDigits(error.rms) + ".";
}

nlohmann::json jsonOf(const MeasuredError& error) {
    return {{"largest", error.largest},
            {"atMost", error.atMost},
            {"rms", error.rms},
            {"diagonal", error.diagonal},
            {"atMostPercent", percentOf(error.atMost, error.diagonal)}};
}

}  // namespace korva

// SPDX-License-Identifier: MIT
#include "library/closest_point.h"

#include <algorithm>

namespace korvalite {

namespace {

using core::cross;
using core::dot;
using core::DoubleVec3;

NearestPlace at(const DoubleVec3& offset) {
    return {offset, dot(offset, offset)};
}

/// A share from 0 to 1. The whole may be 0 by rounding.
double shareOf(double part, double whole) {
    return whole > 0 ? std::clamp(part / whole, 0.0, 1.0) : 0.0;
}

NearestPlace onSegment(const DoubleVec3& point, const DoubleVec3& from, const DoubleVec3& to) {
    const DoubleVec3 along = to - from;
    return at(from - point + shareOf(dot(point - from, along), dot(along, along)) * along);
}

/// The normal of a sliver is inexact, so an inner place is only one of four candidates. Each is a
/// place on the triangle.
NearestPlace onSliver(const DoubleVec3& point, const TriangleCorners& triangle) {
    const auto& [a, b, c] = triangle;
    const auto nearer = [](const NearestPlace& first, const NearestPlace& second) {
        return second.square < first.square ? second : first;
    };
    const NearestPlace onBorder =
        nearer(nearer(onSegment(point, a, b), onSegment(point, b, c)), onSegment(point, c, a));
    const DoubleVec3 ab = b - a;
    const DoubleVec3 ac = c - a;
    const DoubleVec3 normal = cross(ab, ac);
    const double square = dot(normal, normal);
    const double v = shareOf(dot(normal, cross(point - a, ac)), square);
    const double w = shareOf(dot(normal, cross(ab, point - a)), square);
    if (v + w > 1) return onBorder;
    return nearer(onBorder, at(a - point + (v * ab + w * ac)));
}

}  // namespace

NearestPlace nearestPlace(const DoubleVec3& point, const TriangleCorners& triangle) {
    constexpr double kLeastSineSquare = 1e-6;
    const auto& [a, b, c] = triangle;
    const DoubleVec3 ab = b - a;
    const DoubleVec3 ac = c - a;
    const DoubleVec3 normal = cross(ab, ac);
    const double square = dot(normal, normal);
    if (!(square > kLeastSineSquare * dot(ab, ab) * dot(ac, ac))) return onSliver(point, triangle);

    const DoubleVec3 ap = point - a;
    const double d1 = dot(ab, ap);
    const double d2 = dot(ac, ap);
    if (d1 <= 0 && d2 <= 0) return at(a - point);
    const DoubleVec3 bp = point - b;
    const double d3 = dot(ab, bp);
    const double d4 = dot(ac, bp);
    if (d3 >= 0 && d4 <= d3) return at(b - point);
    const DoubleVec3 cp = point - c;
    const double d5 = dot(ab, cp);
    const double d6 = dot(ac, cp);
    if (d6 >= 0 && d5 <= d6) return at(c - point);

    if (d1 >= 0 && d3 <= 0 && dot(normal, cross(ap, bp)) <= 0)
        return at(shareOf(d1, d1 - d3) * ab - ap);
    if (d2 >= 0 && d6 <= 0 && dot(normal, cross(cp, ap)) <= 0)
        return at(shareOf(d2, d2 - d6) * ac - ap);
    const double fromB = d4 - d3;
    const double fromC = d5 - d6;
    if (fromB >= 0 && fromC >= 0 && dot(normal, cross(bp, cp)) <= 0)
        return at(shareOf(fromB, fromB + fromC) * (c - b) - bp);
    return at(-(dot(ap, normal) / square) * normal);
}

}  // namespace korvalite

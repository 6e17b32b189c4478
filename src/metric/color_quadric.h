// SPDX-License-Identifier: MIT
//
// The quadric in the six dimensions of position x and scaled colour s (M. Garland and P. Heckbert,
// "Simplifying Surfaces with Color and Texture using Quadric Error Metrics", 1998; in the form of
// H. Hoppe, "New Quadric Metric for Simplifying Meshes with Appearance Attributes", 1999):
//
//     x'Ax + 2 x'Gs + C s's + 2 b1.x + 2 b2.s + c
#pragma once

#include "geometry/vec3.h"
#include "metric/quadric3d.h"

#include <array>

namespace korvalite::core {

/// A 3x3 matrix, row-major.
using Matrix3 = std::array<double, 9>;

struct ColorQuadric {
    std::array<double, 6> A{};  // in the order of slots 0 to 5 of Quadric3D
    std::array<double, 9> G{};  // position by colour, column-major: row r, column c at r + 3c
    double C = 0;               // the colour block is C times the identity
    std::array<double, 3> b1{};
    std::array<double, 3> b2{};
    double c = 0;

    ColorQuadric() = default;
    /// Only the plane part, with C = 1.
    explicit ColorQuadric(const Quadric3D& plane);

    ColorQuadric& operator+=(const ColorQuadric& other);
    ColorQuadric& operator*=(double factor);
    friend ColorQuadric operator+(ColorQuadric left, const ColorQuadric& right) {
        return left += right;
    }

    /// Computes the blocks [[P, R], [R', T]] of the inverse of [[A, G], [G', C I]]; false if A or
    /// its Schur complement is singular.
    bool InvertBlocks(Matrix3& P, Matrix3& R, Matrix3& T) const;

    [[nodiscard]] double Evaluate(const DoubleVec3& x, const DoubleVec3& s) const;
};

}  // namespace korvalite::core

// SPDX-License-Identifier: MIT
#include "metric/mesh_quadrics.h"

#include "geometry/linear_algebra.h"
#include "lanes/kernels.h"
#include "mesh/corner_lists.h"
#include "metric/lane_forms.h"
#include "metric/metric_rules.h"

#include <array>
#include <cmath>

namespace korvalite::core {

namespace {

FloatVec3 positionOf(const DMesh& mesh, std::int32_t triangle, std::int32_t corner) {
    return mesh.vertices[vertexAt(mesh, 3 * triangle + corner)].position();
}

/// Divides n by its length, unless that is nearly zero. Returns the weight: the length, or else 1.
double normalize(DoubleVec3& n) {
    const double length = std::sqrt(dot(n, n));
    // COMPAT: a triangle without area has weight 1 here and 0 in floats; costs depend on it.
    if (-1e-24 < length && length < 1e-24) return 1.0;
    n = {n.x / length, n.y / length, n.z / length};
    return length;
}

double colorChannel(std::uint32_t color, unsigned channel) {
    return static_cast<double>((color >> (8 * channel)) & 0xFFU);
}

/// Gradient and offset of the linear function that has the values `w` at the corners and is
/// constant along the normal, from the inverse of the matrix of corners.
std::array<double, 4> linearFunction(const std::array<double, 16>& inverse, const DoubleVec3& w) {
    std::array<double, 4> function{};
    for (std::size_t j = 0; j < 4; ++j) {
        // COMPAT: the last product is NaN if its element is not finite; costs depend on it.
        function[j] =
            w.x * inverse[j] + w.y * inverse[4 + j] + w.z * inverse[8 + j] + 0.0 * inverse[12 + j];
    }
    return function;
}

void addColorChannel(ColorQuadric& quadric, std::size_t channel, const std::array<double, 4>& f) {
    const double gx = f[0];
    const double gy = f[1];
    const double gz = f[2];
    const double d = f[3];
    const std::array<double, 6> outer{gx * gx, gx * gy, gx * gz, gy * gy, gy * gz, gz * gz};
    for (std::size_t i = 0; i < outer.size(); ++i)
        quadric.A[i] += outer[i];
    for (std::size_t r = 0; r < 3; ++r) {
        quadric.G[r + 3 * channel] = -f[r];
        quadric.b1[r] += d * f[r];
    }
    quadric.b2[channel] = -d;
    quadric.c += d * d;
}

const Quadric3D& planeTerm(const SymmetryPlaneQuadric& plane, const Quadric3D& /*form*/) {
    return plane.asDouble;
}
const Quadric3DFloat& planeTerm(const SymmetryPlaneQuadric& plane, const Quadric3DFloat& /*form*/) {
    return plane.asFloat;
}
const ColorQuadric& planeTerm(const SymmetryPlaneQuadric& plane, const ColorQuadric& /*form*/) {
    return plane.asColor;
}

}  // namespace

Quadric3D ComputeTriangleQuadric(const DMesh& mesh, const MetricRules& rules,
                                 std::int32_t triangle) {
    const DoubleVec3 p0 = toDouble(positionOf(mesh, triangle, 0));
    const DoubleVec3 p1 = toDouble(positionOf(mesh, triangle, 1));
    const DoubleVec3 p2 = toDouble(positionOf(mesh, triangle, 2));
    DoubleVec3 n = cross(p1 - p0, p2 - p0);
    const double weight = normalize(n);
    Quadric3D quadric = planeQuadric(n.x, n.y, n.z, -dot(n, p0));
    if (rules.UseAreaWeighting) quadric *= weight;
    return quadric;
}

Quadric3DFloat ComputeTriangleQuadricFloat(const DMesh& mesh, const MetricRules& rules,
                                           std::int32_t triangle) {
    const FloatVec3 p0 = positionOf(mesh, triangle, 0);
    const FloatVec3 p1 = positionOf(mesh, triangle, 1);
    const FloatVec3 p2 = positionOf(mesh, triangle, 2);
    FloatVec3 n = cross(p1 - p0, p2 - p0);
    const float length = std::sqrt(dot(n, n));
    if (length != 0.0F) {
        const DoubleVec3 wide = toDouble(n);
        const auto divisor = static_cast<double>(length);
        n = toFloat({wide.x / divisor, wide.y / divisor, wide.z / divisor});
    }
    Quadric3DFloat quadric = planeQuadric(n.x, n.y, n.z, -dot(n, p0));
    if (rules.UseAreaWeighting) quadric *= length;
    return quadric;
}

ColorQuadric ComputeTriangleColorQuadric(const DMesh& mesh, const MetricRules& rules,
                                         std::int32_t triangle) {
    const DoubleVec3 p = toDouble(positionOf(mesh, triangle, 0));
    const DoubleVec3 q = toDouble(positionOf(mesh, triangle, 1));
    const DoubleVec3 r = toDouble(positionOf(mesh, triangle, 2));
    DoubleVec3 n = cross(q - p, r - p);
    normalize(n);

    // COMPAT: never weighted by area, whatever UseAreaWeighting says; costs depend on it.
    ColorQuadric quadric(planeQuadric(n.x, n.y, n.z, -dot(n, p)));
    const std::array<double, 16> corners{p.x, q.x, r.x, n.x, p.y, q.y, r.y, n.y,
                                         p.z, q.z, r.z, n.z, 1.0, 1.0, 1.0, 0.0};
    std::array<double, 16> inverse{};
    if (!invert4d(inverse.data(), corners.data())) {
        quadric.C = 0.0;
        return quadric;
    }
    const auto colorAt = [&](std::int32_t corner) {
        return loadRelaxed(mesh.vertexColors[vertexAt(mesh, 3 * triangle + corner)]);
    };
    const std::array<std::uint32_t, 3> colors{colorAt(0), colorAt(1), colorAt(2)};
    for (unsigned channel = 0; channel < 3; ++channel) {
        const DoubleVec3 w{colorChannel(colors[0], channel) * rules.colorScale,
                           colorChannel(colors[1], channel) * rules.colorScale,
                           colorChannel(colors[2], channel) * rules.colorScale};
        addColorChannel(quadric, channel, linearFunction(inverse, w));
    }
    return quadric;
}

template <typename Quadric>
void addBorderAndPlane(const DMesh& mesh, const MetricRules& rules, Quadric& inOut,
                       std::int32_t vertex) {
    if (mesh.borderVertices.Test(vertex)) {
        // COMPAT: multiplies all of `inOut`, a stored quadric at every update; costs depend on it.
        if (rules.BorderMode == BORDERMODE_FREEZE) inOut *= 50.0F;
        if (rules.BorderMode == BORDERMODE_PROTECT) inOut *= 100.0F;
    }
    const auto& pairing = mesh.symmetryCache.pairing;
    const auto index = static_cast<std::size_t>(vertex);
    // COMPAT: asks for the request, not whether the run handles symmetry; costs depend on it.
    if (rules.handleSymmetry && index < pairing.size() && pairing[index] == vertex) {
        inOut += planeTerm(rules.symmetryPlaneQuadric, inOut);
    }
}

template void addBorderAndPlane(const DMesh&, const MetricRules&, Quadric3D&, std::int32_t);
template void addBorderAndPlane(const DMesh&, const MetricRules&, Quadric3DFloat&, std::int32_t);
template void addBorderAndPlane(const DMesh&, const MetricRules&, ColorQuadric&, std::int32_t);

void AccumulateVertexQuadric(const DMesh& mesh, const MetricRules& rules,
                             const IndexedArray<Quadric3D>& triangleQuadrics, Quadric3D& inOut,
                             std::int32_t vertex) {
    forEachCorner(mesh, vertex,
                  [&](std::int32_t corner) { inOut += triangleQuadrics[triangleOf(corner)]; });
    addBorderAndPlane(mesh, rules, inOut, vertex);
}

void ComputeVertexQuadricFromTriangles(const DMesh& mesh, const MetricRules& rules,
                                       Quadric3D& inOut, std::int32_t vertex) {
    // COMPAT: no border factor or plane quadric, unlike in the first ranking; outputs depend on it.
    if (const lanes::Kernels* const kernels = lanes::kernels()) {
        lanes::LaneQuadric sum = toLanes(inOut);
        forEachTriangleGroup(mesh, vertex, [&](const lanes::TriangleList& triangles) {
            kernels->sumVertexQuadric(positionsOf(mesh), triangles, rules.UseAreaWeighting, &sum);
        });
        inOut = fromLanes(sum);
        return;
    }
    forEachCorner(mesh, vertex, [&](std::int32_t corner) {
        inOut += ComputeTriangleQuadric(mesh, rules, triangleOf(corner));
    });
}

void ComputeVertexColorQuadric(const DMesh& mesh, const MetricRules& rules, ColorQuadric& inOut,
                               std::int32_t vertex) {
    if (const lanes::Kernels* const kernels = lanes::kernels()) {
        lanes::LaneColorQuadric sum = toLanes(inOut);
        forEachTriangleGroup(mesh, vertex, [&](const lanes::TriangleList& triangles) {
            kernels->sumVertexColorQuadric(positionsOf(mesh), colorsOf(mesh, rules), triangles,
                                           &sum);
        });
        inOut = fromLanes(sum);
        return;
    }
    forEachCorner(mesh, vertex, [&](std::int32_t corner) {
        inOut += ComputeTriangleColorQuadric(mesh, rules, triangleOf(corner));
    });
}

}  // namespace korvalite::core

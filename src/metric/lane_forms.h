// SPDX-License-Identifier: MIT
//
// The mesh, quadrics and settings in the form that the kernels of lanes/ read.
#pragma once

#include "lanes/kernels.h"
#include "mesh/corner_lists.h"
#include "metric/color_quadric.h"
#include "metric/edge_cost.h"
#include "metric/metric_rules.h"
#include "metric/quadric3d.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace korvalite::core {

inline lanes::Positions positionsOf(const DMesh& mesh) {
    static_assert(offsetof(VertexRecord, x) == 0 && offsetof(VertexRecord, z) == 8);
    return {mesh.vertices.data(), sizeof(VertexRecord)};
}

inline lanes::Positions positionsOf(std::span<const EdgeEnd> ends) {
    static_assert(offsetof(EdgeEnd, position) == 0 && sizeof(EdgeEnd) == 16);
    return {ends.data(), sizeof(EdgeEnd)};
}

inline lanes::Colors colorsOf(const DMesh& mesh, const MetricRules& rules) {
    return {mesh.vertexColors.data(), rules.colorScale};
}

inline lanes::EdgeSettings edgeSettings(const MetricRules& rules) {
    return {rules.useDegeneracySearch, rules.numPositionSamples, kNotCollapsible};
}

inline lanes::LaneQuadric toLanes(const Quadric3D& quadric) {
    lanes::LaneQuadric form{};
    for (std::size_t i = 0; i < quadric.q.size(); ++i)
        form.q[lanes::kPlaceInLane[i]] = quadric.q[i];
    return form;
}

inline Quadric3D fromLanes(const lanes::LaneQuadric& form) {
    Quadric3D quadric;
    for (std::size_t i = 0; i < quadric.q.size(); ++i)
        quadric.q[i] = form.q[lanes::kPlaceInLane[i]];
    return quadric;
}

inline lanes::LaneColorQuadric toLanes(const ColorQuadric& quadric) {
    static_assert(sizeof(ColorQuadric) == 23 * sizeof(double));
    lanes::LaneColorQuadric form{};
    std::memcpy(form.q, &quadric, sizeof quadric);
    return form;
}

inline ColorQuadric fromLanes(const lanes::LaneColorQuadric& form) {
    ColorQuadric quadric;
    std::memcpy(&quadric, form.q, sizeof quadric);
    return quadric;
}

/// Calls add(triangles) for the triangles at the corners of a vertex, in list order, a few at a
/// time.
template <typename Add>
void forEachTriangleGroup(const DMesh& mesh, std::int32_t vertex, Add add) {
    constexpr std::size_t kMost = 4 * lanes::kGroup;
    std::array<std::uint32_t, 3 * kMost> vertices{};
    std::size_t count = 0;
    const auto addGroup = [&] {
        for (std::size_t i = 3 * count; i < 3 * lanes::padded(count); ++i)
            vertices[i] = vertices[i - 3];
        add(lanes::TriangleList{vertices.data(), nullptr, count});
        count = 0;
    };
    forEachCorner(mesh, vertex, [&](std::int32_t corner) {
        std::uint32_t* next = &vertices[3 * count];
        for (const std::int32_t c : cornersOf(triangleOf(corner)))
            *next++ = loadRelaxed(mesh.triangles[c]);
        if (++count == kMost) addGroup();
    });
    if (count > 0) addGroup();
}

}  // namespace korvalite::core

// SPDX-License-Identifier: MIT
//
// The mesh, quadrics and settings in the form that the kernels of lanes/ read.
#pragma once

#include "lanes/kernels.h"
#include "mesh/dmesh.h"
#include "metric/edge_cost.h"
#include "metric/metric_rules.h"
#include "metric/quadric3d.h"

#include <cstddef>
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

}  // namespace korvalite::core

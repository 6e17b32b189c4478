// SPDX-License-Identifier: MIT
//
// A driver for the collapse loop that logs the calls it gets, on a mesh whose costs are set by
// hand.
#pragma once

#include "drivers/collapse_loop.h"
#include "drivers/preparation.h"
#include "metric/metric.h"
#include "ranking/initial_edges.h"
#include "support/mirrored_grid.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace korvalite::core::test {

using Log = std::vector<std::string>;

template <typename... Numbers>
std::string line(const char* what, Numbers... numbers) {
    std::string text = what;
    ((text += ' ' + std::to_string(numbers)), ...);
    return text;
}

inline std::size_t index(std::int32_t v) {
    return static_cast<std::size_t>(v);
}

// Keeps every kept vertex where it is, and ranks nothing.
class Script {
public:
    using Metric = PlainMetric;
    static constexpr bool kRecordsSplits = true;

    explicit Script(ProgressiveMesh& pm) : pm_(pm) {}

    EdgeEvaluation place(std::int32_t v, std::int32_t u, KeptQuadrics<Metric>& keptQuadrics) {
        log.push_back(line("place", v, u));
        quadrics.push_back(keptQuadrics.of(pm_.mesh, pm_, u));
        if (replace != nullptr) return {1, replace(v, u), {}};
        return {evaluatedCost, pm_.mesh.vertices[index(u)].position(), {}};
    }
    void carryAttributes(const CollapseRecord& record, std::int32_t removed, std::int32_t kept,
                         const EdgeEvaluation&) {
        EXPECT_EQ(record.split.vertex, removed);
        log.push_back(line("carry", removed, kept));
    }
    void updateCosts(std::int32_t kept, const CollapseRecord& record) {
        log.push_back(line("update", kept));
        neighbours.push_back(record.neighbours);
        recordedBefore.push_back(pm_.vsplitList.NumVtxSplit());
        if (afterCollapse != nullptr) afterCollapse();
    }
    void refreshCosts(const CollapseRecord& record) {
        log.push_back(line("refresh", record.split.vertex));
    }
    void rankFreedSlave(std::int32_t vertex) {
        log.push_back(line("free", vertex));
        pm_.mesh.vertices[index(vertex)].cost = freedCost;
        pm_.costQueue.Insert(vertex);
    }
    void rankForFinishStep(std::int32_t vertex) {
        log.push_back(line("finish", vertex));
        pm_.mesh.vertices[index(vertex)].cost = kNotCollapsible;
    }
    void showProgress(std::int32_t done) { log.push_back(line("progress", done)); }

    std::function<FloatVec3(std::int32_t, std::int32_t)> replace;
    std::function<void()> afterCollapse;
    float evaluatedCost = 1;
    float freedCost = kNotCollapsible;
    Log log;
    std::vector<IndexList> neighbours;
    std::vector<std::uint32_t> recordedBefore;
    std::vector<Quadric3D> quadrics;  // of the kept vertex, one for each call of place

private:
    ProgressiveMesh& pm_;
};

// A mesh whose queue holds what the test puts into it.
struct Turns : MirroredGrid {
    Script script{pm};

    explicit Turns(bool symmetric = false) {
        pm.m_handleSymmetry_internal = symmetric;
        pm.TargetNumItem = 0;
        pm.recordVSplits = true;
        pm.symmetrySlaves.Resize(pm.mesh.vertexCount(), false);
        for (VertexRecord& vertex : pm.mesh.vertices)
            forgetCost(vertex);
        openVSplitList(pm);
    }
    void set(std::int32_t v, std::int32_t partner, float cost) {
        pm.mesh.vertices[index(v)].partner = partner;
        pm.mesh.vertices[index(v)].cost = cost;
    }
    void queue(std::int32_t v, std::int32_t partner, float cost) {
        set(v, partner, cost);
        pm.costQueue.Insert(v);
    }
    [[nodiscard]] float cost(std::int32_t v) const { return pm.mesh.vertices[index(v)].cost; }
    [[nodiscard]] std::uint32_t recorded() const { return pm.vsplitList.NumVtxSplit(); }
    const Log& run() {
        Alone alone(pm);
        CollapseLoop(pm, script, alone).run();
        return script.log;
    }
};

constexpr std::uint32_t kVertices = 45;
// Inner vertices, one below the other, that collapse downwards without being refused.
constexpr std::int32_t kV = MirroredGrid::at(2, 2);
constexpr std::int32_t kU = MirroredGrid::at(2, 1);

}  // namespace korvalite::core::test

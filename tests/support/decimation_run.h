// SPDX-License-Identifier: MIT
#pragma once

#include "drivers/run_decimation.h"
#include "formats/vok_reader.h"
#include "host/host_monitor.h"
#include "host/job_paths.h"
#include "progressive/progressive_mesh.h"
#include "support/mesh_builder.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace korvalite::core::test {

// Collects the scratch files made during its lifetime in its own folder.
class JobFolder {
public:
    JobFolder() { SetJobDirectory(folder_.path().c_str()); }
    ~JobFolder() { SetJobDirectory(HeapString()); }

    const ScratchFolder& folder() const { return folder_; }

private:
    ScratchFolder folder_;
};

class DecimationTest : public testing::Test {
protected:
    JobFolder job;
};

using MeshPtr = std::unique_ptr<ProgressiveMesh>;

// The settings of a job without keys, on one thread.
inline MeshPtr prepared(DMesh mesh) {
    auto pm = std::make_unique<ProgressiveMesh>();
    pm->mesh = std::move(mesh);
    pm->mesh.symmetryMode = 0;
    pm->monitor = &hostMonitor();
    pm->vsplitList.scratchFolder = JobDirectory();
    pm->MemSpeedTradeOff = MEMSPEED_TRADEOFF_LOW_MEM;
    pm->UseAreaWeighting = false;
    pm->recordVSplits = true;
    pm->TargetNumItem = 0;
    return pm;
}

// The axis is 0 for x, 1 for y, 2 for z.
inline void askForSymmetry(ProgressiveMesh& pm, int axis) {
    pm.handleSymmetry = true;
    pm.mesh.symmetryMode = 1;
    pm.mesh.symmetryAxis = axis;
}

inline void targetPercent(ProgressiveMesh& pm, float percent) {
    pm.TargetNumItem = static_cast<std::uint32_t>(static_cast<float>(pm.mesh.vertices.size()) *
                                                  (percent / 100.0F));
}

// `set(pm)` changes settings before the run. All records are applied afterwards.
template <typename Set>
MeshPtr decimated(DMesh mesh, Set set) {
    MeshPtr pm = prepared(std::move(mesh));
    set(*pm);
    EXPECT_EQ(RunDecimation(*pm), 0);
    pm->CurVtxSplitPos = static_cast<std::int32_t>(pm->vsplitList.NumVtxSplit());
    return pm;
}

// The same with the driver of a MemSpeedTradeOff, and without reordering.
template <typename Set>
MeshPtr decimatedBy(std::int32_t driver, DMesh mesh, Set set) {
    return decimated(std::move(mesh), [&](ProgressiveMesh& pm) {
        pm.MemSpeedTradeOff = driver;
        pm.DoReorder = false;
        set(pm);
    });
}

// Uses the driver that `set` chooses, or the low-memory one, and decimates to a percentage of the
// vertices without reordering.
template <typename Set>
MeshPtr decimatedInPlace(const DMesh& mesh, float percent, Set set) {
    return decimated(mesh, [&](ProgressiveMesh& pm) {
        targetPercent(pm, percent);
        pm.DoReorder = false;
        set(pm);
    });
}
inline MeshPtr decimatedInPlace(const DMesh& mesh, float percent) {
    return decimatedInPlace(mesh, percent, [](ProgressiveMesh&) {});
}

// One of the project's sample meshes, loaded as the batch driver does.
inline DMesh sample(const std::string& name) {
    DMesh mesh;
    EXPECT_TRUE(importDMesh((std::string(KORVALITE_SOURCE_DIR "/samples/") + name).c_str(), mesh));
    EXPECT_FALSE(mesh.triangles.empty());
    dropUniformMask(mesh);
    return mesh;
}

// A small sample whose colours change gently from place to place.
inline DMesh coloredTorus() {
    DMesh mesh = sample("synth-torus.Vok");
    const auto channel = [](float at) {
        return static_cast<std::uint32_t>(127.5F + 100 * std::sin(3 * at));
    };
    addColors(mesh, [&](const FloatVec3& p) {
        return packColor(channel(p.x), channel(p.y), channel(p.x + p.z));
    });
    return mesh;
}

}  // namespace korvalite::core::test

// SPDX-License-Identifier: MIT
//
// Meshes that no modeller would send, through whole entries with every setting: each runs to its
// end, leaves a sound mesh, and gives a progressive mesh that can be fully restored.
#include "jobs/hostile_batch.h"
#include "jobs/hostile_meshes.h"

#include "formats/kvm_reader.h"
#include "formats/vok_writer.h"
#include "support/level_walk.h"
#include "support/mesh_builder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace korvalite::core::test {
namespace {

enum Attributes : unsigned { kColors = 1, kMask = 2, kUVs = 4 };

DMesh withAttributes(DMesh mesh, unsigned attributes) {
    Random random(5);
    if ((attributes & kColors) != 0)
        addColors(mesh, [&](const FloatVec3&) { return random.word() & 0x00FF00FFU; });
    if ((attributes & kMask) != 0) {
        addMask(mesh, [&](const FloatVec3&) { return random.onceIn(6) ? 0 : random.below(256); });
    }
    if ((attributes & kUVs) != 0)
        addCornerUVs(mesh, [&](std::uint32_t) { return random.below(3) == 0 ? 1 : 0; });
    // The file has one pair for each corner; the writer wants indices.
    for (std::uint32_t c = 0; c < mesh.coordsUV.size(); ++c)
        mesh.indicesUV.push_back(c);
    return mesh;
}

std::vector<BatchSettings> everySetting() {
    std::vector<BatchSettings> all;
    for (const bool protect : {true, false}) {
        for (const bool freeze : {false, true}) {
            for (const std::int32_t symmetry : {kSymmetryNone, kSymmetryX, kSymmetryZ}) {
                BatchSettings settings;
                settings.ProtectTopology = protect;
                settings.FreezeBorder = freeze;
                settings.Symmetry = symmetry;
                // Covers every pair of these values, though not every combination.
                settings.AvoidNormalReverse = protect != freeze;
                settings.UseAreaWeighting = symmetry == kSymmetryX;
                settings.DoReorder = symmetry != kSymmetryZ || protect;
                all.push_back(settings);
            }
        }
    }
    BatchSettings automatic;
    automatic.Symmetry = kSymmetryAuto;
    automatic.AllowFinishStep = true;
    all.push_back(automatic);
    return all;
}

class HostileSurfaces : public HostileBatch, public testing::WithParamInterface<HostileSurface> {
protected:
    void writeInput(unsigned attributes) const {
        const DMesh mesh = withAttributes(GetParam().mesh(), attributes);
        ASSERT_TRUE(exportDMesh(in("mesh.Vok").c_str(), mesh));
    }
    void expectSound(const std::string& name) const {
        expectSoundOutput(name, GetParam().degenerate);
    }
};

INSTANTIATE_TEST_SUITE_P(Surface, HostileSurfaces, testing::ValuesIn(hostileSurfaces()),
                         [](const auto& row) { return row.param.name; });

TEST_P(HostileSurfaces, RunThroughWithEverySetting) {
    for (unsigned attributes = 0; attributes <= (kColors | kMask | kUVs); ++attributes) {
        writeInput(attributes);
        for (BatchSettings settings : everySetting()) {
            settings.DecimationTargetPourcent = 35;
            BatchSettings none = settings;
            none.DecimationTargetPourcent = 0;
            remove("some.Vok");
            remove("none.Vok");
            // One batch for each, as two inputs with the same name would stop the batch.
            EXPECT_EQ(perform({entry("mesh.Vok", "some.Vok", settings)}), "");
            EXPECT_EQ(perform({entry("mesh.Vok", "none.Vok", none)}), "");
            expectSound("some.Vok");
            expectSound("none.Vok");
        }
    }
}

// Whatever the reader keeps of the input can be restored from its progressive mesh.
TEST_P(HostileSurfaces, ComeBackFromTheirProgressiveMesh) {
    for (unsigned attributes = 0; attributes <= (kColors | kMask); ++attributes) {
        writeInput(attributes);
        DMesh original;
        ASSERT_TRUE(importDMesh(in("mesh.Vok").c_str(), original));
        dropUniformMask(original);
        for (BatchSettings settings : everySetting()) {
            settings.ProgressiveMeshMinNum = 0;
            remove("mesh.kvm");
            EXPECT_EQ(perform({entry("mesh.Vok", "mesh.kvm", settings)}), "");
            ProgressiveMesh pm;
            ASSERT_EQ(loadProgressiveMesh(pm, in("mesh.kvm").c_str(), 0), 0);
            EXPECT_TRUE(isSound(pm.mesh, GetParam().degenerate));
            goAllUp(pm);
            EXPECT_TRUE(isSound(pm.mesh, GetParam().degenerate));
            ASSERT_TRUE(surfaceOf(pm.mesh) == surfaceOf(original));
        }
    }
}

TEST_P(HostileSurfaces, GiveLevelsOfAProgressiveMesh) {
    writeInput(kColors | kMask | kUVs);
    EXPECT_EQ(perform({entry("mesh.Vok", "mesh.kvm")}), "");
    for (const float percent : {100.0F, 50.0F, 3.0F}) {
        BatchSettings settings;
        settings.DecimationTargetPourcent = percent;
        for (const char* output : {"level.Vok", "level.obj"}) {
            remove(output);
            EXPECT_EQ(perform({entry("mesh.kvm", output, settings)}), "");
            EXPECT_TRUE(exists(output));
        }
        expectSound("level.Vok");
    }
}

}  // namespace
}  // namespace korvalite::core::test

// SPDX-License-Identifier: MIT
//
// Properties of every run: sound triangles, counts that equal the bits, closed surfaces that stay
// closed, targets that are reached, and the same bytes from the same input.
#include "property/run_cases.h"

#include "formats/kvm_writer.h"
#include "formats/vok_writer.h"
#include "support/level_walk.h"
#include "support/mesh_validator.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace korvalite::core::test {
namespace {

class EveryRun : public RunTest {
protected:
    // Everything that a host can get from the mesh.
    std::string bytesOf(ProgressiveMesh& pm) const {
        const std::string vok = job.folder() / u8"out.Vok";
        const std::string kvm = job.folder() / u8"out.kvm";
        EXPECT_TRUE(exportDMesh(vok.c_str(), pm.mesh));
        EXPECT_EQ(saveProgressiveMesh(pm, kvm.c_str()), 0);
        return readWhole(vok) + readWhole(kvm);
    }
};

INSTANTIATE_TEST_SUITE_P(Case, EveryRun, testing::ValuesIn(runCases()), nameOfRun);

constexpr float kPercents[] = {100, 60, 25, 4, 0};

TEST_P(EveryRun, LeavesASoundMesh) {
    for (const float percent : kPercents) {
        const MeshPtr pm = decimatedTo(percent);
        EXPECT_TRUE(isSound(pm->mesh)) << percent;
    }
}

TEST_P(EveryRun, ReachesItsTargetOrLeavesOnlyRefusals) {
    for (const float percent : kPercents) {
        const MeshPtr pm = decimatedTo(percent);
        const std::uint32_t count = pm->activeCount();
        if (count > pm->TargetNumItem) {
            for (std::int32_t v = 0; v < pm->mesh.vertexCount(); ++v)
                EXPECT_FALSE(isLeftUntried(pm->mesh, v)) << percent << "%, vertex " << v;
            continue;
        }
        // A turn passes the target by at most what it removes, less one.
        EXPECT_GT(count + mostOfATurn(*pm), pm->TargetNumItem) << percent;
    }
}

class ClosedRun : public RunTest {};
INSTANTIATE_TEST_SUITE_P(Case, ClosedRun, testing::ValuesIn(casesWhere([](const RunCase& c) {
                             return c.surface == Surface::Closed;
                         })),
                         nameOfRun);

TEST_P(ClosedRun, LeavesAClosedManifoldClosed) {
    ASSERT_TRUE(isClosedManifold(GetParam().mesh()));
    for (const float percent : kPercents)
        EXPECT_TRUE(isClosedManifold(decimatedTo(percent)->mesh)) << percent;
}

class UnhinderedRun : public RunTest {};
INSTANTIATE_TEST_SUITE_P(Case, UnhinderedRun, testing::ValuesIn(casesWhere([](const RunCase& c) {
                             return c.hindrance == Hindrance::None;
                         })),
                         nameOfRun);

TEST_P(UnhinderedRun, ReachesATargetFarFromTheEnd) {
    const MeshPtr pm = decimatedTo(60);
    EXPECT_LE(pm->activeCount(), pm->TargetNumItem);
}

TEST_P(EveryRun, IsDeterministic) {
    const MeshPtr once = decimatedTo(20);
    const MeshPtr again = decimatedTo(20);
    EXPECT_TRUE(bytesOf(*once) == bytesOf(*again));
}

TEST_P(EveryRun, GivesTheSameBytesWithoutRecordsOrWithPages) {
    const MeshPtr recorded = decimatedTo(20);
    const MeshPtr unrecorded = decimatedTo(20, [](ProgressiveMesh& pm) {
        pm.recordVSplits = false;
        pm.DoReorder = false;
    });
    const MeshPtr paged = decimatedTo(20, [](ProgressiveMesh& pm) {
        pm.vsplitList.pageCapacity = 3;
        pm.DoReorder = false;
    });
    EXPECT_TRUE(isSound(recorded->mesh));
    const std::string first = job.folder() / u8"first.Vok";
    const std::string second = job.folder() / u8"second.Vok";
    ASSERT_TRUE(exportDMesh(first.c_str(), unrecorded->mesh));
    ASSERT_TRUE(exportDMesh(second.c_str(), paged->mesh));
    EXPECT_TRUE(readWhole(first) == readWhole(second));
    EXPECT_EQ(unrecorded->vsplitList.NumVtxSplit(), 0U);
    EXPECT_EQ(recorded->mesh.numActiveVertices, paged->mesh.numActiveVertices);
}

// With a target at or above the count, nothing happens.
TEST_P(EveryRun, ChangesNothingIfTheTargetIsAlreadyReached) {
    const MeshPtr pm = decimatedTo(100);
    EXPECT_EQ(pm->vsplitList.NumVtxSplit(), 0U);
    const DMesh original = GetParam().mesh();
    EXPECT_TRUE(surfaceOf(pm->mesh, UVs::Ignored) == surfaceOf(original, UVs::Ignored));
    EXPECT_EQ(pm->mesh.triangles, original.triangles);
}

}  // namespace
}  // namespace korvalite::core::test

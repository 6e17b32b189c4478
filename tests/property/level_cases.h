// SPDX-License-Identifier: MIT
//
// Meshes with and without UVs, colours, mask, borders and symmetry, for tests on the levels of
// their progressive meshes.
#pragma once

#include "formats/kvm_reader.h"
#include "formats/kvm_writer.h"
#include "support/decimation_run.h"
#include "support/level_walk.h"
#include "support/mesh_builder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace korvalite::core::test {

struct LevelCase {
    const char* name;
    DMesh (*mesh)();
    void (*set)(ProgressiveMesh& pm);
};
inline void PrintTo(const LevelCase& levelCase, std::ostream* out) {
    *out << levelCase.name;
}
inline std::string nameOf(const testing::TestParamInfo<LevelCase>& row) {
    return row.param.name;
}

inline DMesh openHillsOfTwoCharts() {
    DMesh mesh = grid(30, 30, hills);
    addCornerUVs(mesh, [](std::uint32_t triangle) { return triangle % 60 < 30 ? 0 : 1; });
    return mesh;
}

inline void asTheyCome(ProgressiveMesh&) {}
inline void mirroredAcrossX(ProgressiveMesh& pm) {
    askForSymmetry(pm, 0);
}

inline const std::vector<LevelCase>& levelCases() {
    static const std::vector<LevelCase> cases{
        {"Plain", [] { return sample("synth-torus.Vok"); }, asTheyCome},
        {"Seams", [] { return sample("synth-seams.Vok"); }, asTheyCome},
        {"Masked", [] { return sample("fish-masked.Vok"); }, asTheyCome},
        {"Colored", coloredTorus, asTheyCome},
        {"Everything", [] { return sample("spot-everything.Vok"); }, asTheyCome},
        {"Symmetric", [] { return sample("synth-symmetric.Vok"); }, mirroredAcrossX},
        {"SymmetricEverything", [] { return sample("spot-everything.Vok"); }, mirroredAcrossX},
        {"OpenWithSeams", openHillsOfTwoCharts, asTheyCome},
        {"FrozenBorder", openHillsOfTwoCharts,
         [](ProgressiveMesh& pm) { pm.BorderMode = BORDERMODE_FREEZE; }},
        {"UnprotectedTopology", [] { return sample("synth-torus.Vok"); },
         [](ProgressiveMesh& pm) { pm.ProtectTopology = false; }},
    };
    return cases;
}

// Each test has its own job folder.
class LevelTest : public testing::TestWithParam<LevelCase> {
protected:
    // Decimates to `target`, with the case's settings and then those of `set`.
    template <typename Set>
    MeshPtr decimatedTo(std::uint32_t target, Set set) const {
        return decimated(GetParam().mesh(), [&](ProgressiveMesh& pm) {
            pm.TargetNumItem = target;
            GetParam().set(pm);
            set(pm);
        });
    }
    MeshPtr decimatedTo(std::uint32_t target) const { return decimatedTo(target, asTheyCome); }
    // As left by a job that builds a progressive mesh.
    MeshPtr lowest() const { return decimatedTo(4); }

    void save(ProgressiveMesh& pm) const { ASSERT_EQ(saveProgressiveMesh(pm, path().c_str()), 0); }
    // Loads the saved file.
    MeshPtr loaded(std::int32_t wanted = 0) const {
        auto pm = std::make_unique<ProgressiveMesh>();
        EXPECT_EQ(loadProgressiveMesh(*pm, path().c_str(), wanted), 0);
        return pm;
    }
    // All bytes of a .kvm of the mesh at its current level.
    std::string bytesOf(ProgressiveMesh& pm) const {
        const std::string other = job.folder() / u8"bytes.kvm";
        EXPECT_EQ(saveProgressiveMesh(pm, other.c_str()), 0);
        return readWhole(other);
    }
    std::string path() const { return job.folder() / u8"mesh.kvm"; }

    // `count` vertex counts from the lowest to the full one, inclusive.
    static std::vector<std::int32_t> levelsOf(const ProgressiveMesh& lowest, int count) {
        const auto low = static_cast<std::int32_t>(lowest.mesh.numActiveVertices);
        const std::int32_t high = lowest.mesh.vertexCount();
        std::vector<std::int32_t> levels;
        for (int i = 0; i < count; ++i)
            levels.push_back(low + (high - low) * i / (count - 1));
        return levels;
    }

    JobFolder job;
};

}  // namespace korvalite::core::test

// SPDX-License-Identifier: MIT
//
// Meshes that are mirror-symmetric bit for bit, and the number of their vertices that pair up.
#pragma once

#include "property/run_cases.h"
#include "symmetry/compute_symmetry.h"

#include "formats/vok_reader.h"
#include "formats/vok_writer.h"
#include "symmetry/mirror_pairs.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace korvalite::core::test {

struct SymmetryCase {
    std::string name;
    int axis = 0;
    DMesh mesh;
};
inline void PrintTo(const SymmetryCase& row, std::ostream* out) {
    *out << row.name;
}

inline std::string nameOfSymmetry(const testing::TestParamInfo<SymmetryCase>& row) {
    return row.param.name;
}

inline std::vector<SymmetryCase> symmetricMeshes() {
    std::vector<SymmetryCase> rows;
    const char* axes[] = {"X", "Y", "Z"};
    for (int axis = 0; axis < 3; ++axis) {
        for (const std::uint32_t seed : {1U, 2U, 3U}) {
            rows.push_back({std::string("Uneven") + axes[axis] + std::to_string(seed), axis,
                            unevenMirrored(axis, seed)});
        }
        DMesh colored = unevenMirrored(axis, 6);
        addColors(colored, [axis](const FloatVec3& p) {
            return component(p, (axis + 1) % 3) < 0.1F ? packColor(250, 10, 20)
                                                       : packColor(20, 10, 240);
        });
        rows.push_back({std::string("Colored") + axes[axis], axis, colored});
        DMesh masked = unevenMirrored(axis, 7);
        addMask(masked, [axis](const FloatVec3& p) {
            return component(p, (axis + 2) % 3) < -0.3F ? 5 : 120;
        });
        rows.push_back({std::string("Masked") + axes[axis], axis, masked});
    }
    rows.push_back({"SampleX", 0, sample("synth-symmetric.Vok")});
    return rows;
}

// The base of tests over symmetricMeshes().
class SymmetryTest : public DecimationTest, public testing::WithParamInterface<SymmetryCase> {
protected:
    // The active part, as a host gets it.
    DMesh compacted(const DMesh& mesh) const {
        const std::string path = job.folder() / u8"mesh.Vok";
        DMesh result;
        EXPECT_TRUE(exportDMesh(path.c_str(), mesh));
        EXPECT_TRUE(importDMesh(path.c_str(), result));
        return result;
    }
    static MirrorPairs pairsOf(const DMesh& mesh, int axis, const DMesh& original) {
        KRDMeshSymmetryCache cache;
        computeTolerance(cache, original, 0.01F);
        MirrorPairs pairs;
        EXPECT_TRUE(
            pairVertices(pairs, mesh, axis, symmetryCentre(original.boundingBox), cache.tolerance));
        return pairs;
    }
};

}  // namespace korvalite::core::test

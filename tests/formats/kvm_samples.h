// SPDX-License-Identifier: MIT
#pragma once

#include "formats/kvm_file.h"
#include "formats/kvm_reader.h"
#include "host/job_paths.h"
#include "progressive/progressive_mesh.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace korvalite::core::test {

// Each test has its own job folder, which holds its .kvm files.
class KvmTest : public testing::Test {
protected:
    void SetUp() override { SetJobDirectory(folder.path().c_str()); }
    void TearDown() override { SetJobDirectory(HeapString()); }

    std::string path(const char8_t* name = u8"mesh.kvm") const { return folder / name; }
    int load(ProgressiveMesh& pm, const std::string& bytes, std::int32_t wanted = 0) const {
        writeWhole(path(), bytes);
        return loadProgressiveMesh(pm, path().c_str(), wanted);
    }

    ScratchFolder folder;
};

// A square whose centre, vertex 4, has collapsed onto corner 0 and taken triangles 2 and 3 with it;
// it is saved at this lowest level. It has UVs, colours and a mask:
//
//   3---2    triangles 0 (1 2 4) and 1 (2 3 4), now with 0 instead of 4
//   |\ /|              2 (3 0 4) and 3 (0 1 4), now degenerate
//   | 4 |    The UV of the centre, 4, became that of the corner, 0.
//   |/ \|
//   0---1
inline KvmFile squareWithOneSplit() {
    KvmFile file;
    file.target = 4;
    file.finalCount = 4;
    file.position = 1;
    file.switches[KvmFile::kUseColors] = 1;
    file.switches[KvmFile::kHandleUVs] = 1;
    file.triangles = {1, 2, 0, 2, 3, 0, 3, 0, 0, 0, 1, 0};
    file.vertices = {{0.25F, 0, 0, -1}, {2, 0, 0, -1}, {2, 2, 0, -1}, {0, 2, 0, -1}, {1, 1, 1, 0}};
    file.triangleActive = {true, true, false, false};
    file.vertexActive = {true, true, true, true, false};
    file.countActive();
    file.colors = {0x00112233, 0x00445566, 0x00778899, 0x00AABBCC, 0x00DDEEFF};
    file.mask = {255, 200, 150, 100, 50};
    file.indicesUV = {1, 2, 0, 2, 3, 0, 3, 0, 4, 0, 1, 4};
    file.coordsUV = {{0.125F, 0}, {1, 0}, {1, 1}, {0, 1}, {0.5F, 0.5F}};
    VSplit split;
    split.vertex = 4;
    split.position = {0, 0, 0};
    split.corners = {2, 5, 8, 11};
    split.removedTriangles = {3, 2};
    split.savedColor = 0x00010203;
    split.savedUVs = {{0, 0}};
    split.cornerUVIndices = {4, 4, 4, 4};
    split.uvIndexPairs = {{4, 0}};
    file.splits = {split};
    return file;
}

// Vertices in a row without triangles, reordered: the last collapse removed vertex `base`, the
// first one the last vertex. It is saved at its lowest level.
inline KvmFile rowOfSplits(std::uint32_t vertexCount, std::uint32_t splitCount) {
    const std::uint32_t base = vertexCount - splitCount;
    KvmFile file;
    file.position = static_cast<std::int32_t>(splitCount);
    for (std::uint32_t v = 0; v < vertexCount; ++v) {
        const auto x = static_cast<float>(v + 1);
        file.vertices.push_back({x, 2 * x, -x, v == 0 ? -1 : static_cast<std::int32_t>(v - 1)});
        file.vertexActive.push_back(v < base);
    }
    for (std::uint32_t i = 0; i < splitCount; ++i) {
        VSplit split;
        split.vertex = static_cast<std::int32_t>(vertexCount - 1 - i);
        split.position = {static_cast<float>(i), 0.5F, 0.25F};
        file.splits.push_back(split);
    }
    file.countActive();
    return file;
}

}  // namespace korvalite::core::test

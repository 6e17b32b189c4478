// SPDX-License-Identifier: MIT
//
// Nothing is lost: a progressive mesh at its full count equals its input, vertex for vertex and
// triangle for triangle, apart from the renumbering by the reordering.
#include "property/level_cases.h"

#include "mesh/borders_and_seams.h"
#include "mesh/corner_lists.h"
#include "support/mesh_validator.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <set>
#include <vector>

namespace korvalite::core::test {
namespace {

// The new index for each old one.
struct Renumbering {
    std::vector<std::int32_t> vertices;
    std::vector<std::int32_t> triangles;
};

// Derived from the splits of a decimation that was not reordered: the first to be removed comes
// last, and the survivors keep their order.
Renumbering renumberingOf(ProgressiveMesh& unordered) {
    Renumbering map;
    map.vertices.assign(unordered.mesh.vertices.size(), kNone);
    map.triangles.assign(unordered.mesh.triangles.size() / 3, kNone);
    std::int32_t vertex = unordered.mesh.vertexCount();
    std::int32_t triangle = unordered.mesh.triangleCount();
    for (std::uint32_t i = 0; i < unordered.vsplitList.NumVtxSplit(); ++i) {
        const VSplitView split = unordered.vsplitList.ensureLoaded(static_cast<std::int32_t>(i));
        map.vertices[static_cast<std::size_t>(split.vertex())] = --vertex;
        for (const std::int32_t t : split.removedTriangles())
            map.triangles[static_cast<std::size_t>(t)] = --triangle;
    }
    for (auto* list : {&map.vertices, &map.triangles}) {
        std::int32_t next = 0;
        for (std::int32_t& index : *list) {
            if (index == kNone) index = next++;
        }
    }
    return map;
}

bool sameBits(float a, float b) {
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

// Welded as by a driver, if at all.
DMesh welded(DMesh mesh) {
    if (mesh.coordsUV.size() != mesh.triangles.size()) return mesh;
    BuildVertexCorners(mesh);
    WeldCornerUVs(mesh);
    return mesh;
}

class ProgressiveMeshFullCount : public LevelTest {
protected:
    void SetUp() override {
        save(*lowest());
        full_ = loaded();
        goAllUp(*full_);
        input_ = welded(GetParam().mesh());
        map_ = renumberingOf(*decimatedTo(4, [](ProgressiveMesh& pm) { pm.DoReorder = false; }));
    }

    MeshPtr full_;
    DMesh input_;
    Renumbering map_;
};

INSTANTIATE_TEST_SUITE_P(Case, ProgressiveMeshFullCount, testing::ValuesIn(levelCases()), nameOf);

TEST_P(ProgressiveMeshFullCount, HasAllVerticesAndTrianglesActive) {
    EXPECT_EQ(full_->CurVtxSplitPos, 0);
    EXPECT_EQ(full_->mesh.numActiveVertices, input_.vertices.size());
    EXPECT_EQ(full_->mesh.numActiveTriangles, input_.triangles.size() / 3);
    EXPECT_TRUE(isSound(full_->mesh));
}

TEST_P(ProgressiveMeshFullCount, HasEveryVertexOfItsInputBitForBit) {
    const DMesh& mesh = full_->mesh;
    ASSERT_EQ(mesh.vertices.size(), input_.vertices.size());
    ASSERT_EQ(mesh.vertexColors.size(), input_.vertexColors.size());
    ASSERT_EQ(mesh.maskValues.size(), input_.maskValues.size());
    for (std::size_t i = 0; i < input_.vertices.size(); ++i) {
        const auto j = static_cast<std::size_t>(map_.vertices[i]);
        const VertexRecord& was = input_.vertices[i];
        const VertexRecord& is = mesh.vertices[j];
        ASSERT_TRUE(sameBits(is.x, was.x) && sameBits(is.y, was.y) && sameBits(is.z, was.z)) << i;
        ASSERT_TRUE(!input_.hasColors() || mesh.vertexColors[j] == input_.vertexColors[i]) << i;
        ASSERT_TRUE(!input_.hasMask() || mesh.maskValues[j] == input_.maskValues[i]) << i;
    }
}

TEST_P(ProgressiveMeshFullCount, HasEveryTriangleOfItsInputWithItsUVs) {
    const DMesh& mesh = full_->mesh;
    ASSERT_EQ(mesh.triangles.size(), input_.triangles.size());
    ASSERT_EQ(mesh.indicesUV.size(), input_.indicesUV.size());
    EXPECT_EQ(full_->m_handleUVs_internal, !input_.indicesUV.empty());
    ASSERT_EQ(mesh.coordsUV.size(), input_.coordsUV.size());
    for (std::size_t c = 0; c < input_.triangles.size(); ++c) {
        const std::size_t d = static_cast<std::size_t>(map_.triangles[c / 3]) * 3 + c % 3;
        ASSERT_EQ(static_cast<std::int32_t>(mesh.triangles[d]), map_.vertices[input_.triangles[c]])
            << c;
        if (input_.indicesUV.empty()) continue;
        ASSERT_EQ(mesh.indicesUV[d], input_.indicesUV[c]) << c;
    }
    for (std::size_t k = 0; k < input_.coordsUV.size(); ++k) {
        ASSERT_TRUE(sameBits(mesh.coordsUV[k].u, input_.coordsUV[k].u) &&
                    sameBits(mesh.coordsUV[k].v, input_.coordsUV[k].v))
            << k;
    }
}

}  // namespace
}  // namespace korvalite::core::test

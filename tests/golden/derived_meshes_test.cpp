// SPDX-License-Identifier: MIT
//
// Runs on meshes of a few triangles whose results were derived by hand: each test says how, and
// tests/golden/meshes/ holds the result. A result lists the survivors in their old order, because a
// run reorders them.
#include "support/decimation_run.h"
#include "support/mesh_builder.h"

#include "formats/vok_reader.h"
#include "formats/vok_writer.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <fstream>
#include <string>
#include <utility>

namespace korvalite::core::test {
namespace {

// Reads lines "v x y z" and "f a b c", with indices from 0.
std::pair<Points, Faces> golden(const std::string& name) {
    std::ifstream stream(KORVALITE_SOURCE_DIR "/tests/golden/meshes/" + name + ".txt");
    EXPECT_TRUE(stream) << name;
    Points points;
    Faces faces;
    for (char kind = 0; stream >> kind;) {
        if (kind == 'v') {
            FloatVec3 point{};
            stream >> point.x >> point.y >> point.z;
            points.push_back(point);
        } else {
            std::array<std::uint32_t, 3> face{};
            stream >> face[0] >> face[1] >> face[2];
            faces.push_back(face);
        }
    }
    EXPECT_TRUE(stream.eof()) << name;
    return {points, faces};
}

class DerivedMeshes : public DecimationTest {
protected:
    // Compares positions by value: a coordinate of 0 may have either sign.
    void expectGolden(const std::string& name, const ProgressiveMesh& pm) const {
        const std::string path = job.folder() / u8"out.Vok";
        DMesh mesh;
        ASSERT_TRUE(exportDMesh(path.c_str(), pm.mesh));
        ASSERT_TRUE(importDMesh(path.c_str(), mesh));
        const auto [points, faces] = golden(name);
        ASSERT_FALSE(faces.empty());
        ASSERT_EQ(mesh.vertices.size(), points.size());
        for (std::size_t v = 0; v < points.size(); ++v) {
            EXPECT_EQ(mesh.vertices[v].x, points[v].x) << v;
            EXPECT_EQ(mesh.vertices[v].y, points[v].y) << v;
            EXPECT_EQ(mesh.vertices[v].z, points[v].z) << v;
        }
        ASSERT_EQ(mesh.triangles.size(), 3 * faces.size());
        for (std::size_t t = 0; t < faces.size(); ++t) {
            for (std::size_t k = 0; k < 3; ++k)
                EXPECT_EQ(mesh.triangles[3 * t + k], faces[t][k]) << t << ' ' << k;
        }
    }
    static MeshPtr decimatedTo(std::uint32_t target, DMesh mesh) {
        return decimated(std::move(mesh), [&](ProgressiveMesh& pm) { pm.TargetNumItem = target; });
    }
};

// Vertex 4 splits the edge 0-1 of a tetrahedron.
//
// Vertices 4 and 0 touch only the planes x = 0, y = 0 and z = 0, so the error of the edge 0-4 is
// exactly 0 at the origin: normals along the axes have no rounding. Edge 1-4 has an error of about
// 0 at vertex 1. Vertex 0 wins any tie by its index and collapses onto vertex 4, which moves to the
// origin. Triangles 0 2 4 and 0 4 3 disappear.
TEST_F(DerivedMeshes, ATetrahedronLosesTheVertexThatSplitsItsEdge) {
    const DMesh mesh =
        buildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0.5F, 0, 0}},
                  {{0, 2, 4}, {4, 2, 1}, {0, 4, 3}, {4, 1, 3}, {0, 3, 2}, {1, 2, 3}});
    expectGolden("tetrahedron_with_a_split_edge", *decimatedTo(4, mesh));
}

// All normals are (+-c, +-c, +-c), c = 1 / sqrt(3). In the sum of a vertex's four planes the mixed
// terms cancel: with K = 4 c * c, the error at x of a vertex at p is K (x.x - 2 x.p + 1). So all
// edges are alike: the sum 2 K x.x - 2 K x.(p + q) + 2 K of both ends is smallest at (p + q) / 2,
// with an error of K. Doubling and halving do not round, so the costs are equal bit for bit.
//
// The first edge that counts (from the lower index to the higher) is 0-2: each end has the other as
// its partner. Vertex 0 has the lowest index and collapses onto vertex 2, at (0.5, 0.5, 0).
// Triangles 4 0 2 and 5 2 0 disappear.
TEST_F(DerivedMeshes, AnOctahedronLosesItsFirstVertex) {
    expectGolden("octahedron", *decimatedTo(5, octahedron()));
}

//   3-----2
//   | \ / |     All vertices are in one plane, so all errors are exactly 0. All corners are
//   |  4  |     border vertices; vertex 4 is not.
//   | / \ |
//   0-----1
//
// Of equal costs the first one wins: vertex 0 gets its partner 1 from the first corner. It has the
// lowest index and collapses first. Both ends are on the border: the first of the nine samples from
// 0 to 1 has error 0 and wins, and that is the position of vertex 0. So vertex 1 moves there.
// Triangle 1 2 4 loses its area, so its normal is 0 and does not count as reversed; the ring of
// vertex 1 is a half disc before and after. Triangle 0 1 4 disappears.
TEST_F(DerivedMeshes, AFlatSquareLosesACorner) {
    const DMesh mesh = buildMesh({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0.5F, 0.5F, 0}},
                                 {{0, 1, 4}, {1, 2, 4}, {2, 3, 4}, {3, 0, 4}});
    expectGolden("flat_square", *decimatedTo(4, mesh));
}

// A box from x = -1 to 1, with vertices at x = 0, and with its two edges along z at y = 0 split by
// vertex 8 and by its mirror image 13.
//
// The error of the edge 0-8 is exactly 0 at vertex 0, where the planes x = -1, y = 0 and z = 0
// meet; likewise that of 2-8 at vertex 2. All other edges except their mirror images have an error.
// Those images are on the second side and follow their masters. Vertex 0 has the lowest index and
// collapses onto 8, which moves to (-1, 0, 0), and its mirror image 9 onto 13, which moves to (1,
// 0, 0). The run passes its target of 13 by one, because pairs collapse together.
TEST_F(DerivedMeshes, ABoxLosesAMirroredPair) {
    const DMesh half = buildMesh({{-1, 0, 0},
                                  {-1, 1, 0},
                                  {-1, 0, 1},
                                  {-1, 1, 1},
                                  {0, 0, 0},
                                  {0, 1, 0},
                                  {0, 0, 1},
                                  {0, 1, 1},
                                  {-1, 0, 0.5F}},
                                 {{0, 8, 1},
                                  {8, 3, 1},
                                  {8, 2, 3},
                                  {0, 4, 8},
                                  {8, 4, 6},
                                  {8, 6, 2},
                                  {1, 3, 7},
                                  {1, 7, 5},
                                  {0, 1, 5},
                                  {0, 5, 4},
                                  {2, 6, 7},
                                  {2, 7, 3}});
    const DMesh box = withMirrorImage(half, 0);
    ASSERT_EQ(box.vertices.size(), 14U);
    const MeshPtr pm = decimated(box, [](ProgressiveMesh& settings) {
        askForSymmetry(settings, 0);
        settings.TargetNumItem = 13;
    });
    EXPECT_EQ(pm->vsplitList.NumVtxSplit(), 2U);
    expectGolden("box_with_a_mirrored_pair", *pm);
}

}  // namespace
}  // namespace korvalite::core::test

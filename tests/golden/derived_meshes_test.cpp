// SPDX-License-Identifier: MIT
//
// Runs on meshes of a few triangles, whose results are worked out by hand: each test says how, and
// tests/golden/meshes/ holds the result. A result lists what survives in its old order, since a run
// reorders.
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

namespace korvalite::test {
namespace {

// Lines "v x y z" and "f a b c", with indices from 0.
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
    // Positions by value: a coordinate of 0 may have either sign.
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

// The edge 0-1 of a tetrahedron is split by vertex 4.
//
// Vertex 4 and vertex 0 touch the planes x = 0, y = 0 and z = 0 only, so that the error of the edge
// 0-4 is 0, exactly, at the origin: normals along the axes have no rounding. Edge 1-4 has an error
// of about 0 at vertex 1. Vertex 0 wins any tie by its index and falls onto vertex 4, which moves
// to the origin. Triangles 0 2 4 and 0 4 3 go.
TEST_F(DerivedMeshes, ATetrahedronLosesTheVertexThatSplitsItsEdge) {
    const DMesh mesh =
        buildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0.5F, 0, 0}},
                  {{0, 2, 4}, {4, 2, 1}, {0, 4, 3}, {4, 1, 3}, {0, 3, 2}, {1, 2, 3}});
    expectGolden("tetrahedron_with_a_split_edge", *decimatedTo(4, mesh));
}

// All normals are (+-c, +-c, +-c), c = 1 / sqrt(3). In the sum of a vertex's four planes the mixed
// terms cancel: with K = 4 c * c, the error at x of a vertex at p is K (x.x - 2 x.p + 1). So all
// edges are alike: the sum 2 K x.x - 2 K x.(p + q) + 2 K of both ends is least at (p + q) / 2, with
// an error of K. Doubling and halving do not round, so that the costs are equal bit for bit.
//
// The first edge met that counts (from the lower index to the higher) is 0-2: each end has the
// other as partner. Vertex 0 has the lowest index: it falls onto vertex 2, at (0.5, 0.5, 0).
// Triangles 4 0 2 and 5 2 0 go.
TEST_F(DerivedMeshes, AnOctahedronLosesItsFirstVertex) {
    expectGolden("octahedron", *decimatedTo(5, octahedron()));
}

//   3-----2
//   | \ / |     Everything lies in one plane, so that all errors are 0, exactly. All corners are
//   |  4  |     border vertices, vertex 4 is not.
//   | / \ |
//   0-----1
//
// Of equal costs the first stands: vertex 0 gets its partner 1 from the first corner. It has the
// lowest index and goes first. Both ends are on the border: of the nine samples from 0 to 1 the
// first has error 0 and stands, which is where vertex 0 is. So vertex 1 moves there. Triangle 1 2 4
// becomes one without an area, whose normal is 0 and so not reversed; the ring of vertex 1 is a
// half disc before and after. Triangle 0 1 4 goes.
TEST_F(DerivedMeshes, AFlatSquareLosesACorner) {
    const DMesh mesh = buildMesh({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0.5F, 0.5F, 0}},
                                 {{0, 1, 4}, {1, 2, 4}, {2, 3, 4}, {3, 0, 4}});
    expectGolden("flat_square", *decimatedTo(4, mesh));
}

// A box from x = -1 to 1, with vertices at x = 0, and with its two edges along z at y = 0 split by
// vertex 8 and by its mirror image 13.
//
// The error of the edge 0-8 is 0, exactly, at vertex 0, where the planes x = -1, y = 0 and z = 0
// meet; the same holds of 2-8 at vertex 2. All others but their mirror images have an error. Those
// images are on the second side and wait for their masters. Vertex 0 has the lowest index and falls
// onto 8, which moves to (-1, 0, 0), and its mirror image 9 onto 13, which moves to (1, 0, 0). A
// target of 13 is passed by one: pairs go together.
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
}  // namespace korvalite::test

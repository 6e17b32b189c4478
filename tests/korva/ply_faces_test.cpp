// SPDX-License-Identifier: MIT
#include "korva/files/ply/ply_faces.h"

#include "korva/ply_files.h"

#include <gtest/gtest.h>

namespace korva::test {

namespace {

const std::string kList = "property list uchar int vertex_indices\n";
const std::string kListWithUVs = kList + "property list uchar float texcoord\n";
const std::string kStrips = "element tristrips 1\nproperty list int int vertex_indices\n";

ImportedMesh readFaces(int count, const std::string& properties, const std::string& body) {
    return readPlyBytes(
        plyWithFaces("element face " + std::to_string(count) + "\n" + properties, body));
}

/// u and v of each corner.
Floats uvsOfCorners(const korvalite::Mesh& mesh) {
    Floats uvs;
    for (const std::uint32_t point : mesh.triangleUVs) {
        uvs.push_back(mesh.uvs.at(2 * std::size_t{point}));
        uvs.push_back(mesh.uvs.at(2 * std::size_t{point} + 1));
    }
    return uvs;
}

}  // namespace

TEST(PlyFaces, PolygonsBecomeFansInFileOrder) {
    EXPECT_EQ(readFaces(2, kList, "3 3 2 1\n5 0 1 2 3 1\n").mesh.triangles,
              (Indices{3, 2, 1, 0, 1, 2, 0, 2, 3, 0, 3, 1}));
}

TEST(PlyFaces, SkipsAndNotesPolygonsOfFewerThanThreeCorners) {
    const ImportedMesh read = readFaces(3, kList, "2 0 1\n3 0 1 2\n0\n");
    EXPECT_EQ(read.mesh.triangles, (Indices{0, 1, 2}));
    EXPECT_EQ(read.notes, Notes{"2 faces with fewer than 3 corners are skipped."});
    EXPECT_EQ(readFaces(2, kList, "1 0\n3 0 1 2\n").notes,
              Notes{"1 face with fewer than 3 corners is skipped."});
}

TEST(PlyFaces, FaceThatHasAVertexTwiceStays) {
    EXPECT_EQ(readFaces(1, kList, "3 1 1 2\n").mesh.triangles, (Indices{1, 1, 2}));
}

TEST(PlyFaces, NotesColoursOfFaces) {
    const ImportedMesh read =
        readFaces(1, kList + "property uchar red\nproperty uchar green\nproperty uchar blue\n",
                  "3 0 1 2 255 0 0\n");
    EXPECT_EQ(read.notes, Notes{"Colours of faces are ignored."});
    EXPECT_TRUE(read.mesh.colors.empty());
}

TEST(PlyFaces, CornersWithTheSameUVsAtAVertexShareAPoint) {
    const ImportedMesh read = readFaces(2, kListWithUVs,
                                        "3 0 1 2 6 0 0 1 0 1 1\n"
                                        "3 0 2 3 6 0 0 0.5 1 0 1\n");
    EXPECT_EQ(read.mesh.uvs, (Floats{0, 0, 1, 0, 1, 1, 0.5F, 1, 0, 1}));
    EXPECT_EQ(read.mesh.triangleUVs, (Indices{0, 1, 2, 0, 3, 4}));
    EXPECT_EQ(read.notes, Notes{});
}

TEST(PlyFaces, DifferentVerticesDoNotShareUVPoints) {
    const ImportedMesh read = readFaces(1, kListWithUVs, "3 0 1 2 6 0 0 0 0 0 0\n");
    EXPECT_EQ(read.mesh.triangleUVs, (Indices{0, 1, 2}));
}

TEST(PlyFaces, UVsOfPolygonsFollowTheFan) {
    const ImportedMesh read = readFaces(1, "property list uchar double texcoord\n" + kList,
                                        "8 0 0 1 0 1 1 0 1 4 3 2 1 0\n");
    EXPECT_EQ(read.mesh.triangles, (Indices{3, 2, 1, 3, 1, 0}));
    EXPECT_EQ(uvsOfCorners(read.mesh), (Floats{0, 0, 1, 0, 1, 1, 0, 0, 1, 1, 0, 1}));
}

TEST(PlyFaces, FacesWithoutUVsGetOnePointAndANote) {
    const ImportedMesh read = readFaces(4, kListWithUVs,
                                        "3 0 1 2 0\n"
                                        "3 0 2 3 6 .1 .2 .3 .4 .5 .6\n"
                                        "4 0 1 2 3 0\n"
                                        "2 0 1 6 1 2 3 4 5 6\n");
    EXPECT_EQ(read.mesh.uvs, (Floats{.1F, .2F, .3F, .4F, .5F, .6F, 0, 0}));
    EXPECT_EQ(read.mesh.triangleUVs, (Indices{3, 3, 3, 0, 1, 2, 3, 3, 3, 3, 3, 3}));
    EXPECT_EQ(read.notes, (Notes{"1 face with fewer than 3 corners is skipped.",
                                 "3 triangles have no UVs, unlike others; they get 0, 0."}));
}

TEST(PlyFaces, EmptyUVListsAreNoUVs) {
    const ImportedMesh read = readFaces(1, kListWithUVs, "3 0 1 2 0\n");
    EXPECT_TRUE(read.mesh.uvs.empty());
    EXPECT_TRUE(read.mesh.triangleUVs.empty());
    EXPECT_EQ(read.notes, Notes{});
}

TEST(PlyFaces, UVsOfVerticesShareTheirIndices) {
    for (const char* names : {"s t", "u v", "texture_u texture_v"}) {
        const std::string both = names;
        const std::size_t blank = both.find(' ');
        const std::string text = "ply\nformat ascii 1.0\nelement vertex 3\n" + kPlyVertexLines +
                                 "property float " + both.substr(0, blank) + "\nproperty float " +
                                 both.substr(blank + 1) + "\nelement face 1\n" + kList +
                                 "end_header\n0 0 0 .1 .2\n1 0 0 .3 .4\n1 1 0 .5 .6\n3 2 1 0\n";
        const ImportedMesh read = readPlyBytes(text);
        EXPECT_EQ(read.mesh.uvs, (Floats{.1F, .2F, .3F, .4F, .5F, .6F}));
        EXPECT_EQ(read.mesh.triangleUVs, (Indices{2, 1, 0}));
        EXPECT_EQ(read.notes, Notes{});
    }
}

TEST(PlyFaces, UVsOfFacesWinOverThoseOfVertices) {
    const std::string text = "ply\nformat ascii 1.0\nelement vertex 3\n" + kPlyVertexLines +
                             "property float u\nproperty float v\nelement face 1\n" + kListWithUVs +
                             "end_header\n0 0 0 9 9\n1 0 0 9 9\n1 1 0 9 9\n3 2 1 0 ";
    const ImportedMesh read = readPlyBytes(text + "6 1 2 3 4 5 6\n");
    EXPECT_EQ(read.mesh.uvs, (Floats{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(read.notes, Notes{"The UVs of vertices are ignored, as the faces have their own."});
    EXPECT_EQ(readPlyBytes(text + "0\n").mesh.triangleUVs, (Indices{2, 1, 0}));
}

TEST(PlyFaces, ManyUVsAroundAVertexAreReadQuickly) {
    constexpr int kFaces = 200000;
    std::string body;
    for (int i = 0; i < kFaces; ++i)
        body += "3 0 1 2 6 " + std::to_string(i) + " 0 " + std::to_string(i) + " 0 0 0\n";
    const ImportedMesh read = readFaces(kFaces, kListWithUVs, body);
    EXPECT_EQ(read.mesh.uvs.size(), 2U * (2 * kFaces + 1));
    EXPECT_EQ(uvsOfCorners(read.mesh)[6 * 150000], 150000.0F);
}

TEST(PlyFaces, StripsAlternateAndStartAgainAtMinusOne) {
    EXPECT_EQ(readPlyBytes(plyWithFaces(kStrips, "8 0 1 2 3 -1 3 2 1\n")).mesh.triangles,
              (Indices{0, 1, 2, 2, 1, 3, 3, 2, 1}));
}

TEST(PlyFaces, StripsKeepTheirTurnsThroughLinks) {
    EXPECT_EQ(readPlyBytes(plyWithFaces(kStrips, "7 0 1 2 2 3 3 1\n")).mesh.triangles,
              (Indices{0, 1, 2}));
    EXPECT_EQ(readPlyBytes(plyWithFaces(kStrips, "5 0 1 1 2 3\n")).mesh.triangles,
              (Indices{1, 2, 3}));
    EXPECT_EQ(readPlyBytes(plyWithFaces(kStrips, "6 0 1 2 2 1 3\n")).mesh.triangles,
              (Indices{0, 1, 2, 1, 2, 3}));
}

TEST(PlyFaces, StripsOfAnUnsignedTypeStartAgainAtItsLargestValue) {
    const std::string header = "element tristrips 1\nproperty list int uint vertex_indices\n";
    EXPECT_EQ(readPlyBytes(plyWithFaces(header, "6 0 1 4294967295 1 2 3\n")).mesh.triangles,
              (Indices{1, 2, 3}));
}

TEST(PlyFaces, FacesAndStripsCanMix) {
    const std::string text = plyWithFaces(kStrips + "element face 1\n" + kListWithUVs,
                                          "3 0 1 2\n3 0 2 3 6 1 2 3 4 5 6\n");
    const ImportedMesh read = readPlyBytes(text);
    EXPECT_EQ(read.mesh.triangles, (Indices{0, 1, 2, 0, 2, 3}));
    EXPECT_EQ(read.mesh.triangleUVs, (Indices{3, 3, 3, 0, 1, 2}));
    EXPECT_EQ(read.notes, Notes{"1 triangle has no UVs, unlike others; they get 0, 0."});
}

}  // namespace korva::test

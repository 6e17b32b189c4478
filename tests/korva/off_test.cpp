// SPDX-License-Identifier: MIT
#include "korva/files/off/off_reader.h"
#include "korva/files/off/off_writer.h"

#include "korva/damaged_files.h"
#include "korva/file_bytes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace korva::test {

namespace {

using korvalite::Mesh;
using Bytes = std::vector<std::uint8_t>;
using Floats = std::vector<float>;
using Indices = std::vector<std::uint32_t>;

constexpr char kPlain[] = "OFF\n4 2 0\n0 0 0\n1 0 0\n1 1 0\n0 1 0\n3 0 1 2\n3 0 2 3\n";

constexpr auto readBytes = readBytesBy<readOff>;
constexpr auto errorOf = errorOfBytesBy<readOff>;
constexpr auto written = bytesWrittenBy<writeOff>;

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

void expectSquare(const ImportedMesh& imported) {
    EXPECT_EQ(imported.mesh.positions, (Floats{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}));
    EXPECT_EQ(imported.mesh.triangles, (Indices{0, 1, 2, 0, 2, 3}));
    EXPECT_TRUE(imported.notes.empty());
}

}  // namespace

TEST(Off, ComesBackByteForByte) {
    const ImportedMesh imported = readBytes(kPlain);
    expectSquare(imported);
    EXPECT_FALSE(imported.hadNormals);
    EXPECT_EQ(written(imported.mesh), kPlain);
    EXPECT_EQ(written({}), "OFF\n0 0 0\n");
    EXPECT_EQ(readBytes("OFF\n0 0 0\n").mesh.vertexCount(), 0U);
}

TEST(Off, FloatsComeBackExactly) {
    Mesh mesh;
    mesh.positions = {0.1F,     -1.0F / 3,       3.4028235e38F, 1e-45F,      -0.0F,
                      16777216, 1.17549435e-38F, 2e-40F,        -123456.789F};
    EXPECT_EQ(readBytes(written(mesh)).mesh.positions, mesh.positions);
    EXPECT_TRUE(std::signbit(readBytes(written(mesh)).mesh.positions[4]));
    mesh.positions = {std::nanf(""), -std::numeric_limits<float>::infinity(), 0};
    const Mesh back = readBytes(written(mesh)).mesh;
    EXPECT_TRUE(std::isnan(back.positions[0]));
    EXPECT_EQ(back.positions[1], mesh.positions[1]);
}

TEST(Off, ReadsCommentsAndCountsOnTheFirstLine) {
    expectSquare(readBytes("# made by hand\n\nOFF 4 2 # counts\n\n0 0 0 # first\n1 0 0\r\n"
                           "1 1 0\r+0 1 0\n#\n3 0 1 2\n  \t\n3\t0 2 3#no colour"));
    expectSquare(readBytes("\xEF\xBB\xBF" + std::string(kPlain)));
    expectSquare(readBytes(std::string(kPlain).substr(4)));
}

TEST(Off, SplitsPolygonsIntoFansAndSkipsShortOnes) {
    const ImportedMesh imported = readBytes("OFF\n5 4 0\n0 0 0\n1 0 0\n1 1 0\n.5 2 0\n0 1 0\n"
                                            "2 0 1\n5 0 1 2 3 4\n1 7\n4 4 3 2 1\n");
    EXPECT_EQ(imported.mesh.triangles, (Indices{0, 1, 2, 0, 2, 3, 0, 3, 4, 4, 3, 2, 4, 2, 1}));
    ASSERT_EQ(imported.notes.size(), 1U);
    EXPECT_EQ(imported.notes[0], "Faces with fewer than 3 corners are skipped: 2.");
}

TEST(Off, ReadsColoursFromZeroToOneAndTo255) {
    EXPECT_EQ(readBytes("COFF 2 0\n0 0 0 255 128 1 7\n0 0 0 1 1 1 0\n").mesh.colors,
              (Bytes{255, 128, 1, 7, 1, 1, 1, 0}));
    EXPECT_EQ(readBytes("COFF 2 0\n0 0 0 1 0.5 0 1\n0 0 0 0.2 0 1.0 0.25\n").mesh.colors,
              (Bytes{255, 128, 0, 255, 51, 0, 255, 64}));
    EXPECT_EQ(readBytes("COFF 2 0\n0 0 0 1 0 0\n0 0 0 0 1 1\n").mesh.colors,
              (Bytes{255, 0, 0, 255, 0, 255, 255, 255}));
}

TEST(Off, ColoursTo255MayShowLate) {
    EXPECT_EQ(readBytes("COFF 3 0\n0 0 0 1 0 1\n0 0 0 0.4 0.6 0\n0 0 0 20 1 0\n").mesh.colors,
              (Bytes{1, 0, 1, 255, 0, 1, 0, 255, 20, 1, 0, 255}));
    EXPECT_EQ(readBytes("COFF 2 0\n0 0 0 1 0 1 1\n0 0 0 20.0 1.0 0.0 2.0\n").mesh.colors,
              (Bytes{1, 0, 1, 1, 20, 1, 0, 2}));
}

TEST(Off, ColoursOutOfRangeAreClampedWithANote) {
    const ImportedMesh imported = readBytes("COFF 2 0\n0 0 0 300 -1 nan\n0 0 0 1e30 254.6 255\n");
    EXPECT_EQ(imported.mesh.colors, (Bytes{255, 0, 0, 255, 255, 255, 255, 255}));
    ASSERT_EQ(imported.notes.size(), 1U);
    EXPECT_TRUE(has(imported.notes[0], "are clamped: 4."));
}

TEST(Off, ColoursComeBackEvenIfAllAreDark) {
    Mesh mesh;
    mesh.positions = {0, 0, 0, 1, 1, 1};
    for (const Bytes& colors : {Bytes{0, 1, 2, 3, 254, 255, 100, 255},
                                Bytes{0, 1, 0, 1, 1, 1, 0, 0}, Bytes{0, 0, 0, 0, 0, 0, 0, 0}}) {
        mesh.colors = colors;
        EXPECT_EQ(readBytes(written(mesh)).mesh.colors, colors);
    }
    mesh.colors = {0, 1, 2, 3, 254, 255, 100, 255};
    EXPECT_EQ(written(mesh), "COFF\n2 0 0\n0 0 0 0 1 2 3\n1 1 1 254 255 100 255\n");
}

TEST(Off, SkipsNormalsAndReadsUVs) {
    const ImportedMesh imported =
        readBytes("STCNOFF\n3 1 0\n0 0 0 9 9 9 255 0 0 .5 .25\n1 0 0 9 9 9 0 255 0 1 0\n"
                  "0 1 0 9 9 9 0 0 255 0 1\n3 2 0 1\n");
    EXPECT_TRUE(imported.hadNormals);
    EXPECT_EQ(imported.mesh.positions, (Floats{0, 0, 0, 1, 0, 0, 0, 1, 0}));
    EXPECT_EQ(imported.mesh.colors, (Bytes{255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255}));
    EXPECT_EQ(imported.mesh.uvs, (Floats{.5F, .25F, 1, 0, 0, 1}));
    EXPECT_EQ(imported.mesh.triangles, (Indices{2, 0, 1}));
    EXPECT_EQ(imported.mesh.triangleUVs, imported.mesh.triangles);
    EXPECT_TRUE(imported.notes.empty());
    EXPECT_EQ(readBytes("STCOFF 1 0\n1 2 3 255 0 0 8 .5 .25\n").mesh.uvs, (Floats{.5F, .25F}));
    EXPECT_EQ(readBytes("STOFF 1 0\n1 2 3 .5 .25\n").mesh.uvs, (Floats{.5F, .25F}));
    EXPECT_EQ(readBytes("NOFF 1 0\n1 2 3 .5 .25 1\n").mesh.positions, (Floats{1, 2, 3}));
    EXPECT_EQ(readBytes("NCOFF 1 0\n1 2 3 0 0 1 9 8 7\n").mesh.colors, (Bytes{9, 8, 7, 255}));
}

TEST(Off, NotesWhatItIgnoresOnce) {
    const ImportedMesh imported =
        readBytes("OFF 3 2\n0 0 0 1 1 1\n1 0 0 1 1 1\n0 1 0\n3 0 1 2 255 0 0\n3 2 1 0 7\nmore\n");
    EXPECT_EQ(imported.mesh.triangles, (Indices{0, 1, 2, 2, 1, 0}));
    ASSERT_EQ(imported.notes.size(), 3U);
    EXPECT_EQ(imported.notes[0], "The colours of faces are ignored.");
    EXPECT_TRUE(has(imported.notes[1], "more numbers"));
    EXPECT_TRUE(has(imported.notes[2], "from line 7 on"));
}

TEST(Off, RefusesOtherKindsOfOff) {
    EXPECT_TRUE(has(errorOf(std::string("OFF BINARY\n\0\0\0\x04", 15)), "binary OFF"));
    EXPECT_TRUE(has(errorOf("4OFF 1 0\n1 2 3 4\n"), "not in three dimensions"));
    EXPECT_TRUE(has(errorOf("CnOFF\n2\n"), "not in three dimensions"));
    EXPECT_TRUE(has(errorOf("ply\n"), "line 1: it begins with 'ply' instead of OFF."));
    EXPECT_TRUE(has(errorOf("# nothing\n"), "it is empty."));
}

TEST(Off, SaysWhereItIsWrong) {
    EXPECT_TRUE(has(errorOf("OFF\n"), "counts") || has(errorOf("OFF\n"), "missing"));
    EXPECT_TRUE(has(errorOf("OFF\n3\n"), "line 2: the numbers of vertices and faces are missing"));
    EXPECT_TRUE(has(errorOf("OFF\n-1 3\n"), "line 2: '-1' is not a count."));
    EXPECT_TRUE(has(errorOf("OFF\n1 1\n1 2\n"), "line 3: a vertex has 2 numbers instead of 3."));
    EXPECT_TRUE(has(errorOf("OFF\n1 1\n1 2 x\n"), "line 3: 'x' is not a number."));
    EXPECT_TRUE(has(errorOf("OFF\n2 1\n1 2 3\n"), "it ends after vertex 1 of 2."));
    EXPECT_TRUE(has(errorOf("OFF\n1 2\n1 2 3\n3 0 0 0\n"), "it ends after face 1 of 2."));
    EXPECT_TRUE(has(errorOf("OFF\n1 1\n1 2 3\n3 0 0 1\n"), "line 4: '1' is not one of the 1 "));
    EXPECT_TRUE(has(errorOf("OFF\n1 1\n1 2 3\n3 0 0 -1\n"), "line 4: '-1' is not one of the 1 "));
    EXPECT_TRUE(has(errorOf("OFF\n1 1\n1 2 3\n3.5 0 0 0\n"), "line 4: '3.5' is not a count"));
    EXPECT_TRUE(has(errorOf("OFF\n1 1\n1 2 3\n4 0 0 0\n"), "line 4: the face has fewer corners"));
    EXPECT_TRUE(has(errorOf("COFF 2 0\n1 2 3 4 5 6\n1 2 3 4 5 6 7\n"), "line 3: only some"));
    EXPECT_TRUE(has(errorOf("COFF 1 0\n1 2 3\n"), "has 3 numbers instead of 6"));
}

TEST(Off, CountsAreNotTrusted) {
    EXPECT_TRUE(has(errorOf("OFF\n2147483647 2147483647 0\n0 0 0\n"), "vertex 1 of 2147483647"));
    EXPECT_TRUE(has(errorOf("OFF\n2147483648 1 0\n0 0 0\n"), "more than 2147483647"));
    EXPECT_TRUE(has(errorOf("OFF\n18446744073709551616 1 0\n"), "is not a count"));
    EXPECT_TRUE(has(errorOf("OFF\n1 1\n1 2 3\n18446744073709551615 0 0 0\n"), "fewer corners"));
}

TEST(Off, DamageGivesAnErrorOrAMesh) {
    const MeshReader read = [](const std::filesystem::path& path) { return readOff(path); };
    expectToSurviveDamage(read, kPlain);
    expectToSurviveDamage(read, "STCNOFF\n3 1 0\n0 0 0 9 9 9 1 0 0 .5 .25\n1 0 0 9 9 9 0 255 0 1 "
                                "0\n0 1e9 0 9 9 9 0 0 3 0 1\n4 2 0 1 1 1 0 0 # x\n");
}

}  // namespace korva::test

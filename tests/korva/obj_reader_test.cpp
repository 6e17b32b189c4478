// SPDX-License-Identifier: MIT
#include "korva/files/obj/obj_reader.h"

#include "korva/damaged_files.h"
#include "korva/file_bytes.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace korva {
namespace {

using namespace korvalite::core::test;

using Floats = std::vector<float>;
using Indices = std::vector<std::uint32_t>;
using Bytes = std::vector<std::uint8_t>;
using Notes = std::vector<std::string>;

const std::string kFourVertices = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";
const std::string kThreeUVs = "vt 0 0\nvt 1 0\nvt 1 1\n";

constexpr auto read = test::readBytesBy<readObj>;
constexpr auto faultOf = test::errorOfBytesBy<readObj>;

TEST(ObjReader, ReadsVerticesAndTrianglesInTheirOrder) {
    const ImportedMesh result =
        read("v 1 2 3\nv -4.5 +5e0 .5\nv 7. 8 9\nv 0 0 1\nf 3 1 2\nf 1 2 3\n");
    EXPECT_EQ(result.mesh.positions, (Floats{1, 2, 3, -4.5F, 5, 0.5F, 7, 8, 9, 0, 0, 1}));
    EXPECT_EQ(result.mesh.triangles, (Indices{2, 0, 1, 0, 1, 2}));
    EXPECT_TRUE(result.mesh.colors.empty());
    EXPECT_TRUE(result.mesh.mask.empty());
    EXPECT_TRUE(result.mesh.uvs.empty());
    EXPECT_TRUE(result.mesh.triangleUVs.empty());
    EXPECT_FALSE(result.hadNormals);
    EXPECT_EQ(result.notes, Notes{});
}

TEST(ObjReader, SplitsPolygonsIntoFansFromTheirFirstCorner) {
    EXPECT_EQ(read(kFourVertices + "v 2 2 2\nf 2 3 4 5 1\n").mesh.triangles,
              (Indices{1, 2, 3, 1, 3, 4, 1, 4, 0}));
}

TEST(ObjReader, ReadsCornersWithUVsAndNormals) {
    const ImportedMesh plain = read(kFourVertices + kThreeUVs + "f 1/3 2/1 3/2\n");
    EXPECT_EQ(plain.mesh.uvs, (Floats{0, 0, 1, 0, 1, 1}));
    EXPECT_EQ(plain.mesh.triangleUVs, (Indices{2, 0, 1}));
    EXPECT_FALSE(plain.hadNormals);

    const ImportedMesh both = read(kFourVertices + kThreeUVs + "f 1/3/7 2/1/7 3/2/7\n");
    EXPECT_EQ(both.mesh.triangleUVs, (Indices{2, 0, 1}));
    EXPECT_TRUE(both.hadNormals);

    const ImportedMesh normals = read(kFourVertices + "vn 0 0 1\nf 1//1 2//1 3//1\n");
    EXPECT_EQ(normals.mesh.triangles, (Indices{0, 1, 2}));
    EXPECT_TRUE(normals.mesh.triangleUVs.empty());
    EXPECT_TRUE(normals.hadNormals);
    EXPECT_EQ(normals.notes, Notes{});
}

TEST(ObjReader, AcceptsCornersWhoseLastIndicesAreLeftOut) {
    EXPECT_EQ(read(kFourVertices + "f 1/ 2// 3//\n").mesh.triangles, (Indices{0, 1, 2}));
    EXPECT_EQ(read(kFourVertices + kThreeUVs + "f 1/1/ 2/2/ 3/3\n").mesh.triangleUVs,
              (Indices{0, 1, 2}));
}

TEST(ObjReader, CountsNegativeIndicesBackFromTheLastItemSoFar) {
    const ImportedMesh result =
        read("v 0 0 0\nv 1 0 0\nv 1 1 0\nvt 0 0\nvt 1 1\nf -3/-2 -2/-1 -1/-1\n"
             "v 5 5 5\nvt 2 2\nf -1/-1 -2/-3 -4/1\n");
    EXPECT_EQ(result.mesh.triangles, (Indices{0, 1, 2, 3, 2, 0}));
    EXPECT_EQ(result.mesh.triangleUVs, (Indices{0, 1, 1, 2, 0, 0}));
}

TEST(ObjReader, AcceptsFacesBeforeTheirVertices) {
    EXPECT_EQ(read("f 1/1 2/2 3/3\n" + kFourVertices + kThreeUVs).mesh.triangles,
              (Indices{0, 1, 2}));
}

TEST(ObjReader, AcceptsTheOldKeywordOfFaces) {
    EXPECT_EQ(read(kFourVertices + "fo 1 2 3\n").mesh.triangles, (Indices{0, 1, 2}));
}

TEST(ObjReader, TakesAnyLineEndsAndBlanks) {
    const Indices expected{0, 1, 2};
    EXPECT_EQ(read("v 0 0 0\r\nv 1 0 0\r\nv 1 1 0\r\nf 1 2 3\r\n").mesh.triangles, expected);
    EXPECT_EQ(read("v 0 0 0\rv 1 0 0\rv 1 1 0\rf 1 2 3\r").mesh.triangles, expected);
    EXPECT_EQ(read("v 0 0 0\nv 1 0 0\nv 1 1 0\nf 1 2 3").mesh.triangles, expected);
    EXPECT_EQ(read(" \tv\t0  0\t 0 \t\nv 1 0 0\n\n \t \n\tv 1 1 0\n f  1\t2 3 \n").mesh.triangles,
              expected);
    EXPECT_EQ(read("\xEF\xBB\xBFv 0 0 0\nv 1 0 0\nv 1 1 0\nf 1 2 3\n").mesh.triangles, expected);
}

TEST(ObjReader, IgnoresComments) {
    const ImportedMesh result =
        read("# v 9 9 9\n#MRGB ffff0000ff00ff00\nv 0 0 0 # 1 1 1\nv 1 0 0\nv 1 1 0\nf 1 2 3 # 1\n"
             "# ends in a backslash \\\nv 5 5 5 # so does this \\\nv 6 6 6\n");
    EXPECT_EQ(result.mesh.positions, (Floats{0, 0, 0, 1, 0, 0, 1, 1, 0, 5, 5, 5, 6, 6, 6}));
    EXPECT_EQ(result.mesh.triangles, (Indices{0, 1, 2}));
    EXPECT_TRUE(result.mesh.colors.empty());
    EXPECT_EQ(result.notes, Notes{});
}

TEST(ObjReader, JoinsLinesThatEndInABackslash) {
    const ImportedMesh result =
        read("v 0 \\\n0 \\\r\n 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2\\\n3 \\ \n4\nl 1 \\\n2 3\n");
    EXPECT_EQ(result.mesh.vertexCount(), 4U);
    EXPECT_EQ(result.mesh.triangles, (Indices{0, 1, 2, 0, 2, 3}));
    EXPECT_EQ(result.notes, Notes{"1 polyline is ignored (line 10)."});
    EXPECT_EQ(read(kFourVertices + "f 1 2 3\\").mesh.triangles, (Indices{0, 1, 2}));
}

TEST(ObjReader, EndsNamesWithTheirLine) {
    EXPECT_EQ(read("o C:\\\nv 0 0 0\nusemtl C:\\\nv 1 0 0\ng C:\\\nv 2 0 0\n").mesh.positions,
              (Floats{0, 0, 0, 1, 0, 0, 2, 0, 0}));
}

TEST(ObjReader, CountsEveryLineInMessages) {
    EXPECT_EQ(faultOf("v 0 0 \\\n0\nv 1 x 2\n"), "line 3: 'x' is not a number.");
    EXPECT_EQ(faultOf("v 0 0 0\r\n\r\nv 1 \\\r\n x 2\n"), "line 3: 'x' is not a number.");
}

TEST(ObjReader, RoundsNumbersToTheNearestFloat) {
    // Halfway between two floats, and a bit more, beyond the digits of a double.
    const ImportedMesh result = read("v 1.00000005960464477539062500000 "
                                     "1.00000005960464477539062500001 0.1\n"
                                     "v 1e-45 3.4028235e38 -7.006492321624085e-46\n"
                                     "v 1e-50 -1e-50 1e-400\n");
    constexpr float kNext = 1 + std::numeric_limits<float>::epsilon();
    EXPECT_EQ(result.mesh.positions,
              (Floats{1, kNext, 0.1F, std::numeric_limits<float>::denorm_min(),
                      std::numeric_limits<float>::max(), 0, 0, 0, 0}));
    EXPECT_TRUE(std::signbit(result.mesh.positions[7]));
}

TEST(ObjReader, PassesOnWhatIsNotFinite) {
    const Floats positions = read("v nan -NaN nan(ind)\nv inf -Infinity 0\n").mesh.positions;
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_TRUE(std::isnan(positions[i])) << i;
    EXPECT_EQ(positions[3], std::numeric_limits<float>::infinity());
    EXPECT_EQ(positions[4], -std::numeric_limits<float>::infinity());
}

TEST(ObjReader, IgnoresWeightsOfVertices) {
    const ImportedMesh ones = read("v 2 4 6 1\nv 2 4 6 1.0\n");
    EXPECT_EQ(ones.mesh.positions, (Floats{2, 4, 6, 2, 4, 6}));
    EXPECT_TRUE(ones.mesh.colors.empty());
    EXPECT_EQ(ones.notes, Notes{});
    const ImportedMesh others = read("v 2 4 6 1\nv 2 4 6 2\n");
    EXPECT_EQ(others.mesh.positions, (Floats{2, 4, 6, 2, 4, 6}));
    EXPECT_EQ(others.notes,
              Notes{"1 vertex has a weight other than 1, which is ignored (line 2)."});
}

TEST(ObjReader, ReadsColoursFromZeroToOne) {
    const ImportedMesh result = read("v 0 0 0 0 0.5 1\nv 0 0 0 1.0 0.003921569 0.2\n");
    EXPECT_EQ(result.mesh.colors, (Bytes{0, 128, 255, 255, 255, 1, 51, 255}));
    EXPECT_EQ(result.notes, Notes{});
}

TEST(ObjReader, ReadsColoursFromZeroTo255IfAnyIsTwoOrMore) {
    const ImportedMesh result = read("v 0 0 0 1 0 1\nv 1 0 0\nv 1 1 0 254.6 128 2\nf 1 2 3\n");
    EXPECT_EQ(result.mesh.colors, (Bytes{1, 0, 1, 255, 255, 255, 255, 255, 255, 128, 2, 255}));
    EXPECT_EQ(result.mesh.vertexCount(), 3U);
    EXPECT_EQ(result.mesh.triangles, (Indices{0, 1, 2}));
    EXPECT_EQ(result.notes, Notes{"1 vertex without a colour becomes white."});
}

TEST(ObjReader, NotesFractionsAmongColoursThatGoUpTo255) {
    EXPECT_EQ(read("v 0 0 0 0.5 0 1\nv 1 0 0 3.5 0 0\n").notes,
              Notes{"1 vertex colour has fractions below 1, but is read as 0 to 255 because others "
                    "are above 1 (line 1)."});
}

TEST(ObjReader, ReadsASeventhNumberAsAlpha) {
    EXPECT_EQ(read("v 0 0 0 1 1 1 0.2\n").mesh.colors, (Bytes{255, 255, 255, 51}));
    EXPECT_EQ(read("v 0 0 0 9 8 7 6\n").mesh.colors, (Bytes{9, 8, 7, 6}));
}

TEST(ObjReader, ClampsColoursOutOfRange) {
    const ImportedMesh unit = read("v 0 0 0 1.5 -0.1 nan\nv 0 0 0 1.001 -0.001 0\n");
    EXPECT_EQ(unit.mesh.colors, (Bytes{255, 0, 0, 255, 255, 0, 0, 255}));
    EXPECT_EQ(unit.notes, Notes{"1 vertex colour is out of range and clamped (line 1)."});
    const ImportedMesh bytes = read("v 0 0 0 256 -1 inf\n");
    EXPECT_EQ(bytes.mesh.colors, (Bytes{255, 0, 255, 255}));
    EXPECT_EQ(bytes.notes, Notes{"1 vertex colour is out of range and clamped (line 1)."});
}

TEST(ObjReader, MakesVerticesWithoutAColourWhite) {
    const ImportedMesh result = read("v 0 0 0\nv 1 0 0\nv 0 0 0 0 0 0\nv 0 0 0\n");
    EXPECT_EQ(result.mesh.colors,
              (Bytes{255, 255, 255, 255, 255, 255, 255, 255, 0, 0, 0, 255, 255, 255, 255, 255}));
    EXPECT_EQ(result.notes, Notes{"3 vertices without a colour become white."});
}

TEST(ObjReader, NotesSurplusNumbers) {
    const ImportedMesh result = read("v 1 2 3 4 5\nv 1 2 3 1 1 1 1 8\nvt 0 1 0 5\n");
    EXPECT_EQ(result.mesh.colors, (Bytes{255, 255, 255, 255, 255, 255, 255, 255}));
    EXPECT_EQ(result.notes[0], "3 lines have more numbers than their keyword takes, which are "
                               "ignored (first in line 1).");
}

TEST(ObjReader, TakesUVsOfOneToThreeCoordinates) {
    const ImportedMesh result =
        read(kFourVertices + "vt 0.25\nvt 0.5 0.75 0\nvt 1 2 3\nf 1/1 2/2 3/3\n");
    EXPECT_EQ(result.mesh.uvs, (Floats{0.25F, 0, 0.5F, 0.75F, 1, 2}));
    EXPECT_EQ(result.notes, Notes{"1 UV point has a third coordinate, which is ignored (line 7)."});
}

TEST(ObjReader, GivesCornersWithoutUVOneMoreUVPoint) {
    const ImportedMesh result =
        read(kFourVertices + kThreeUVs + "f 1 2 3\nf 1/1 2 3/2\nf 1/1 2/2 3/3\nf 2 3 4\n");
    EXPECT_EQ(result.mesh.uvs, (Floats{0, 0, 1, 0, 1, 1, 0, 0}));
    EXPECT_EQ(result.mesh.triangleUVs, (Indices{3, 3, 3, 0, 3, 1, 0, 1, 2, 3, 3, 3}));
    EXPECT_EQ(result.notes, Notes{"7 triangle corners without a UV get (0, 0)."});
}

TEST(ObjReader, NotesUVsThatNoFaceUses) {
    const ImportedMesh result = read(kFourVertices + kThreeUVs + "f 1/1 2/2\nf 1 2 3\n");
    EXPECT_TRUE(result.mesh.uvs.empty());
    EXPECT_TRUE(result.mesh.triangleUVs.empty());
    EXPECT_EQ(result.notes, (Notes{"1 face with fewer than 3 corners is skipped (line 8).",
                                   "3 UV points are ignored, because no face uses UVs."}));
}

TEST(ObjReader, SkipsFacesWithFewerThanThreeCorners) {
    const ImportedMesh result = read(kFourVertices + "f\nf 1\nf 1 2\nf 1 2 3\n");
    EXPECT_EQ(result.mesh.triangles, (Indices{0, 1, 2}));
    EXPECT_EQ(result.notes,
              Notes{"3 faces with fewer than 3 corners are skipped (first in line 5)."});
}

TEST(ObjReader, NotesWhatAMeshHasNoPlaceFor) {
    const ImportedMesh result =
        read("mtllib a.mtl\no one\ng two\ns 1\ns off\ns 0\nusemtl red\n" + kFourVertices +
             "l 1 2\nl 2 3\np 1\nvp 1 2\nlod 3\ncurv 0 1 1 2\nf 1 2 3\n");
    EXPECT_EQ(result.notes,
              (Notes{"2 material statements are ignored (first in line 1).",
                     "2 objects and groups become one mesh (first in line 2).",
                     "1 smoothing group is ignored (line 4).",
                     "2 polylines are ignored (first in line 12).",
                     "1 point element is ignored (line 14).",
                     "2 statements about curves or surfaces are ignored (first in line 15)."}));
}

TEST(ObjReader, SaysNothingAboutASingleName) {
    EXPECT_EQ(read("o name\n" + kFourVertices).notes, Notes{});
}

TEST(ObjReader, NotesUnknownKeywords) {
    EXPECT_EQ(read(kFourVertices + "vx 1 2\nhello\n").notes,
              Notes{"2 lines with unknown keywords are ignored (first in line 5)."});
}

TEST(ObjReader, KeepsUnusedVertices) {
    EXPECT_EQ(read(kFourVertices + "f 1 2 3\n").mesh.vertexCount(), 4U);
}

TEST(ObjReader, ReadsLinesOfAnyLength) {
    std::string face = "f";
    for (int i = 0; i < 700'000; ++i)
        face += " -1 -2";
    EXPECT_EQ(read(kFourVertices + face + "\n").mesh.triangleCount(), 1'399'998U);
}

TEST(ObjReader, ReportsProgressAndLetsItCancel) {
    const ScratchFolder folder;
    const std::string path = folder / u8"mesh.obj";
    writeWhole(path, kFourVertices);
    std::uint64_t done = 0;
    readObj(pathOfUtf8(path), [&](std::uint64_t now, std::uint64_t) { done = now; });
    EXPECT_EQ(done, kFourVertices.size());
    EXPECT_THROW(readObj(pathOfUtf8(path), [](std::uint64_t, std::uint64_t) { throw 1; }), int);
}

TEST(ObjReaderFaults, NameTheLine) {
    EXPECT_EQ(faultOf("v 1 2\n"), "line 1: a vertex needs three coordinates.");
    EXPECT_EQ(faultOf("\nv\n"), "line 2: a vertex needs three coordinates.");
    EXPECT_EQ(faultOf("v 1 2 # 3\n"), "line 1: a vertex needs three coordinates.");
    EXPECT_EQ(faultOf("vt\n"), "line 1: a UV point needs coordinates.");
    EXPECT_EQ(faultOf("v 1 2 3 red\n"), "line 1: 'red' is not a number.");
    EXPECT_EQ(faultOf(kFourVertices + "f 1 2 x\n"), "line 5: 'x' is not a corner of a face.");
}

TEST(ObjReaderFaults, NameTheWordThatIsNotANumber) {
    for (const std::string word :
         {"1,5", "1.#QNAN", "0x10", "+-1", "+", "-", ".", "1e", "1-", "--1"})
        EXPECT_EQ(faultOf("v " + word + " 2 3\n"), "line 1: '" + word + "' is not a number.");
    EXPECT_EQ(faultOf("v 1 \x01\xFFzzzzzzzzzzzzzzzzzzzzzzzzzzzzz 3\n"),
              "line 1: '??zzzzzzzzzzzzzzzzzzzzzz...' is not a number.");
}

TEST(ObjReader, NumbersBeyondFloatsAreInfiniteOrZero) {
    const korvalite::Mesh mesh = read("v 1e39 -1e999 1e-999\nf 1 1 1\n").mesh;
    EXPECT_EQ(mesh.positions, (std::vector<float>{INFINITY, -INFINITY, 0}));
}

TEST(ObjReaderFaults, NameTheWordThatIsNotACorner) {
    for (const std::string word :
         {"1/2/3/4", "1/x", "1//x", "/1", "//1", "1.5", "1/1.0", "+1", "1#"})
        EXPECT_EQ(faultOf(kFourVertices + kThreeUVs + "f 1 2 " + word + "\n"),
                  "line 8: '" + word + "' is not a corner of a face.");
    EXPECT_EQ(faultOf(kFourVertices + "f 1 2 99999999999999999999\n"),
              "line 5: '99999999999999999999' has an index that is too large.");
}

TEST(ObjReaderFaults, NameTheIndexThatDoesNotExist) {
    EXPECT_EQ(faultOf(kFourVertices + "f 1 2 3\nf 1 2 5\n"),
              "line 6: the face has vertex 5, but the file has only 4; the file may be damaged.");
    EXPECT_EQ(faultOf(kFourVertices + kThreeUVs + "f 1/1 2/2 3/4\n"),
              "line 8: the face has UV point 4, but the file has only 3; the file may be damaged.");
    EXPECT_EQ(faultOf(kFourVertices + "f 1 2 -5\n"),
              "line 5: the face has vertex -5, which does not exist; the file may be damaged.");
    EXPECT_EQ(faultOf(kFourVertices + "f 1 2 2147483648\n"),
              "line 5: the face has vertex 2147483648, which does not exist; the file may be "
              "damaged.");
    EXPECT_EQ(faultOf(kFourVertices + "f 1 2 -9223372036854775808\n"),
              "line 5: the face has vertex -9223372036854775808, which does not exist; the file "
              "may be damaged.");
    EXPECT_EQ(faultOf(kFourVertices + "f 1 2 0\n"),
              "line 5: '0' has index 0, but indices count from 1.");
    EXPECT_EQ(faultOf(kFourVertices + kThreeUVs + "f 1/1 2/2 3/0\n"),
              "line 8: '3/0' has index 0, but indices count from 1.");
    EXPECT_EQ(faultOf("f 1 2 3\nv 0 0 0\n"),
              "line 1: the face has vertex 3, but the file has only 1; the file may be damaged.");
}

TEST(ObjReaderFaults, RefuseFilesThatAreNotObj) {
    EXPECT_EQ(faultOf(""), "it has no vertices; is it an OBJ file?");
    EXPECT_EQ(faultOf("# nothing\n"), "it has no vertices; is it an OBJ file?");
    EXPECT_EQ(faultOf("ply\nformat ascii 1.0\n"), "it has no vertices; is it an OBJ file?");
    EXPECT_EQ(faultOf("\xFF\xFEv\n"),
              "line 1: '\?\?v' is not an OBJ keyword; the file may be damaged.");
    EXPECT_EQ(faultOf(kFourVertices + "1 2 3\n"),
              "line 5: '1' is not an OBJ keyword; the file may be damaged.");
    EXPECT_EQ(faultOf(kFourVertices + std::string(100, '\0')),
              "line 5: '" + std::string(24, '?') +
                  "...' is not an OBJ keyword; the file may be damaged.");
}

TEST(ObjReaderFaults, NameAFileThatIsNotThere) {
    const ScratchFolder folder;
    EXPECT_THROW(readObj(pathOfUtf8(folder / u8"none.obj")), korvalite::Error);
}

const std::string kEverything = "# all\r\nmtllib a\no b\nv 0 0 0 1 0 0.5\nv 1e0 -.5 +0 \\\n 0 0 0\n"
                                "v 1 1 0\nvt 0 0\nvt 1 1 0\nvn 0 0 1\ns 1\nf 1/1/1 2/2/1 3//1\n"
                                "f -1/-1 -2 1 2/1\nl 1 2\np 1\n";

const test::MeshReader kReader = [](const std::filesystem::path& path) { return readObj(path); };

TEST(ObjReaderFaults, SurviveTruncationAtEveryByteAndChangedBytes) {
    test::expectToSurviveDamage(kReader, kEverything);
}

TEST(ObjReaderFaults, SurviveEveryFlippedBit) {
    const ScratchFolder folder;
    const std::string path = folder / u8"damaged";
    for (std::size_t i = 0; i < kEverything.size(); ++i) {
        for (int bit = 0; bit < 8; ++bit) {
            std::string text = kEverything;
            text[i] = static_cast<char>(text[i] ^ (1 << bit));
            test::expectMeshOrError(kReader, path, text);
        }
    }
}

}  // namespace
}  // namespace korva

// SPDX-License-Identifier: MIT
#include "korva/files/stl/stl_reader.h"
#include "korva/files/stl/stl_writer.h"

#include "korva/damaged_files.h"
#include "korva/file_bytes.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace korva::test {

namespace {

using korvalite::Mesh;
using korvalite::core::test::pathOfUtf8;
using korvalite::core::test::ScratchFolder;
using korvalite::core::test::writeWhole;
using Indices = std::vector<std::uint32_t>;

constexpr char kTwoFacets[] = "solid two words\n"
                              " facet normal 0 0 1\n"
                              "  outer loop\n"
                              "   vertex 0 0 0\n"
                              "   vertex 1 0 0\n"
                              "   vertex 1 1 0\n"
                              "  endloop\n"
                              " endfacet\n"
                              " facet normal nan -nan(ind) 1.#QNAN\n"
                              "  outer loop\n"
                              "   vertex 0 0 -0\n"
                              "   vertex 1 +1.0 0\n"
                              "   vertex 0 1e0 0\n"
                              "  endloop\n"
                              " endfacet\n"
                              "endsolid two words\n";

Mesh square() {
    Mesh mesh;
    mesh.positions = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    mesh.triangles = {0, 1, 2, 0, 2, 3};
    return mesh;
}

constexpr auto readBytes = readBytesBy<readStl>;
constexpr auto errorOf = errorOfBytesBy<readStl>;
constexpr auto written = bytesWrittenBy<writeStl>;

std::vector<float> normalOf(const std::string& bytes, std::size_t facet) {
    std::vector<float> normal(3);
    std::memcpy(normal.data(), bytes.data() + 84 + 50 * facet, 12);
    return normal;
}

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

void expectSquare(const Mesh& mesh) {
    EXPECT_EQ(mesh.positions, square().positions);
    EXPECT_EQ(mesh.triangles, square().triangles);
    EXPECT_TRUE(mesh.colors.empty() && mesh.uvs.empty() && mesh.triangleUVs.empty());
}

}  // namespace

TEST(Stl, ComesBackFromBinaryWeldedAndWithoutNotes) {
    const std::string bytes = written(square());
    EXPECT_EQ(bytes.size(), 84U + 2 * 50);
    const ImportedMesh imported = readBytes(bytes);
    expectSquare(imported.mesh);
    EXPECT_TRUE(imported.notes.empty());
    EXPECT_FALSE(imported.hadNormals);
}

TEST(Stl, ManyTrianglesComeBack) {
    Mesh mesh;
    for (int i = 0; i < 5001; ++i) {
        const auto x = static_cast<float>(i);
        mesh.positions.insert(mesh.positions.end(), {x, std::sqrt(x), 1 / (x + 1)});
    }
    for (std::uint32_t i = 0; i + 2 < 5001; ++i)
        mesh.triangles.insert(mesh.triangles.end(), {i, i + 1, i + 2});
    const Mesh back = readBytes(written(mesh)).mesh;
    EXPECT_EQ(back.positions, mesh.positions);
    EXPECT_EQ(back.triangles, mesh.triangles);
}

TEST(Stl, AnEmptyMeshComesBack) {
    EXPECT_EQ(written({}).size(), 84U);
    EXPECT_EQ(readBytes(written({})).mesh.vertexCount(), 0U);
}

TEST(Stl, WritesUnitNormals) {
    Mesh mesh;
    mesh.positions = {0, 0, 0, 0, 2e38F, 0, 0, 0, 3e38F, 0, 1e-40F, 0, 0, 0, 1e-40F};
    mesh.triangles = {0, 1, 2, 0, 4, 3, 0, 1, 1, 0, 1, 3};
    const std::string bytes = written(mesh);
    EXPECT_EQ(normalOf(bytes, 0), (std::vector<float>{1, 0, 0})) << "huge";
    EXPECT_EQ(normalOf(bytes, 1), (std::vector<float>{-1, 0, 0})) << "tiny";
    EXPECT_EQ(normalOf(bytes, 2), (std::vector<float>{0, 0, 0})) << "a vertex twice";
    EXPECT_EQ(normalOf(bytes, 3), (std::vector<float>{0, 0, 0})) << "in a line";
}

TEST(Stl, ANormalIsZeroWhereACornerIsNotFinite) {
    Mesh mesh = square();
    mesh.positions[3] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(normalOf(written(mesh), 0), (std::vector<float>{0, 0, 0}));
    EXPECT_TRUE(std::isnan(readBytes(written(mesh)).mesh.positions[3]));
}

TEST(Stl, ABinaryHeaderMayBeginWithSolid) {
    std::string bytes = written(square());
    bytes.replace(0, 23, "solid facet endsolid   ");
    expectSquare(readBytes(bytes).mesh);
    EXPECT_TRUE(has(errorOf(bytes.substr(0, 83)), "line 1: ")) << "that does look like text";
    bytes.replace(0, 23, "solid by a program     ");
    EXPECT_TRUE(has(errorOf(bytes.substr(0, 150)),
                    "its header announces 2 triangles, but it ends after 1."));
}

TEST(Stl, NotesColoursInBinary) {
    std::string bytes = written(square());
    bytes[84 + 49] = '\x80';
    const ImportedMesh imported = readBytes(bytes);
    expectSquare(imported.mesh);
    ASSERT_EQ(imported.notes.size(), 1U);
    EXPECT_EQ(imported.notes[0],
              "The attributes of 1 triangle, which may be colours, are ignored.");
    bytes.replace(30, 10, "COLOR=\x01\x02\x03\xFF");
    EXPECT_EQ(readBytes(bytes).notes.size(), 2U);
}

TEST(Stl, AFewBytesAfterTheLastTriangleAreNotedAndManyAreAnError) {
    const std::string bytes = written(square());
    const ImportedMesh imported = readBytes(bytes + std::string(49, '\0'));
    expectSquare(imported.mesh);
    ASSERT_EQ(imported.notes.size(), 1U);
    EXPECT_EQ(imported.notes[0], "49 bytes after the last triangle are ignored.");
    EXPECT_TRUE(has(errorOf(bytes + std::string(50, '\0')), "2 triangles, but 50 bytes follow"));
}

TEST(Stl, ACountBeyondTheFileIsAnError) {
    std::string bytes = written(square());
    bytes.replace(80, 4, "\xFF\xFF\xFF\xFF");
    EXPECT_TRUE(has(errorOf(bytes), "announces 4294967295 triangles, but it ends after 2."));
    EXPECT_TRUE(has(errorOf(""), "it is empty."));
    EXPECT_TRUE(has(errorOf("ply"), "too short"));
}

TEST(Stl, ReadsText) {
    const ImportedMesh imported = readBytes(kTwoFacets);
    expectSquare(imported.mesh);
    EXPECT_TRUE(imported.notes.empty());
    EXPECT_FALSE(imported.hadNormals);
}

TEST(Stl, ReadsTextWithAnyLineEndsCasesAndSpaces) {
    std::string text = kTwoFacets;
    std::string upper = "\xEF\xBB\xBF \n\t";
    for (const char c : text) {
        if (c == '\n')
            upper += "\r\n\r\n";
        else
            upper += static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
    }
    expectSquare(readBytes(upper).mesh);
    for (char& c : text)
        c = c == '\n' ? '\r' : c;
    expectSquare(readBytes(text).mesh);
    text = kTwoFacets;
    for (std::size_t i = text.find('\n') + 1; i < text.size(); ++i)
        text[i] = text[i] == '\n' ? ' ' : text[i];
    expectSquare(readBytes(text).mesh);
    expectSquare(readBytes(std::string("solid ") + std::string(9000, 'x') +
                           std::string(kTwoFacets).substr(5))
                     .mesh);
}

TEST(Stl, JoinsTheSolidsOfText) {
    const std::string text = kTwoFacets;
    const ImportedMesh imported = readBytes(text + "\n" + text + "solid\nendsolid");
    EXPECT_EQ(imported.mesh.triangles, (Indices{0, 1, 2, 0, 2, 3, 0, 1, 2, 0, 2, 3}));
    ASSERT_EQ(imported.notes.size(), 1U);
    EXPECT_EQ(imported.notes[0], "3 solids are joined into one mesh.");
}

TEST(Stl, SplitsPolygonsOfTextIntoFansAndSkipsShortOnes) {
    const ImportedMesh imported = readBytes(
        "solid\nfacet outer loop vertex 0 0 0 vertex 1 0 0 vertex 1 1 0 vertex 0.5 2 0 "
        "vertex 0 1 0 endloop endfacet facet normal 0 0 1 outer loop vertex 8 8 8 vertex 9 9 9 "
        "endloop endfacet endsolid");
    EXPECT_EQ(imported.mesh.triangles, (Indices{0, 1, 2, 0, 2, 3, 0, 3, 4}));
    EXPECT_EQ(imported.mesh.vertexCount(), 5U);
    ASSERT_EQ(imported.notes.size(), 1U);
    EXPECT_EQ(imported.notes[0], "Facets with fewer than 3 corners are skipped: 1.");
}

TEST(Stl, SaysInWhichLineTextIsWrong) {
    std::string text = kTwoFacets;
    text.replace(text.find("1 1 0"), 5, "1 1,0");
    EXPECT_TRUE(has(errorOf(text), "line 6: '1,0' is not a number."));
    text.replace(text.find("endloop"), 7, "endlop ");
    text.replace(text.find("1,0"), 3, "1 0");
    EXPECT_TRUE(has(errorOf(text), "line 7: 'endlop' where 'vertex' is expected."));
    EXPECT_TRUE(has(errorOf("solid\nfacet\nvertex 1 2 3"), "line 3: 'vertex' where 'outer'"));
    EXPECT_TRUE(has(errorOf("solid\nface"), "line 2: 'face' where 'facet' or 'endsolid'"));
    text = kTwoFacets;
    text += 'x';
    EXPECT_TRUE(has(errorOf(text), "line 17: 'x' where 'solid'"));
    text = kTwoFacets;
    EXPECT_TRUE(has(errorOf(text.substr(0, text.find("endsolid"))), "it ends within a solid"));
}

TEST(Stl, NumbersOfTextBeyondFloatsAreInfiniteOrZero) {
    const Mesh mesh = readBytes("solid\nfacet outer loop vertex 1e39 -1e-60 1e-400 "
                                "vertex -1e999 3.4028235e38 1e-45 vertex inf nan 16777217 "
                                "endloop endfacet endsolid")
                          .mesh;
    const float infinity = std::numeric_limits<float>::infinity();
    ASSERT_EQ(mesh.positions.size(), 9U);
    EXPECT_EQ(mesh.positions[0], infinity);
    EXPECT_EQ(mesh.positions[1], 0);
    EXPECT_EQ(mesh.positions[2], 0);
    EXPECT_EQ(mesh.positions[3], -infinity);
    EXPECT_EQ(mesh.positions[4], std::numeric_limits<float>::max());
    EXPECT_EQ(mesh.positions[5], std::numeric_limits<float>::denorm_min());
    EXPECT_EQ(mesh.positions[6], infinity);
    EXPECT_TRUE(std::isnan(mesh.positions[7]));
    EXPECT_EQ(mesh.positions[8], 16777216);
}

TEST(Stl, DamageGivesAnErrorOrAMesh) {
    const MeshReader read = [](const std::filesystem::path& path) { return readStl(path); };
    expectToSurviveDamage(read, kTwoFacets);
    expectToSurviveDamage(read, written(square()));
}

TEST(Stl, ReportsBytesAndCanBeCancelled) {
    const ScratchFolder folder;
    writeWhole(folder / u8"mesh.stl", kTwoFacets);
    const std::filesystem::path path = pathOfUtf8(folder / u8"mesh.stl");
    std::uint64_t last = 0;
    readStl(path, [&](std::uint64_t done, std::uint64_t) { last = done; });
    EXPECT_EQ(last, sizeof kTwoFacets - 1);
    EXPECT_THROW(readStl(path, [](std::uint64_t, std::uint64_t) { throw 1; }), int);
}

}  // namespace korva::test

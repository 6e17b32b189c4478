// SPDX-License-Identifier: MIT
#include "korva/files/ply/ply_reader.h"

#include "korva/ply_files.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace korva::test {

namespace {

const std::string kQuad = "element face 1\nproperty list uchar int vertex_indices\n";

std::string withLineEnds(std::string text, const std::string& end) {
    for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += end.size())
        text.replace(at, 1, end);
    return text;
}

/// A triangle with a vertex of every scalar type.
std::string binaryOfAllTypes(bool isBigEndian) {
    const std::string format = isBigEndian ? "binary_big_endian" : "binary_little_endian";
    std::string text = "ply\nformat " + format + " 1.0\nelement vertex 3\n";
    text += "property int8 a\nproperty double x\nproperty short y\nproperty uint32 z\n"
            "property ushort b\nproperty uint8 red\nproperty float32 green\nproperty int blue\n"
            "element face 1\nproperty list ushort uint vertex_index\nend_header\n";
    Bytes body(isBigEndian);
    for (int i = 0; i < 3; ++i) {
        body.add(std::int8_t{-1}).add(0.5 + i).add(static_cast<std::int16_t>(-300 - i));
        body.add(std::uint32_t{4000000000}).add(std::uint16_t{7}).add(std::uint8_t{200});
        body.add(0.2F).add(std::int32_t{3});
    }
    body.add(std::uint16_t{3}).addAll<std::uint32_t>({2, 0, 1});
    return text + body.text();
}

}  // namespace

TEST(PlyReader, ReadsText) {
    const ImportedMesh read = readPlyBytes(plyWithFaces(kQuad, "4 0 1 2 3\n"));
    EXPECT_EQ(read.mesh.positions, (Floats{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0.5F}));
    EXPECT_EQ(read.mesh.triangles, (Indices{0, 1, 2, 0, 2, 3}));
    EXPECT_TRUE(read.mesh.colors.empty());
    EXPECT_TRUE(read.mesh.mask.empty());
    EXPECT_TRUE(read.mesh.uvs.empty());
    EXPECT_FALSE(read.hadNormals);
    EXPECT_EQ(read.notes, Notes{});
}

TEST(PlyReader, TakesAnyLineEndsAndBlanks) {
    const std::string text = plyWithFaces(kQuad, "\n  4 0\t1  2 3 \n\n");
    for (const char* end : {"\r\n", "\r", " \n", "\t\r\n"}) {
        const ImportedMesh read = readPlyBytes(withLineEnds(text, end));
        EXPECT_EQ(read.mesh.triangles, (Indices{0, 1, 2, 0, 2, 3}));
        EXPECT_EQ(read.notes, Notes{});
    }
}

TEST(PlyReader, NeedsNoEndOfTheLastLine) {
    EXPECT_EQ(readPlyBytes(plyWithFaces(kQuad, "3 0 1 2")).mesh.triangles, (Indices{0, 1, 2}));
}

TEST(PlyReader, ReadsAllScalarTypesInBothByteOrders) {
    for (const bool isBigEndian : {false, true}) {
        const ImportedMesh read = readPlyBytes(binaryOfAllTypes(isBigEndian));
        EXPECT_EQ(read.mesh.positions,
                  (Floats{0.5F, -300, 4e9F, 1.5F, -301, 4e9F, 2.5F, -302, 4e9F}));
        EXPECT_EQ(read.mesh.triangles, (Indices{2, 0, 1}));
        EXPECT_EQ(read.mesh.colors, (ByteList{200, 51, 3, 255, 200, 51, 3, 255, 200, 51, 3, 255}));
        EXPECT_EQ(read.notes, Notes{"Elements and properties that are ignored: a of vertex, b of "
                                    "vertex."});
    }
}

TEST(PlyReader, KnowsBothNamesOfEachType) {
    for (const char* type :
         {"char", "uchar", "short", "ushort", "int", "uint", "float", "double", "int8", "uint8",
          "int16", "uint16", "int32", "uint32", "float32", "float64"}) {
        const std::string property = "property " + std::string(type) + " quality\n";
        EXPECT_EQ(readPlyBytes(plyWithVertex(property, "0")).mesh.mask, ByteList{0}) << type;
    }
}

TEST(PlyReader, ListsCanHaveAnyCountAndIndexTypes) {
    for (const char* count : {"char", "uchar", "short", "ushort", "int", "uint", "float", "double"})
        for (const char* index : {"char", "uchar", "short", "ushort", "int", "uint", "float"}) {
            const std::string list = "property list " + std::string(count) + " " + index;
            const ImportedMesh read = readPlyBytes(
                plyWithFaces("element face 1\n" + list + " vertex_indices\n", "3 3 1 2.0\n"));
            EXPECT_EQ(read.mesh.triangles, (Indices{3, 1, 2}));
        }
    std::string text = "ply\nformat binary_big_endian 1.0\nelement vertex 3\nproperty uchar x\n"
                       "property uchar y\nproperty uchar z\nelement face 1\n"
                       "property list double float vertex_indices\nend_header\n";
    text += std::string(9, '\1') + Bytes(true).add(3.0).addAll<float>({2, 1, 0}).text();
    EXPECT_EQ(readPlyBytes(text).mesh.triangles, (Indices{2, 1, 0}));
}

TEST(PlyReader, DataMayStartWithBytesOfALineEnd) {
    const std::string header = "ply\nformat binary_little_endian 1.0\nelement vertex 1\n"
                               "property uchar x\nproperty uchar y\nproperty uchar z\nend_header\n";
    for (const char* end : {"\n", "\r\n", "\r"})
        EXPECT_EQ(readPlyBytes(withLineEnds(header, end) + "\n\r\n").mesh.positions,
                  (Floats{10, 13, 10}));
}

TEST(PlyReader, FloatsAreRoundedCorrectly) {
    const std::string text = "ply\nformat ascii 1.0\nelement vertex 3\nproperty double x\n"
                             "property float y\nproperty float z\nend_header\n"
                             // Just above the middle of two floats: rounding twice gives 1.
                             "1.00000005960464477540 +1.5 -0\n"
                             "1e-50 1e50 -1e999\n"
                             "nan -inf 1.#QNAN\n";
    const Floats positions = readPlyBytes(text).mesh.positions;
    EXPECT_EQ(positions[0], std::nextafter(1.0F, 2.0F));
    EXPECT_EQ(positions[1], 1.5F);
    EXPECT_TRUE(std::signbit(positions[2]));
    EXPECT_EQ(positions[3], 0.0F);
    EXPECT_EQ(positions[4], std::numeric_limits<float>::infinity());
    EXPECT_EQ(positions[5], -std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(positions[6]));
    EXPECT_EQ(positions[7], -std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(positions[8]));
}

TEST(PlyReader, NumbersBeyondDoubleAreTakenAsTinyOrHuge) {
    const std::string zeros(400, '0');
    const Floats positions =
        readPlyBytes("ply\nformat ascii 1.0\nelement vertex 1\n" + kPlyVertexLines +
                     "end_header\n1e-999 -0." + zeros + "1 1" + zeros + "\n")
            .mesh.positions;
    EXPECT_EQ(positions[0], 0.0F);
    EXPECT_EQ(positions[1], 0.0F);
    EXPECT_EQ(positions[2], std::numeric_limits<float>::infinity());
}

TEST(PlyReader, ReadsColoursOfAnyKind) {
    const auto colorsOf = [](const std::string& properties, const std::string& values) {
        return readPlyBytes(plyWithVertex(properties, values)).mesh.colors;
    };
    EXPECT_EQ(
        colorsOf("property uchar red\nproperty uchar green\nproperty uchar blue\n", "1 2 255"),
        (ByteList{1, 2, 255, 255}));
    EXPECT_EQ(colorsOf("property uchar alpha\nproperty uchar blue\nproperty uchar green\n"
                       "property uchar red\n",
                       "4 3 2 1"),
              (ByteList{1, 2, 3, 4}));
    EXPECT_EQ(colorsOf("property float red\nproperty float green\nproperty float blue\n"
                       "property double alpha\n",
                       "0 1 0.5 0.25"),
              (ByteList{0, 255, 128, 64}));
    EXPECT_EQ(colorsOf("property uchar diffuse_red\nproperty uchar diffuse_green\n"
                       "property uchar diffuse_blue\nproperty uchar diffuse_alpha\n",
                       "9 8 7 6"),
              (ByteList{9, 8, 7, 6}));
}

TEST(PlyReader, NotesColoursOutOfRange) {
    const std::string properties =
        "property float red\nproperty float green\nproperty float blue\n";
    const ImportedMesh read = readPlyBytes(plyWithVertex(properties, "255 0 0"));
    EXPECT_TRUE(read.mesh.colors.empty());
    EXPECT_EQ(read.notes[0],
              "Colours are ignored: not all are within 0 to 1 (floats) or 0 to 255 (integers).");
}

TEST(PlyReader, NotesColoursThatAreNotComplete) {
    const ImportedMesh read = readPlyBytes(plyWithVertex("property uchar red\n", "255"));
    EXPECT_TRUE(read.mesh.colors.empty());
    EXPECT_EQ(read.notes[0], "Elements and properties that are ignored: red of vertex.");
}

TEST(PlyReader, QualityOrMaskIsTheMask) {
    const auto maskOf = [](const std::string& type, const std::string& value) {
        return readPlyBytes(plyWithVertex("property " + type + "\n", value)).mesh.mask;
    };
    EXPECT_EQ(maskOf("float quality", "0.5"), ByteList{128});
    EXPECT_EQ(maskOf("double mask", "1"), ByteList{255});
    EXPECT_EQ(maskOf("uchar quality", "1"), ByteList{1});
    EXPECT_EQ(maskOf("int mask", "254"), ByteList{254});
    EXPECT_EQ(maskOf("float quality\nproperty uchar mask", "0.5 7"), ByteList{7});
}

TEST(PlyReader, NotesQualityOutOfRange) {
    for (const char* value : {"1.01", "-0.1", "nan"}) {
        const ImportedMesh read = readPlyBytes(plyWithVertex("property float quality\n", value));
        EXPECT_TRUE(read.mesh.mask.empty());
        EXPECT_EQ(read.notes[0],
                  "The quality or mask of vertices is ignored: not all values are within 0 "
                  "to 1 (floats) or 0 to 255 (integers).");
    }
    EXPECT_TRUE(readPlyBytes(plyWithVertex("property int quality\n", "256")).mesh.mask.empty());
    EXPECT_TRUE(readPlyBytes(plyWithVertex("property int quality\n", "-1")).mesh.mask.empty());
}

TEST(PlyReader, NormalsAreMentionedButNotNoted) {
    const ImportedMesh read = readPlyBytes(
        plyWithVertex("property float nx\nproperty float ny\nproperty float nz\n", "0 0 1"));
    EXPECT_TRUE(read.hadNormals);
    EXPECT_EQ(read.notes, Notes{kPointCloudNote});
}

TEST(PlyReader, PointCloudIsAMeshWithoutTriangles) {
    const ImportedMesh read =
        readPlyBytes(plyWithVertex("property float s\nproperty float t\n", "0.1 0.2"));
    EXPECT_EQ(read.mesh.positions, (Floats{1, 2, 3}));
    EXPECT_TRUE(read.mesh.triangles.empty());
    EXPECT_TRUE(read.mesh.uvs.empty());
    EXPECT_EQ(read.notes, Notes{kPointCloudNote});
}

TEST(PlyReader, SkipsExtraElementsAndPropertiesAndNamesThemOnce) {
    const std::string text =
        "ply\nformat ascii 1.0\ncomment any words\nobj_info num_cols 512\n"
        "element camera 1\nproperty float view\nproperty list uchar int rays\n"
        "element nothing 18446744073709551615\n"
        "element face 1\nproperty uchar flags\nproperty list uchar int vertex_indices\n"
        "property list int float weights\n"
        "element vertex 3\nproperty float confidence\n" +
        kPlyVertexLines +
        "property list uchar uchar ring\nelement edge 2\nproperty int vertex1\n"
        "property int vertex2\nelement unused 0\nproperty int x\nend_header\n"
        "0.5 3 1 2 3\n9 3 2 1 0 2 0.5 0.25\n7 0 0 0 0\n7 1 0 0 2 1 2\n7 1 1 0 1 5\n0 1\n1 2\n";
    const ImportedMesh read = readPlyBytes(text);
    EXPECT_EQ(read.mesh.triangles, (Indices{2, 1, 0}));
    EXPECT_EQ(read.mesh.positions, (Floats{0, 0, 0, 1, 0, 0, 1, 1, 0}));
    EXPECT_EQ(read.notes,
              Notes{"Elements and properties that are ignored: camera, nothing, flags of face, "
                    "weights of face, confidence of vertex, ring of vertex, edge."});
}

TEST(PlyReader, SkipsExtraElementsInBinary) {
    std::string text = "ply\nformat binary_little_endian 1.0\nelement face 1\nproperty short id\n"
                       "property list int ushort vertex_indices\nproperty list char double w\n"
                       "element path 2\nproperty list uint char steps\nproperty double length\n"
                       "element vertex 3\nproperty list uchar short ring\nproperty float x\n"
                       "property float y\nproperty float z\nend_header\n";
    Bytes body;
    body.add(std::int16_t{5}).add(std::int32_t{3}).addAll<std::uint16_t>({2, 1, 0});
    body.add(std::int8_t{1}).add(0.5);
    body.add(std::uint32_t{2}).addAll<std::int8_t>({1, 2}).add(1.0);
    body.add(std::uint32_t{0}).add(1.0);
    for (std::uint8_t i = 0; i < 3; ++i) {
        body.add(i).addAll(std::vector<std::int16_t>(i)).add(static_cast<float>(i));
        body.add(2.0F).add(3.0F);
    }
    const ImportedMesh read = readPlyBytes(text + body.text());
    EXPECT_EQ(read.mesh.triangles, (Indices{2, 1, 0}));
    EXPECT_EQ(read.mesh.positions, (Floats{0, 2, 3, 1, 2, 3, 2, 2, 3}));
}

TEST(PlyReader, FacesTakeNoMemoryForTheElementsAfterThem) {
    const std::string text = "ply\nformat binary_little_endian 1.0\nelement face 2\n"
                             "property list uchar uchar vertex_indices\nelement vertex 1000\n" +
                             kPlyVertexLines + "end_header\n";
    Bytes body;
    body.addAll<std::uint8_t>({3, 0, 1, 2, 3, 2, 1, 0}).addAll(Floats(3000));
    const korvalite::Mesh mesh = readPlyBytes(text + body.text()).mesh;
    EXPECT_EQ(mesh.triangles, (Indices{0, 1, 2, 2, 1, 0}));
    EXPECT_EQ(mesh.triangles.capacity(), mesh.triangles.size());
}

TEST(PlyReader, NoteOfManyNamesIsShortAndPrintable) {
    std::string properties = "property int \x1b[31m\n";
    std::string values = "0";
    for (int i = 0; i < 20; ++i) {
        properties += "property int p" + std::to_string(i) + "\n";
        values += " 0";
    }
    const std::string note = readPlyBytes(plyWithVertex(properties, values)).notes[0];
    EXPECT_NE(note.find("?[31m of vertex, p0 of vertex"), std::string::npos) << note;
    EXPECT_NE(note.find("p10 of vertex and 9 more."), std::string::npos) << note;
}

TEST(PlyReader, NotesNamesOfTextures) {
    std::string text = plyWithFaces(kQuad, "3 0 1 2\n");
    text.insert(text.find("element"), "comment TextureFile skin.png\n");
    EXPECT_EQ(readPlyBytes(text).notes, Notes{"The name of a texture is ignored."});
    text.insert(text.find("element"), "comment TextureFile hair.png\n");
    EXPECT_EQ(readPlyBytes(text).notes, Notes{"The names of 2 textures are ignored."});
}

TEST(PlyReader, NotesWhatFollowsTheLastElement) {
    EXPECT_EQ(readPlyBytes(plyWithFaces(kQuad, "3 0 1 2\n3 0 1 2\n")).notes,
              Notes{"The file goes on after its last element; this is ignored."});
    EXPECT_EQ(readPlyBytes(binaryOfAllTypes(true) + "x").notes.back(),
              "The file goes on after its last element; this is ignored.");
}

TEST(PlyReader, NotesLinesWithMoreNumbersThanAnnounced) {
    EXPECT_EQ(readPlyBytes(plyWithFaces(kQuad, "3 0 1 2 255 0 0\n")).notes,
              Notes{"1 line has more numbers than the header announces; these are ignored."});
}

TEST(PlyReader, ReportsProgress) {
    const ScratchFolder folder;
    const std::string path = folder / u8"mesh.ply";
    writeWhole(path, plyWithFaces(kQuad, "3 0 1 2\n"));
    std::uint64_t last = 0;
    std::uint64_t size = 0;
    (void)readPly(pathOfUtf8(path), [&](std::uint64_t done, std::uint64_t total) {
        last = done;
        size = total;
    });
    EXPECT_EQ(last, size);
    EXPECT_EQ(size, readWhole(path).size());
}

}  // namespace korva::test

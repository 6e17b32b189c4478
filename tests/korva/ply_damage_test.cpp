// SPDX-License-Identifier: MIT
#include "korva/files/ply/ply_reader.h"

#include "korva/damaged_files.h"
#include "korva/ply_files.h"

#include <gtest/gtest.h>

namespace korva::test {

namespace {

const std::string kFace = "element face 1\nproperty list uchar int vertex_indices\n";

std::string errorOfHeader(const std::string& lines) {
    return plyErrorOf("ply\n" + lines);
}

std::string errorOfFace(const std::string& line) {
    return plyErrorOf(plyWithFaces(kFace, line));
}

std::string binaryFile(const char* format) {
    const std::string header = "ply\nformat " + std::string(format) + " 1.0\nelement vertex 4\n" +
                               kPlyVertexLines +
                               "property uchar red\nproperty uchar green\nproperty uchar blue\n"
                               "element note 1\nproperty list int char text\n"
                               "element face 2\nproperty list uchar int vertex_indices\n"
                               "property list uchar float texcoord\n"
                               "element tristrips 1\nproperty list int int vertex_indices\n"
                               "end_header\n";
    Bytes body(std::string(format) == "binary_big_endian");
    for (std::uint8_t i = 0; i < 4; ++i)
        body.addAll<float>({1.0F * i, 0, 1}).addAll<std::uint8_t>({i, i, i});
    body.add(std::int32_t{2}).addAll<char>({'o', 'k'});
    body.add(std::uint8_t{3}).addAll<std::int32_t>({0, 1, 2});
    body.add(std::uint8_t{6}).addAll<float>({0, 0, 0, 1, 1, 1});
    body.add(std::uint8_t{4}).addAll<std::int32_t>({0, 1, 2, 3}).add(std::uint8_t{0});
    body.add(std::int32_t{4}).addAll<std::int32_t>({0, 1, -1, 2});
    return header + body.text();
}

std::string textFile() {
    return plyWithFaces("element note 1\nproperty list int char text\nelement face 2\n"
                        "property list uchar int vertex_indices\n"
                        "property list uchar float texcoord\n"
                        "element tristrips 1\nproperty list int int vertex_indices\n",
                        "2 65 66\n3 0 1 2 6 0 0 0 1 1 1\n4 0 1 2 3 0\n4 0 1 -1 2\n");
}

const MeshReader kReader = [](const std::filesystem::path& path) { return readPly(path); };

std::vector<std::string> wholeFiles() {
    return {textFile(), binaryFile("binary_little_endian"), binaryFile("binary_big_endian")};
}

}  // namespace

TEST(PlyDamage, TheWholeFilesAreFine) {
    for (const std::string& whole : wholeFiles()) {
        EXPECT_EQ(plyErrorOf(whole), "");
        EXPECT_EQ(readPlyBytes(whole).mesh.triangleCount(), 3U);
    }
}

TEST(PlyDamage, EveryTruncationIsAnErrorOrAMesh) {
    const ScratchFolder folder;
    for (const std::string& whole : wholeFiles()) {
        const bool isText = whole == textFile();
        for (std::size_t size = 0; size < whole.size(); ++size) {
            // Only a text can do without its last byte, which is a line end.
            const bool isEnough = isText && size + 1 == whole.size();
            EXPECT_EQ(expectMeshOrError(kReader, folder / u8"mesh.ply", whole.substr(0, size)),
                      isEnough)
                << size;
        }
    }
}

TEST(PlyDamage, EveryChangedByteGivesAnErrorOrAMesh) {
    for (const std::string& whole : wholeFiles())
        expectToSurviveDamage(kReader, whole);
}

TEST(PlyDamage, OtherFilesAreRecognized) {
    const std::string reason = "it does not start with \"ply\"; is it a PLY file?";
    for (const char* bytes : {"", "p", "ply", "plyx\n", "solid\n", "PLY\n"})
        EXPECT_NE(plyErrorOf(bytes), "");
    EXPECT_EQ(plyErrorOf("solid\n"), reason);
    EXPECT_EQ(plyErrorOf("plywood\n"), reason);
    EXPECT_EQ(plyErrorOf(""), reason);
}

TEST(PlyDamage, FaultsOfTheHeaderNameTheirLine) {
    EXPECT_EQ(errorOfHeader("format ascii 1.0\nelement vertex 1\n"),
              "the file ends within its header; is it cut off?");
    EXPECT_EQ(errorOfHeader("format binary 1.0\n"),
              "line 2 of the header has the unknown format \"binary\".");
    EXPECT_EQ(errorOfHeader("element vertex\n"),
              "line 2 of the header is not an element with its count.");
    EXPECT_EQ(errorOfHeader("element vertex -1\n"),
              "line 2 of the header is not an element with its count.");
    EXPECT_EQ(errorOfHeader("element vertex 99999999999999999999\n"),
              "line 2 of the header is not an element with its count.");
    EXPECT_EQ(errorOfHeader("property float x\n"),
              "line 2 of the header has a property before any element.");
    EXPECT_EQ(errorOfHeader("element vertex 1\nproperty half x\n"),
              "line 3 of the header has the unknown type \"half\".");
    EXPECT_EQ(errorOfHeader("element vertex 1\nproperty list uchar\n"),
              "line 3 of the header has the unknown type \"\".");
    EXPECT_EQ(errorOfHeader("element vertex 1\nproperty float\n"),
              "line 3 of the header is not a property with its name.");
    EXPECT_EQ(errorOfHeader("elephant\n"),
              "line 2 of the header starts with the unknown word \"elephant\".");
    EXPECT_EQ(errorOfHeader("end_header\n"), "its header does not name a format.");
    EXPECT_EQ(errorOfHeader("comment " + std::string(2000000, 'x') + "\n"),
              "line 2 of the header is longer than a line of a header can be.");
}

TEST(PlyDamage, WhatIsMissingIsNamed) {
    EXPECT_EQ(errorOfHeader("format ascii 1.0\nend_header\n"), "it has no element \"vertex\".");
    EXPECT_EQ(errorOfHeader("format ascii 1.0\nelement vertex 0\nproperty float x\n"
                            "property float y\nend_header\n"),
              "its vertices have no x, y and z.");
    EXPECT_EQ(errorOfHeader("format ascii 1.0\nelement vertex 0\nelement vertex 0\nend_header\n"),
              "it has two elements \"vertex\".");
    EXPECT_EQ(plyErrorOf(plyWithFaces("element face 1\nproperty int vertex_indices\n", "3\n")),
              "its element face has no list vertex_indices or vertex_index.");
}

TEST(PlyDamage, CountsBeyondTheFileTakeNoMemory) {
    const std::string huge = "18446744073709551615";
    const std::string reason = "it is too short for the " + huge +
                               " of element vertex that its header announces; is it cut off?";
    for (const char* format : {"ascii", "binary_little_endian", "binary_big_endian"})
        EXPECT_EQ(errorOfHeader("format " + std::string(format) + " 1.0\nelement vertex " + huge +
                                "\n" + kPlyVertexLines + "end_header\n1 2 3\n"),
                  reason);
    EXPECT_EQ(plyErrorOf(plyWithFaces("element face 1000000000000\n"
                                      "property list uchar int vertex_indices\n",
                                      "3 0 1 2\n")),
              "it is too short for the 1000000000000 of element face that its header announces; is "
              "it cut off?");
}

TEST(PlyDamage, FaultsInTextNameTheirLine) {
    EXPECT_EQ(errorOfFace("3 0 1 4\n"), "line 14: it uses vertex 4, but there are only 4 (counted "
                                        "from 0).");
    EXPECT_EQ(errorOfFace("3 0 1 -1\n"),
              "line 14: it uses vertex -1, but there are only 4 (counted "
              "from 0).");
    EXPECT_EQ(errorOfFace("3 0 1 1.5\n"), "line 14: an index of a vertex is not a whole number.");
    EXPECT_EQ(errorOfFace("3 0 1 1e99\n"), "line 14: an index of a vertex is not a whole number.");
    EXPECT_EQ(errorOfFace("3 0 1 1e999\n"), "line 14: an index of a vertex is not a whole number.");
    EXPECT_EQ(errorOfFace("3 0 1 1e999x\n"), "line 14: \"1e999x\" is not a number.");
    EXPECT_EQ(errorOfFace("3 0 1 two\n"), "line 14: \"two\" is not a number.");
    EXPECT_EQ(errorOfFace("3 0 1 +-2\n"), "line 14: \"+-2\" is not a number.");
    EXPECT_EQ(errorOfFace("3 0 1\n"),
              "line 14: its list vertex_indices has 3 numbers, but the line "
              "ends before.");
    EXPECT_EQ(errorOfFace("9000000000 0 1 2\n"),
              "line 14: its list vertex_indices has 9000000000 numbers, but the line ends before.");
    EXPECT_EQ(errorOfFace("2.5 0 1\n"),
              "line 14: the length of list vertex_indices is not a count.");
    EXPECT_EQ(errorOfFace("-3 0 1\n"),
              "line 14: the length of list vertex_indices is not a count.");
    EXPECT_EQ(plyErrorOf(plyWithVertex("property float w\n", "")),
              "line 9: a number is missing at its end.");
    EXPECT_EQ(plyErrorOf(plyWithVertex("property float quality\n", "1,5")),
              "line 9: \"1,5\" is not a number.");
    EXPECT_EQ(plyErrorOf(plyWithVertex("property float quality\n", "1e999x")),
              "line 9: \"1e999x\" is not a number.");
}

TEST(PlyDamage, ATextThatEndsEarlySaysSo) {
    EXPECT_EQ(errorOfFace("\n\n\n"),
              "line 16: the file ends here, with 1 of element face to come; is it cut off?");
}

TEST(PlyDamage, UVsThatDoNotFitTheirFaceAreAnError) {
    EXPECT_EQ(plyErrorOf(plyWithFaces(kFace + "property list uchar float texcoord\n",
                                      "3 0 1 2 4 0 0 1 1\n")),
              "line 15: a face with 3 corners has 4 numbers in its list texcoord, not 2 for each.");
}

TEST(PlyDamage, FaultsInBinaryNameTheirElement) {
    const std::string header = "ply\nformat binary_little_endian 1.0\nelement vertex 1\n" +
                               kPlyVertexLines +
                               "element face 2\nproperty list int int vertex_indices\nend_header\n";
    const std::string vertex = Bytes().addAll<float>({1, 2, 3}).text();
    const std::string good = Bytes().addAll<std::int32_t>({3, 0, 0, 0}).text();
    EXPECT_EQ(
        plyErrorOf(header + vertex + good + Bytes().addAll<std::int32_t>({3, 0, 0, 7}).text()),
        "face 1 (counted from 0): it uses vertex 7, but there are only 1 (counted from 0).");
    EXPECT_EQ(plyErrorOf(header + vertex + Bytes().addAll<std::int32_t>({-1, 0, 0}).text()),
              "face 0 (counted from 0): the length of list vertex_indices is not a count.");
    EXPECT_EQ(plyErrorOf(header + vertex + Bytes().addAll<std::int32_t>({2000000000, 0}).text()),
              "face 0 (counted from 0): its list vertex_indices has 2000000000 numbers, but the "
              "file ends before; is it damaged or cut off?");
    EXPECT_EQ(plyErrorOf(header + vertex + good + "\1\1"),
              "face 1 (counted from 0): the file ends here; is it cut off?");
}

}  // namespace korva::test

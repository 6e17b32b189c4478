// SPDX-License-Identifier: MIT
#include "formats/obj_writer.h"

#include "platform/platform.h"
#include "support/allocation_counter.h"
#include "support/full_disk.h"
#include "support/mesh_builder.h"
#include "support/obj_by_printf.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

namespace korvalite::core {
namespace {

using test::ScratchFolder;

const std::string kComment =
    "# The following MRGB block contains Fennik Vertex Color (Surfcoat) and masking output as 4 "
    "hexadecimal values per vertex. The vertex color format is MMRRGGBB with up to 64 entries per "
    "MRGB line.\n";

// The files that a mesh is written to, in their own folder. A missing file reads as empty.
struct Written {
    Written(const DMesh& mesh, ObjColorMode mode) : result(saveObj(path.c_str(), mesh, mode)) {}

    std::string obj() const { return test::readWhole(path); }
    std::string colors() const { return test::readWhole(path + ".colors"); }
    std::string mask() const { return test::readWhole(path + ".mask"); }
    bool hasColors() const { return platform::exists((path + ".colors").c_str()); }
    bool hasMask() const { return platform::exists((path + ".mask").c_str()); }

    ScratchFolder folder;
    std::string path = folder / u8"größe.obj";
    bool result;
};

std::string objOf(const DMesh& mesh, ObjColorMode mode = ObjColorMode::None) {
    const Written written(mesh, mode);
    EXPECT_TRUE(written.result);
    return written.obj();
}

//   3---2
//   | / |      all active, with nothing but positions
//   0---1
DMesh square() {
    return test::twoTriangles();
}
const std::string kSquareVertices = "v 0.000000000 0.000000000 0.000000000\n"
                                    "v 1.000000000 0.000000000 0.000000000\n"
                                    "v 1.000000000 1.000000000 0.000000000\n"
                                    "v 0.000000000 1.000000000 0.000000000\n";

// `count` coloured vertices without triangles. The colours differ in all bytes.
DMesh coloredPoints(std::uint32_t count) {
    DMesh mesh = test::buildMesh(test::Points(count), {});
    for (std::uint32_t i = 0; i < count; ++i)
        mesh.vertexColors.push_back(test::packColor(i & 0xFFU, 0x34, 0x56, 0xF0 + i / 64));
    return mesh;
}

// Everything after the vertices and the comment.
std::string mrgbLinesOf(const DMesh& mesh) {
    const std::string text = objOf(mesh, ObjColorMode::Embedded);
    const std::size_t comment = text.find(kComment);
    EXPECT_NE(comment, std::string::npos);
    return comment == std::string::npos ? text : text.substr(comment + kComment.size());
}

TEST(ObjWriter, WritesAPlainMesh) {
    EXPECT_EQ(objOf(square()), kSquareVertices + "f 1 2 3\nf 1 3 4\n");
}

TEST(ObjWriter, CoordinatesAlwaysHaveNineDecimals) {
    const float infinity = std::numeric_limits<float>::infinity();
    const DMesh mesh =
        test::buildMesh({{1.5F, -0.0F, 1e-12F}, {-0.1F, 123456.7F, 2e20F}, {infinity, 0, 0}}, {});
    EXPECT_EQ(objOf(mesh), "v 1.500000000 -0.000000000 0.000000000\n"
                           "v -0.100000001 123456.703125000 200000004008175468544.000000000\n"
                           "v inf 0.000000000 0.000000000\n");
}

TEST(ObjWriter, OmitsDeadVerticesAndKeepsIndicesDense) {
    DMesh mesh = square();
    mesh.vertexActive.Clear(1);
    mesh.triangleActive.Clear(0);
    EXPECT_EQ(objOf(mesh), "v 0.000000000 0.000000000 0.000000000\n"
                           "v 1.000000000 1.000000000 0.000000000\n"
                           "v 0.000000000 1.000000000 0.000000000\n"
                           "f 1 2 3\n");
}

TEST(ObjWriter, AnEmptyMeshGivesAnEmptyFile) {
    EXPECT_EQ(objOf(DMesh()), "");
    EXPECT_EQ(objOf(DMesh(), ObjColorMode::Embedded), kComment);
}

TEST(ObjWriter, IndicesOutOfRangeAreWrittenAsZero) {
    DMesh mesh = square();
    mesh.vertexActive.Clear(3);
    mesh.triangles[1] = 4;
    mesh.triangles[2] = 0xFFFFFFFF;
    mesh.coordsUV = {{0, 0}, {1, 1}};
    mesh.indicesUV = {0, 2, 0xFFFFFFFF, 1, 1, 1};
    const std::string text = objOf(mesh);
    EXPECT_NE(text.find("f 1/1 0/0 0/0\nf 1/2 3/2 0/2\n"), std::string::npos) << text;
}

TEST(ObjWriter, IgnoresActiveBitsBeyondTheArrays) {
    DMesh mesh = square();
    mesh.vertexActive.Resize(1000, true);
    mesh.triangleActive.Resize(1000, true);
    mesh.vertexColors.assign(4, 0);
    mesh.maskValues.assign(4, 0);
    const std::string faces = "f 1 2 3\nf 1 3 4\n";
    EXPECT_EQ(objOf(mesh), kSquareVertices + faces);
    EXPECT_EQ(objOf(mesh, ObjColorMode::Embedded), kSquareVertices + kComment + faces);
    const Written written(mesh, ObjColorMode::SideFiles);
    EXPECT_EQ(written.colors().size(), 4U + 4 * 4);
    EXPECT_EQ(written.mask().size(), 4U + 4);
}

TEST(ObjWriter, MissingBitsMeanDead) {
    DMesh mesh = square();
    mesh.vertexActive.Free();
    mesh.triangleActive.Free();
    mesh.vertexColors.assign(4, 0);
    EXPECT_EQ(objOf(mesh), "");
    EXPECT_EQ(objOf(mesh, ObjColorMode::Embedded), kComment);
}

TEST(ObjWriter, NumbersUVsByTheirPlaceInTheList) {
    DMesh mesh = square();
    mesh.coordsUV = {{0, 0}, {0.25F, 0.5F}, {9, 9}, {1, -1}, {0.125F, 1}};
    mesh.indicesUV = {4, 3, 1, 4, 1, 0};
    EXPECT_EQ(objOf(mesh), kSquareVertices + "vt 0.000000000 0.000000000\n"
                                             "vt 0.250000000 0.500000000\n"
                                             "vt 1.000000000 -1.000000000\n"
                                             "vt 0.125000000 1.000000000\n"
                                             "f 1/4 2/3 3/2\nf 1/4 3/2 4/1\n");
}

TEST(ObjWriter, OmitsUVsOfDeadTriangles) {
    DMesh mesh = square();
    mesh.coordsUV = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    mesh.indicesUV = {0, 1, 2, 0, 2, 3};
    mesh.triangleActive.Clear(0);
    EXPECT_EQ(objOf(mesh), kSquareVertices + "vt 0.000000000 0.000000000\n"
                                             "vt 1.000000000 1.000000000\n"
                                             "vt 0.000000000 1.000000000\n"
                                             "f 1/1 3/2 4/3\n");
}

TEST(ObjWriter, OmitsUVIndicesOfTheWrongCount) {
    DMesh mesh = square();
    test::addCornerUVs(mesh);  // one UV per corner and no indices, as read
    EXPECT_EQ(objOf(mesh), objOf(square()));
    mesh.indicesUV = {0, 1, 2};
    EXPECT_EQ(objOf(mesh), objOf(square()));
}

TEST(ObjWriter, WithoutTrianglesOrUVIndicesWritesNeitherUVsNorFaces) {
    DMesh mesh = square();
    mesh.triangles.clear();
    mesh.triangleActive.Free();
    mesh.coordsUV = {{1, 1}};
    EXPECT_EQ(objOf(mesh), kSquareVertices);
}

TEST(ObjWriter, ColorsAreMaskRedGreenBlueInLowerCase) {
    DMesh mesh = coloredPoints(64);
    mesh.vertexColors[0] = test::packColor(0x12, 0x34, 0x56, 0xFF);
    mesh.vertexColors[1] = test::packColor(0xAB, 0xCD, 0xEF, 0x09);
    EXPECT_EQ(mrgbLinesOf(mesh).substr(0, 6 + 16), "#MRGB ff12345609abcdef");
}

TEST(ObjWriter, WritesColorsInFullLinesOf64Only) {
    constexpr std::size_t kLine = 6 + 512 + 1;
    EXPECT_EQ(mrgbLinesOf(coloredPoints(63)), "");
    const std::string one = mrgbLinesOf(coloredPoints(64));
    EXPECT_EQ(one.size(), kLine);
    EXPECT_EQ(one.back(), '\n');
    EXPECT_EQ(mrgbLinesOf(coloredPoints(65)), one);
    EXPECT_EQ(mrgbLinesOf(coloredPoints(127)), one);
    const std::string two = mrgbLinesOf(coloredPoints(128));
    EXPECT_EQ(two.size(), 2 * kLine);
    EXPECT_EQ(two.substr(0, kLine), one);
    EXPECT_EQ(two.substr(kLine, 6 + 8), "#MRGB f1403456");
}

TEST(ObjWriter, OnlyActiveVerticesHaveColors) {
    DMesh mesh = coloredPoints(65);
    mesh.vertexActive.Clear(0);
    const std::string line = mrgbLinesOf(mesh);
    EXPECT_EQ(line.substr(0, 6 + 8), "#MRGB f0013456");
    EXPECT_EQ(line.substr(6 + 63 * 8), "f1403456\n");
}

TEST(ObjWriter, WritesColorsBetweenVerticesAndUVs) {
    DMesh mesh = coloredPoints(64);
    mesh.triangles = {0, 1, 2};
    mesh.triangleActive.Resize(1, true);
    mesh.coordsUV = {{0, 0}};
    mesh.indicesUV = {0, 0, 0};
    const std::string text = objOf(mesh, ObjColorMode::Embedded);
    const std::size_t comment = text.find("\n" + kComment + "#MRGB ");
    EXPECT_LT(text.rfind("v 0"), comment);
    EXPECT_LT(comment, text.find("vt 0"));
    EXPECT_LT(text.find("vt 0"), text.find("f 1/1"));
}

TEST(ObjWriter, AMaskWithoutColorsGivesOnlyTheComment) {
    DMesh mesh = test::buildMesh(test::Points(70), {});
    mesh.maskValues.assign(70, 7);
    EXPECT_EQ(mrgbLinesOf(mesh), "");
}

TEST(ObjWriter, TooFewColorsGiveOnlyTheComment) {
    DMesh mesh = coloredPoints(130);
    mesh.vertexColors.resize(129);
    EXPECT_EQ(mrgbLinesOf(mesh), "");
}

TEST(ObjWriter, SurplusColorsMakeNoDifference) {
    DMesh mesh = coloredPoints(130);
    const std::string lines = mrgbLinesOf(mesh);
    mesh.vertexColors.push_back(0);
    EXPECT_EQ(mrgbLinesOf(mesh), lines);
}

TEST(ObjWriter, EmbeddedColorsWriteNoSideFiles) {
    DMesh mesh = coloredPoints(3);
    mesh.maskValues = {1, 2, 3};
    for (const ObjColorMode mode : {ObjColorMode::None, ObjColorMode::Embedded}) {
        const Written written(mesh, mode);
        EXPECT_FALSE(written.hasColors());
        EXPECT_FALSE(written.hasMask());
    }
    EXPECT_EQ(objOf(mesh).find('#'), std::string::npos);
}

TEST(ObjWriter, SideFilesHoldCountAndActiveElements) {
    DMesh mesh = coloredPoints(4);
    mesh.vertexColors = {0x44332211, 0, 0x04030201, 0xFFFEFDFC};
    mesh.maskValues = {10, 20, 30, 40};
    mesh.vertexActive.Clear(1);
    mesh.numActiveVertices = 3;
    const Written written(mesh, ObjColorMode::SideFiles);
    EXPECT_TRUE(written.result);
    EXPECT_EQ(written.colors(),
              std::string("\x03\0\0\0\x11\x22\x33\x44\x01\x02\x03\x04\xFC\xFD\xFE\xFF", 16));
    EXPECT_EQ(written.mask(), std::string("\x03\0\0\0\x0A\x1E\x28", 7));
    EXPECT_EQ(written.obj(), objOf(mesh));
}

TEST(ObjWriter, WritesSideFilesOnlyForExistingAttributes) {
    DMesh mesh = square();
    mesh.maskValues = {1, 2, 3, 4};
    const Written maskAlone(mesh, ObjColorMode::SideFiles);
    EXPECT_TRUE(maskAlone.hasMask());
    EXPECT_FALSE(maskAlone.hasColors());
    mesh.vertexColors = {1, 2, 3, 4};
    mesh.maskValues.pop_back();
    const Written colorsAlone(mesh, ObjColorMode::SideFiles);
    EXPECT_FALSE(colorsAlone.hasMask());
    EXPECT_TRUE(colorsAlone.hasColors());
    mesh.vertexColors.push_back(5);
    EXPECT_FALSE(Written(mesh, ObjColorMode::SideFiles).hasColors());
}

TEST(ObjWriter, AnUnopenableSideFileIsSkipped) {
    DMesh mesh = square();
    mesh.maskValues = {1, 2, 3, 4};
    mesh.vertexColors = {1, 2, 3, 4};
    const ScratchFolder folder;
    const std::string path = folder / u8"out.obj";
    std::filesystem::create_directory(test::pathOfUtf8(path + ".colors"));
    EXPECT_TRUE(saveObj(path.c_str(), mesh, ObjColorMode::SideFiles));
    EXPECT_EQ(test::readWhole(path), objOf(square()));
    EXPECT_EQ(test::readWhole(path + ".mask").size(), 8U);
}

TEST(ObjWriter, UnopenablePathsFail) {
    const ScratchFolder folder;
    DMesh mesh = square();
    mesh.maskValues = {1, 2, 3, 4};
    EXPECT_FALSE(saveObj("", mesh, ObjColorMode::SideFiles));
    EXPECT_FALSE(saveObj(HeapString(), mesh, ObjColorMode::SideFiles));
    const std::string missing = folder / u8"missing/out.obj";
    EXPECT_FALSE(saveObj(missing.c_str(), mesh, ObjColorMode::SideFiles));
    EXPECT_FALSE(saveObj(folder.path().c_str(), mesh, ObjColorMode::SideFiles));
    EXPECT_FALSE(platform::exists((folder.path() + ".mask").c_str()));
}

TEST(ObjWriter, ReplacesAnExistingFile) {
    const ScratchFolder folder;
    const std::string path = folder / u8"out.obj";
    test::writeWhole(path, std::string(100000, 'x'));
    ASSERT_TRUE(saveObj(path.c_str(), square(), ObjColorMode::None));
    EXPECT_EQ(test::readWhole(path), objOf(square()));
}

TEST(ObjWriter, AllocatesNothingPerLine) {
    const ScratchFolder folder;
    const std::string path = folder / u8"out.obj";
    const auto allocationsFor = [&](DMesh mesh) {
        test::addColors(mesh, [](const FloatVec3&) { return 1U; });
        mesh.coordsUV.resize(mesh.vertices.size());
        mesh.indicesUV = mesh.triangles;
        const HeapString name = path.c_str();
        const test::AllocationCounter counter;
        saveObj(name, mesh, ObjColorMode::Embedded);
        return counter.count();
    };
    EXPECT_EQ(allocationsFor(test::grid(100, 100)), allocationsFor(test::grid(2, 2)));
}

// Gives the same lines as one fprintf for each, across many buffers.
TEST(ObjWriter, WritesTheSameBytesAsPrintf) {
    DMesh mesh = test::grid(120, 90, test::hills);
    test::jitter(mesh, 0.4F, 1);
    for (std::int32_t i = 0; i < mesh.vertexCount(); i += 7)
        mesh.vertexActive.Clear(i);
    for (std::int32_t t = 0; t < mesh.triangleCount(); t += 3)
        mesh.triangleActive.Clear(t);
    const ScratchFolder folder;
    const std::string path = folder / u8"expected.obj";
    for (const bool withUVs : {false, true}) {
        if (withUVs) {
            test::addCornerUVs(mesh);
            mesh.indicesUV = mesh.triangles;
        }
        std::FILE* const file = platform::openFile(path.c_str(), "w");
        ASSERT_NE(file, nullptr);
        test::writeObjByPrintf(file, mesh);
        std::fclose(file);
        const std::string expected = test::readWhole(path);
        EXPECT_GT(expected.size(), 500'000U);
        EXPECT_TRUE(objOf(mesh) == expected) << "with UVs: " << withUVs;
    }
}

#ifndef _WIN32
TEST(ObjWriter, DoesNotNoticeAFullDisk) {
    const ScratchFolder folder;
    const std::string path = folder / u8"out.obj";
    const DMesh mesh = test::grid(50, 50);
    for (const std::size_t room : {0U, 100U, 70000U}) {
        bool result = false;
        {
            const test::FullDisk disk(room);
            result = saveObj(path.c_str(), mesh, ObjColorMode::None);
        }
        EXPECT_TRUE(result);
        EXPECT_EQ(test::readWhole(path), objOf(mesh).substr(0, room));
    }
}
#endif

}  // namespace
}  // namespace korvalite::core

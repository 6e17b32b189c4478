// SPDX-License-Identifier: MIT
//
// Truncated files and files with false headers, run through whole entries: each gives either a
// sound output or no output and a message box with its name; the next entry runs.
#include "jobs/hostile_batch.h"
#include "jobs/job_run.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace korvalite::core::test {
namespace {

// A closed ring of eight triangles around an axis of two points, with its blocks in any order.
struct Blocks {
    std::vector<std::array<float, 3>> points{{0, 0, 1}, {0, 0, -1}, {1, 0, 0},
                                             {0, 1, 0}, {-1, 0, 0}, {0, -1, 0}};
    std::vector<std::array<std::uint32_t, 3>> triangles{{0, 2, 3}, {0, 3, 4}, {0, 4, 5}, {0, 5, 2},
                                                        {1, 3, 2}, {1, 4, 3}, {1, 5, 4}, {1, 2, 5}};
    std::vector<std::array<std::uint32_t, 4>> faces{{0, 2, 1, 3},
                                                    {0, 3, 4, VokBuilder::kTriangle},
                                                    {0, 4, 5, VokBuilder::kTriangle},
                                                    {0, 5, 1, 2}};
    std::vector<std::array<float, 6>> triangleUVs{8, {0, 0, 1, 0, 0, 1}};
    std::vector<std::array<float, 8>> faceUVs{4, {0, 0, 1, 0, 1, 1, 0, 1}};
    std::string mask{"\x01\x20\x40\x80\xA0\xFF", 6};
    std::vector<std::uint16_t> mask16{0, 0x1000, 0x2000, 0x4000, 0x8000, 0xFFFF};
    std::vector<std::array<std::uint8_t, 4>> colors{{0, 0, 255, 0}, {0, 255, 0, 0}, {255, 0, 0, 0},
                                                    {9, 9, 9, 9},   {1, 2, 3, 4},   {200, 0, 9, 0}};

    std::string inUsualOrder() const {
        VokBuilder file;
        return file.points(points)
            .triangles(triangles)
            .triangleUVs(triangleUVs)
            .mask(mask)
            .colors(colors)
            .end()
            .bytes();
    }
    std::string trianglesFirst() const {
        VokBuilder file;
        return file.colors(colors).triangles(triangles).mask(mask).points(points).end().bytes();
    }
    std::string quads() const {
        VokBuilder file;
        return file.points(points)
            .block(25000, 16, 0)
            .faces(faces)
            .faceUVs(faceUVs)
            .block(30000, 16, 0)
            .mask16(mask16)
            .end()
            .bytes();
    }
    std::vector<std::string> allOrders() const {
        return {inUsualOrder(), trianglesFirst(), quads()};
    }
};

class HostileMesh : public HostileBatch {
protected:
    // Runs the bytes through an entry and returns whether it gave an output.
    bool survives(const std::string& bytes, const BatchSettings& settings = {}) const {
        // Overwriting a file can take milliseconds; creating one takes none.
        remove("mesh.Vok");
        remove("out.Vok");
        writeWhole(in("mesh.Vok"), bytes);
        const std::string boxes = perform({entry("mesh.Vok", "out.Vok", settings)});
        if (exists("out.Vok")) {
            EXPECT_EQ(boxes, "");
            expectSoundOutput("out.Vok", Degenerate::Allowed);
            return true;
        }
        EXPECT_EQ(boxes, failureBox("mesh.Vok"));
        return false;
    }
    static std::string withWord(std::string bytes, std::size_t offset, std::uint32_t value) {
        for (std::size_t i = 0; i < 4; ++i)
            bytes[offset + i] = static_cast<char>((value >> (8 * i)) & 0xFFU);
        return bytes;
    }
    static std::uint32_t wordAt(const std::string& bytes, std::size_t offset) {
        std::uint32_t value = 0;
        for (std::size_t i = 4; i-- > 0;)
            value = value * 256 + static_cast<unsigned char>(bytes[offset + i]);
        return value;
    }
    // The offsets of the block headers of a valid file.
    static std::vector<std::size_t> headersOf(const std::string& bytes) {
        std::vector<std::size_t> headers;
        for (std::size_t at = 32; at < bytes.size(); at += wordAt(bytes, at + 4))
            headers.push_back(at);
        return headers;
    }
    static constexpr std::size_t kFileHeader = 32;
    static constexpr std::size_t kBlockHeader = 16;
};

TEST_F(HostileMesh, CutInUsualOrderIsReadUpToTheCut) {
    const std::string whole = Blocks().inUsualOrder();
    for (std::size_t size = 0; size <= whole.size(); ++size)
        EXPECT_EQ(survives(whole.substr(0, size)), size >= kFileHeader) << size;
}

// The entry fails if triangles have arrived, whole or as zeros, without points for them to name.
TEST_F(HostileMesh, CutBetweenItsTrianglesAndItsPointsFails) {
    const std::string whole = Blocks().trianglesFirst();
    const std::vector<std::size_t> headers = headersOf(whole);
    const std::size_t trianglesKnown = headers[1] + kBlockHeader;
    const std::size_t pointsKnown = headers[3] + kBlockHeader;
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const bool lacksPoints = trianglesKnown <= size && size < pointsKnown;
        EXPECT_EQ(survives(whole.substr(0, size)), size >= kFileHeader && !lacksPoints) << size;
    }
}

TEST_F(HostileMesh, QuadsCutAtAnyByteAreAllDropped) {
    const std::string whole = Blocks().quads();
    const std::size_t facesWhole = headersOf(whole)[3];
    for (std::size_t size = kFileHeader; size <= whole.size(); ++size) {
        EXPECT_TRUE(survives(whole.substr(0, size))) << size;
        DMesh mesh;
        ASSERT_TRUE(importDMesh(in("out.Vok").c_str(), mesh));
        EXPECT_EQ(mesh.triangles.empty(), size < facesWhole) << size;
    }
}

TEST_F(HostileMesh, WithAnotherMagicFails) {
    const std::string whole = Blocks().inUsualOrder();
    for (std::size_t i = 0; i < 4; ++i) {
        for (const char byte : {'\0', 'v', 'V', '\xFF'}) {
            std::string bytes = whole;
            if (bytes[i] == byte) continue;
            bytes[i] = byte;
            EXPECT_FALSE(survives(bytes)) << i << byte;
        }
    }
}

// Whatever a header says, there is an output or the box. Sizes below 16 step backwards or not at
// all, and enormous counts ask for more than there is.
TEST_F(HostileMesh, WithAnyHeaderWordChangedGivesAnOutputOrABox) {
    int survivors = 0;
    int failures = 0;
    for (const std::string& whole : Blocks().allOrders()) {
        for (const std::size_t header : headersOf(whole)) {
            for (const std::size_t field : {0U, 4U, 8U, 12U}) {
                for (const std::uint32_t value :
                     {0U,          1U,          3U,          7U,         12U,    15U,
                      16U,         17U,         20U,         5001U,      10001U, 20001U,
                      20003U,      25001U,      25002U,      30001U,     30002U, 35001U,
                      0x7FFFFFFFU, 0x80000000U, 0xFFFFFFF0U, 0xFFFFFFFFU}) {
                    const bool survived = survives(withWord(whole, header + field, value));
                    ++(survived ? survivors : failures);
                    EXPECT_TRUE(survived || field != 12) << "the reserved word is ignored";
                }
            }
        }
    }
    EXPECT_GT(survivors, 100);
    EXPECT_GT(failures, 100);
}

TEST_F(HostileMesh, WithRepeatedOrReorderedBlocksFollowsTheLastOnes) {
    const Blocks blocks;
    const auto left = [&](const VokBuilder& file) {
        BatchSettings settings;
        settings.DecimationTargetPourcent = 100;
        EXPECT_TRUE(survives(file.bytes(), settings));
        DMesh mesh;
        EXPECT_TRUE(importDMesh(in("out.Vok").c_str(), mesh));
        return mesh;
    };
    const auto shorter = std::vector(blocks.triangles.begin(), blocks.triangles.begin() + 2);
    // A second face list has fewer faces than there are UVs, which are dropped.
    DMesh mesh = left(VokBuilder()
                          .points(blocks.points)
                          .triangles(blocks.triangles)
                          .triangleUVs(blocks.triangleUVs)
                          .triangles(shorter)
                          .end());
    EXPECT_EQ(mesh.triangles.size(), 6U);
    EXPECT_TRUE(mesh.coordsUV.empty());
    // The UVs are for quads from before the list that counts.
    mesh = left(VokBuilder()
                    .points(blocks.points)
                    .faces(blocks.faces)
                    .triangles(blocks.triangles)
                    .faceUVs(blocks.faceUVs)
                    .end());
    EXPECT_EQ(mesh.triangles.size(), 24U);
    EXPECT_TRUE(mesh.coordsUV.empty());
    // There are fewer points in the second list, but still enough.
    mesh = left(VokBuilder()
                    .points(blocks.points)
                    .points({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}})
                    .triangles({{0, 1, 2}})
                    .mask(blocks.mask)
                    .colors(blocks.colors)
                    .end());
    EXPECT_EQ(mesh.vertices.size(), 3U);
    EXPECT_TRUE(mesh.maskValues.empty());
    EXPECT_TRUE(mesh.vertexColors.empty());
    // Nothing past the end is read, and unknown blocks are ignored.
    mesh = left(VokBuilder()
                    .list(77777, 3, "what is this")
                    .triangles(shorter)
                    .list(10002, 1, "double")
                    .points(blocks.points)
                    .end()
                    .triangles(blocks.triangles));
    EXPECT_EQ(mesh.triangles.size(), 6U);
}

TEST_F(HostileMesh, WithAnIndexOutOfRangeAnywhereFails) {
    for (const std::uint32_t index : {6U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        for (std::size_t corner = 0; corner < 24; ++corner) {
            Blocks blocks;
            blocks.triangles[corner / 3][corner % 3] = index;
            EXPECT_FALSE(survives(blocks.inUsualOrder())) << index << ' ' << corner;
        }
        Blocks blocks;
        blocks.faces[1][1] = index;
        EXPECT_FALSE(survives(blocks.quads())) << index;
    }
}

TEST_F(HostileMesh, InOneEntryDoesNotAffectTheNext) {
    writeWhole(in("good.Vok"), Blocks().inUsualOrder());
    writeWhole(in("short.Vok"), Blocks().inUsualOrder().substr(0, 31));
    Blocks outOfRange;
    outOfRange.triangles[7][2] = 6;
    writeWhole(in("range.Vok"), outOfRange.inUsualOrder());
    writeWhole(in("other.Vok"), Blocks().quads());
    EXPECT_EQ(perform({entry("short.Vok", "1.Vok"), entry("good.Vok", "2.Vok"),
                       entry("range.Vok", "3.Vok"), entry("none.Vok", "4.Vok"),
                       entry("other.Vok", "5.Vok")}),
              failureBox("short.Vok") + failureBox("range.Vok") + failureBox("none.Vok"));
    EXPECT_FALSE(exists("1.Vok") || exists("3.Vok") || exists("4.Vok"));
    expectSoundOutput("2.Vok", Degenerate::Refused);
    expectSoundOutput("5.Vok", Degenerate::Refused);
}

// The same in the executable, run as a host starts it.
class HostileJob : public JobTest {};

TEST_F(HostileJob, EndsNormallyAndInOrder) {
    Blocks notNumbers;
    for (auto& point : notNumbers.points)
        point[1] = std::numeric_limits<float>::quiet_NaN();
    Blocks inOnePoint;
    for (auto& point : inOnePoint.points)
        point = {3, 3, 3};
    writeWhole(in("nan.Vok"), notNumbers.inUsualOrder());
    writeWhole(in("point.Vok"), inOnePoint.inUsualOrder());
    writeWhole(in("cut.Vok"), Blocks().trianglesFirst().substr(0, 150));
    writeWhole(in("header.Vok"), Blocks().inUsualOrder().substr(0, 32));
    writeWhole(in("empty.Vok"), "");
    writeMesh("good.Vok");
    runJob(entry("nan.Vok", "1.Vok", "Symmetry=x") + entry("point.Vok", "2.Vok", "Symmetry=y") +
           entry("cut.Vok", "3.Vok") + entry("header.Vok", "4.Vok", "FreezeBorder=1") +
           entry("empty.Vok", "5.Vok") + entry("good.Vok", "6.Vok"));
    EXPECT_EQ(errors_, failureBox(in("cut.Vok")) + failureBox(in("empty.Vok")));
    EXPECT_EQ(files(),
              (std::set<std::string>{"nan.Vok", "point.Vok", "cut.Vok", "header.Vok", "empty.Vok",
                                     "good.Vok", "scene.kvc", "1.Vok", "2.Vok", "4.Vok", "6.Vok"}));
    EXPECT_EQ(vertexCountOf(in("4.Vok")), 0);
    EXPECT_EQ(vertexCountOf(in("6.Vok")), kVertexCount / 2);
}

}  // namespace
}  // namespace korvalite::core::test

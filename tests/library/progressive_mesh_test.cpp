// SPDX-License-Identifier: MIT
#include "jobs/job_run.h"
#include "library/library_meshes.h"
#include "support/full_disk.h"

#include <korvalite/korvalite.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace korvalite::test {
namespace {

Options downTo(std::uint32_t vertices) {
    Options options;
    options.target = Target::vertices(vertices);
    return options;
}

TEST(ProgressiveMesh, StartsAtItsCoarsestLevel) {
    const Mesh mesh = torusMesh();
    ProgressiveMesh progressive = ProgressiveMesh::build(mesh.view(), downTo(50));
    EXPECT_EQ(progressive.vertexCount(), 50U);
    EXPECT_EQ(progressive.finestVertexCount(), mesh.vertexCount());
    EXPECT_EQ(progressive.finestTriangleCount(), mesh.triangleCount());
    EXPECT_EQ(progressive.triangleCount(), 100U);  // a torus has two for each vertex
    EXPECT_EQ(progressive.report().reached, 50U);
    expectSame(progressive.level(Target::vertices(50)), simplify(mesh.view(), downTo(50)).mesh);
}

TEST(ProgressiveMesh, TheFinestLevelIsTheInputInAnotherOrder) {
    const Mesh mesh = torusMesh();
    ProgressiveMesh progressive = ProgressiveMesh::build(mesh.view(), downTo(50));
    Mesh finest = progressive.level(Target::percent(100));
    ASSERT_EQ(finest.vertexCount(), mesh.vertexCount());
    EXPECT_EQ(finest.triangleCount(), mesh.triangleCount());
    const auto sortedPoints = [](const Mesh& m) {
        std::vector<std::vector<float>> points;
        for (std::size_t i = 0; i < m.positions.size(); i += 3)
            points.push_back({m.positions[i], m.positions[i + 1], m.positions[i + 2]});
        std::ranges::sort(points);
        return points;
    };
    EXPECT_EQ(sortedPoints(finest), sortedPoints(mesh));
}

TEST(ProgressiveMesh, ALevelDoesNotDependOnTheOneBefore) {
    ProgressiveMesh progressive =
        ProgressiveMesh::build(sampleMesh("synth-seams.Vok").view(), downTo(20));
    for (const Target& target : {Target::vertices(100), Target::triangles(201),
                                 Target::triangles(200), Target::percent(33)}) {
        (void)progressive.level(Target::vertices(20));
        const Mesh fromBelow = progressive.level(target);
        (void)progressive.level(Target::percent(100));
        const Mesh fromAbove = progressive.level(target);
        expectSame(fromBelow, fromAbove);
        if (target.unit() == Target::Unit::Triangles) {
            EXPECT_LE(fromBelow.triangleCount(), target.count());
        }
    }
}

TEST(ProgressiveMesh, ALevelBelowTheCoarsestIsTheCoarsest) {
    ProgressiveMesh progressive = ProgressiveMesh::build(torusMesh().view(), downTo(50));
    EXPECT_EQ(progressive.level(Target::vertices(0)).vertexCount(), 50U);
    EXPECT_EQ(progressive.level(Target::vertices(0xFFFFFFFF)).vertexCount(),
              progressive.finestVertexCount());
}

TEST(ProgressiveMesh, SavedAndLoadedItHasTheSameLevels) {
    const core::test::ScratchFolder folder;
    const auto path = core::test::pathOfUtf8(folder / u8"ä日本 x.kvm");
    ProgressiveMesh built =
        ProgressiveMesh::build(sampleMesh("spot-everything.Vok").view(), downTo(100));
    built.save(path);
    ProgressiveMesh loaded = ProgressiveMesh::load(path);
    EXPECT_EQ(loaded.finestVertexCount(), built.finestVertexCount());
    EXPECT_EQ(loaded.vertexCount(), built.vertexCount());
    for (const std::uint32_t count : {0U, 2700U, 2900U, 2600U})
        expectSame(loaded.level(Target::vertices(count)), built.level(Target::vertices(count)));
}

TEST(ProgressiveMesh, MovesLikeAnyObject) {
    ProgressiveMesh a = ProgressiveMesh::build(torusMesh().view(), downTo(50));
    ProgressiveMesh b = std::move(a);
    EXPECT_EQ(b.level(Target::vertices(70)).vertexCount(), 70U);
    a = std::move(b);
    EXPECT_EQ(a.vertexCount(), 70U);
}

class ToolAndLibrary : public core::test::JobTest {};

TEST_F(ToolAndLibrary, ReadEachOthersFiles) {
    const std::filesystem::path sample = KORVALITE_SOURCE_DIR "/samples/spot.Vok";
    std::filesystem::copy_file(sample, core::test::pathOfUtf8(in("a.Vok")));
    runJob(entry("a.Vok", "tool.kvm", "ProgressiveMeshMinNum=200", "Build progressive mesh"));
    ProgressiveMesh::build(sampleMesh("spot.Vok").view(), downTo(200))
        .save(core::test::pathOfUtf8(in("library.kvm")));
    EXPECT_EQ(core::test::readWhole(in("tool.kvm")).size(),
              core::test::readWhole(in("library.kvm")).size());

    runJob(entry("library.kvm", "level.Vok", "DecimationTargetPourcent=30",
                 "Decimate progressive mesh"));
    core::DMesh level;
    ASSERT_TRUE(core::importDMesh(in("level.Vok").c_str(), level));
    ProgressiveMesh loaded = ProgressiveMesh::load(core::test::pathOfUtf8(in("tool.kvm")));
    expectSame(loaded.level(Target::percent(30)), ownedCopy(level));
}

TEST(ProgressiveMesh, CancelledItStaysUsable) {
    ProgressiveMesh progressive = ProgressiveMesh::build(torusMesh(200, 150).view(), downTo(50));
    const std::string sentence = errorOf(ErrorCode::Cancelled, [&] {
        (void)progressive.level(Target::percent(100), [](const Progress&) { return false; });
    });
    EXPECT_EQ(sentence, "Cancelled by the caller.");
    EXPECT_EQ(progressive.level(Target::vertices(500)).vertexCount(), 500U);
}

TEST(ProgressiveMesh, RefusesFilesThatAreNone) {
    const core::test::ScratchFolder folder;
    core::test::writeWhole(folder / u8"short.kvm", "KV");
    const auto load = [&](const std::string& path) {
        return errorOf(ErrorCode::CannotRead,
                       [&] { (void)ProgressiveMesh::load(core::test::pathOfUtf8(path)); });
    };
    EXPECT_NE(load(folder / u8"short.kvm").find("not a progressive mesh"), std::string::npos);
    EXPECT_NE(load(folder / u8"missing.kvm").find("no such file"), std::string::npos);
    EXPECT_NE(load(folder.path()).find("no such file"), std::string::npos);
}

TEST(ProgressiveMesh, ReportsAFolderThatIsMissing) {
    const core::test::ScratchFolder folder;
    ProgressiveMesh progressive = ProgressiveMesh::build(torusMesh().view(), downTo(50));
    const std::string sentence = errorOf(ErrorCode::CannotWrite, [&] {
        progressive.save(core::test::pathOfUtf8(folder / u8"missing/a.kvm"));
    });
    EXPECT_NE(sentence.find("a.kvm"), std::string::npos);
}

TEST(ProgressiveMesh, AFullDiskLeavesNoFile) {
    const core::test::ScratchFolder folder;
    const std::string path = folder / u8"a.kvm";
    ProgressiveMesh progressive = ProgressiveMesh::build(torusMesh().view(), downTo(50));
    bool refused = false;
    {
        const core::test::FullDisk full(10'000);
        try {
            progressive.save(core::test::pathOfUtf8(path));
        } catch (const Error& error) {
            refused = error.code() == ErrorCode::CannotWrite;
        }
    }
    EXPECT_TRUE(refused);
    EXPECT_FALSE(std::filesystem::exists(core::test::pathOfUtf8(path)));
}

}  // namespace
}  // namespace korvalite::test

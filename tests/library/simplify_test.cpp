// SPDX-License-Identifier: MIT
#include "jobs/job_run.h"
#include "library/library_meshes.h"

#include <korvalite/korvalite.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <limits>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace korvalite::test {
namespace {

// A job of the batch tool on a sample, beside the library on the same mesh.
class SameAsTheTool : public core::test::JobTest {
protected:
    void expectSameBytes(const std::string& sample, const Options& options,
                         const std::string& lines) {
        std::filesystem::copy_file(std::string(KORVALITE_SOURCE_DIR "/samples/") + sample,
                                   core::test::pathOfUtf8(in("a.Vok")));
        runJob(entry("a.Vok", "b.Vok", lines));
        core::DMesh fromTool;
        ASSERT_TRUE(core::importDMesh(in("b.Vok").c_str(), fromTool));
        const Mesh mesh = sampleMesh(sample);
        expectSame(simplify(mesh.view(), options).mesh, ownedCopy(fromTool));
    }

    static Options percent(float value) {
        Options options;
        options.target = Target::percent(value);
        return options;
    }
};

TEST_F(SameAsTheTool, OnAPlainMesh) {
    expectSameBytes("spot.Vok", percent(10), "DecimationTargetPourcent=10");
}

TEST_F(SameAsTheTool, WithColoursMaskAndUVs) {
    expectSameBytes("spot-everything.Vok", percent(12.5F), "DecimationTargetPourcent=12.5");
}

TEST_F(SameAsTheTool, WithUVsAlone) {
    expectSameBytes("synth-seams.Vok", percent(20), "DecimationTargetPourcent=20");
}

TEST_F(SameAsTheTool, WithAMask) {
    expectSameBytes("fish-masked.Vok", percent(20), "DecimationTargetPourcent=20");
}

TEST_F(SameAsTheTool, WithAColorWeight) {
    Options options = percent(20);
    options.colorWeight = 80;
    expectSameBytes("spot-colored.Vok", options,
                    "DecimationTargetPourcent=20\nUseVtxColorsCoef=80");
}

TEST_F(SameAsTheTool, WithSymmetry) {
    Options options = percent(20);
    options.symmetry = Symmetry::X;
    expectSameBytes("synth-symmetric.Vok", options, "DecimationTargetPourcent=20\nSymmetry=x");
}

TEST_F(SameAsTheTool, WithAreaWeights) {
    Options options = percent(20);
    options.weightByArea = true;
    expectSameBytes("boot.Vok", options, "DecimationTargetPourcent=20\nUseAreaWeighting=yes");
}

TEST_F(SameAsTheTool, WithoutProtection) {
    Options options = percent(2);
    options.protectTopology = false;
    options.protectNormals = false;
    expectSameBytes("synth-torus.Vok", options,
                    "DecimationTargetPourcent=2\nProtectTopology=no\nAvoidNormalReverse=no");
}

TEST_F(SameAsTheTool, WhereTheTargetIsMissed) {
    Options options = percent(1);
    options.freezeBorder = true;
    expectSameBytes("synth-seams.Vok", options, "DecimationTargetPourcent=1\nFreezeBorder=yes");
}

TEST_F(SameAsTheTool, WithATargetInVertices) {
    Options options;
    options.target = Target::vertices(123);
    expectSameBytes("spot.Vok", options, "DecimationTargetPourcent=-1\nDecimationTargetNum=123");
}

TEST(Simplify, ReachesATargetInTriangles) {
    const Mesh mesh = torusMesh();
    Options options;
    options.target = Target::triangles(500);
    const Result result = simplify(mesh.view(), options);
    EXPECT_LE(result.mesh.triangleCount(), 500U);
    EXPECT_GE(result.mesh.triangleCount(), 499U);
    EXPECT_EQ(result.report.reached, result.mesh.triangleCount());
    EXPECT_EQ(result.report.asked, 500U);
    EXPECT_FALSE(result.report.missed);
}

TEST(Simplify, LeavesAMeshBelowTheTargetAsItIs) {
    const Mesh mesh = torusMesh();
    Options options;
    options.target = Target::percent(100);
    expectSame(simplify(mesh.view(), options).mesh, mesh);
}

TEST(Simplify, AnEmptyMeshStaysEmpty) {
    const Result result = simplify(MeshView{});
    EXPECT_EQ(result.mesh.vertexCount(), 0U);
    EXPECT_EQ(result.mesh.triangleCount(), 0U);
    EXPECT_FALSE(result.report.missed);
}

TEST(Simplify, QuadsGiveTheSameAsTheirTriangles) {
    constexpr std::uint32_t kSide = 12;
    Mesh mesh;
    std::vector<std::uint32_t> quads;
    for (std::uint32_t i = 0; i < kSide * kSide; ++i) {
        const auto x = static_cast<float>(i % kSide);
        const auto y = static_cast<float>(i / kSide);
        mesh.positions.insert(mesh.positions.end(), {x, y, std::sin(x) * std::cos(y)});
        if (i % kSide == 0 || i < kSide) continue;
        const std::array<std::uint32_t, 4> q{i - kSide - 1, i - kSide, i, i - 1};
        const bool asTriangle = i % 5 == 0;
        quads.insert(quads.end(), {q[0], q[1], q[2], asTriangle ? kNoVertex : q[3]});
        mesh.triangles.insert(mesh.triangles.end(), {q[0], q[1], q[2]});
        if (!asTriangle) mesh.triangles.insert(mesh.triangles.end(), {q[0], q[2], q[3]});
    }
    MeshView view = mesh.view();
    const Mesh fromTriangles = simplify(view).mesh;
    view.faces = quads;
    view.verticesPerFace = 4;
    expectSame(simplify(view).mesh, fromTriangles);
}

TEST(Simplify, CarriesAlpha) {
    Mesh mesh = torusMesh();
    mesh.colors.assign(4 * mesh.vertexCount(), 0);
    for (std::size_t i = 3; i < mesh.colors.size(); i += 4)
        mesh.colors[i] = 200;
    const Mesh result = simplify(mesh.view()).mesh;
    ASSERT_EQ(result.colors.size(), 4 * result.vertexCount());
    for (std::size_t i = 3; i < result.colors.size(); i += 4)
        ASSERT_EQ(result.colors[i], 200);
}

TEST(Simplify, AMaskWithOneValueComesBackAndHasNoEffect) {
    Mesh mesh = torusMesh();
    const Mesh without = simplify(mesh.view()).mesh;
    mesh.mask.assign(mesh.vertexCount(), 7);
    const Mesh with = simplify(mesh.view()).mesh;
    EXPECT_EQ(with.positions, without.positions);
    EXPECT_EQ(with.mask, std::vector<std::uint8_t>(with.vertexCount(), 7));
}

TEST(Simplify, SharedUVPointsStayShared) {
    const Result result = simplify(sampleMesh("synth-seams.Vok").view());
    EXPECT_LT(result.mesh.uvs.size() / 2, result.mesh.triangleUVs.size() / 2);
    EXPECT_EQ(result.mesh.triangleUVs.size(), result.mesh.triangles.size());
}

TEST(Simplify, SeveralCallsAtOnceDoNotDisturbEachOther) {
    const Mesh mesh = torusMesh();
    const Mesh expected = simplify(mesh.view()).mesh;
    std::vector<Mesh> results(4);
    {
        std::vector<std::jthread> threads;
        for (Mesh& result : results)
            threads.emplace_back([&] { result = simplify(mesh.view()).mesh; });
    }
    for (const Mesh& result : results)
        expectSame(result, expected);
}

TEST(Simplify, SeveralThreadsReachTheTarget) {
    const Mesh mesh = torusMesh(100, 60);
    Options options;
    options.threads = 4;
    options.target = Target::vertices(1000);
    const Result result = simplify(mesh.view(), options);
    EXPECT_LE(result.mesh.vertexCount(), 1000U);
    EXPECT_GE(result.mesh.vertexCount(), 990U);
}

TEST(Simplify, LeavesNoScratchFile) {
    const core::test::ScratchFolder folder;
    Options options;
    options.scratchFolder = core::test::pathOfUtf8(folder.path());
    const Mesh mesh = torusMesh(200, 100);
    EXPECT_GT(simplify(mesh.view(), options).mesh.triangleCount(), 0U);
    EXPECT_TRUE(std::filesystem::is_empty(options.scratchFolder));
}

// Bad input.

TEST(Simplify, NamesTheVertexThatIsNotFinite) {
    Mesh mesh = torusMesh();
    mesh.positions[3 * 17 + 1] = std::numeric_limits<float>::quiet_NaN();
    const std::string sentence = errorOf(ErrorCode::BadMesh, [&] { (void)simplify(mesh.view()); });
    EXPECT_NE(sentence.find("Vertex 17 "), std::string::npos) << sentence;
}

TEST(Simplify, NamesTheTriangleWithABadIndex) {
    Mesh mesh = torusMesh(10, 10);
    mesh.triangles[3 * 5 + 2] = 100;
    EXPECT_EQ(errorOf(ErrorCode::BadMesh, [&] { (void)simplify(mesh.view()); }),
              "Triangle 5 refers to vertex 100, but there are only 100.");
}

TEST(Simplify, NamesTheTriangleWithABadUVIndex) {
    Mesh mesh = torusMesh(10, 10);
    mesh.uvs = {0, 0, 1, 1};
    mesh.triangleUVs.assign(mesh.triangles.size(), 1);
    mesh.triangleUVs[3 * 7] = 2;
    EXPECT_EQ(errorOf(ErrorCode::BadMesh, [&] { (void)simplify(mesh.view()); }),
              "Triangle 7 refers to UV point 2, but there are only 2.");
}

TEST(Simplify, RefusesArraysThatDoNotFit) {
    const Mesh mesh = torusMesh(10, 10);
    const std::vector<float> oddFloats(7);
    const std::vector<std::uint32_t> oddIndices(7);
    const std::vector<std::uint8_t> oddBytes(7);
    const auto refused = [&](auto change) {
        MeshView view = mesh.view();
        change(view);
        return errorOf(ErrorCode::BadMesh, [&] { (void)simplify(view); });
    };
    EXPECT_NE(refused([&](MeshView& v) { v.positions = oddFloats; }).find("positions"),
              std::string::npos);
    EXPECT_NE(refused([&](MeshView& v) { v.faces = oddIndices; }).find("faces"), std::string::npos);
    EXPECT_NE(refused([&](MeshView& v) { v.verticesPerFace = 5; }).find("verticesPerFace"),
              std::string::npos);
    EXPECT_NE(refused([&](MeshView& v) { v.verticesPerFace = 0; }).find("verticesPerFace"),
              std::string::npos);
    EXPECT_NE(refused([&](MeshView& v) { v.colors = oddBytes; }).find("colors"), std::string::npos);
    EXPECT_NE(refused([&](MeshView& v) { v.mask = oddBytes; }).find("mask"), std::string::npos);
    EXPECT_NE(refused([&](MeshView& v) { v.uvs = oddFloats; }).find("uvs"), std::string::npos);
    EXPECT_NE(refused([&](MeshView& v) { v.faceUVs = oddIndices; }).find("faceUVs"),
              std::string::npos);
}

TEST(Simplify, RefusesOptionsOutOfRange) {
    const Mesh mesh = torusMesh(10, 10);
    const auto refused = [&](auto change) {
        Options options;
        change(options);
        return errorOf(ErrorCode::BadOption, [&] { (void)simplify(mesh.view(), options); });
    };
    EXPECT_EQ(refused([](Options& o) { o.colorWeight = 0; }),
              "colorWeight is 0; it must be from 1 to 100.");
    EXPECT_EQ(refused([](Options& o) { o.threads = 0; }),
              "threads is 0; it must be from 1 to 1024.");
    EXPECT_EQ(refused([](Options& o) { o.target = Target::percent(-1); }),
              "target is -1; it must be from 0 to 100.");
    refused(
        [](Options& o) { o.target = Target::percent(std::numeric_limits<float>::quiet_NaN()); });
}

// The monitor.

TEST(SimplifyMonitor, SeesThePhasesInOrderAndCountsUp) {
    const Mesh mesh = torusMesh(150, 100);
    std::vector<Progress> seen;
    (void)simplify(mesh.view(), {}, [&](const Progress& progress) {
        seen.push_back(progress);
        return true;
    });
    ASSERT_GE(seen.size(), 3U);
    EXPECT_EQ(seen.front().phase, Phase::Analysing);
    EXPECT_EQ(seen.back().phase, Phase::Reordering);
    for (std::size_t i = 1; i < seen.size(); ++i) {
        EXPECT_LE(seen[i - 1].phase, seen[i].phase);
        EXPECT_LE(seen[i].done, seen[i].total);
        if (seen[i - 1].phase == seen[i].phase) {
            EXPECT_LE(seen[i - 1].done, seen[i].done);
        }
    }
}

class CancelledIn : public testing::TestWithParam<std::pair<Phase, int>> {};

TEST_P(CancelledIn, EndsWithAnError) {
    const Mesh mesh = torusMesh(100, 60);
    Options options;
    options.threads = GetParam().second;
    const std::string sentence = errorOf(ErrorCode::Cancelled, [&] {
        (void)simplify(mesh.view(), options,
                       [](const Progress& progress) { return progress.phase != GetParam().first; });
    });
    EXPECT_EQ(sentence, "Cancelled by the caller.");
}

INSTANTIATE_TEST_SUITE_P(Phases, CancelledIn,
                         testing::Values(std::pair(Phase::Analysing, 1),
                                         std::pair(Phase::Simplifying, 1),
                                         std::pair(Phase::Reordering, 1),
                                         std::pair(Phase::Simplifying, 4)));

struct OfTheCaller {};

TEST(SimplifyMonitor, WhatItThrowsComesOut) {
    const Mesh mesh = torusMesh(100, 60);
    for (const int threads : {1, 4}) {
        Options options;
        options.threads = threads;
        EXPECT_THROW((void)simplify(mesh.view(), options,
                                    [](const Progress& progress) -> bool {
                                        if (progress.phase == Phase::Simplifying)
                                            throw OfTheCaller();
                                        return true;
                                    }),
                     OfTheCaller);
    }
}

// Why it stopped.

TEST(Report, SaysWhatCameOut) {
    const Mesh mesh = torusMesh();
    const Result result = simplify(mesh.view());
    EXPECT_EQ(result.report.inputVertices, mesh.vertexCount());
    EXPECT_EQ(result.report.inputTriangles, mesh.triangleCount());
    EXPECT_EQ(result.report.asked, mesh.vertexCount() / 2);
    EXPECT_EQ(result.report.reached, result.mesh.vertexCount());
    EXPECT_FALSE(result.report.missed);
    EXPECT_EQ(result.report.advice, "");
}

Report reportOf(const Mesh& mesh, const Options& options) {
    return simplify(mesh.view(), options).report;
}

Options downTo(std::uint32_t vertices) {
    Options options;
    options.target = Target::vertices(vertices);
    return options;
}

TEST(Report, NamesAFrozenBorder) {
    Options options = downTo(10);
    options.freezeBorder = true;
    const Report report = reportOf(gridMesh(), options);
    EXPECT_TRUE(report.missed);
    EXPECT_GE(report.blockedEdges.border, 4U * 29);
    EXPECT_NE(report.advice.find("do not freeze borders"), std::string::npos) << report.advice;
}

TEST(Report, NamesTheTopology) {
    const Report report = reportOf(torusMesh(20, 10), downTo(0));
    EXPECT_TRUE(report.missed);
    EXPECT_GE(report.blockedEdges.topology, 12U);
    EXPECT_EQ(report.blockedEdges.border + report.blockedEdges.mask + report.blockedEdges.seam, 0U);
}

TEST(Report, NamesAMaskOfZero) {
    Mesh mesh = torusMesh();
    mesh.mask.assign(mesh.vertexCount(), 0);
    mesh.mask.back() = 255;
    const Report report = reportOf(mesh, downTo(10));
    EXPECT_TRUE(report.missed);
    EXPECT_EQ(report.reached, mesh.vertexCount());
    EXPECT_EQ(report.blockedEdges.mask, mesh.triangles.size() / 2);
    EXPECT_NE(report.advice.find("mask 0"), std::string::npos) << report.advice;
}

Mesh withColors(Mesh mesh, bool vary) {
    mesh.colors.assign(4 * mesh.vertexCount(), 90);
    for (std::size_t i = 0; vary && i < mesh.colors.size(); ++i)
        mesh.colors[i] = static_cast<std::uint8_t>(i * i % 251);
    return mesh;
}

TEST(Report, NamesTheBorderOfAMeshWithColours) {
    const Report report = reportOf(withColors(gridMesh(), true), downTo(4));
    EXPECT_TRUE(report.missed);
    EXPECT_NE(report.advice.find("without the colours"), std::string::npos) << report.advice;
}

TEST(Report, NamesColoursThatDoNotVaryOnFlatGround) {
    const Report report = reportOf(withColors(gridMesh(), false), downTo(4));
    EXPECT_TRUE(report.missed);
    EXPECT_GT(report.blockedEdges.noCost, 0U);
    EXPECT_NE(report.advice.find("leave the colours out"), std::string::npos) << report.advice;
}

TEST(Report, FollowingTheAdviceHelps) {
    Options options = downTo(0);
    const Mesh mesh = torusMesh(20, 10);
    const Report first = reportOf(mesh, options);
    ASSERT_TRUE(first.missed);
    options.protectTopology = false;
    options.protectNormals = false;
    EXPECT_LT(reportOf(mesh, options).reached, first.reached);
}

TEST(Report, AVertexWithoutTrianglesHasNoEdge) {
    Mesh mesh;
    mesh.positions.assign(30, 1.0F);
    const Report report = reportOf(mesh, downTo(1));
    EXPECT_TRUE(report.missed);
    EXPECT_EQ(report.advice, "Nothing that is left has an edge to collapse.");
}

TEST(Version, IsThreeNumbers) {
    EXPECT_EQ(std::ranges::count(version(), '.'), 2);
}

}  // namespace
}  // namespace korvalite::test

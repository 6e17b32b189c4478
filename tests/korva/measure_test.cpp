// SPDX-License-Identifier: MIT
#include "korva/command_test.h"
#include "korva/files/ply/ply_reader.h"
#include "korva/heat_colors.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace korva {
namespace {

class KorvaMeasure : public CommandTest {
protected:
    KorvaMeasure() {
        test::writeWhole(a_, "v 0 0 0\nv 2 0 0\nv 2 1 0\nv 0 1 0\nv 9 9 9\nf 1 2 3 4\n");
        test::writeWhole(b_, "v 0 0 0\nv 2 0 0.5\nv 2 1 0.5\nv 0 1 0\nf 1 2 3 4\n");
    }

    std::string a_ = in("a.obj");
    std::string b_ = in("b.obj");
    std::string heat_ = in("heat.ply");
};

TEST_F(KorvaMeasure, PrintsATable) {
    ASSERT_EQ(run({"measure", a_, b_, "-q", "--samples", "5000"}), ExitCode::Done) << err_;
    EXPECT_EQ(err_, "");
    for (const char* part : {"A to B", "largest", "RMS", "95 %", "in % of A's diagonal", "2.23607",
                             "area", "volume", "+3.0776 %", "14.04"})
        EXPECT_TRUE(has(out_, part)) << part << '\n' << out_;
}

TEST_F(KorvaMeasure, PrintsOneJsonObject) {
    ASSERT_EQ(run({"measure", a_, b_, "--json", "-q", "--samples", "5000", "--threads", "1"}),
              ExitCode::Done);
    const nlohmann::json result = nlohmann::json::parse(out_);
    EXPECT_EQ(result["a"], a_);
    EXPECT_DOUBLE_EQ(result["bToA"]["largest"], 0.5);
    EXPECT_EQ(result["bToA"]["largestAt"][2], 0.5);
    EXPECT_DOUBLE_EQ(result["largest"], 0.5);
    EXPECT_GE(result["atMost"], result["largest"]);
    EXPECT_DOUBLE_EQ(result["area"]["a"], 2);
    EXPECT_DOUBLE_EQ(result["diagonal"], std::sqrt(5.0));
    EXPECT_NEAR(result["aToB"]["meanNormalAngle"], std::atan(0.25) * 180 / std::acos(-1), 1e-9);
    EXPECT_GE(result["aToB"]["samples"], 1000);
    EXPECT_FALSE(result.contains("heat"));
    EXPECT_EQ(result["notes"], nlohmann::json::array());
}

TEST_F(KorvaMeasure, PaintsTheDistances) {
    ASSERT_EQ(run({"measure", a_, b_, "--heat", heat_, "--heat-max", "0.25", "--json", "-q",
                   "--samples", "100"}),
              ExitCode::Done)
        << err_;
    EXPECT_EQ(nlohmann::json::parse(out_)["heat"]["max"], 0.25);
    const korvalite::Mesh mesh = readPly(test::pathOfUtf8(heat_), {}).mesh;
    ASSERT_EQ(mesh.vertexCount(), 5U);
    ASSERT_EQ(mesh.colors.size(), 20U);
    const auto colorOf = [&](std::size_t vertex) {
        return std::array<std::uint8_t, 3>{mesh.colors[4 * vertex], mesh.colors[4 * vertex + 1],
                                           mesh.colors[4 * vertex + 2]};
    };
    EXPECT_EQ(colorOf(0), heatColor(0));
    EXPECT_EQ(colorOf(1), heatColor(1));
    EXPECT_EQ(colorOf(4), heatColor(1));
}

TEST_F(KorvaMeasure, TheScaleEndsAtTheLargestDistanceOfUsedVertices) {
    ASSERT_EQ(run({"measure", a_, b_, "--heat", heat_, "--samples", "100", "-q"}), ExitCode::Done);
    // From (2, 0, 0) to the slope.
    EXPECT_TRUE(has(out_, "red is 0.485071 and more.")) << out_;
}

TEST_F(KorvaMeasure, RefusesWhatItCannotDo) {
    EXPECT_EQ(run({"measure", a_, b_, "--heat", in("heat.stl")}), ExitCode::Usage);
    EXPECT_TRUE(has(err_, "STL cannot hold colours")) << err_;
    EXPECT_EQ(run({"measure", a_, b_, "--heat-max", "1"}), ExitCode::Usage);
    EXPECT_EQ(run({"measure", a_, b_, "--heat", heat_, "--heat-max", "0"}), ExitCode::Usage);
    EXPECT_EQ(run({"measure", a_, b_, "--samples", "0"}), ExitCode::Usage);
    EXPECT_EQ(run({"measure", a_}), ExitCode::Usage);
    test::writeWhole(b_, "v 0 0 0\n");
    EXPECT_EQ(run({"measure", a_, b_}), ExitCode::BadInput);
    EXPECT_TRUE(has(err_, "no triangles")) << err_;
}

TEST_F(KorvaMeasure, HelpHasAnExample) {
    EXPECT_EQ(run({"measure", "--help"}), ExitCode::Done);
    EXPECT_TRUE(has(out_, "Example: korva measure ")) << out_;
}

TEST(HeatColors, GoFromDarkBlueToRed) {
    const auto low = heatColor(0);
    const auto high = heatColor(1);
    EXPECT_GT(low[2], 2 * std::max(low[0], low[1]));
    EXPECT_GT(high[0], 2 * std::max(high[1], high[2]));
    EXPECT_EQ(heatColor(-3), low);
    EXPECT_EQ(heatColor(std::numeric_limits<double>::quiet_NaN()), low);
    EXPECT_EQ(heatColor(7), high);
    EXPECT_EQ(heatColor(std::numeric_limits<double>::infinity()), high);
}

TEST(HeatColors, GetLighterUpToTheYellow) {
    const auto lightness = [](double share) {
        const auto color = heatColor(share);
        return 0.2126 * color[0] + 0.7152 * color[1] + 0.0722 * color[2];
    };
    for (double share = 0; share < 0.7; share += 0.02)
        EXPECT_LT(lightness(share), lightness(share + 0.02)) << share;
}

}  // namespace
}  // namespace korva

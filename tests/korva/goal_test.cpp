// SPDX-License-Identifier: MIT
#include "korva/goal.h"

#include <gtest/gtest.h>

#include <string>

namespace korva {
namespace {

using korvalite::Target;

void expectCount(const char* text, Target::Unit unit, std::uint32_t count) {
    const Target target = parseTarget(text);
    EXPECT_EQ(target.unit(), unit) << text;
    EXPECT_EQ(target.count(), count) << text;
}

template <typename Parse = decltype(&parseTarget)>
std::string refusalOf(const char* text, Parse parse = parseTarget) {
    try {
        (void)parse(text);
    } catch (const korvalite::Error& error) {
        EXPECT_EQ(error.code(), korvalite::ErrorCode::BadOption);
        return error.what();
    }
    return "taken";
}

TEST(ParseTarget, TakesShares) {
    for (const char* text : {"12.5%", " 12.5 %", "1_2.5%"}) {
        const Target target = parseTarget(text);
        EXPECT_EQ(target.unit(), Target::Unit::Percent) << text;
        EXPECT_EQ(target.percentage(), 12.5F) << text;
    }
    EXPECT_EQ(parseTarget("100%").percentage(), 100.0F);
    EXPECT_EQ(parseTarget("0%").percentage(), 0.0F);
}

TEST(ParseTarget, TakesCounts) {
    expectCount("50000v", Target::Unit::Vertices, 50'000);
    expectCount("100_000t", Target::Unit::Triangles, 100'000);
    expectCount("2.5kV", Target::Unit::Vertices, 2'500);
    expectCount("1MT", Target::Unit::Triangles, 1'000'000);
    expectCount("0v", Target::Unit::Vertices, 0);
}

TEST(ParseTarget, AsksWhatABareNumberCounts) {
    EXPECT_EQ(refusalOf("500"), "'500' is not a target: add v for vertices, t for triangles, or % "
                                "for a share of the vertices.");
    EXPECT_EQ(refusalOf("5k", parseGoal),
              "'5k' is not a target: add v for vertices, t for triangles, % for a share of the "
              "vertices, or u for the largest error.");
}

TEST(ParseTarget, OffersALimitOnlyWhereOneIsTaken) {
    EXPECT_EQ(refusalOf("5u"), "'5u' is not a target: write for example 10%, 50000v (vertices) or "
                               "100000t (triangles).");
    EXPECT_EQ(refusalOf("abc", parseGoal),
              "'abc' is not a target: write for example 10%, 50000v (vertices), 100000t "
              "(triangles) or 0.2mm (largest error).");
}

TEST(ParseTarget, RefusesEverythingElse) {
    for (const char* text : {"", "%", "v", "-5v", "x%", "1e9999v", "nan%", "inf%", "5vv", "0x10v"})
        EXPECT_NE(refusalOf(text), "taken") << text;
    EXPECT_NE(refusalOf("101%").find("at most 100%"), std::string::npos);
    EXPECT_NE(refusalOf("3000mv").find("too large"), std::string::npos);
}

void expectLimit(const char* text, ErrorLimit::Unit unit, double value) {
    const ErrorLimit limit = parseErrorLimit(text);
    EXPECT_EQ(limit.unit, unit) << text;
    EXPECT_EQ(limit.value, value) << text;
}

TEST(ParseErrorLimit, TakesUnitsMillimetresAndSharesOfTheDiagonal) {
    expectLimit("0.2", ErrorLimit::Unit::Coordinates, 0.2);
    expectLimit("0.2 u", ErrorLimit::Unit::Coordinates, 0.2);
    expectLimit("3MM", ErrorLimit::Unit::Millimetres, 3);
    expectLimit("0.1%", ErrorLimit::Unit::PercentOfDiagonal, 0.1);
    for (const char* text : {"", "mm", "0.2m", "0.2cm", "-1", "nan", "inf", "1e999", "%"})
        EXPECT_THROW((void)parseErrorLimit(text), korvalite::Error) << text;
}

TEST(ParseErrorLimit, IsInTheUnitOfTheMesh) {
    EXPECT_EQ(parseErrorLimit("3").forMesh(100, 0.001), 3);
    EXPECT_EQ(parseErrorLimit("3mm").forMesh(100, 0.001), 3 * 0.001);
    EXPECT_EQ(parseErrorLimit("3%").forMesh(200, 0.001), 6);
}

TEST(ParseGoal, TellsLimitsFromTargets) {
    EXPECT_FALSE(parseGoal("10%").limit);
    EXPECT_EQ(parseGoal("10%").target.percentage(), 10.0F);
    EXPECT_FALSE(parseGoal("2mv").limit);
    ASSERT_TRUE(parseGoal("0.2mm").limit);
    EXPECT_EQ(parseGoal("0.2 mm").limit->unit, ErrorLimit::Unit::Millimetres);
    EXPECT_EQ(parseGoal("5u").limit->value, 5);
    EXPECT_THROW((void)parseGoal("0.2"), korvalite::Error);
}

}  // namespace
}  // namespace korva

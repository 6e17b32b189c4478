// SPDX-License-Identifier: MIT
//
// Levels of detail with measured errors: simplify within a limit, and lods.
#include "korva/command_test.h"
#include "korva/level_list.h"
#include "korva/measured_levels.h"
#include "korva/work_fraction.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace korva {
namespace {

using korvalite::Target;

class Levels : public CommandTest {
protected:
    ExitCode runJson(std::vector<std::string> words) {
        words.insert(words.end(), {"--quiet", "--json"});
        const ExitCode code = run(words);
        result_ = code == ExitCode::Done ? nlohmann::json::parse(out_) : nlohmann::json();
        return code;
    }
    [[nodiscard]] static double measured(const std::string& a, const std::string& b) {
        return korvalite::measure(read(a).view(), read(b).view(), {.samples = kErrorSamples})
            .largest;
    }

    static korvalite::Options allLevels() {
        korvalite::Options options;
        options.target = Target::vertices(0);
        return options;
    }

    nlohmann::json result_;
};

TEST_F(Levels, AResultWithinALimitIsAsNearAsPromised) {
    std::size_t vertices = 1'000'000;
    for (const char* limit : {"0.005u", "0.05u"}) {
        ASSERT_EQ(runJson({"simplify", sample("spot.Vok"), in("a.ply"), "--to", limit}),
                  ExitCode::Done)
            << err_;
        const double most = std::stod(limit);
        EXPECT_LE(result_["error"]["atMost"], most);
        EXPECT_LE(measured(sample("spot.Vok"), in("a.ply")), most);
        EXPECT_LT(result_["output"]["vertices"], vertices) << limit;
        vertices = result_["output"]["vertices"];
        EXPECT_EQ(result_["target"]["unit"], "error");
        EXPECT_EQ(result_["target"]["asked"], limit);
    }
}

TEST_F(Levels, ALimitUsesWhatItAllows) {
    ASSERT_EQ(runJson({"simplify", sample("boot.Vok"), in("a.ply"), "--max-error", "0.5%"}),
              ExitCode::Done);
    EXPECT_LE(result_["error"]["atMostPercent"], 0.5);
    EXPECT_GT(result_["error"]["atMostPercent"], 0.2);
    EXPECT_LT(result_["output"]["vertices"], 6'000);
}

TEST_F(Levels, ALimitOfZeroKeepsTheShape) {
    ASSERT_EQ(runJson({"simplify", sample("synth-torus.Vok"), in("a.ply"), "--max-error", "0"}),
              ExitCode::Done);
    EXPECT_EQ(result_["error"]["atMost"], 0);
    EXPECT_EQ(result_["output"]["vertices"], result_["input"]["vertices"]);
}

TEST_F(Levels, AMillimetreIsAThousandthOfTheUnitOfGltf) {
    ASSERT_EQ(runJson({"convert", sample("spot.Vok"), in("a.glb")}), ExitCode::Done);
    ASSERT_EQ(runJson({"simplify", in("a.glb"), in("b.glb"), "--to", "10mm", "--threads", "1"}),
              ExitCode::Done);
    EXPECT_LE(result_["error"]["atMost"], 0.01);
    const auto vertices = result_["output"]["vertices"];
    ASSERT_EQ(
        runJson({"simplify", in("a.glb"), in("b.glb"), "--max-error", "0.01", "--threads", "1"}),
        ExitCode::Done);
    EXPECT_EQ(result_["output"]["vertices"], vertices);
}

TEST_F(Levels, ATargetAndALimitExcludeEachOther) {
    EXPECT_EQ(
        runJson({"simplify", sample("spot.Vok"), in("a.ply"), "--to", "10%", "--max-error", "1%"}),
        ExitCode::Usage);
    EXPECT_EQ(runJson({"simplify", sample("spot.Vok"), in("a.ply"), "--max-error", "1x"}),
              ExitCode::Usage);
}

TEST_F(Levels, MeasuresAResultIfAsked) {
    ASSERT_EQ(runJson({"simplify", sample("spot.Vok"), in("a.ply"), "--to", "10%"}),
              ExitCode::Done);
    EXPECT_TRUE(result_["error"].is_null());
    ASSERT_EQ(runJson({"simplify", sample("spot.Vok"), in("a.ply"), "--to", "10%", "--measure",
                       "--threads", "1"}),
              ExitCode::Done);
    EXPECT_DOUBLE_EQ(result_["error"]["largest"], measured(sample("spot.Vok"), in("a.ply")));
}

TEST_F(Levels, MakesAChainWithItsIndex) {
    ASSERT_EQ(runJson({"lods", sample("spot.Vok"), in("out"), "--levels", "10%,50%,25%", "--format",
                       "obj", "--threads", "1"}),
              ExitCode::Done)
        << err_;
    const nlohmann::json index = nlohmann::json::parse(test::readWhole(in("out/spot-lods.json")));
    EXPECT_EQ(index["levels"], result_["levels"]);
    const std::size_t expected[] = {1465, 732, 293};
    double error = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const nlohmann::json& level = index["levels"][i];
        EXPECT_EQ(level["file"], "spot-lod" + std::to_string(i + 1) + ".obj");
        EXPECT_EQ(level["vertices"], expected[i]);
        const std::string path = in("out/" + std::string(level["file"]));
        EXPECT_EQ(read(path).vertexCount(), expected[i]);
        EXPECT_GE(level["error"]["atMost"], measured(sample("spot.Vok"), path));
        EXPECT_GT(level["error"]["largest"], error);
        error = level["error"]["largest"];
    }
}

TEST_F(Levels, WritesAllLevelsIntoOneGlb) {
    ASSERT_EQ(runJson({"lods", sample("synth-torus.Vok"), in("out"), "--halve", "3", "--glb"}),
              ExitCode::Done)
        << err_;
    const Scene scene = readScene(in("out/synth-torus-lods.glb"));
    ASSERT_EQ(scene.meshes.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(scene.meshes[i].name, "synth-torus LOD" + std::to_string(i + 1));
        EXPECT_EQ(scene.meshes[i].mesh.triangleCount(), result_["levels"][i]["triangles"]);
    }
}

TEST_F(Levels, KeepTheMeshesOfAFileApart) {
    ASSERT_EQ(runJson({"lods", sample("synth-torus.Vok"), in("out"), "--halve", "2", "--glb"}),
              ExitCode::Done);
    ASSERT_EQ(runJson({"lods", in("out/synth-torus-lods.glb"), in("again"), "--levels", "50%"}),
              ExitCode::Done)
        << err_;
    const Scene scene = readScene(in("again/synth-torus-lods-lod1.glb"));
    ASSERT_EQ(scene.meshes.size(), 2U);
    EXPECT_EQ(scene.meshes[0].name, "synth-torus LOD1");
    EXPECT_EQ(scene.meshes[1].name, "synth-torus LOD2");
}

TEST_F(Levels, AFolderThatCannotBeMadeGetsASentence) {
    test::writeWhole(in("file"), "x");
    EXPECT_EQ(runJson({"lods", sample("spot.Vok"), in("file/out")}), ExitCode::CannotWrite);
    EXPECT_TRUE(has(err_, "Cannot create ")) << err_;
}

TEST_F(Levels, ProgressNeverGoesBack) {
    double shown = 0;
    const korvalite::Monitor monitor = [&](const korvalite::Progress& progress) {
        EXPECT_GE(fractionOf(progress), shown);
        shown = fractionOf(progress);
        return true;
    };
    MeasuredLevels levels(read(sample("synth-torus.Vok")), allLevels(), monitor);
    EXPECT_GT(shown, 0.9);
    shown = 0;
    (void)levels.level(Target::vertices(500), monitor);
    EXPECT_GT(shown, 0.9);
}

TEST_F(Levels, SayWhichOfThemMissTheirTarget) {
    ASSERT_EQ(
        run({"lods", sample("spot.Vok"), in("out"), "--levels", "2000v,0v", "--format", ".ply"}),
        ExitCode::Done)
        << err_;
    EXPECT_FALSE(has(out_, "Its target of 2,000"));
    EXPECT_TRUE(has(out_, "Its target of 0 was not reached.")) << out_;
    const nlohmann::json index = nlohmann::json::parse(test::readWhole(in("out/spot-lods.json")));
    EXPECT_EQ(index["levels"][0]["asked"], 2'000);
    EXPECT_FALSE(index["levels"][0]["missed"]);
    EXPECT_TRUE(index["levels"][1]["missed"]);
    EXPECT_TRUE(std::filesystem::exists(path("out/spot-lod1.ply")));
}

TEST_F(Levels, OfAMeshWithoutTrianglesHaveNoError) {
    MeasuredLevels levels({}, allLevels(), {});
    const auto noMonitor = [](double, double) { return korvalite::Monitor(); };
    const MeasuredLevels::Level level = levels.coarsestWithin(0, noMonitor);
    EXPECT_EQ(level.mesh.triangleCount(), 0U);
    EXPECT_EQ(level.measurement.atMost, 0);
}

TEST(LevelList, SortsFromFineToCoarse) {
    const std::vector<Target> levels = parseLevels("10%, 50%,25%");
    ASSERT_EQ(levels.size(), 3U);
    EXPECT_EQ(levels[0].percentage(), 50.0F);
    EXPECT_EQ(levels[2].percentage(), 10.0F);
    EXPECT_EQ(parseLevels("5v,100v").front().count(), 100U);
}

TEST(LevelList, RefusesMixedUnitsAndHoles) {
    for (const char* text : {"10%,5v", "", ",", "10%,", "10%,,5%", "1mm"})
        EXPECT_THROW((void)parseLevels(text), korvalite::Error) << text;
}

TEST(LevelList, HalvesEachTime) {
    const std::vector<Target> levels = halvedLevels(4);
    ASSERT_EQ(levels.size(), 4U);
    EXPECT_EQ(levels[3].percentage(), 6.25F);
}

}  // namespace
}  // namespace korva

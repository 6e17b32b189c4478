// SPDX-License-Identifier: MIT
//
// Whole commands, as a user would type them.
#include "korva/command_test.h"
#include "support/full_disk.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace korva {
namespace {

class Korva : public CommandTest {
protected:
    static std::string checkSample() {
        return KORVA_PATH " check -q '" + sample("spot.Vok") + "' ";
    }
    static int shell(const std::string& command) {
        const int status = std::system(command.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    static std::vector<std::array<float, 3>> sortedPoints(const korvalite::Mesh& mesh) {
        std::vector<std::array<float, 3>> points(mesh.vertexCount());
        for (std::size_t i = 0; i < points.size(); ++i)
            std::copy_n(&mesh.positions[3 * i], 3, points[i].begin());
        std::ranges::sort(points);
        return points;
    }
};

TEST_F(Korva, SimplifiesToEveryFormat) {
    for (const FileKind& kind : fileKinds()) {
        const std::string path = in(std::string("ä日本 x") + kind.suffix);
        ASSERT_EQ(run({"simplify", sample("spot-everything.Vok"), path, "--to", "2800v", "-q",
                       "--threads", "1"}),
                  ExitCode::Done)
            << err_;
        EXPECT_EQ(err_, "");
        EXPECT_TRUE(has(out_, "2,800 vertices")) << out_;
        const korvalite::Mesh mesh = read(path);
        EXPECT_EQ(mesh.vertexCount(), 2800U) << kind.suffix;
        EXPECT_EQ(mesh.colors.empty(), !kind.carriesColors) << kind.suffix;
        EXPECT_EQ(mesh.mask.empty(), !kind.carriesMask) << kind.suffix;
        EXPECT_EQ(mesh.uvs.empty(), !kind.carriesUVs) << kind.suffix;
    }
}

TEST_F(Korva, SaysWhatAFormatCannotHold) {
    ASSERT_EQ(run({"convert", sample("spot-everything.Vok"), in("a.stl")}), ExitCode::Done);
    EXPECT_TRUE(has(err_, "STL cannot hold colours, the mask and UVs; they are left out.")) << err_;
}

TEST_F(Korva, ConvertsBackAndForthWithoutLoss) {
    const korvalite::Mesh original = read(sample("spot-everything.Vok"));
    ASSERT_EQ(run({"convert", sample("spot-everything.Vok"), in("a.ply")}), ExitCode::Done);
    ASSERT_EQ(run({"convert", in("a.ply"), in("b.vok")}), ExitCode::Done);
    const korvalite::Mesh result = read(in("b.vok"));
    EXPECT_EQ(result.positions, original.positions);
    EXPECT_EQ(result.triangles, original.triangles);
    EXPECT_EQ(result.mask, original.mask);
    EXPECT_EQ(result.triangleUVs.size(), original.triangleUVs.size());
}

TEST_F(Korva, SaysWhyATargetWasMissed) {
    const std::vector<std::string> words{"simplify", sample("synth-seams.Vok"), in("a.obj"), "--to",
                                         "4v",       "--freeze-border"};
    EXPECT_EQ(run(words), ExitCode::Done);
    EXPECT_TRUE(has(out_, "was not reached. Most of the edges")) << out_;
    std::vector<std::string> strict = words;
    strict.emplace_back("--strict");
    EXPECT_EQ(run(strict), ExitCode::TargetMissed);
}

TEST_F(Korva, PrintsOneJsonObject) {
    ASSERT_EQ(run({"simplify", sample("spot.Vok"), in("a.obj"), "--to", "600t", "--json", "-q",
                   "--threads", "1"}),
              ExitCode::Done);
    const nlohmann::json result = nlohmann::json::parse(out_);
    EXPECT_EQ(result["target"]["unit"], "triangles");
    EXPECT_EQ(result["target"]["asked"], 600);
    EXPECT_EQ(result["target"]["missed"], false);
    EXPECT_EQ(result["output"]["triangles"], read(in("a.obj")).triangleCount());
    EXPECT_EQ(result["input"]["vertices"], 2930);
}

TEST_F(Korva, JsonNamesFilesWhoseNamesAreNotUtf8) {
    const std::string input = folder_.path() + "/\xFF.vok";
    std::filesystem::copy_file(sample("synth-torus.Vok"), std::filesystem::path(input));
    ASSERT_EQ(run({"simplify", input, in("a.ply"), "--json", "-q"}), ExitCode::Done) << err_;
    const nlohmann::json result = nlohmann::json::parse(out_);
    EXPECT_EQ(result["input"]["path"], folder_.path() + "/\xEF\xBF\xBD.vok");
}

TEST_F(Korva, TakesLevelsFromAProgressiveMesh) {
    ASSERT_EQ(run({"progressive", sample("spot.Vok"), in("a.kvm"), "--threads", "1"}),
              ExitCode::Done)
        << err_;
    ASSERT_EQ(run({"level", in("a.kvm"), in("b.ply"), "--to", "1000v"}), ExitCode::Done) << err_;
    ASSERT_EQ(run({"simplify", sample("spot.Vok"), in("c.ply"), "--to", "1000v", "--threads", "1"}),
              ExitCode::Done);
    // The order of vertices in a progressive mesh is that of their removal.
    EXPECT_EQ(sortedPoints(read(in("b.ply"))), sortedPoints(read(in("c.ply"))));
}

TEST_F(Korva, SaysThatAFileHasNoCoarserLevel) {
    ASSERT_EQ(run({"progressive", sample("spot.Vok"), in("a.kvm"), "--to", "50%"}), ExitCode::Done);
    ASSERT_EQ(run({"level", in("a.kvm"), in("b.ply"), "--to", "1000v"}), ExitCode::Done) << err_;
    EXPECT_TRUE(has(out_, "The target of 1,000 vertices was not reached. "
                          "This is the coarsest level of the file."))
        << out_;
    ASSERT_EQ(run({"level", in("a.kvm"), in("b.ply"), "--to", "50%", "--json"}), ExitCode::Done);
    EXPECT_FALSE(nlohmann::json::parse(out_)["target"]["missed"]);
}

TEST_F(Korva, AFullDiskLeavesTheOldProgressiveMesh) {
    ASSERT_EQ(run({"progressive", sample("spot.Vok"), in("a.kvm"), "--to", "50%"}), ExitCode::Done);
    const std::string before = test::readWhole(in("a.kvm"));
    {
        const test::FullDisk full(100'000);
        EXPECT_EQ(run({"progressive", sample("spot.Vok"), in("a.kvm")}), ExitCode::CannotWrite);
    }
    EXPECT_EQ(test::readWhole(in("a.kvm")), before);
    EXPECT_EQ(fileCount(), 1);
}

TEST_F(Korva, ChecksAMesh) {
    ASSERT_EQ(run({"check", sample("synth-seams.Vok")}), ExitCode::Done);
    EXPECT_TRUE(has(out_, "192 edges on a UV seam")) << out_;
    EXPECT_TRUE(has(out_, "Suggested: korva simplify ")) << out_;
    ASSERT_EQ(run({"check", sample("boot.Vok"), "--json"}), ExitCode::Done);
    const nlohmann::json result = nlohmann::json::parse(out_);
    EXPECT_EQ(result["vertices"], 19931);
    EXPECT_EQ(result["closed"], true);
}

TEST_F(Korva, RepairsWhatItReadsAndSaysSo) {
    test::writeWhole(in("a.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 9 9 9\nv nan 0 0\n"
                                  "f 1 2 3\nf 1 2 3\nf 1 1 2\nf 1 2 5\n");
    ASSERT_EQ(run({"convert", in("a.obj"), in("b.obj")}), ExitCode::Done) << err_;
    EXPECT_TRUE(has(err_, "1 triangle at a vertex that is not finite was removed.")) << err_;
    EXPECT_TRUE(has(err_, "1 triangle with a vertex twice was removed."));
    EXPECT_TRUE(has(err_, "1 triangle that was there twice was removed."));
    EXPECT_TRUE(has(err_, "2 vertices without triangles were removed."));
    EXPECT_EQ(read(in("b.obj")).triangleCount(), 1U);
    EXPECT_EQ(read(in("b.obj")).vertexCount(), 3U);
}

TEST_F(Korva, TakesTheMaskFromAChannel) {
    ASSERT_EQ(run({"convert", sample("spot-colored.Vok"), in("a.ply"), "--mask", "green"}),
              ExitCode::Done);
    const korvalite::Mesh mesh = read(in("a.ply"));
    ASSERT_EQ(mesh.mask.size(), mesh.vertexCount());
    for (std::size_t i = 0; i < mesh.mask.size(); ++i)
        ASSERT_EQ(mesh.mask[i], mesh.colors[4 * i + 1]);
    ASSERT_EQ(
        run({"convert", sample("spot-colored.Vok"), in("b.ply"), "--mask", "red", "--no-colors"}),
        ExitCode::Done);
    EXPECT_FALSE(read(in("b.ply")).mask.empty());
    EXPECT_EQ(run({"convert", sample("spot.Vok"), in("c.ply"), "--mask", "red"}), ExitCode::Usage);
    EXPECT_TRUE(has(err_, "needs a mesh with colours")) << err_;
}

TEST_F(Korva, TakesTheMaskFromAFile) {
    test::writeWhole(in("a.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    const std::vector<std::string> words{"convert", in("a.obj"), in("b.ply"), "--mask",
                                         in("m.txt")};
    test::writeWhole(in("m.txt"), "0 127.6\n255\n");
    ASSERT_EQ(run(words), ExitCode::Done) << err_;
    EXPECT_EQ(read(in("b.ply")).mask, (std::vector<std::uint8_t>{0, 128, 255}));
    for (const auto& [text, fault] : std::vector<std::pair<std::string, std::string>>{
             {"0 1\n", "line 1: the file ends, but vertex 3 needs a number."},
             {"0 1\n256", "line 2: '256' is not a number from 0 to 255."},
             {"0 x 1", "line 1: 'x' is not a number from 0 to 255."},
             {"0 1 2\n3", "line 2: there are more numbers than the 3 vertices."}}) {
        test::writeWhole(in("m.txt"), text);
        EXPECT_EQ(run(words), ExitCode::BadInput) << text;
        EXPECT_TRUE(has(err_, fault)) << err_;
    }
}

TEST_F(Korva, WritesNewNormalsWhereTheInputHadSome) {
    ASSERT_EQ(run({"convert", sample("spot.Vok"), in("without.obj")}), ExitCode::Done);
    EXPECT_FALSE(has(test::readWhole(in("without.obj")), "vn "));
    test::writeWhole(in("a.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\nvn 1 0 0\nf 1//1 2//1 3//1\n");
    ASSERT_EQ(run({"convert", in("a.obj"), in("b.obj")}), ExitCode::Done);
    EXPECT_TRUE(has(test::readWhole(in("b.obj")), "vn 0 0 1\n"));
}

// What bad input gets.

TEST_F(Korva, SaysWhatIsWrongWithAFileThatIsNotAMesh) {
    std::filesystem::create_directory(path("folder.obj"));
    std::filesystem::copy_file(sample("spot.Vok"), path("really-vok.obj"));
    for (const FileKind& kind : fileKinds()) {
        test::writeWhole(in(std::string("empty") + kind.suffix), "");
        EXPECT_EQ(run({"simplify", in(std::string("empty") + kind.suffix), in("out.obj")}),
                  ExitCode::BadInput)
            << kind.suffix;
        EXPECT_TRUE(has(err_, "Cannot read ")) << err_;
    }
    EXPECT_EQ(run({"simplify", in("folder.obj"), in("out.obj")}), ExitCode::BadInput);
    EXPECT_TRUE(has(err_, "folder.obj: it is a folder.")) << err_;
    EXPECT_EQ(run({"simplify", in("really-vok.obj"), in("out.obj")}), ExitCode::BadInput);
    EXPECT_FALSE(std::filesystem::exists(path("out.obj")));
}

TEST_F(Korva, AMeshWithoutTrianglesIsBadInput) {
    test::writeWhole(in("a.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\n");
    EXPECT_EQ(run({"progressive", in("a.obj"), in("b.kvm")}), ExitCode::BadInput);
    EXPECT_EQ(run({"simplify", in("a.obj"), in("b.obj")}), ExitCode::BadInput);
    EXPECT_TRUE(has(err_, "a.obj has no triangles to simplify.")) << err_;
    EXPECT_EQ(fileCount(), 1U);
}

// The program as the shell starts it, with its standard output somewhere else.
TEST_F(Korva, AFullDiskIsNotAResult) {
    ASSERT_TRUE(std::filesystem::exists("/dev/full"));
    const int status = shell(checkSample() + ">/dev/full 2>'" + in("errors") + "'");
    EXPECT_EQ(status, static_cast<int>(ExitCode::CannotWrite));
    EXPECT_EQ(test::readWhole(in("errors")), "Cannot write to standard output.\n");
}

TEST_F(Korva, AClosedPipeIsNotAResult) {
    const std::string pipe = "'" + in("pipe") + "'";
    const int status = shell("mkfifo " + pipe + " && exec 3<>" + pipe + " 4>" + pipe + " 3<&- && " +
                             checkSample() + ">&4 2>'" + in("errors") + "'");
    EXPECT_EQ(status, static_cast<int>(ExitCode::CannotWrite));
    EXPECT_EQ(test::readWhole(in("errors")), "Cannot write to standard output.\n");
}

TEST_F(Korva, NamesAMissingFile) {
    EXPECT_EQ(run({"simplify", in("missing.obj"), in("b.obj")}), ExitCode::BadInput);
    EXPECT_TRUE(has(err_, "missing.obj: there is no such file.")) << err_;
    EXPECT_EQ(out_, "");
    EXPECT_EQ(fileCount(), 0U);
}

TEST_F(Korva, ListsTheFormatsForAnUnknownSuffix) {
    EXPECT_EQ(run({"simplify", sample("spot.Vok"), in("b.xyz")}), ExitCode::Usage);
    EXPECT_TRUE(has(err_, ".obj, .ply")) << err_;
}

TEST_F(Korva, AnswersUnknownNamesWithTheNearest) {
    EXPECT_EQ(run({"simplfy", "a", "b"}), ExitCode::Usage);
    EXPECT_TRUE(has(err_, "did you mean simplify?")) << err_;
    EXPECT_EQ(run({"simplify", "a.obj", "b.obj", "--freezeborder"}), ExitCode::Usage);
    EXPECT_TRUE(has(err_, "did you mean --freeze-border?")) << err_;
    EXPECT_EQ(run({}), ExitCode::Usage);
}

TEST_F(Korva, RefusesValuesOutOfRange) {
    for (const auto& [option, value] :
         std::vector<std::pair<std::string, std::string>>{{"--threads", "-1"},
                                                          {"--threads", "x"},
                                                          {"--colors-weight", "0"},
                                                          {"--symmetry", "w"},
                                                          {"--to", "500"}})
        EXPECT_EQ(run({"simplify", sample("spot.Vok"), in("b.obj"), option, value}),
                  ExitCode::Usage)
            << option << value;
    EXPECT_EQ(fileCount(), 0U);
}

TEST_F(Korva, AFolderThatIsMissingGetsASentence) {
    EXPECT_EQ(run({"convert", sample("spot.Vok"), in("missing/b.obj")}), ExitCode::CannotWrite);
    EXPECT_TRUE(has(err_, "Cannot write ")) << err_;
}

TEST_F(Korva, HelpHasAnExampleForEachCommand) {
    EXPECT_EQ(run({"--help"}), ExitCode::Done);
    for (const char* command :
         {"simplify", "check", "convert", "progressive", "level", "picture"}) {
        EXPECT_TRUE(has(out_, command)) << out_;
        EXPECT_EQ(run({command, "--help"}), ExitCode::Done);
        EXPECT_TRUE(has(out_, "Example: korva ")) << out_;
        run({"--help"});
    }
    EXPECT_EQ(run({"--version"}), ExitCode::Done);
    EXPECT_EQ(out_, std::string(korvalite::version()) + "\n");
}

}  // namespace
}  // namespace korva

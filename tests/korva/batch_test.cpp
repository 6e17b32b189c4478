// SPDX-License-Identifier: MIT
//
// Whole batches, as a user would type them; and with an interrupt at a chosen moment.
#include "korva/batch/batch_run.h"
#include "korva/batch/mesh_pool.h"
#include "korva/batch/summary.h"
#include "korva/command_test.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <barrier>
#include <filesystem>
#include <map>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace korva {
namespace {

namespace fs = std::filesystem;

class Batch : public CommandTest {
protected:
    Batch() { fs::create_directory(path("in")); }

    ExitCode batch(const std::vector<std::string>& options, const std::string& source = "in",
                   const std::string& outFolder = "out") {
        std::vector<std::string> words{"batch", in(source), in(outFolder)};
        words.insert(words.end(), options.begin(), options.end());
        return run(words);
    }
    void addSample(const std::string& original, const std::string& name) const {
        fs::create_directories(path(name).parent_path());
        fs::copy_file(sample(original), path(name), fs::copy_options::overwrite_existing);
    }
    [[nodiscard]] nlohmann::json summary() const {
        return nlohmann::json::parse(test::readWhole(in("out/korva-batch.json")));
    }
    /// The status of each mesh, by the name of its output.
    [[nodiscard]] std::map<std::string, std::string> statuses() const {
        std::map<std::string, std::string> result;
        const nlohmann::json all = summary();
        for (const auto& mesh : all["meshes"]) {
            const fs::path output = test::pathOfUtf8(mesh["output"].get<std::string>());
            const std::u8string name = output.lexically_relative(path("out")).generic_u8string();
            result[std::string(name.begin(), name.end())] = mesh["status"].get<std::string>();
        }
        return result;
    }
    using Statuses = std::map<std::string, std::string>;
};

TEST_F(Batch, SimplifiesTheMeshesOfAFolder) {
    addSample("spot.Vok", "in/ä日本 x.Vok");
    addSample("synth-torus.Vok", "in/b.vok");
    addSample("synth-torus.Vok", "in/deeper/c.vok");
    test::writeWhole(in("in/readme.txt"), "no mesh");
    ASSERT_EQ(batch({"--to", "600v", "--format", "ply", "-q"}), ExitCode::Done) << err_;
    EXPECT_EQ(statuses(), (Statuses{{"ä日本 x.ply", "done"}, {"b.ply", "done"}}));
    EXPECT_EQ(summary()["meshes"][0]["verticesAfter"], 600);
    EXPECT_EQ(summary()["meshes"][1]["verticesBefore"], 2930);
    EXPECT_TRUE(has(out_, "2 meshes: 2 simplified.")) << out_;
    EXPECT_EQ(err_, "");
}

TEST_F(Batch, KeepsFormatsAndFolders) {
    addSample("synth-torus.Vok", "in/a.vok");
    addSample("synth-torus.Vok", "in/deep/er/a.vok");
    ASSERT_EQ(batch({"--recursive", "-q"}), ExitCode::Done) << err_;
    EXPECT_EQ(statuses(), (Statuses{{"a.vok", "done"}, {"deep/er/a.vok", "done"}}));
}

TEST_F(Batch, DoesNotReadItsOutputsAgain) {
    addSample("synth-torus.Vok", "in/a.vok");
    ASSERT_EQ(batch({"--recursive", "-q"}, "in", "in/out"), ExitCode::Done);
    ASSERT_EQ(batch({"--recursive", "-q"}, "in", "in/out"), ExitCode::Done);
    EXPECT_TRUE(has(out_, "1 mesh: 0 simplified, 1 done already.")) << out_;
    ASSERT_EQ(batch({"--format", "ply", "-q"}, "in", "in"), ExitCode::Done) << err_;
    ASSERT_EQ(batch({"--format", "ply", "-q"}, "in", "in"), ExitCode::Done) << err_;
    EXPECT_TRUE(has(out_, "1 mesh: 0 simplified, 1 done already.")) << out_;
}

TEST_F(Batch, GivesTheBytesOfSimplifyWithOneThread) {
    addSample("boot.Vok", "in/a.vok");
    addSample("spot-everything.Vok", "in/b.vok");
    ASSERT_EQ(batch({"--to", "2900v", "--format", "ply", "--jobs", "2", "-q"}), ExitCode::Done);
    for (const char* name : {"a", "b"}) {
        const std::string input = in(std::string("in/") + name + ".vok");
        ASSERT_EQ(run({"simplify", input, in("one.ply"), "--to", "2900v", "--threads", "1", "-q"}),
                  ExitCode::Done);
        EXPECT_EQ(test::readWhole(in("one.ply")),
                  test::readWhole(in(std::string("out/") + name + ".ply")))
            << name;
    }
}

nlohmann::json withoutSeconds(nlohmann::json summary) {
    summary["totals"].erase("seconds");
    for (auto& mesh : summary["meshes"])
        mesh.erase("seconds");
    return summary;
}

TEST_F(Batch, TheSummaryDoesNotDependOnTheJobs) {
    for (int i = 0; i < 5; ++i)
        addSample(i % 2 == 0 ? "boot.Vok" : "synth-torus.Vok", "in/" + std::to_string(i) + ".vok");
    test::writeWhole(in("in/2b.obj"), "v 0 0\n");
    ASSERT_EQ(batch({"--jobs", "1", "-q"}), ExitCode::BadInput);
    const nlohmann::json one = withoutSeconds(summary());
    ASSERT_EQ(batch({"--jobs", "4", "-q", "--again"}), ExitCode::BadInput);
    EXPECT_EQ(withoutSeconds(summary()), one);
    EXPECT_EQ(one["meshes"].size(), 6U);
}

TEST_F(Batch, PrintsTheSummaryAsJson) {
    addSample("synth-torus.Vok", "in/a.vok");
    ASSERT_EQ(batch({"--json", "-q"}), ExitCode::Done);
    EXPECT_EQ(withoutSeconds(nlohmann::json::parse(out_)), withoutSeconds(summary()));
}

TEST_F(Batch, AMeshBeyondTheBudgetRunsWithARemark) {
    addSample("synth-torus.Vok", "in/a.vok");
    addSample("synth-torus.Vok", "in/b.vok");
    ASSERT_EQ(batch({"--memory", "1.5 KB", "--jobs", "2"}), ExitCode::Done);
    EXPECT_TRUE(has(err_, "so it runs alone.")) << err_;
    EXPECT_EQ(statuses(), (Statuses{{"a.vok", "done"}, {"b.vok", "done"}}));
}

// Failures.

TEST_F(Batch, GoesOnAfterAFailure) {
    addSample("synth-torus.Vok", "in/a.vok");
    test::writeWhole(in("in/b.ply"), "plx");
    test::writeWhole(in("in/c.obj"), "");
    addSample("synth-torus.Vok", "in/d.vok");
    EXPECT_EQ(batch({"-q"}), ExitCode::BadInput);
    EXPECT_EQ(
        statuses(),
        (Statuses{{"a.vok", "done"}, {"b.ply", "failed"}, {"c.obj", "failed"}, {"d.vok", "done"}}));
    EXPECT_TRUE(has(err_, "b.ply")) << err_;
    EXPECT_TRUE(has(err_, "c.obj")) << err_;
    const std::string sentence = summary()["meshes"][1]["sentence"];
    EXPECT_TRUE(has(err_, sentence)) << err_;
    EXPECT_TRUE(has(test::readWhole(in("out/korva-batch.csv")), "failed"));
}

TEST_F(Batch, StrictMindsMissedTargetsEvenIfDoneAlready) {
    addSample("synth-seams.Vok", "in/a.vok");
    const std::vector<std::string> options{"--to", "4v", "--freeze-border", "-q"};
    std::vector<std::string> strict = options;
    strict.emplace_back("--strict");
    EXPECT_EQ(batch(options), ExitCode::Done);
    EXPECT_EQ(statuses(), (Statuses{{"a.vok", "missed"}}));
    EXPECT_NE(summary()["meshes"][0]["sentence"], "");
    EXPECT_EQ(batch(strict), ExitCode::TargetMissed);
    EXPECT_EQ(statuses(), (Statuses{{"a.vok", "skipped"}}));
}

TEST_F(Batch, RefusesTwoInputsWithOneOutput) {
    addSample("synth-torus.Vok", "in/a.vok");
    test::writeWhole(in("in/a.obj"), "");
    EXPECT_EQ(batch({"--format", "ply"}), ExitCode::Usage);
    EXPECT_TRUE(has(err_, "a.obj and ")) << err_;
    EXPECT_TRUE(has(err_, "a.vok would both become ")) << err_;
    EXPECT_FALSE(fs::exists(path("out")));
}

TEST_F(Batch, RefusesToOverwriteAnInput) {
    addSample("synth-torus.Vok", "in/a.vok");
    EXPECT_EQ(batch({}, "in", "in"), ExitCode::Usage);
    EXPECT_TRUE(has(err_, "would overwrite the input")) << err_;
    EXPECT_FALSE(fs::exists(path("in/korva-batch.json")));
    EXPECT_EQ(batch({}, "in", "in/../in/"), ExitCode::Usage);
}

TEST_F(Batch, RefusesWhatItCannotRead) {
    EXPECT_EQ(batch({}), ExitCode::BadInput);
    EXPECT_TRUE(has(err_, "it has no meshes with a known suffix."));
    EXPECT_EQ(batch({}, "missing"), ExitCode::BadInput);
    EXPECT_TRUE(has(err_, "there is no such file.")) << err_;
    test::writeWhole(in("list.txt"), "# nothing\n\n \n");
    EXPECT_EQ(batch({}, "list.txt"), ExitCode::BadInput);
    EXPECT_TRUE(has(err_, "it lists no meshes.")) << err_;
    test::writeWhole(in("list.txt"), std::string("a\0b", 3));
    EXPECT_EQ(batch({}, "list.txt"), ExitCode::BadInput);
    addSample("synth-torus.Vok", "in/a.vok");
    EXPECT_EQ(batch({}, "in/a.vok"), ExitCode::Usage);
    EXPECT_FALSE(fs::exists(path("out")));
}

TEST_F(Batch, RefusesBadOptions) {
    addSample("synth-torus.Vok", "in/a.vok");
    for (const std::vector<std::string>& options :
         std::vector<std::vector<std::string>>{{"--memory", "0"},
                                               {"--memory", "-1"},
                                               {"--memory", "8XB"},
                                               {"--memory", "1e30"},
                                               {"--memory", "nan"},
                                               {"--format", "xyz"},
                                               {"--jobs", "-1"},
                                               {"--to", "5"}})
        EXPECT_EQ(batch(options), ExitCode::Usage) << options[1];
    EXPECT_FALSE(fs::exists(path("out")));
}

TEST_F(Batch, AFolderThatCannotBeWrittenEndsTheBatch) {
    addSample("synth-torus.Vok", "in/a.vok");
    test::writeWhole(in("out"), "a file");
    EXPECT_EQ(batch({}), ExitCode::CannotWrite);
    EXPECT_TRUE(has(err_, "Cannot write to the folder ")) << err_;
}

// Lists.

TEST_F(Batch, ReadsAList) {
    addSample("synth-torus.Vok", "in/sub/ä日本 x.vok");
    addSample("synth-torus.Vok", "elsewhere/b.vok");
    test::writeWhole(in("in/list.txt"), "\xEF\xBB\xBF# meshes\r\nsub/ä日本 x.vok\r\n\r\n"
                                        "missing.ply\n../elsewhere/b.vok\n" +
                                            in("in/what.xyz"));
    EXPECT_EQ(batch({"-q"}, "in/list.txt"), ExitCode::BadInput);
    EXPECT_EQ(statuses(), (Statuses{{"sub/ä日本 x.vok", "done"},
                                    {"missing.ply", "failed"},
                                    {"b.vok", "done"},
                                    {"what.xyz", "failed"}}));
    EXPECT_TRUE(has(err_, "missing.ply: there is no such file.")) << err_;
}

// Running again.

TEST_F(Batch, SkipsWhatIsDoneAndDoesTheRest) {
    addSample("synth-torus.Vok", "in/a.vok");
    addSample("synth-torus.Vok", "in/b.vok");
    addSample("synth-torus.Vok", "in/c.vok");
    ASSERT_EQ(batch({"-q"}), ExitCode::Done);
    fs::remove(path("out/b.vok"));
    test::writeWhole(in("out/a.vok"), "untouched");
    const auto time = fs::last_write_time(path("in/c.vok"));
    fs::last_write_time(path("in/c.vok"), time + std::chrono::seconds(5));
    ASSERT_EQ(batch({"-q"}), ExitCode::Done);
    EXPECT_EQ(statuses(), (Statuses{{"a.vok", "skipped"}, {"b.vok", "done"}, {"c.vok", "done"}}));
    EXPECT_EQ(summary()["meshes"][0]["verticesBefore"], 1458);
    EXPECT_EQ(test::readWhole(in("out/a.vok")), "untouched");
    ASSERT_EQ(batch({"-q", "--again"}), ExitCode::Done);
    EXPECT_EQ(statuses(), (Statuses{{"a.vok", "done"}, {"b.vok", "done"}, {"c.vok", "done"}}));
}

TEST_F(Batch, OtherOptionsOrADamagedSummaryMeanThatEverythingIsDoneAgain) {
    addSample("synth-torus.Vok", "in/a.vok");
    ASSERT_EQ(batch({"--to", "50%", "-q"}), ExitCode::Done);
    ASSERT_EQ(batch({"--to", "49.9999%", "-q"}), ExitCode::Done);
    EXPECT_EQ(statuses(), (Statuses{{"a.vok", "done"}}));
    ASSERT_EQ(batch({"--to", "49.9999%", "-q", "--weld"}), ExitCode::Done);
    EXPECT_EQ(statuses(), (Statuses{{"a.vok", "done"}}));
    for (const char* damage : {"", "{", "[]", "{\"settings\": \"x\", \"meshes\": [{}]}",
                               "{\"settings\": 5, \"meshes\": 7}"}) {
        test::writeWhole(in("out/korva-batch.json"), damage);
        ASSERT_EQ(batch({"--to", "49.9999%", "--weld"}), ExitCode::Done) << damage;
        EXPECT_TRUE(has(err_, "is damaged")) << damage;
        EXPECT_EQ(statuses(), (Statuses{{"a.vok", "done"}}));
    }
    ASSERT_EQ(batch({"--to", "49.9999%", "--weld", "-q"}), ExitCode::Done);
    EXPECT_EQ(statuses(), (Statuses{{"a.vok", "skipped"}}));
}

TEST_F(Batch, AnInterruptKeepsWhatIsDone) {
    for (int i = 0; i < 4; ++i)
        addSample("synth-torus.Vok", "in/" + std::to_string(i) + ".vok");
    BatchOptions options;
    options.source = path("in");
    options.list.outFolder = path("out");
    options.memoryBytes = 1'000'000'000;
    const Console console{.quiet = true, .json = true};
    testing::internal::CaptureStdout();
    try {
        runBatch(options, console, [&] { return fs::exists(path("out/1.vok")); });
        ADD_FAILURE() << "not cancelled";
    } catch (const korvalite::Error& error) {
        EXPECT_EQ(error.code(), korvalite::ErrorCode::Cancelled);
        EXPECT_TRUE(has(error.what(), "2 of 4 meshes are left")) << error.what();
    }
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(nlohmann::json::parse(printed)["totals"]["left"], 2);
    EXPECT_EQ(statuses(), (Statuses{{"0.vok", "done"}, {"1.vok", "done"}}));
    // Two outputs and the two summaries.
    EXPECT_EQ(std::distance(fs::directory_iterator(path("out")), {}), 4);
    ASSERT_EQ(batch({"-q"}), ExitCode::Done);
    EXPECT_EQ(
        statuses(),
        (Statuses{
            {"0.vok", "skipped"}, {"1.vok", "skipped"}, {"2.vok", "done"}, {"3.vok", "done"}}));
}

TEST_F(Batch, AnInterruptDuringAMeshLeavesNothingOfIt) {
    addSample("boot.Vok", "in/a.vok");
    BatchOptions options;
    options.source = path("in");
    options.list.outFolder = path("out");
    options.memoryBytes = 1'000'000'000;
    std::atomic<int> questions = 0;
    EXPECT_THROW(runBatch(options, {.quiet = true, .json = false}, [&] { return ++questions > 4; }),
                 korvalite::Error);
    EXPECT_EQ(summary()["totals"]["left"], 1);
    EXPECT_EQ(std::distance(fs::directory_iterator(path("out")), {}), 2);
}

// Parts.

TEST(BatchSummary, QuotesWhatCsvNeedsQuoted) {
    EXPECT_EQ(csvLine({"a", "", "b c", "ä日本"}), "a,,b c,ä日本");
    EXPECT_EQ(csvLine({"a,b", "say \"x\"", "two\nlines", "cr\r"}),
              "\"a,b\",\"say \"\"x\"\"\",\"two\nlines\",\"cr\r\"");
}

struct PoolRun {
    std::vector<std::size_t> ended;
    std::vector<std::size_t> failed;
    std::map<std::size_t, int> starts;
};

PoolRun runPool(MeshPool& pool, std::size_t threads, const std::function<void(std::size_t)>& work) {
    PoolRun run;
    pool.run(threads, {.work = work,
                       .starts = [&](std::size_t mesh) { ++run.starts[mesh]; },
                       .ended =
                           [&](std::size_t mesh, const std::exception_ptr& failure) {
                               (failure ? run.failed : run.ended).push_back(mesh);
                           }});
    return run;
}

TEST(MeshPool, TriesAMeshThatRanOutOfMemoryOnceMoreAlone) {
    MeshPool pool(Schedule(std::vector<std::uint64_t>(8, 1), 4, 4), [] { return false; });
    std::atomic<int> running = 0;
    std::atomic<int> triesOf2 = 0;
    std::atomic<bool> wasAlone = true;
    std::barrier together(4);
    const PoolRun run = runPool(pool, 4, [&](std::size_t mesh) {
        const bool isAgain = mesh == 2 && triesOf2++ > 0;
        ++running;
        if (mesh < 4 && !isAgain) together.arrive_and_wait();
        if (isAgain && running != 1) wasAlone = false;
        --running;
        if (mesh == 2) throw std::bad_alloc();
    });
    EXPECT_EQ(run.ended.size(), 7U);
    EXPECT_EQ(run.failed, (std::vector<std::size_t>{2}));
    EXPECT_EQ(run.starts.at(2), 2);
    EXPECT_TRUE(wasAlone);
}

TEST(MeshPool, CarriesWhatACallThrows) {
    MeshPool pool(Schedule(std::vector<std::uint64_t>(50, 1), 4, 3), [] { return false; });
    std::atomic<int> worked = 0;
    const MeshPool::Calls calls{
        .work = [&](std::size_t) { ++worked; },
        .starts = [](std::size_t) {},
        .ended = [](std::size_t, const std::exception_ptr&) { throw std::runtime_error("full"); }};
    EXPECT_THROW(pool.run(3, calls), std::runtime_error);
    EXPECT_LE(worked, 3);
    EXPECT_TRUE(pool.isStopping());
}

TEST(MeshPool, StartsNothingAfterAnInterrupt) {
    std::atomic<bool> isInterrupted = false;
    MeshPool pool(Schedule(std::vector<std::uint64_t>(9, 1), 100, 2),
                  [&] { return isInterrupted.load(); });
    const PoolRun run = runPool(pool, 2, [&](std::size_t mesh) {
        if (mesh == 1) {
            isInterrupted = true;
            throw korvalite::Error(korvalite::ErrorCode::Cancelled, "Cancelled.");
        }
    });
    EXPECT_EQ(run.failed, std::vector<std::size_t>{});
    EXPECT_FALSE(run.starts.contains(8));
}

}  // namespace
}  // namespace korva

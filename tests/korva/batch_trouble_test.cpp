// SPDX-License-Identifier: MIT
//
// Batches that meet trouble at a chosen moment: an interrupt, a lack of memory, a summary that
// cannot be written.
#include "korva/batch/batch_run.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <functional>
#include <iterator>
#include <string>

namespace korva {
namespace {

namespace fs = std::filesystem;
namespace test = korvalite::core::test;

class BatchTrouble : public testing::Test {
protected:
    BatchTrouble() {
        fs::create_directory(path("in"));
        options_.source = path("in");
        options_.list.outFolder = path("out");
        options_.memoryBytes = 1'000'000'000;
    }

    [[nodiscard]] fs::path path(const std::string& name) const {
        return test::pathOfUtf8(folder_.path()) / name;
    }
    void addMeshes(int count) const {
        for (int i = 0; i < count; ++i)
            fs::copy_file(KORVALITE_SOURCE_DIR "/samples/synth-torus.Vok",
                          path("in/" + std::to_string(i) + ".vok"));
    }

    ExitCode run(const std::function<bool()>& isInterrupted = [] { return false; }) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        ExitCode code = ExitCode::Done;
        error_.clear();
        try {
            code = runBatch(options_, {.quiet = true, .json = false}, isInterrupted);
        } catch (const korvalite::Error& error) {
            code = exitCodeOf(error.code());
            error_ = error.what();
        }
        static_cast<void>(testing::internal::GetCapturedStdout());
        static_cast<void>(testing::internal::GetCapturedStderr());
        return code;
    }

    [[nodiscard]] nlohmann::json summary(const std::string& folder = "out") const {
        return nlohmann::json::parse(test::readWhole(textOf(path(folder) / "korva-batch.json")));
    }

    test::ScratchFolder folder_;
    BatchOptions options_;
    std::string error_;  // that ended the batch
};

TEST_F(BatchTrouble, AMeshWithoutTrianglesFails) {
    addMeshes(1);
    test::writeWhole(folder_ / u8"in/points.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\n");
    EXPECT_EQ(run(), ExitCode::BadInput);
    EXPECT_EQ(summary()["meshes"][0]["status"], "done");
    EXPECT_EQ(summary()["meshes"][1]["status"], "failed");
    EXPECT_FALSE(fs::exists(path("out/points.obj")));
}

TEST_F(BatchTrouble, AnInterruptDoesNotTurnEarlierOutputsIntoInputs) {
    addMeshes(2);
    options_.list.outFolder = path("in");
    options_.list.format = "ply";
    EXPECT_EQ(run(), ExitCode::Done) << error_;
    options_.doAgain = true;
    EXPECT_EQ(run([] { return true; }), ExitCode::Cancelled);
    EXPECT_EQ(summary("in")["totals"]["left"], 2);
    options_.doAgain = false;
    options_.list.format = "obj";
    EXPECT_EQ(run(), ExitCode::Done) << error_;
    EXPECT_EQ(summary("in")["totals"]["done"], 2);
    options_.list.format = "ply";
    EXPECT_EQ(run(), ExitCode::Done) << error_;
    EXPECT_EQ(summary("in")["totals"]["meshes"], 2);
}

TEST_F(BatchTrouble, AnInterruptBeforeTheFirstMeshLeavesOnlyTheSummary) {
    addMeshes(3);
    EXPECT_EQ(run([] { return true; }), ExitCode::Cancelled);
    EXPECT_NE(error_.find("3 of 3 meshes are left"), std::string::npos) << error_;
    EXPECT_EQ(std::distance(fs::directory_iterator(path("out")), {}), 2);
}

TEST_F(BatchTrouble, ASummaryThatCannotBeWrittenEndsTheBatchBeforeItStarts) {
    addMeshes(2);
    fs::create_directories(path("out/korva-batch.json"));
    EXPECT_EQ(run(), ExitCode::CannotWrite);
    EXPECT_NE(error_.find("korva-batch.json"), std::string::npos) << error_;
    EXPECT_EQ(std::distance(fs::directory_iterator(path("out")), {}), 1);
}

TEST_F(BatchTrouble, ASummaryThatCanNoLongerBeWrittenEndsTheBatch) {
    addMeshes(4);
    // The question whether to stop is also a moment to put a folder in the way.
    const auto block = [&] {
        if (fs::exists(path("out/1.vok")) && fs::is_regular_file(path("out/korva-batch.json"))) {
            fs::remove(path("out/korva-batch.json"));
            fs::create_directory(path("out/korva-batch.json"));
        }
        return false;
    };
    EXPECT_EQ(run(block), ExitCode::CannotWrite);
    EXPECT_NE(error_.find("korva-batch.json"), std::string::npos) << error_;
    EXPECT_FALSE(fs::exists(path("out/3.vok")));
    for (const auto& entry : fs::directory_iterator(path("out")))
        EXPECT_EQ(textOf(entry.path()).find(".part"), std::string::npos) << entry.path();
}

TEST_F(BatchTrouble, ASummaryCutAnywhereMeansThatNothingIsDone) {
    addMeshes(1);
    ASSERT_EQ(run(), ExitCode::Done);
    const std::string name = textOf(path("out/korva-batch.json"));
    const std::string whole = test::readWhole(name);
    for (std::size_t length = 0; length + 2 < whole.size(); length += 97) {
        test::writeWhole(name, whole.substr(0, length));
        ASSERT_EQ(run(), ExitCode::Done) << length;
        EXPECT_EQ(summary()["meshes"][0]["status"], "done") << length;
    }
    EXPECT_EQ(run(), ExitCode::Done);
    EXPECT_EQ(summary()["meshes"][0]["status"], "skipped");
}

TEST_F(BatchTrouble, TwoEntriesOfAListWithOneOutputAreRefused) {
    addMeshes(1);
    fs::create_directory(path("other"));
    fs::copy_file(path("in/0.vok"), path("other/0.vok"));
    options_.source = path("in/list.txt");
    for (const char* list : {"0.vok\n0.vok\n", "0.vok\n./0.vok\n", "0.vok\n../other/0.vok\n"}) {
        test::writeWhole(textOf(options_.source), list);
        EXPECT_EQ(run(), ExitCode::Usage) << list;
        EXPECT_NE(error_.find("would both become"), std::string::npos) << error_;
        EXPECT_FALSE(fs::exists(path("out")));
    }
}

}  // namespace
}  // namespace korva

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
#include <optional>
#include <string>
#include <vector>

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

}  // namespace
}  // namespace korva

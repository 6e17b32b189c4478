// SPDX-License-Identifier: MIT
//
// Whole entries of a batch in this process: thousands of them take seconds.
#pragma once

#include "formats/vok_reader.h"
#include "mesh/dmesh.h"
#include "shell/batch_driver.h"
#include "shell/job_config.h"
#include "support/decimation_run.h"
#include "support/mesh_validator.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace korvalite::core::test {

class HostileBatch : public testing::Test {
protected:
    std::string in(const std::string& name) const {
        return job.folder() / std::u8string(name.begin(), name.end()).c_str();
    }
    bool exists(const std::string& name) const {
        return std::filesystem::exists(pathOfUtf8(in(name)));
    }
    void remove(const std::string& name) const { std::filesystem::remove(pathOfUtf8(in(name))); }

    BatchEntry entry(const std::string& input, const std::string& output,
                     BatchSettings settings = {}) const {
        settings.InputFile = in(input).c_str();
        settings.OutputFile = in(output).c_str();
        return {kBatchKindUnset, settings};
    }
    // Returns the message boxes, one per line.
    static std::string perform(const std::vector<BatchEntry>& entries) {
        JobConfig config;
        config.batchList.assign(entries.begin(), entries.end());
        testing::internal::CaptureStderr();
        PerformAllBatch(config);
        return testing::internal::GetCapturedStderr();
    }
    std::string failureBox(const std::string& input) const {
        return "Korvalite\t- Not Enough Memory For " + in(input) + "\n";
    }

    // Expects a file written by the tool that can be read and has dense indices.
    void expectSoundOutput(const std::string& name, Degenerate degenerate) const {
        DMesh mesh;
        ASSERT_TRUE(exists(name));
        ASSERT_TRUE(importDMesh(in(name).c_str(), mesh));
        ASSERT_TRUE(canBeDecimated(mesh));
        EXPECT_TRUE(isSound(mesh, degenerate));
        EXPECT_TRUE(mesh.maskValues.empty() || mesh.hasMask());
        EXPECT_TRUE(mesh.vertexColors.empty() || mesh.hasColors());
        EXPECT_TRUE(mesh.coordsUV.empty() || mesh.coordsUV.size() == mesh.triangles.size());
    }

    JobFolder job;
};

}  // namespace korvalite::core::test

// SPDX-License-Identifier: MIT
#pragma once

#include "support/progress_image.h"
#include "support/scratch_folder.h"
#include "support/tool_run.h"
#include "support/vok_builder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

namespace korvalite::core::test {

// A bumpy square of side * side vertices with an open border: 2 * (side - 1)^2 triangles.
inline VokBuilder bumpyGrid(std::uint32_t side) {
    std::vector<std::array<float, 3>> points;
    std::vector<std::array<std::uint32_t, 3>> triangles;
    for (std::uint32_t row = 0; row < side; ++row) {
        for (std::uint32_t column = 0; column < side; ++column) {
            const auto x = static_cast<float>(column);
            const auto y = static_cast<float>(row);
            points.push_back({x, y, 2.0F * std::sin(0.7F * x) * std::cos(0.3F * y)});
            if (row == 0 || column == 0) continue;
            const std::uint32_t corner = row * side + column;
            triangles.push_back({corner - side - 1, corner - side, corner});
            triangles.push_back({corner - side - 1, corner, corner - 1});
        }
    }
    VokBuilder file;
    return file.points(points).triangles(triangles).end();
}

// The number of vertices in a file written by the tool: the count of its second block.
inline std::int64_t vertexCountOf(const std::string& vokPath) {
    const std::string bytes = readWhole(vokPath);
    constexpr std::size_t kCountOffset = 32 + 20 + 8;
    if (bytes.size() < kCountOffset + 4) return -1;
    std::int64_t count = 0;
    for (std::size_t i = 4; i-- > 0;)
        count = count * 256 + static_cast<unsigned char>(bytes[kCountOffset + i]);
    return count;
}

// A folder with a job, its meshes and its marker, in which the real executable runs.
class JobTest : public testing::Test {
protected:
    static constexpr std::uint32_t kSide = 20;
    static constexpr std::int64_t kVertexCount = std::int64_t{kSide} * kSide;

    std::string in(const std::string& name) const {
        return folder_ / std::u8string(name.begin(), name.end()).c_str();
    }
    bool exists(const std::string& name) const {
        return std::filesystem::exists(pathOfUtf8(in(name)));
    }
    // The names of everything in the folder.
    std::set<std::string> files() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(pathOfUtf8(folder_.path()))) {
            const std::u8string name = entry.path().filename().u8string();
            names.emplace(name.begin(), name.end());
        }
        return names;
    }

    void writeMesh(const std::string& name, std::uint32_t side = kSide) const {
        writeWhole(in(name), bumpyGrid(side).bytes());
    }
    void writeMarker(const ProgressImage& image = ProgressImage::opened()) const {
        writeWhole(marker_, image.bytes());
    }
    void writeJob(const std::string& text) const { writeWhole(job_, text); }

    // The lines of an entry from IN to OUT, both in the folder, that halves the vertices.
    std::string entry(const std::string& input, const std::string& output,
                      const std::string& lines = "", const std::string& kind = "") const {
        return "StartBatch " + kind + "\nInputFile=" + in(input) + "\nOutputFile=" + in(output) +
               "\nDecimationTargetPourcent=50\n" + lines + "\nEndBatch\n";
    }

    // Runs the job that writeJob wrote, or another argument, to the end.
    void run() { run(job_); }
    void run(const std::string& argument, const std::string& workingFolder = "/") {
        RunningTool tool(argument, workingFolder);
        tool.wait();
        finish(tool);
    }
    // The steps that all runs share.
    void finish(RunningTool& tool) {
        tool.wait();
        EXPECT_EQ(tool.exitStatus(), 0);
        EXPECT_EQ(tool.output(), "");
        errors_ = tool.errors();
    }
    void runJob(const std::string& text) {
        writeJob(text);
        run();
    }

    static std::string failureBox(const std::string& input) {
        return "Korvalite\t- Not Enough Memory For " + input + "\n";
    }

    ScratchFolder folder_;
    const std::string job_ = folder_ / u8"scene.kvc";
    const std::string marker_ = folder_ / u8"scene.kvc.running";
    std::string errors_;  // of the last run
};

}  // namespace korvalite::core::test

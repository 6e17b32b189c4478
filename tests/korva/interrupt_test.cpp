// SPDX-License-Identifier: MIT
//
// Ctrl-C, with the real executable.
#include "korva/exit_code.h"
#include "korva/files/ply/ply_writer.h"
#include "platform/platform.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace korva {
namespace {

namespace test = korvalite::core::test;

korvalite::Mesh bumpyGrid(std::uint32_t side) {
    korvalite::Mesh mesh;
    for (std::uint32_t i = 0; i < side * side; ++i) {
        const auto x = static_cast<float>(i % side);
        const auto y = static_cast<float>(i / side);
        mesh.positions.insert(mesh.positions.end(), {x, y, std::sin(x) * std::cos(y)});
        if (i % side == 0 || i < side) continue;
        mesh.triangles.insert(mesh.triangles.end(),
                              {i - side - 1, i - side, i, i - side - 1, i, i - 1});
    }
    return mesh;
}

/// Runs korva with these words and --quiet, interrupts it after a while and returns how it ended.
ExitCode interrupted(std::vector<std::string> words) {
    words.insert(words.begin(), KORVA_PATH);
    words.emplace_back("--quiet");
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    pid_t process = 0;
    if (posix_spawn(&process, KORVA_PATH, nullptr, nullptr, arguments.data(), environ) != 0)
        return ExitCode::Usage;
    korvalite::core::platform::sleepMilliseconds(400);
    kill(process, SIGINT);
    int status = 0;
    EXPECT_EQ(waitpid(process, &status, 0), process);
    EXPECT_TRUE(WIFEXITED(status));
    return static_cast<ExitCode>(WEXITSTATUS(status));
}

std::ptrdiff_t fileCount(const std::string& folder) {
    return std::distance(std::filesystem::directory_iterator(test::pathOfUtf8(folder)), {});
}

TEST(Interrupt, EndsTheCommandAndLeavesNothing) {
    const test::ScratchFolder folder;
    const std::string input = folder / u8"a.ply";
    writePly(test::pathOfUtf8(input), bumpyGrid(600));
    EXPECT_EQ(interrupted({"simplify", input, folder / u8"b.ply", "--to=0v"}), ExitCode::Cancelled);
    EXPECT_EQ(fileCount(folder.path()), 1);
}

TEST(Interrupt, EndsABatchAndLeavesOnlyItsSummary) {
    const test::ScratchFolder folder;
    std::filesystem::create_directory(test::pathOfUtf8(folder / u8"in"));
    const korvalite::Mesh mesh = bumpyGrid(600);
    for (const char8_t* name : {u8"in/a.ply", u8"in/b.ply", u8"in/c.ply"})
        writePly(test::pathOfUtf8(folder / name), mesh);
    EXPECT_EQ(interrupted({"batch", folder / u8"in", folder / u8"out", "--to=0v", "--jobs=2"}),
              ExitCode::Cancelled);
    EXPECT_EQ(fileCount(folder / u8"out"), 2);
}

}  // namespace
}  // namespace korva

// SPDX-License-Identifier: MIT
//
// Ctrl-C, with the real executable.
#include "korva/exit_code.h"
#include "korva/files/ply/ply_writer.h"
#include "platform/platform.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <array>
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

/// Runs korva with these words, interrupts it some time after its first line and returns how it
/// ended.
ExitCode interrupted(std::vector<std::string> words, int milliseconds = 0) {
    words.insert(words.begin(), KORVA_PATH);
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) return ExitCode::Usage;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
    posix_spawn_file_actions_addclose(&actions, ends[0]);
    pid_t process = 0;
    const int failure =
        posix_spawn(&process, KORVA_PATH, &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    std::array<char, 256> text{};
    if (failure == 0 && read(ends[0], text.data(), text.size()) > 0) {
        korvalite::core::platform::sleepMilliseconds(milliseconds);
        kill(process, SIGINT);
        while (read(ends[0], text.data(), text.size()) > 0) {
        }
    }
    close(ends[0]);
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

TEST(Interrupt, LeavesAWholeFileOrNoneAtAnyMoment) {
    for (const int milliseconds : {0, 10, 30, 100, 200, 300, 500, 800}) {
        const test::ScratchFolder folder;
        const std::string input = folder / u8"a.ply";
        writePly(test::pathOfUtf8(input), bumpyGrid(300));
        const ExitCode code =
            interrupted({"simplify", input, folder / u8"b.glb", "--to=90%"}, milliseconds);
        EXPECT_TRUE(code == ExitCode::Cancelled || code == ExitCode::Done);
        EXPECT_EQ(fileCount(folder.path()), code == ExitCode::Done ? 2 : 1) << milliseconds;
    }
}

TEST(Interrupt, EndsABatchAndLeavesOnlyItsSummary) {
    const test::ScratchFolder folder;
    std::filesystem::create_directory(test::pathOfUtf8(folder / u8"in"));
    const korvalite::Mesh mesh = bumpyGrid(600);
    for (const char8_t* name : {u8"in/a.ply", u8"in/b.ply", u8"in/c.ply"})
        writePly(test::pathOfUtf8(folder / name), mesh);
    EXPECT_EQ(interrupted({"batch", folder / u8"in", folder / u8"out", "--to=0v", "--jobs=2"}),
              ExitCode::Cancelled);
    for (const auto& entry :
         std::filesystem::directory_iterator(test::pathOfUtf8(folder / u8"out")))
        EXPECT_EQ(entry.path().stem(), "korva-batch");
}

}  // namespace
}  // namespace korva

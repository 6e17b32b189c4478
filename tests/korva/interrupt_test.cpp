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
#include <filesystem>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

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

TEST(Interrupt, EndsTheCommandAndLeavesNothing) {
    const test::ScratchFolder folder;
    std::string input = folder / u8"a.ply";
    std::string output = folder / u8"b.ply";
    writePly(test::pathOfUtf8(input), bumpyGrid(600));
    std::string program = KORVA_PATH;
    std::string command = "simplify";
    std::string quiet = "--quiet";
    std::string to = "--to=0v";
    std::array<char*, 7> words{program.data(), command.data(), input.data(), output.data(),
                               quiet.data(),   to.data(),      nullptr};
    pid_t process = 0;
    ASSERT_EQ(posix_spawn(&process, program.c_str(), nullptr, nullptr, words.data(), environ), 0);
    korvalite::core::platform::sleepMilliseconds(400);
    kill(process, SIGINT);
    int status = 0;
    ASSERT_EQ(waitpid(process, &status, 0), process);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), static_cast<int>(ExitCode::Cancelled));
    EXPECT_EQ(
        std::distance(std::filesystem::directory_iterator(test::pathOfUtf8(folder.path())), {}), 1);
}

}  // namespace
}  // namespace korva

// SPDX-License-Identifier: MIT
#include "formats/buffered_output.h"

#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <string>

namespace korvalite::core {
namespace {

TEST(BufferedOutput, PieceThatDoesNotFitFlushesFirst) {
    const test::ScratchFolder folder;
    const std::string path = folder / u8"output";
    platform::File file = platform::File::open(path.c_str(), "wb");
    BufferedOutput output(file);
    char* const start = output.room(BufferedOutput::kBytes);
    char* const lastFour = start + BufferedOutput::kBytes - 4;
    output.advanceTo(lastFour);
    EXPECT_EQ(output.room(4), lastFour);
    EXPECT_EQ(output.room(5), start);
    ASSERT_TRUE(file.close());
    EXPECT_EQ(test::readWhole(path).size(), BufferedOutput::kBytes - 4);
}

}  // namespace
}  // namespace korvalite::core

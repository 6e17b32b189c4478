// SPDX-License-Identifier: MIT
#include "host/job_paths.h"

#include "support/scratch_folder.h"

#include <gtest/gtest.h>

namespace korvalite::core {
namespace {

class JobDirectoryTest : public testing::Test {
protected:
    ~JobDirectoryTest() override { SetJobDirectory(HeapString()); }

    test::ScratchFolder folder_;
};

TEST_F(JobDirectoryTest, OneTrailingSeparatorIsRemoved) {
    SetJobDirectory("a/b/");
    EXPECT_STREQ(JobDirectory().c_str(), "a/b");
    SetJobDirectory("a\\b\\");
    EXPECT_STREQ(JobDirectory().c_str(), "a\\b");
    SetJobDirectory("a//");
    EXPECT_STREQ(JobDirectory().c_str(), "a/");
    SetJobDirectory("a/b");
    EXPECT_STREQ(JobDirectory().c_str(), "a/b");
    SetJobDirectory("");
    EXPECT_TRUE(JobDirectory().empty());
}

TEST(CurrentMeshName, IsTheLastOneSet) {
    SetCurrentMeshName("head");
    EXPECT_STREQ(CurrentMeshName().c_str(), "head");
    SetCurrentMeshName(HeapString());
    EXPECT_TRUE(CurrentMeshName().isNull());
}

}  // namespace
}  // namespace korvalite::core

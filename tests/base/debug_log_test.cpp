// SPDX-License-Identifier: MIT
#include "base/debug_log.h"

#include "support/allocation_counter.h"

#include <gtest/gtest.h>

#include <string>

namespace korvalite::core {
namespace {

std::string errorOutputOfTwoLines() {
    testing::internal::CaptureStderr();
    DebugLog("CmdLine=%s", "job.kvc");
    DebugLog("  EdgeCollapse step done : %d vtx -> %d vtx !", 100, 4);
    return testing::internal::GetCapturedStderr();
}

#ifdef KORVALITE_DEBUG_LOG

TEST(DebugLog, WritesLinesToStandardError) {
    EXPECT_EQ(errorOutputOfTwoLines(),
              "CmdLine=job.kvc\n  EdgeCollapse step done : 100 vtx -> 4 vtx !\n");
}

#else

TEST(DebugLog, AllocatesNothing) {
    const test::AllocationCounter counter;
    DebugLog("CmdLine=%s", "job.kvc");
    EXPECT_EQ(counter.count(), 0U);
}

TEST(DebugLog, IsSilent) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(errorOutputOfTwoLines(), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

#endif

TEST(DebugLogText, FillsInTheArguments) {
    EXPECT_EQ(debugLogText("  reordering done"), "  reordering done");
    EXPECT_EQ(debugLogText("   - vtxSplitList partially read (#=%d / total=%d)", 30, -1),
              "   - vtxSplitList partially read (#=30 / total=-1)");
    EXPECT_EQ(debugLogText("    HasMask=%s", trueOrFalse(true)), "    HasMask=true");
    EXPECT_EQ(debugLogText("    HasMask=%s", trueOrFalse(false)), "    HasMask=false");
}

TEST(DebugLogText, HasRoomForAnyPath) {
    const std::string path(100'000, 'x');
    EXPECT_EQ(debugLogText("Loading ProgressiveMesh (%s)", path.c_str()),
              "Loading ProgressiveMesh (" + path + ")");
}

}  // namespace
}  // namespace korvalite::core

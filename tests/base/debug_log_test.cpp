// SPDX-License-Identifier: MIT
#include "base/debug_log.h"

#include "support/allocation_counter.h"

#include <gtest/gtest.h>

namespace korvalite {
namespace {

TEST(DebugLog, ALiteralAllocatesNothing) {
    const test::AllocationCounter counter;
    DebugLog("  reordering done");
    EXPECT_EQ(counter.count(), 0U);
}

TEST(DebugLog, IsSilent) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    DebugLog(HeapString("CmdLine=") + "job.kvc");
    DebugLog("CONFIG PARSED!");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace korvalite

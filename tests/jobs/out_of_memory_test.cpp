// SPDX-License-Identifier: MIT
//
// Entries that run out of memory, in this process: each allocation of a run fails in turn.
#include "jobs/hostile_batch.h"
#include "jobs/job_run.h"
#include "support/allocation_limit.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <new>
#include <string>

namespace korvalite::core::test {
namespace {

class OutOfMemory : public HostileBatch {
protected:
    OutOfMemory() {
        writeWhole(in("mesh.Vok"), bumpyGrid(5).bytes());
        config_.batchList.push_front(entry("mesh.Vok", "out.Vok"));
    }

    struct Run {
        std::string boxes;
        bool failed = false;  // the allocation took place and failed
        bool ended = false;   // e.g. because memory ran out while a file was read or written
    };
    Run runWithout(std::uint64_t nthAllocation) const {
        Run run;
        testing::internal::CaptureStderr();
        {
            const FailingAllocation failing(nthAllocation);
            try {
                PerformAllBatch(config_);
            } catch (const std::bad_alloc&) {
                run.ended = true;
            }
            run.failed = FailingAllocation::hasFailed();
        }
        run.boxes = testing::internal::GetCapturedStderr();
        return run;
    }

    JobConfig config_;
};

TEST_F(OutOfMemory, HasItsOwnBoxAndNoOutput) {
    const std::string box = "Korvalite\tNot Enough Memory For " + in("mesh.Vok") + "\n";
    int shown = 0;
    Run run;
    for (std::uint64_t nth = 1; nth == 1 || run.failed; ++nth) {
        remove("out.Vok");
        run = runWithout(nth);
        if (run.boxes.empty()) {
            EXPECT_TRUE(run.ended || exists("out.Vok")) << nth;
            continue;
        }
        EXPECT_EQ(run.boxes, box) << nth;
        EXPECT_FALSE(exists("out.Vok")) << nth;
        ++shown;
    }
    EXPECT_GT(shown, 10);
}

}  // namespace
}  // namespace korvalite::core::test

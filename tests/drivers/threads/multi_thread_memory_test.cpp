// SPDX-License-Identifier: MIT
//
// How the multi-threaded driver behaves when memory is short, and how much memory it takes.
#include "drivers/threads/multi_thread_driver.h"

#include "drivers/threads/thread_loop.h"
#include "host/progress_channel.h"
#include "metric/metric.h"
#include "support/allocation_counter.h"
#include "support/allocation_limit.h"
#include "support/decimation_run.h"
#include "support/host_follower.h"
#include "support/mesh_builder.h"
#include "support/mesh_validator.h"
#include "support/stop_request.h"
#include "support/threads_of.h"
#include "support/watchdog.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <utility>

#if defined(__GLIBC__)
#include <pthread.h>
#endif

namespace korvalite::core {
namespace {

using test::MeshPtr;

MeshPtr prepared(std::int32_t threads, unsigned level, std::uint32_t target) {
    MeshPtr pm = test::prepared(test::sphere(level));
    pm->MemSpeedTradeOff = MEMSPEED_TRADEOFF_LOW_MEM_MT;
    pm->NumThread = threads;
    pm->TargetNumItem = target;
    return pm;
}

// Expects the end of a run that has run out of memory or has not, and returns which.
bool endedAsExpected(const ProgressiveMesh& pm, int result, bool failed) {
    EXPECT_EQ(result, failed ? 2 : 0);
    EXPECT_EQ(test::threadsOf(pm).lockedVertices.CountSet(), 0);
    EXPECT_EQ(progressChannel().record().mainActive, failed ? 0 : 1);
    progressChannel().EndMainTask();
    return failed;
}

void expectTheNextRunSucceeds(std::int32_t threads) {
    const MeshPtr pm = prepared(threads, 3, 100);
    EXPECT_EQ(RunDecimation(*pm), 0);
    EXPECT_LE(pm->mesh.numActiveVertices, 100U);
    EXPECT_TRUE(test::isClosedManifold(pm->mesh));
    progressChannel().EndMainTask();
}

class MultiThreadMemory : public test::DecimationTest {
protected:
    test::Watchdog watchdog{"MultiThreadMemory"};
    test::HostedProgress host;
};

// Fails the nth allocation of the main thread after a step, but none once the loops have ended.
// Notes the last step.
class FailAfter : public test::HostFollower {
public:
    FailAfter(int step, std::uint64_t nth) : step_(step), nth_(nth) {}
    void step(RunStep step) override {
        const auto number = static_cast<int>(step);
        last = number;
        if (number == step_) failure_.emplace(nth_);
        if (number == 12) failure_.reset();
    }
    int last = 0;

private:
    int step_;
    std::uint64_t nth_;
    std::optional<test::FailingAllocation> failure_;
};

TEST_F(MultiThreadMemory, AnyAllocationOfTheMainThreadMayFail) {
    bool failed = true;
    std::uint64_t nth = 0;
    int failures = 0;
    while (failed) {
        const MeshPtr pm = prepared(3, 2, 30);
        int result = 0;
        {
            const test::FailingAllocation failure(++nth);
            result = RunDecimation(*pm);
            failed = test::FailingAllocation::hasFailed();
        }
        progressChannel().EndMainTask();
        // If an array form of the first costs fails, another form takes over.
        EXPECT_TRUE(result == 0 || (result == 2 && failed)) << nth;
        EXPECT_EQ(test::threadsOf(*pm).lockedVertices.CountSet(), 0) << nth;
        failures += result == 2 ? 1 : 0;
    }
    EXPECT_GT(failures, 20);
    expectTheNextRunSucceeds(3);
}

TEST_F(MultiThreadMemory, ThreadsAlreadyStartedEndWhenTheSetupFails) {
    int failures = 0;
    for (std::uint64_t nth = 1;; ++nth) {
        const MeshPtr pm = prepared(4, 2, 30);
        FailAfter observer(9, nth);
        pm->monitor = &observer;
        const int result = RunDecimation(*pm);
        if (observer.last != 9) {
            progressChannel().EndMainTask();
            break;
        }
        endedAsExpected(*pm, result, true);
        EXPECT_EQ(pm->vsplitList.NumVtxSplit(), 0U);
        EXPECT_TRUE(test::isClosedManifold(pm->mesh));
        ++failures;
    }
    // Each thread allocates the tables of its context, and a worker.
    EXPECT_GT(failures, 4 * 3);
    expectTheNextRunSucceeds(4);
}

// Returns false if the run ended before the main thread reached that allocation in its loop.
bool failsInTheMainThread(std::int32_t threads, std::uint64_t nth) {
    const MeshPtr pm = prepared(threads, 4, 100);
    FailAfter observer(10, nth);
    pm->monitor = &observer;
    const int result = RunDecimation(*pm);
    return endedAsExpected(*pm, result, observer.last != 12);
}

TEST_F(MultiThreadMemory, WorkersEndWhenTheMainThreadRunsOut) {
    for (const std::uint64_t nth : {1U, 2U, 3U, 5U, 8U, 13U}) {
        // The workers may have finished the run first.
        int runs = 1;
        while (!failsInTheMainThread(3, nth))
            ASSERT_LT(++runs, 1000) << nth;
    }
    expectTheNextRunSucceeds(3);
}

// Returns false if the run ended before the workers together reached that allocation.
bool failsInAWorker(std::int32_t threads, std::uint64_t nth) {
    const MeshPtr pm = prepared(threads, 4, 100);
    const test::FailingAllocationElsewhere failure(nth);
    const int result = RunDecimation(*pm);
    return endedAsExpected(*pm, result, test::FailingAllocationElsewhere::hasFailed());
}

TEST_F(MultiThreadMemory, AFailureInAWorkerEndsAllThreadsAndTheRun) {
    for (const std::int32_t threads : {2, 5}) {
        for (const std::uint64_t nth : {1U, 2U, 3U, 5U, 8U, 13U, 21U}) {
            // The main thread may have finished the run first.
            int runs = 1;
            while (!failsInAWorker(threads, nth))
                ASSERT_LT(++runs, 1000) << nth;
        }
        expectTheNextRunSucceeds(threads);
    }
}

TEST_F(MultiThreadMemory, ALoopThatRunsOutCommitsNothingAndInformsTheOthers) {
    for (std::uint64_t nth = 1; nth < 30; ++nth) {
        const MeshPtr pm = prepared(2, 3, 50);
        doDecimationInit_LM_MT<PlainMetric>(*pm);
        SharedRun run;
        ThreadContext first;
        ThreadContext second;
        first.marks.prepare(pm->mesh);
        second.marks.prepare(pm->mesh);
        {
            const test::FailingAllocation failure(nth);
            doDecimationLoop_LM_MT<PlainMetric>(*pm, first, run);
            ASSERT_TRUE(test::FailingAllocation::hasFailed()) << nth;
        }
        EXPECT_TRUE(run.outOfMemory) << nth;
        EXPECT_EQ(test::threadsOf(*pm).lockedVertices.CountSet(), 0) << nth;
        const std::uint32_t committed = pm->vsplitList.NumVtxSplit();
        doDecimationLoop_LM_MT<PlainMetric>(*pm, second, run);
        EXPECT_EQ(second.statistics.turns, 0U) << nth;
        EXPECT_EQ(pm->vsplitList.NumVtxSplit(), committed) << nth;
        progressChannel().EndMainTask();
    }
}

#if defined(__GLIBC__)
// While this object lives, no address space is large enough for the stack of a new thread.
class NoMoreThreads {
public:
    NoMoreThreads() {
        pthread_attr_t attributes;
        pthread_getattr_default_np(&attributes);
        pthread_attr_getstacksize(&attributes, &before_);
        set(std::size_t{1} << 60U);
        pthread_attr_destroy(&attributes);
    }
    ~NoMoreThreads() { set(before_); }
    NoMoreThreads(const NoMoreThreads&) = delete;
    NoMoreThreads& operator=(const NoMoreThreads&) = delete;

private:
    static void set(std::size_t bytes) {
        pthread_attr_t attributes;
        pthread_getattr_default_np(&attributes);
        pthread_attr_setstacksize(&attributes, bytes);
        pthread_setattr_default_np(&attributes);
        pthread_attr_destroy(&attributes);
    }

    std::size_t before_ = 0;
};

TEST_F(MultiThreadMemory, RunsWithoutAThreadThatCannotStart) {
    const MeshPtr pm = prepared(4, 3, 100);
    {
        const NoMoreThreads none;
        EXPECT_EQ(RunDecimation(*pm), 0);
    }
    EXPECT_EQ(test::threadsOf(*pm).threadContexts.size(), 1U);
    EXPECT_EQ(pm->mesh.numActiveVertices, 100U);
    EXPECT_TRUE(test::isClosedManifold(pm->mesh));
    progressChannel().EndMainTask();
    expectTheNextRunSucceeds(4);
}
#endif

// Counts the bytes requested until the loops start. From then on, no allocation as long as the mesh
// succeeds.
class TablesOnly : public test::HostFollower {
public:
    explicit TablesOnly(std::size_t mostBytesInTheLoop) : most_(mostBytesInTheLoop) {}
    void step(RunStep step) override {
        const auto number = static_cast<int>(step);
        if (number == 10) {
            bytes = counter_.bytes();
            limit_.emplace(most_);
        }
        if (number == 12) limit_.reset();
    }
    std::uint64_t bytes = 0;

private:
    std::size_t most_;
    test::AllocationCounter counter_;
    std::optional<test::AllocationLimit> limit_;
};

std::uint64_t bytesOfTables(std::int32_t driver, std::int32_t threads) {
    const MeshPtr pm = test::prepared(test::sphere(6));
    TablesOnly tables(pm->mesh.vertices.size());
    pm->monitor = &tables;
    pm->MemSpeedTradeOff = driver;
    pm->NumThread = threads;
    pm->recordVSplits = false;
    pm->DoReorder = false;
    test::targetPercent(*pm, 90);
    EXPECT_EQ(RunDecimation(*pm), 0);
    progressChannel().EndMainTask();
    return tables.bytes;
}

TEST_F(MultiThreadMemory, EachThreadAddsTwoBytesPerVertex) {
    const std::uint64_t vertices = 16386;
    const std::uint64_t tablesOfAThread = 2 * vertices;
    const std::uint64_t reservations = (vertices + 7) / 8;
    // Its lists and messages do not grow with the mesh.
    constexpr std::uint64_t kOfAnySize = 2000;
    const std::uint64_t alone = bytesOfTables(MEMSPEED_TRADEOFF_LOW_MEM, 1);
    for (const std::int32_t threads : {1, 2, 4}) {
        const auto more = static_cast<std::uint64_t>(threads - 1) * tablesOfAThread + reservations;
        const std::uint64_t taken = bytesOfTables(MEMSPEED_TRADEOFF_LOW_MEM_MT, threads) - alone;
        EXPECT_GE(taken, more) << threads;
        EXPECT_LE(taken, more + static_cast<std::uint64_t>(threads) * kOfAnySize) << threads;
    }
}

}  // namespace
}  // namespace korvalite::core

// SPDX-License-Identifier: MIT
#include "thread_times.h"

#include "best_time.h"
#include "drivers/low_memory_driver.h"
#include "drivers/threads/multi_thread_driver.h"
#include "formats/vok_reader.h"
#include "host/job_paths.h"
#include "job_settings.h"
#include "metric/metric.h"
#include "own_process.h"
#include "progressive/progressive_mesh.h"
#include "support/scratch_folder.h"
#include "support/threads_of.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace korvalite::core::bench {

namespace {

// The single-threaded driver, and the multi-threaded one also with a single thread.
constexpr std::int32_t kSingleThreaded = 0;
constexpr std::array kThreadCounts{kSingleThreaded, 1, 2, 4};

void decimateTimed(ProgressiveMesh& pm, std::int32_t threads, bool measured, BestTime& prepare,
                   BestTime& loop) {
    if (threads == kSingleThreaded) {
        prepare.measure([&] { doDecimationInit_LM<PlainMetric>(pm); });
        loop.measure([&] { doDecimationLoop_LM<PlainMetric>(pm); });
        return;
    }
    pm.NumThread = threads;
    pm.measureThreads = measured;
    prepare.measure([&] { doDecimationInit_LM_MT<PlainMetric>(pm); });
    loop.measure([&] { doDecimationLaunchThreadLoops_LM_MT<PlainMetric>(pm); });
}

ThreadStatistics sumOf(const ProgressiveMesh& pm) {
    ThreadStatistics sum;
    for (const ThreadContext& context : test::threadsOf(pm).threadContexts) {
        const ThreadStatistics& one = context.statistics;
        sum.turns += one.turns;
        sum.candidates += one.candidates;
        sum.secondsWaiting += one.secondsWaiting;
        sum.secondsInQueue += one.secondsInQueue;
        sum.secondsInLoop += one.secondsInLoop;
    }
    return sum;
}

/// The seconds it takes to read the clock once.
double clockSeconds() {
    constexpr int kReadings = 1000000;
    ThreadStatistics statistics;
    BestTime time;
    for (int round = 0; round < 3; ++round) {
        time.measure([&] {
            for (int i = 0; i < kReadings; i += 2)
                const TimeTaken twoReadings(&statistics.secondsInLoop);
        });
    }
    return time.seconds() / kReadings;
}

bool printThreads(const char* input, float percent, std::int32_t threads, bool measured) {
    const test::ScratchFolder folder;
    SetJobDirectory(folder.path().c_str());
    const long idleBytes = peakBytes();
    ProgressiveMesh pm;
    if (!importDMesh(input, pm.mesh)) return false;
    askForPercent(pm, percent);
    BestTime prepare;
    BestTime loop;
    decimateTimed(pm, threads, measured, prepare, loop);
    const ThreadStatistics sum = sumOf(pm);
    const long bytes = peakBytes() - idleBytes;
    std::printf("threads=%d measured=%d vertices=%d after=%u prepare=%.4f loop=%.4f turns=%llu "
                "candidates=%llu waiting=%.4f queue=%.4f all=%.4f clock=%g peak=%ld\n",
                threads, measured ? 1 : 0, pm.mesh.vertexCount(), pm.mesh.numActiveVertices,
                prepare.seconds(), loop.seconds(), static_cast<unsigned long long>(sum.turns),
                static_cast<unsigned long long>(sum.candidates), sum.secondsWaiting,
                sum.secondsInQueue, sum.secondsInLoop, measured ? clockSeconds() : 0.0, bytes);
    return true;
}

}  // namespace

bool printThreadTimes(const char* input, float percent) {
    const auto print = [&](std::int32_t threads, bool measured) {
        return inOwnProcess([&] { return printThreads(input, percent, threads, measured); });
    };
    // Reading the clock four times per turn takes time too, so the loop is timed without that.
    return std::all_of(kThreadCounts.begin(), kThreadCounts.end(), [&](std::int32_t threads) {
        return print(threads, false) && (threads == kSingleThreaded || print(threads, true));
    });
}

}  // namespace korvalite::core::bench

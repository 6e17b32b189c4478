// SPDX-License-Identifier: MIT
//
// How the multi-threaded driver appears to an observer and to a host, and how they stop it.
#include "drivers/threads/multi_thread_driver.h"

#include "host/progress_channel.h"
#include "support/host_follower.h"
#include "support/level_walk.h"
#include "support/multi_thread_run.h"
#include "support/progress_image.h"
#include "support/scratch_folder.h"
#include "support/step_recorder.h"
#include "support/stop_request.h"
#include "support/threads_of.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace korvalite::core {
namespace {

using test::bumpyBall;
using test::MeshPtr;
using test::turnsOf;

class MultiThreadHost : public test::MultiThreadTest {};

TEST_F(MultiThreadHost, StopsBeforeTheFirstCollapseOnRequest) {
    const test::StopRequest stop;
    const MeshPtr pm = runTo(40, 3, bumpyBall());
    EXPECT_EQ(turnsOf(*pm), 0U);
    EXPECT_EQ(pm->vsplitList.NumVtxSplit(), 0U);
    EXPECT_EQ(test::surfaceOf(pm->mesh), test::surfaceOf(bumpyBall()));
}

class AskToStopAt : public test::HostFollower {
public:
    explicit AskToStopAt(int number) : number_(number) {}
    void step(RunStep step) override {
        const auto number = static_cast<int>(step);
        if (number == number_) test::HostedProgress::askToStop();
    }

private:
    int number_;
};

TEST_F(MultiThreadHost, AStopRequestEndsThreadsStillWaitingToStart) {
    const test::HostedProgress host;
    AskToStopAt ask(10);
    const MeshPtr pm = run(4, bumpyBall(), [&](ProgressiveMesh& settings) {
        settings.monitor = &ask;
        settings.TargetNumItem = 40;
    });
    EXPECT_EQ(test::threadsOf(*pm).threadContexts.size(), 4U);
    EXPECT_EQ(turnsOf(*pm), 0U);
    EXPECT_EQ(pm->mesh.numActiveVertices, 258U);
}

TEST_F(MultiThreadHost, ReportsStepsButNoProgressToAnObserver) {
    test::StepRecorder steps;
    const MeshPtr pm = run(2, bumpyBall(4), [&](ProgressiveMesh& settings) {
        settings.monitor = &steps;
        settings.TargetNumItem = 400;
    });
    EXPECT_GT(pm->vsplitList.NumVtxSplit(), 400U);
    EXPECT_EQ(steps.numbers, (std::vector<int>{4, 5, 7, 8, 9, 10, 12}));
}

// Reads the progress record at each step.
class StageReader : public test::HostFollower {
public:
    void step(RunStep step) override {
        const auto number = static_cast<int>(step);
        const ProgressRecord& record = progressChannel().record();
        if (number == 5 || number == 10) flagsBefore += record.stageFlag1 + record.stageFlag2;
        if (number != 12) return;
        flag1 = record.stageFlag1;
        flag2 = record.stageFlag2;
        mainActive = record.mainActive;
        subActive = record.subActive;
    }
    int flagsBefore = 0;
    int flag1 = -1;
    int flag2 = -1;
    int mainActive = -1;
    int subActive = -1;
};

TEST_F(MultiThreadHost, RaisesOnlyTheFirstStageFlagAndKeepsTheMainTaskOpen) {
    for (const std::int32_t threads : {1, 3}) {
        const test::HostedProgress host;
        StageReader reader;
        run(threads, bumpyBall(), [&](ProgressiveMesh& pm) {
            pm.monitor = &reader;
            pm.TargetNumItem = 200;
        });
        EXPECT_EQ(reader.flagsBefore, 0);
        EXPECT_EQ(reader.flag1, 1);
        EXPECT_EQ(reader.flag2, 0);
        EXPECT_EQ(reader.mainActive, 1);
        EXPECT_EQ(reader.subActive, 0);
        EXPECT_EQ(progressChannel().record().mainActive, 1);
        EXPECT_EQ(progressChannel().record().subActive, 0);
        progressChannel().EndMainTask();
    }
}

// Reads the progress file, as a host does, until it shows a text or this object is destroyed.
class Host {
public:
    explicit Host(const char* text) : text_(text) {}
    ~Host() {
        end_ = true;
        thread_.join();
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    bool hasSeen() const { return seen_; }
    // REQUIRES: hasSeen().
    std::int32_t total() const { return total_; }

private:
    void look() {
        while (!end_ && !seen_) {
            const test::ProgressImage image(test::readWhole(path_));
            if (image.subText() != text_) continue;
            total_ = image.subTotal();
            seen_ = true;
        }
    }

    const std::string path_ = progressChannel().path().c_str();
    const std::string text_;
    std::atomic<bool> end_ = false;
    std::atomic<bool> seen_ = false;
    std::atomic<std::int32_t> total_ = 0;
    std::thread thread_{[this] { look(); }};
};

TEST_F(MultiThreadHost, ShowsTheHostThatItIsProcessingAndTheVertexCount) {
    const test::HostedProgress hosted;
    const Host host("processing");
    // The host may miss a whole run.
    for (int runs = 0; !host.hasSeen(); ++runs) {
        ASSERT_LT(runs, 1000);
        runTo(60, 2, bumpyBall());
        progressChannel().EndMainTask();
    }
    EXPECT_EQ(host.total(), 258);
}

}  // namespace
}  // namespace korvalite::core

// SPDX-License-Identifier: MIT
#include "host/host_monitor.h"

#include "host/progress_channel.h"
#include "support/progress_image.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <string>

namespace korvalite::core {
namespace {

// The process's own channel, open on a marker.
class HostMonitorTest : public testing::Test {
protected:
    HostMonitorTest() {
        test::writeWhole(path_, test::ProgressImage::opened().bytes());
        progressChannel().setEnabled(true);
        EXPECT_TRUE(progressChannel().openFile(path_.c_str()));
        hostMonitor().BeginMainTask();
    }
    ~HostMonitorTest() override {
        hostMonitor().EndMainTask();
        progressChannel().Close();
        progressChannel().setEnabled(false);
    }
    [[nodiscard]] test::ProgressImage onDisk() const {
        return test::ProgressImage(test::readWhole(path_));
    }

    test::ScratchFolder folder_;
    std::string path_ = folder_ / u8"scene.kvc.running";
};

TEST_F(HostMonitorTest, SubTasksReachTheMarker) {
    hostMonitor().BeginSubTask("processing", 70);
    EXPECT_EQ(onDisk().subText(), "processing");
    EXPECT_EQ(onDisk().subTotal(), 70);
    hostMonitor().SetSubTaskText(HeapString("processing (2k/9k)"));
    progressChannel().WriteRecord();
    EXPECT_EQ(onDisk().subText(), "processing (2k/9k)");
    hostMonitor().EndSubTask();
    EXPECT_EQ(onDisk().byte(test::ProgressImage::kSubActive), 0);
}

}  // namespace
}  // namespace korvalite::core

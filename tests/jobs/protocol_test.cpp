// SPDX-License-Identifier: MIT
//
// The progress file from the host's side, which the test plays.
#include "jobs/job_run.h"

#include "platform/platform.h"
#include "support/held_marker.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <set>
#include <stdexcept>
#include <string>
#include <sys/inotify.h>
#include <unistd.h>
#include <vector>

namespace korvalite::core::test {
namespace {

class ProtocolTest : public JobTest {
protected:
    ProtocolTest() {
        writeMesh("a.Vok");
        writeMesh("b.Vok");
    }
    // Runs a job with a host that reads every record and may delete the marker at any of them.
    std::vector<ProgressImage> follow(const std::string& entries,
                                      const std::function<bool(const ProgressImage&)>& seen,
                                      const ProgressImage& marker = ProgressImage::opened()) {
        writeJob("UseProgressBar=1\n" + entries);
        HeldMarker held(marker_, marker);
        RunningTool tool(job_);
        const std::vector<ProgressImage> records = held.follow(tool, seen);
        finish(tool);
        return records;
    }
    std::vector<ProgressImage> follow(const std::string& entries,
                                      const ProgressImage& marker = ProgressImage::opened()) {
        return follow(
            entries, [](const ProgressImage&) { return true; }, marker);
    }

    static bool isProcessing(const ProgressImage& image) { return image.subText() == "processing"; }
    static bool isNotProcessing(const ProgressImage& image) { return !isProcessing(image); }
};

using Steps = std::vector<std::string>;

/// The successive steps that the records show, each with its total, and "end" for the end of a main
/// task. A step must have ended before that and before another step.
Steps stepsOf(const std::vector<ProgressImage>& records) {
    Steps steps;
    std::string last;
    for (const ProgressImage& image : records) {
        std::string step = image.subText() + ' ' + std::to_string(image.subTotal());
        if (image.byte(ProgressImage::kMainActive) == 0)
            step = "end";
        else if (image.byte(ProgressImage::kSubActive) == 0)
            step = "";
        if (!step.empty() && (steps.empty() || step != steps.back())) steps.push_back(step);
        EXPECT_TRUE(step == last || step.empty() || last.empty()) << step;
        last = step;
    }
    return steps;
}

TEST_F(ProtocolTest, OneThreadShowsItsStepsUpToTheLastCollapse) {
    const auto records = follow(entry("a.Vok", "out.Vok"));
    EXPECT_EQ(stepsOf(records),
              (Steps{"Read mesh file -1", "analysing mesh -1", "processing 400", "end"}));
    for (const ProgressImage& image : records) {
        if (!isProcessing(image)) continue;
        EXPECT_EQ(image.byte(ProgressImage::kStageFlag1), 1);
        EXPECT_EQ(image.byte(ProgressImage::kStageFlag2), 1);
    }
}

TEST_F(ProtocolTest, SeveralThreadsShowReorderingAndWritingToo) {
    const auto records = follow(entry("a.Vok", "out.Vok", "NumThread=2"));
    EXPECT_EQ(stepsOf(records), (Steps{"Read mesh file -1", "analysing mesh -1", "processing 400",
                                       "reordering -1", "Writing file to disk -1", "end"}));
    for (const ProgressImage& image : records) {
        EXPECT_EQ(image.byte(ProgressImage::kStageFlag2), 0);
        if (!isProcessing(image)) continue;
        EXPECT_EQ(image.byte(ProgressImage::kStageFlag1), 1);
    }
}

TEST_F(ProtocolTest, ALevelShowsTheVerticesItRemovesOrRestores) {
    runJob(entry("a.Vok", "a.kvm", "DoReorder=0\nProgressiveMeshMinNum=100"));
    EXPECT_EQ(
        stepsOf(follow(entry("a.kvm", "out.Vok"))),
        (Steps{"Read mesh file -1", "apply decimation 100", "Writing file to disk -1", "end"}));
}

TEST_F(ProtocolTest, AFailedEntryShowsThatItWasRead) {
    EXPECT_EQ(stepsOf(follow(entry("none.Vok", "out1.Vok") + entry("b.Vok", "out2.Vok"))),
              (Steps{"Read mesh file -1", "end", "Read mesh file -1", "analysing mesh -1",
                     "processing 400", "end"}));
}

TEST_F(ProtocolTest, TheMainTextIsTheNameOfTheMesh) {
    writeMesh("big head.I.Vok");
    for (const ProgressImage& image : follow(entry("big head.I.Vok", "out.Vok"))) {
        const bool isActive = image.byte(ProgressImage::kMainActive) == 1;
        EXPECT_EQ(image.mainText(), isActive ? "big head" : "");
        EXPECT_EQ(image.byte(ProgressImage::kOpen), 1);
        EXPECT_EQ(image.byte(ProgressImage::kStopCurrent), 0);
        EXPECT_EQ(image.byte(ProgressImage::kStopAll), 0);
    }
    EXPECT_FALSE(exists("scene.kvc.running"));
    EXPECT_EQ(vertexCountOf(in("out.Vok")), kVertexCount / 2);
}

TEST_F(ProtocolTest, TheCountIsOfRemovedVertices) {
    writeMesh("c.Vok", 30);
    std::vector<std::int32_t> counts;
    bool analysed = false;
    follow(entry("c.Vok", "out.Vok"), [&](const ProgressImage& image) {
        analysed = analysed || image.subText() == "analysing mesh";
        if (isProcessing(image)) counts.push_back(image.subDone());
        // A slow host makes the next write due at once.
        const bool mayBegin = analysed && counts.empty() && image.subText().empty();
        if (mayBegin || isProcessing(image)) platform::sleepMilliseconds(510);
        return true;
    });
    EXPECT_EQ(counts, (std::vector<std::int32_t>{0, 200, 400}));
}

TEST_F(ProtocolTest, DeletingTheMarkerStopsTheBatchAfterTheCurrentEntry) {
    follow("DeleteConfigFile=1\n" + entry("a.Vok", "out1.Vok", "DeleteInputFile=1") +
               entry("b.Vok", "out2.Vok", "DeleteInputFile=1"),
           isNotProcessing);
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(files(), (std::set<std::string>{"b.Vok", "out1.Vok"}));
    EXPECT_EQ(vertexCountOf(in("out1.Vok")), kVertexCount / 2);
}

TEST_F(ProtocolTest, DeletingTheMarkerDuringTheLastEntryIsNotAnError) {
    follow(entry("a.Vok", "out.Vok"), isNotProcessing);
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(vertexCountOf(in("out.Vok")), kVertexCount / 2);
}

// However an entry ends, the tool then looks for the marker.
class MarkerDeletedInAnEntry : public ProtocolTest {
protected:
    // Deletes the marker while the first of two entries is being read.
    void expectNoSecondEntry(const std::string& first) {
        follow(first + entry("b.Vok", "next.Vok", "DeleteInputFile=1"),
               [](const ProgressImage& image) { return image.subText() != "Read mesh file"; });
        EXPECT_FALSE(exists("next.Vok"));
        EXPECT_TRUE(exists("b.Vok"));
    }
};

TEST_F(MarkerDeletedInAnEntry, WithSeveralThreadsEndsTheBatch) {
    expectNoSecondEntry(entry("a.Vok", "out.Vok", "NumThread=2"));
    EXPECT_EQ(errors_, "");
    EXPECT_TRUE(exists("out.Vok"));
}

TEST_F(MarkerDeletedInAnEntry, ThatExtractsALevelEndsTheBatch) {
    runJob(entry("a.Vok", "a.kvm"));
    expectNoSecondEntry(entry("a.kvm", "out.Vok"));
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(vertexCountOf(in("out.Vok")), kVertexCount / 2);
}

TEST_F(MarkerDeletedInAnEntry, ThatFailsEndsTheBatch) {
    expectNoSecondEntry(entry("none.Vok", "out.Vok"));
    EXPECT_EQ(errors_, failureBox(in("none.Vok")));
}

TEST_F(ProtocolTest, StopAllSetBeforehandStartsNoEntry) {
    ProgressImage image = ProgressImage::opened();
    image.setByte(ProgressImage::kStopAll, 1);
    writeMarker(image);
    runJob("UseProgressBar=1\nDeleteConfigFile=1\n" +
           entry("a.Vok", "out.Vok", "DeleteInputFile=1"));
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(files(), (std::set<std::string>{"a.Vok", "b.Vok"}));
}

TEST_F(ProtocolTest, StopCurrentSetBeforehandEndsOnlyTheFirstDecimation) {
    ProgressImage image = ProgressImage::opened();
    image.setByte(ProgressImage::kStopCurrent, 1);
    writeMarker(image);
    runJob("UseProgressBar=1\n" + entry("a.Vok", "out1.Vok") + entry("b.Vok", "out2.Vok"));
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(vertexCountOf(in("out1.Vok")), kVertexCount);
    EXPECT_EQ(vertexCountOf(in("out2.Vok")), kVertexCount / 2);
}

TEST_F(ProtocolTest, WithoutTheProgressBarStopBytesAreNotRead) {
    ProgressImage image = ProgressImage::opened();
    image.setByte(ProgressImage::kStopAll, 1);
    image.setByte(ProgressImage::kStopCurrent, 1);
    writeMarker(image);
    runJob(entry("a.Vok", "out.Vok"));
    EXPECT_EQ(vertexCountOf(in("out.Vok")), kVertexCount / 2);
}

// The names that appear in a folder during the lifetime of this object, however briefly.
class NewNames {
public:
    explicit NewNames(const std::string& folder) : queue_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
        if (inotify_add_watch(queue_, folder.c_str(), IN_CREATE | IN_MOVED_TO) < 0)
            throw std::runtime_error("cannot watch " + folder);
    }
    ~NewNames() { close(queue_); }
    NewNames(const NewNames&) = delete;
    NewNames& operator=(const NewNames&) = delete;

    std::set<std::string> seen() const {
        std::set<std::string> names;
        std::array<char, 65536> events;
        const ssize_t size = read(queue_, events.data(), events.size());
        for (ssize_t at = 0; at < size;) {
            inotify_event event;
            std::memcpy(&event, events.data() + at, sizeof event);
            names.emplace(events.data() + at + sizeof event);
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
        return names;
    }

private:
    int queue_;
};

TEST_F(ProtocolTest, WithoutAMarkerTheJobRunsAndCreatesNone) {
    writeJob("UseProgressBar=1\n" + entry("a.Vok", "out.Vok"));
    const NewNames names(folder_.path());
    run();
    EXPECT_EQ(names.seen(), (std::set<std::string>{"VSplitList.data", "out.Vok"}));
    EXPECT_EQ(vertexCountOf(in("out.Vok")), kVertexCount / 2);
}

TEST_F(ProtocolTest, ABackslashSeparatesFoldersOfTheJobPathToo) {
    std::filesystem::create_directory(pathOfUtf8(in("jobs")));
    writeWhole(in("jobs\\scene.kvc"), entry("a.Vok", "out.Vok"));
    const NewNames names(in("jobs"));
    run(in("jobs\\scene.kvc"));
    EXPECT_EQ(names.seen(), std::set<std::string>{"VSplitList.data"});
}

TEST_F(ProtocolTest, WithoutTheProgressBarTheMarkerIsDeletedFirst) {
    writeMesh("scene.kvc.running");
    std::filesystem::create_symlink(pathOfUtf8(marker_), pathOfUtf8(in("link.Vok")));
    runJob(entry("link.Vok", "out.Vok"));
    EXPECT_EQ(errors_, failureBox(in("link.Vok")));
    EXPECT_FALSE(exists("out.Vok"));
}

TEST_F(ProtocolTest, AnUnopenedMarkerIsNeverWritten) {
    EXPECT_TRUE(follow(entry("a.Vok", "out.Vok"), ProgressImage()).empty());
    EXPECT_EQ(vertexCountOf(in("out.Vok")), kVertexCount / 2);
    EXPECT_FALSE(exists("scene.kvc.running"));
}

TEST_F(ProtocolTest, StopCurrentInAnUnopenedMarkerEndsEveryDecimation) {
    ProgressImage image;
    image.setByte(ProgressImage::kStopCurrent, 1);
    writeMarker(image);
    runJob("UseProgressBar=1\n" + entry("a.Vok", "out1.Vok") + entry("b.Vok", "out2.Vok"));
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(vertexCountOf(in("out1.Vok")), kVertexCount);
    EXPECT_EQ(vertexCountOf(in("out2.Vok")), kVertexCount);
}

TEST_F(ProtocolTest, AShortMarkerGrowsToTheWholeRecord) {
    const auto records = follow(entry("a.Vok", "out.Vok"), ProgressImage("\x01"));
    ASSERT_FALSE(records.empty());
    EXPECT_TRUE(records.front().isWhole());
    EXPECT_EQ(records.front().mainText(), "a");
}

TEST_F(ProtocolTest, AMainTaskTheHostLeftOpenDoesNoHarm) {
    writeMarker(ProgressImage(std::string(174, '\xFF') + std::string(2, '\0')));
    runJob("UseProgressBar=1\n" + entry("a.Vok", "out.Vok"));
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(vertexCountOf(in("out.Vok")), kVertexCount / 2);
}

}  // namespace
}  // namespace korvalite::core::test

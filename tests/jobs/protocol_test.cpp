// SPDX-License-Identifier: MIT
//
// The host's side of the progress file, played by the test.
#include "jobs/job_run.h"

#include "platform/platform.h"

#include <algorithm>
#include <functional>

namespace korvalite::test {
namespace {

class ProtocolTest : public JobTest {
protected:
    // Takes long enough in every build for the record to be written again and again.
    static constexpr std::uint32_t kBigSide = 600;
    static constexpr std::int64_t kBigVertexCount = std::int64_t{kBigSide} * kBigSide;

    static const std::string& bigMesh() {
        static const std::string bytes = bumpyGrid(kBigSide).bytes();
        return bytes;
    }

    // Reads the record over and over until the tool ends or `enough` says so.
    std::vector<ProgressImage> watch(RunningTool& tool,
                                     const std::function<bool(const ProgressImage&)>& enough) {
        std::vector<ProgressImage> seen;
        while (tool.isRunning()) {
            const ProgressImage image(readWhole(marker_));
            const bool halfWritten = readWhole(marker_) != image.bytes();
            if (!halfWritten && image.isWhole() &&
                (seen.empty() || seen.back().bytes() != image.bytes())) {
                seen.push_back(image);
                if (enough(image)) break;
            }
            platform::sleepMilliseconds(1);
        }
        return seen;
    }

    static bool isProcessing(const ProgressImage& image) { return image.subText() == "processing"; }
};

/// The place of a step in the order of an entry's steps.
int stepNumber(const std::string& subText) {
    const std::vector<std::string> steps{"Read mesh file", "analysing mesh", "processing"};
    const auto found = std::find(steps.begin(), steps.end(), subText);
    return found == steps.end() ? -1 : static_cast<int>(found - steps.begin());
}

TEST_F(ProtocolTest, TheRecordAdvancesThroughItsTextsAndCounts) {
    writeWhole(in("big head.I.Vok"), bigMesh());
    writeMarker();
    writeJob("UseProgressBar=1\n" + entry("big head.I.Vok", "out.Vok"));
    RunningTool tool(job_);
    // The count is written about twice a second: on a fast machine the loop might end before.
    bool suspended = false;
    const std::vector<ProgressImage> seen = watch(tool, [&](const ProgressImage& image) {
        if (isProcessing(image) && !suspended) {
            tool.suspendFor(600);
            suspended = true;
        }
        return false;
    });
    finish(tool);

    int step = 0;
    std::int32_t done = 0;
    std::set<std::int32_t> counts;
    bool analysed = false;
    bool flagged = false;
    for (const ProgressImage& image : seen) {
        EXPECT_EQ(image.byte(ProgressImage::kStopCurrent), 0);
        EXPECT_EQ(image.byte(ProgressImage::kStopAll), 0);
        if (image.byte(ProgressImage::kMainActive) == 0) {
            EXPECT_EQ(image.mainText(), "");
            EXPECT_EQ(image.subText(), "");
            continue;
        }
        EXPECT_EQ(image.byte(ProgressImage::kOpen), 1);
        EXPECT_EQ(image.mainText(), "big head");
        if (image.byte(ProgressImage::kSubActive) == 0) {
            EXPECT_EQ(image.subText(), "");
            EXPECT_EQ(image.subTotal(), -1);
            continue;
        }
        EXPECT_GE(stepNumber(image.subText()), step);
        step = stepNumber(image.subText());
        analysed = analysed || image.subText() == "analysing mesh";
        if (image.subText() != "processing") {
            EXPECT_EQ(image.subTotal(), -1);
            EXPECT_EQ(image.subDone(), 0);
            continue;
        }
        EXPECT_EQ(image.subTotal(), kBigVertexCount);
        EXPECT_GE(image.subDone(), done);
        EXPECT_LE(image.subDone(), kBigVertexCount / 2);
        done = image.subDone();
        counts.insert(done);
        flagged = image.byte(ProgressImage::kStageFlag1) == 1 &&
                  image.byte(ProgressImage::kStageFlag2) == 1;
        EXPECT_TRUE(flagged);
    }
    EXPECT_TRUE(analysed);
    EXPECT_TRUE(flagged);
    EXPECT_GE(counts.size(), 2U);
    EXPECT_FALSE(exists("scene.kvc.running"));
    EXPECT_EQ(vertexCountOf(in("out.Vok")), kBigVertexCount / 2);
}

TEST_F(ProtocolTest, DeletingTheMarkerStopsTheBatchAfterTheEntryInProgress) {
    writeWhole(in("big.Vok"), bigMesh());
    writeMesh("b.Vok");
    writeMarker();
    writeJob("UseProgressBar=1\nDeleteConfigFile=1\n" +
             entry("big.Vok", "out1.Vok", "DeleteInputFile=1") +
             entry("b.Vok", "out2.Vok", "DeleteInputFile=1"));
    RunningTool tool(job_);
    const std::vector<ProgressImage> seen = watch(tool, isProcessing);
    ASSERT_FALSE(seen.empty());
    ASSERT_TRUE(isProcessing(seen.back()));
    std::filesystem::remove(pathOfUtf8(marker_));
    finish(tool);
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(files(), (std::set<std::string>{"b.Vok", "out1.Vok"}));
    EXPECT_EQ(vertexCountOf(in("out1.Vok")), kBigVertexCount / 2);
}

TEST_F(ProtocolTest, DeletingTheMarkerDuringTheLastEntryIsNoError) {
    writeWhole(in("big.Vok"), bigMesh());
    writeMarker();
    writeJob("UseProgressBar=1\n" + entry("big.Vok", "out.Vok"));
    RunningTool tool(job_);
    ASSERT_FALSE(watch(tool, isProcessing).empty());
    std::filesystem::remove(pathOfUtf8(marker_));
    finish(tool);
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(vertexCountOf(in("out.Vok")), kBigVertexCount / 2);
}

TEST_F(ProtocolTest, StopAllSetBeforehandStartsNoEntry) {
    writeMesh("a.Vok");
    ProgressImage image = ProgressImage::opened();
    image.setByte(ProgressImage::kStopAll, 1);
    writeMarker(image);
    runJob("UseProgressBar=1\nDeleteConfigFile=1\n" +
           entry("a.Vok", "out.Vok", "DeleteInputFile=1"));
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(files(), std::set<std::string>{"a.Vok"});
}

TEST_F(ProtocolTest, StopCurrentSetBeforehandEndsTheFirstDecimationAlone) {
    writeMesh("a.Vok");
    writeMesh("b.Vok");
    ProgressImage image = ProgressImage::opened();
    image.setByte(ProgressImage::kStopCurrent, 1);
    writeMarker(image);
    runJob("UseProgressBar=1\n" + entry("a.Vok", "out1.Vok") + entry("b.Vok", "out2.Vok"));
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(vertexCountOf(in("out1.Vok")), kVertexCount);
    EXPECT_EQ(vertexCountOf(in("out2.Vok")), kVertexCount / 2);
}

TEST_F(ProtocolTest, WithoutTheProgressBarStopBytesAreNotRead) {
    writeMesh("a.Vok");
    ProgressImage image = ProgressImage::opened();
    image.setByte(ProgressImage::kStopAll, 1);
    image.setByte(ProgressImage::kStopCurrent, 1);
    writeMarker(image);
    runJob(entry("a.Vok", "out.Vok"));
    EXPECT_EQ(vertexCountOf(in("out.Vok")), kVertexCount / 2);
}

TEST_F(ProtocolTest, WithoutAMarkerTheJobRunsAndMakesNone) {
    writeMesh("a.Vok");
    writeJob("UseProgressBar=1\n" + entry("a.Vok", "out.Vok"));
    RunningTool tool(job_);
    const auto seen = watch(tool, [](const ProgressImage&) { return true; });
    finish(tool);
    EXPECT_TRUE(seen.empty());
    EXPECT_EQ(files(), (std::set<std::string>{"a.Vok", "out.Vok", "scene.kvc"}));
    EXPECT_EQ(vertexCountOf(in("out.Vok")), kVertexCount / 2);
}

TEST_F(ProtocolTest, AMarkerThatIsNotOpenIsNeverWritten) {
    writeMesh("a.Vok");
    writeMarker(ProgressImage());
    writeJob("UseProgressBar=1\n" + entry("a.Vok", "out.Vok"));
    RunningTool tool(job_);
    const auto seen = watch(
        tool, [](const ProgressImage& image) { return image.bytes() != ProgressImage().bytes(); });
    finish(tool);
    EXPECT_LE(seen.size(), 1U);
    EXPECT_EQ(vertexCountOf(in("out.Vok")), kVertexCount / 2);
    EXPECT_FALSE(exists("scene.kvc.running"));
}

TEST_F(ProtocolTest, AShortMarkerIsGrownToTheWholeRecord) {
    writeWhole(in("big.Vok"), bigMesh());
    writeWhole(marker_, "\x01");
    writeJob("UseProgressBar=1\n" + entry("big.Vok", "out.Vok", "DecimationTargetPourcent=99"));
    RunningTool tool(job_);
    const auto seen = watch(tool, [](const ProgressImage&) { return true; });
    finish(tool);
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ(seen.front().mainText(), "big");
}

TEST_F(ProtocolTest, AMainTaskThatTheHostLeftOpenIsNoHindrance) {
    writeMesh("a.Vok");
    writeMarker(ProgressImage(std::string(174, '\xFF') + std::string(2, '\0')));
    runJob("UseProgressBar=1\n" + entry("a.Vok", "out.Vok"));
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(vertexCountOf(in("out.Vok")), kVertexCount / 2);
}

}  // namespace
}  // namespace korvalite::test

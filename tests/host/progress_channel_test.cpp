// SPDX-License-Identifier: MIT
#include "host/progress_channel.h"

#include "platform/platform.h"
#include "support/progress_image.h"
#include "support/scratch_folder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace korvalite::core {
namespace {

using test::ProgressImage;

class ProgressChannelTest : public testing::Test {
protected:
    void writeMarker(const std::string& bytes) const { test::writeWhole(path_, bytes); }
    void openOnMarker() {
        ProgressImage image;
        image.setByte(ProgressImage::kOpen, 1);
        writeMarker(image.bytes());
        channel_.setEnabled(true);
        ASSERT_TRUE(channel_.openFile(path_.c_str()));
    }
    ProgressImage onDisk() const { return ProgressImage(test::readWhole(path_)); }
    bool markerExists() const { return platform::exists(path_.c_str()); }
    void deleteMarker() const { ASSERT_TRUE(platform::deleteFile(path_.c_str())); }

    test::ScratchFolder folder_;
    std::string path_ = folder_ / u8"scene.kvc.running";
    ProgressChannel channel_;
};

TEST(ProgressRecord, TheImageHasEachFieldAtItsOffset) {
    ProgressRecord record;
    record.open = 1;
    record.mainActive = 2;
    record.subActive = 3;
    record.mainText[0] = 'm';
    record.subText[0] = 's';
    record.reserved = 4;
    record.subTotal = 0x01020304;
    record.subDone = -1;
    record.stageFlag1 = 5;
    record.stageFlag2 = 6;
    record.stopCurrent = 7;
    record.stopAll = 8;
    const ProgressRecord::Image image = record.encode();
    ASSERT_EQ(image.size(), 176U);
    EXPECT_EQ(image[0], 1);
    EXPECT_EQ(image[1], 2);
    EXPECT_EQ(image[2], 3);
    EXPECT_EQ(image[3], 'm');
    EXPECT_EQ(image[83], 's');
    EXPECT_EQ(image[163], 4);
    EXPECT_EQ(image[164], 4);
    EXPECT_EQ(image[165], 3);
    EXPECT_EQ(image[166], 2);
    EXPECT_EQ(image[167], 1);
    for (std::size_t i = 168; i < 172; ++i)
        EXPECT_EQ(image[i], 255);
    EXPECT_EQ(image[172], 5);
    EXPECT_EQ(image[173], 6);
    EXPECT_EQ(image[174], 7);
    EXPECT_EQ(image[175], 8);
}

TEST(ProgressRecord, DecodingAndEncodingAnImageRestoresIt) {
    ProgressRecord::Image image{};
    for (std::size_t i = 0; i < image.size(); ++i)
        image[i] = static_cast<unsigned char>(i * 37);
    EXPECT_EQ(ProgressRecord::decode(image).encode(), image);
}

TEST_F(ProgressChannelTest, RefusesEveryTaskWhenClosed) {
    EXPECT_FALSE(channel_.BeginMainTask("mesh"));
    EXPECT_FALSE(channel_.BeginSubTask("processing", 5));
    EXPECT_FALSE(channel_.SetSubTaskProgress(1));
    EXPECT_FALSE(channel_.EndSubTask());
    EXPECT_FALSE(channel_.EndMainTask());
    EXPECT_FALSE(channel_.Close());
}

TEST_F(ProgressChannelTest, WithoutAFileTasksChangeOnlyTheRecord) {
    channel_.openWithoutFile();
    EXPECT_TRUE(channel_.BeginMainTask("mesh"));
    EXPECT_STREQ(channel_.record().mainText.data(), "mesh");
    EXPECT_TRUE(channel_.BeginSubTask("processing", 5));
    EXPECT_TRUE(channel_.SetSubTaskProgress(3));
    EXPECT_EQ(channel_.record().subDone, 3);
    EXPECT_TRUE(channel_.ReadRecord());
    EXPECT_TRUE(channel_.WriteRecord());
    EXPECT_TRUE(channel_.CheckFilePresent());
    EXPECT_TRUE(channel_.EndMainTask());
    EXPECT_FALSE(channel_.stopAllRequested());
    EXPECT_FALSE(markerExists());
}

TEST_F(ProgressChannelTest, TasksNestOneDeep) {
    openOnMarker();
    EXPECT_FALSE(channel_.BeginSubTask("too early", 1));
    EXPECT_TRUE(channel_.BeginMainTask("first"));
    EXPECT_FALSE(channel_.BeginMainTask("second"));
    EXPECT_TRUE(channel_.BeginSubTask("one", 1));
    EXPECT_FALSE(channel_.BeginSubTask("two", 2));
    EXPECT_EQ(onDisk().mainText(), "first");
    EXPECT_EQ(onDisk().subText(), "one");
    EXPECT_TRUE(channel_.EndSubTask());
    EXPECT_FALSE(channel_.EndSubTask());
    EXPECT_TRUE(channel_.BeginSubTask("two", 2));
    EXPECT_EQ(onDisk().subText(), "two");
}

TEST_F(ProgressChannelTest, WritesEveryBeginAndEndAtOnce) {
    openOnMarker();
    channel_.BeginMainTask("mesh");
    EXPECT_EQ(onDisk().byte(ProgressImage::kMainActive), 1);
    EXPECT_EQ(onDisk().mainText(), "mesh");
    channel_.BeginSubTask("Read mesh file", -1);
    EXPECT_EQ(onDisk().byte(ProgressImage::kSubActive), 1);
    EXPECT_EQ(onDisk().subTotal(), -1);
    channel_.EndSubTask();
    EXPECT_EQ(onDisk().byte(ProgressImage::kSubActive), 0);
    EXPECT_EQ(onDisk().subText(), "");
    channel_.BeginSubTask("processing", 1000);
    EXPECT_EQ(onDisk().subTotal(), 1000);
    EXPECT_EQ(onDisk().subDone(), 0);
    channel_.EndMainTask();
    EXPECT_EQ(onDisk().byte(ProgressImage::kOpen), 1);
    EXPECT_EQ(onDisk().byte(ProgressImage::kMainActive), 0);
    EXPECT_EQ(onDisk().byte(ProgressImage::kSubActive), 0);
    EXPECT_EQ(onDisk().mainText(), "");
    EXPECT_EQ(onDisk().subText(), "");
    EXPECT_EQ(onDisk().subTotal(), -1);
    EXPECT_EQ(onDisk().subDone(), 0);
}

TEST_F(ProgressChannelTest, TruncatesATextTo79BytesAndAZero) {
    openOnMarker();
    const std::string text(100, 'x');
    channel_.BeginMainTask(text.c_str());
    channel_.BeginSubTask(text.c_str(), 1);
    EXPECT_EQ(onDisk().mainText(), std::string(79, 'x'));
    EXPECT_EQ(onDisk().byte(3 + 79), 0);
    EXPECT_EQ(onDisk().subText(), std::string(79, 'x'));
    EXPECT_EQ(onDisk().byte(83 + 79), 0);
}

TEST_F(ProgressChannelTest, TruncatesATextBetweenTwoCharacters) {
    openOnMarker();
    const std::string umlaut = "\xC3\xA4";
    const std::string kept(78, 'x');
    channel_.BeginMainTask((kept + umlaut).c_str());
    EXPECT_EQ(onDisk().mainText(), kept);
    EXPECT_EQ(onDisk().byte(3 + 78), 0);
    channel_.BeginSubTask((kept.substr(1) + umlaut + 'x').c_str(), 1);
    EXPECT_EQ(onDisk().subText(), kept.substr(1) + umlaut);
    channel_.EndSubTask();
    channel_.BeginSubTask("processing", 1);
    channel_.SetSubTaskText((kept + umlaut).c_str());
    channel_.WriteRecord();
    EXPECT_EQ(onDisk().subText(), kept);
}

TEST_F(ProgressChannelTest, TruncatesATextThatIsNotUtf8At79Bytes) {
    openOnMarker();
    std::string text(78, 'x');
    text += "\xC3\xA4\xFF";
    channel_.BeginMainTask(text.c_str());
    EXPECT_EQ(onDisk().mainText(), text.substr(0, 79));
}

TEST_F(ProgressChannelTest, AShorterTextLeavesNothingOfTheLongerOne) {
    openOnMarker();
    channel_.BeginMainTask("a long text");
    channel_.EndMainTask();
    channel_.BeginMainTask("b");
    for (std::size_t i = 4; i < 83; ++i)
        EXPECT_EQ(onDisk().byte(i), 0) << i;
}

TEST_F(ProgressChannelTest, AShorterNewTextReplacesAllOfTheOld) {
    openOnMarker();
    channel_.BeginMainTask("mesh");
    channel_.BeginSubTask("a long text", 1);
    channel_.SetSubTaskText("b");
    channel_.WriteRecord();
    EXPECT_EQ(onDisk().byte(83), 'b');
    for (std::size_t i = 84; i < 163; ++i)
        EXPECT_EQ(onDisk().byte(i), 0) << i;
}

TEST_F(ProgressChannelTest, ProgressIsWrittenAtMostTwiceASecond) {
    openOnMarker();
    channel_.BeginMainTask("mesh");
    channel_.BeginSubTask("processing", 100);
    const std::int64_t begun = platform::clockMilliseconds();
    EXPECT_TRUE(channel_.SetSubTaskProgress(1));
    EXPECT_TRUE(channel_.SetSubTaskProgress(2));
    const int seen = onDisk().subDone();
    if (platform::clockMilliseconds() - begun < 400) {
        EXPECT_EQ(seen, 0);
    }
    EXPECT_EQ(channel_.record().subDone, 2);
    platform::sleepMilliseconds(510);
    channel_.SetSubTaskProgress(3);
    EXPECT_EQ(onDisk().subDone(), 3);
}

TEST_F(ProgressChannelTest, PendingProgressIsWrittenWithTheNextWrite) {
    openOnMarker();
    channel_.BeginMainTask("mesh");
    channel_.BeginSubTask("processing", 100);
    channel_.SetSubTaskProgress(7);
    channel_.WriteRecord();
    EXPECT_EQ(onDisk().subDone(), 7);
}

TEST_F(ProgressChannelTest, AFailedAttemptCountsAsAWrite) {
    openOnMarker();
    channel_.BeginMainTask("mesh");
    platform::sleepMilliseconds(510);  // a write is due by now
    deleteMarker();
    EXPECT_FALSE(channel_.WriteRecord());
    EXPECT_TRUE(channel_.BeginSubTask("processing", 100));
    writeMarker(std::string(176, '\0'));
    const std::int64_t begun = platform::clockMilliseconds();
    channel_.SetSubTaskProgress(5);
    const int seen = onDisk().subDone();
    if (platform::clockMilliseconds() - begun < 400) {
        EXPECT_EQ(seen, 0);
    }
}

TEST_F(ProgressChannelTest, WritingNeverCreatesTheFile) {
    openOnMarker();
    deleteMarker();
    channel_.BeginMainTask("mesh");
    EXPECT_FALSE(markerExists());
}

TEST_F(ProgressChannelTest, BytesAfterTheRecordAreKept) {
    ProgressImage image;
    image.setByte(ProgressImage::kOpen, 1);
    writeMarker(image.bytes() + "tail");
    ASSERT_TRUE(channel_.openFile(path_.c_str()));
    channel_.BeginMainTask("mesh");
    EXPECT_EQ(test::readWhole(path_).substr(176), "tail");
}

TEST_F(ProgressChannelTest, TheReservedByteIsKeptAsRead) {
    ProgressImage image;
    image.setByte(ProgressImage::kOpen, 1);
    image.setByte(ProgressImage::kReserved, 0xAB);
    writeMarker(image.bytes());
    ASSERT_TRUE(channel_.openFile(path_.c_str()));
    channel_.BeginMainTask("mesh");
    channel_.EndMainTask();
    EXPECT_EQ(onDisk().byte(ProgressImage::kReserved), 0xAB);
}

TEST_F(ProgressChannelTest, TheReservedByteSurvivesTheClose) {
    ProgressImage image;
    image.setByte(ProgressImage::kOpen, 1);
    image.setByte(ProgressImage::kReserved, 0xAB);
    writeMarker(image.bytes());
    ASSERT_TRUE(channel_.openFile(path_.c_str()));
    ASSERT_TRUE(channel_.Close());
    EXPECT_EQ(channel_.record().reserved, 0xAB);
}

TEST_F(ProgressChannelTest, FillsAShortFileWithZeros) {
    writeMarker("\x01");
    ASSERT_TRUE(channel_.openFile(path_.c_str()));
    EXPECT_EQ(channel_.record().open, 1);
    EXPECT_EQ(channel_.record().mainText[0], '\0');
    EXPECT_EQ(channel_.record().stopAll, 0);
    channel_.BeginMainTask("mesh");
    EXPECT_EQ(test::readWhole(path_).size(), 176U);
}

TEST_F(ProgressChannelTest, AShortFileLeavesTheRestOfTheRecord) {
    openOnMarker();
    channel_.BeginMainTask("mesh");
    writeMarker("\x01");
    ASSERT_TRUE(channel_.ReadRecord());
    EXPECT_EQ(channel_.record().mainActive, 1);
    EXPECT_STREQ(channel_.record().mainText.data(), "mesh");
}

TEST_F(ProgressChannelTest, AnEmptyFileLeavesTheChannelClosed) {
    writeMarker("");
    ASSERT_TRUE(channel_.openFile(path_.c_str()));
    EXPECT_EQ(channel_.record().open, 0);
    EXPECT_FALSE(channel_.BeginMainTask("mesh"));
}

TEST_F(ProgressChannelTest, RefusesAMissingFileOrAFolder) {
    EXPECT_FALSE(channel_.openFile(path_.c_str()));
    std::filesystem::create_directory(test::pathOfUtf8(path_));
    EXPECT_FALSE(channel_.openFile(path_.c_str()));
    EXPECT_TRUE(channel_.path().isNull());
}

TEST_F(ProgressChannelTest, AnOpenChannelTakesNoSecondFile) {
    openOnMarker();
    const std::string other = folder_ / u8"other.kvc.running";
    test::writeWhole(other, onDisk().bytes());
    EXPECT_FALSE(channel_.openFile(other.c_str()));
    EXPECT_EQ(channel_.path().view(), path_);
}

TEST_F(ProgressChannelTest, OpeningWithoutAFileKeepsAnOpenFile) {
    openOnMarker();
    channel_.openWithoutFile();
    EXPECT_EQ(channel_.path().view(), path_);
}

TEST_F(ProgressChannelTest, TheHostsStopBytesCountOnlyWhileEnabled) {
    ProgressImage image;
    image.setByte(ProgressImage::kOpen, 1);
    image.setByte(ProgressImage::kStopCurrent, 1);
    writeMarker(image.bytes());
    ASSERT_TRUE(channel_.openFile(path_.c_str()));
    EXPECT_FALSE(channel_.stopRequested());
    channel_.setEnabled(true);
    EXPECT_TRUE(channel_.stopRequested());
    EXPECT_FALSE(channel_.stopAllRequested());
}

TEST_F(ProgressChannelTest, StopBytesWrittenLaterAreNotSeen) {
    openOnMarker();
    channel_.BeginMainTask("mesh");
    ProgressImage image = onDisk();
    image.setByte(ProgressImage::kStopAll, 1);
    writeMarker(image.bytes());
    channel_.EndMainTask();
    EXPECT_FALSE(channel_.stopRequested());
    EXPECT_EQ(onDisk().byte(ProgressImage::kStopAll), 0);
}

TEST_F(ProgressChannelTest, EndingTheMainTaskClearsStopCurrentAndStageFlags) {
    ProgressImage image;
    image.setByte(ProgressImage::kOpen, 1);
    image.setByte(ProgressImage::kStopCurrent, 1);
    writeMarker(image.bytes());
    channel_.setEnabled(true);
    ASSERT_TRUE(channel_.openFile(path_.c_str()));
    channel_.BeginMainTask("mesh");
    channel_.raiseStageFlags();
    channel_.WriteRecord();
    EXPECT_EQ(onDisk().byte(ProgressImage::kStageFlag1), 1);
    EXPECT_EQ(onDisk().byte(ProgressImage::kStageFlag2), 1);
    EXPECT_TRUE(channel_.stopRequested());
    channel_.EndMainTask();
    EXPECT_FALSE(channel_.stopRequested());
    EXPECT_EQ(onDisk().byte(ProgressImage::kStageFlag1), 0);
    EXPECT_EQ(onDisk().byte(ProgressImage::kStageFlag2), 0);
    EXPECT_EQ(onDisk().byte(ProgressImage::kStopCurrent), 0);
}

TEST_F(ProgressChannelTest, StageFlagsAreRaisedOnlyWhileEnabled) {
    channel_.openWithoutFile();
    channel_.raiseStageFlags();
    EXPECT_EQ(channel_.record().stageFlag1, 0);
    channel_.setEnabled(true);
    channel_.raiseStageFlags();
    EXPECT_EQ(channel_.record().stageFlag1, 1);
    EXPECT_EQ(channel_.record().stageFlag2, 1);
}

TEST_F(ProgressChannelTest, ADeletedFileStopsTheBatchAfterTheMainTask) {
    openOnMarker();
    channel_.BeginMainTask("mesh");
    deleteMarker();
    EXPECT_FALSE(channel_.stopAllRequested());
    const std::int64_t begun = platform::clockMilliseconds();
    EXPECT_TRUE(channel_.EndMainTask());
    EXPECT_GE(platform::clockMilliseconds() - begun, 500);
    EXPECT_TRUE(channel_.stopAllRequested());
    EXPECT_FALSE(markerExists());
}

TEST_F(ProgressChannelTest, EndMainTaskWithoutATaskDoesNotLookForTheFile) {
    openOnMarker();
    deleteMarker();
    const std::int64_t begun = platform::clockMilliseconds();
    EXPECT_FALSE(channel_.EndMainTask());
    EXPECT_LT(platform::clockMilliseconds() - begun, 400);
    EXPECT_FALSE(channel_.stopAllRequested());
}

TEST_F(ProgressChannelTest, ClosingDeletesTheFileAndClearsTheRecord) {
    openOnMarker();
    channel_.BeginMainTask("mesh");
    EXPECT_TRUE(channel_.Close());
    EXPECT_FALSE(markerExists());
    EXPECT_TRUE(channel_.path().isNull());
    EXPECT_EQ(channel_.record().encode(), ProgressRecord().encode());
    EXPECT_FALSE(channel_.Close());
}

TEST_F(ProgressChannelTest, ClosingWithoutTheFileIsNotAnError) {
    openOnMarker();
    deleteMarker();
    EXPECT_TRUE(channel_.Close());
}

TEST_F(ProgressChannelTest, AFileThatVanishesBeforeTheReadClosesTheChannel) {
    openOnMarker();
    deleteMarker();
    EXPECT_FALSE(channel_.ReadRecord());
    EXPECT_EQ(channel_.record().open, 0);
}

}  // namespace
}  // namespace korvalite::core

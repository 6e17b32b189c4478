// SPDX-License-Identifier: MIT
#include "shell/job_file.h"

#include "shell/describe_job.h"
#include "support/scratch_folder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <limits>
#include <string>

namespace korvalite::core {
namespace {

using namespace std::string_literals;

class JobFileTest : public testing::Test {
protected:
    bool load(const std::string& text) {
        const std::string path = folder_ / u8"job.kvc";
        test::writeWhole(path, text);
        return LoadJobFile(path.c_str(), job_);
    }
    /// The settings after one line inside an entry.
    BatchSettings inEntry(const std::string& line) {
        ResetJobConfig(job_);
        EXPECT_TRUE(load("StartBatch\n" + line + "\nEndBatch\n"));
        return job_.batchList.front().settings;
    }
    JobConfig outside(const std::string& line) {
        ResetJobConfig(job_);
        EXPECT_TRUE(load(line + "\n"));
        EXPECT_TRUE(job_.batchList.empty());
        return std::move(job_);
    }
    std::size_t entryCount() const {
        return static_cast<std::size_t>(
            std::distance(job_.batchList.begin(), job_.batchList.end()));
    }
    std::string described() const { return test::describe(job_); }

    test::ScratchFolder folder_;
    JobConfig job_;
    const std::string defaults_ = test::describe(JobConfig());
};

std::string text(const HeapString& string) {
    return std::string(string.view());
}

TEST(ParseBool, TakesFourWordsAsNoAndAllElseAsYes) {
    for (const char* no : {"No", "NO", "no", "0", "False", "FALSE", "#f", "#F"})
        EXPECT_FALSE(ParseBool(no)) << no;
    for (const char* yes : {"", "Yes", "1", "true", "00", "No ", "nope", "f", "-"})
        EXPECT_TRUE(ParseBool(yes)) << yes;
    EXPECT_TRUE(ParseBool(HeapString()));
}

TEST_F(JobFileTest, RefusesMissingFilesFoldersAndEmptyFiles) {
    EXPECT_FALSE(LoadJobFile((folder_ / u8"none.kvc").c_str(), job_));
    EXPECT_FALSE(LoadJobFile(folder_.path().c_str(), job_));
    EXPECT_FALSE(LoadJobFile(HeapString(), job_));
    EXPECT_FALSE(load(""));
    EXPECT_EQ(described(), defaults_);
}

TEST_F(JobFileTest, AFileOfBlanksHasNoEntries) {
    EXPECT_TRUE(load("  \t \n \r\n   "));
    EXPECT_EQ(described(), defaults_);
    EXPECT_EQ(entryCount(), 0U);
}

TEST_F(JobFileTest, AKeyAloneTakesEffectButNotWithAnEmptyValue) {
    EXPECT_TRUE(inEntry("DoReorder").DoReorder);
    EXPECT_TRUE(inEntry("DoReorder=No\nDoReorder").DoReorder);
    EXPECT_FALSE(inEntry("DoReorder=No\nDoReorder=").DoReorder);
    EXPECT_FALSE(inEntry("DoReorder=No\nDoReorder := \t").DoReorder);
    EXPECT_TRUE(inEntry("FreezeBorder").FreezeBorder);
}

TEST_F(JobFileTest, TheLongerKeyWins) {
    const BatchSettings settings = inEntry("UseVtxColorsCoef=25");
    EXPECT_EQ(settings.UseVtxColorsCoef, 25.0F);
    EXPECT_FALSE(settings.UseVtxColors);
    EXPECT_TRUE(inEntry("UseVtxColors=1").UseVtxColors);
}

TEST_F(JobFileTest, NoKeyIsHiddenByAnEarlierPrefix) {
    const auto keys = keyTable();
    for (std::size_t longer = 0; longer < keys.size(); ++longer) {
        for (std::size_t other = longer + 1; other < keys.size(); ++other) {
            const std::string key = keys[other].key;
            EXPECT_NE(std::string(keys[longer].key).substr(0, key.size()), key);
        }
    }
}

TEST_F(JobFileTest, SymmetryAcceptsOnlyItsWords) {
    EXPECT_EQ(inEntry("Symmetry=no").Symmetry, kSymmetryNone);
    EXPECT_EQ(inEntry("Symmetry=X").Symmetry, kSymmetryX);
    EXPECT_EQ(inEntry("Symmetry=Y").Symmetry, 2);
    EXPECT_EQ(inEntry("Symmetry=z").Symmetry, kSymmetryZ);
    EXPECT_EQ(inEntry("Symmetry=AUTO").Symmetry, kSymmetryAuto);
    EXPECT_EQ(inEntry("Symmetry=yes").Symmetry, kSymmetryNone);
    EXPECT_EQ(inEntry("Symmetry=z\nSymmetry=1").Symmetry, kSymmetryZ);
}

TEST_F(JobFileTest, UseMaskIsAWordAndNotABool) {
    EXPECT_TRUE(inEntry("UseMask=yes").UseMask);
    EXPECT_FALSE(inEntry("UseMask=YES\nUseMask=No").UseMask);
    EXPECT_TRUE(inEntry("UseMask=YES\nUseMask=0").UseMask);
    EXPECT_TRUE(inEntry("UseMaskYES").UseMask);
}

TEST_F(JobFileTest, FennikVersionBecomesAVersionCode) {
    EXPECT_EQ(outside("").versionCode, 0);
    EXPECT_EQ(outside("FennikVersion=3.09").versionCode, 1);
    EXPECT_EQ(outside("FennikVersion=3.1").versionCode, 310);
    EXPECT_EQ(outside("FennikVersion=3.11").versionCode, 310);
    EXPECT_EQ(outside("FennikVersion=3.12").versionCode, 312);
    EXPECT_EQ(outside("FennikVersion=3.14").versionCode, 312);
    EXPECT_EQ(outside("FennikVersion=3.15").versionCode, 320);
    EXPECT_EQ(outside("FennikVersion=3.24").versionCode, 320);
    EXPECT_EQ(outside("FennikVersion=3.25").versionCode, 401);
    EXPECT_EQ(outside("FennikVersion=4.0").versionCode, 401);
    EXPECT_EQ(outside("FennikVersion=-1").versionCode, 1);
    EXPECT_EQ(outside("FennikVersion=nan").versionCode, 1);
    EXPECT_EQ(outside("FennikVersion=new").versionCode, 0);
}

TEST_F(JobFileTest, WholeNumbersAreTruncatedAndPassThroughAFloat) {
    EXPECT_EQ(inEntry("DecimationTargetNum=1.9").DecimationTargetNum, 1);
    EXPECT_EQ(inEntry("DecimationTargetNum=-1.9").DecimationTargetNum, -1);
    EXPECT_EQ(inEntry("DecimationTargetNum=16777217").DecimationTargetNum, 16777216);
    EXPECT_EQ(inEntry("DecimationTargetNum=1e3").DecimationTargetNum, 1000);
    EXPECT_EQ(inEntry("DecimationTargetNum=25 vertices").DecimationTargetNum, 25);
    EXPECT_EQ(inEntry("DecimationTargetNum=+7").DecimationTargetNum, 7);
    EXPECT_EQ(inEntry("DecimationTargetNum=3,5").DecimationTargetNum, 3);
}

TEST_F(JobFileTest, WholeNumbersThatDoNotFitBecomeTheLowestNumber) {
    constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
    for (const char* number : {"1e10", "-1e10", "2147483648", "inf", "nan", "1e999"})
        EXPECT_EQ(inEntry("NumThread="s + number).NumThread, kLowest) << number;
}

TEST_F(JobFileTest, AValueWithoutANumberKeepsTheField) {
    EXPECT_EQ(inEntry("DecimationTargetNum=many").DecimationTargetNum, 4);
    EXPECT_EQ(inEntry("DecimationTargetNum").DecimationTargetNum, 4);
    EXPECT_EQ(inEntry("DecimationTargetPourcent=\"20\"").DecimationTargetPourcent, -1.0F);
    EXPECT_EQ(inEntry("UseVtxColorsCoef=-").UseVtxColorsCoef, 50.0F);
}

TEST_F(JobFileTest, AnyLineEndingsAndEmptyLinesSeparateAlike) {
    for (const char* end : {"\n", "\r", "\r\n", "\n\n\n", "\r\r\n\n\r"}) {
        ResetJobConfig(job_);
        const std::string e = end;
        EXPECT_TRUE(
            load(e + "StartBatch" + e + "NumThread=7" + e + "EndBatch" + e + "NumThread=9"));
        ASSERT_EQ(entryCount(), 1U);
        EXPECT_EQ(job_.batchList.front().settings.NumThread, 7);
        EXPECT_EQ(job_.settings.NumThread, 9);
    }
}

TEST_F(JobFileTest, BlanksAroundALineAreTrimmedButKeptInsideValues) {
    EXPECT_EQ(text(inEntry(" \t InputFile \t=: a  b\tc.Vok \t ").InputFile), "a  b\tc.Vok");
    EXPECT_EQ(text(inEntry("InputFile==C:\\a=b.Vok").InputFile), "C:\\a=b.Vok");
    EXPECT_EQ(text(inEntry("InputFile=\"a.Vok\"").InputFile), "\"a.Vok\"");
    EXPECT_EQ(text(inEntry("InputFile /a/b.Vok").InputFile), "/a/b.Vok");
}

TEST_F(JobFileTest, LetterCaseOfKeysDoesNotMatter) {
    EXPECT_EQ(inEntry("dEcImAtIoNtArGeTnUm=9").DecimationTargetNum, 9);
}

TEST_F(JobFileTest, LinesWithoutAKeyAreSkipped) {
    load("# "
         "DeleteConfigFile=1\n//"
         "DeleteConfigFile=1\nDeleteConfigFil\nnonsense\n=\n:DeleteConfigFile");
    EXPECT_EQ(described(), defaults_);
}

TEST_F(JobFileTest, AByteOrderMarkHidesTheFirstLineOnly) {
    EXPECT_TRUE(load("\xEF\xBB\xBF"
                     "DeleteConfigFile=1\nDisplayMode=BASIC\n"));
    EXPECT_FALSE(job_.DeleteConfigFile);
    EXPECT_EQ(job_.DisplayMode, 1);
}

TEST_F(JobFileTest, TheTextEndsAtTheFirstZeroByte) {
    EXPECT_TRUE(load("DisplayMode=BASIC\nAppMode=korva\0lite\nDeleteConfigFile=1\n"s));
    EXPECT_EQ(job_.DisplayMode, 1);
    EXPECT_EQ(job_.AppMode, 4);
    EXPECT_FALSE(job_.DeleteConfigFile);
    ResetJobConfig(job_);
    EXPECT_TRUE(load("\0DeleteConfigFile=1\n"s));
    EXPECT_EQ(described(), defaults_);
}

TEST_F(JobFileTest, SurvivesEveryByteValue) {
    std::string bytes;
    for (int first = 1; first < 256; ++first) {
        for (int second = 1; second < 256; second += 7) {
            bytes += static_cast<char>(first);
            bytes += static_cast<char>(second);
        }
    }
    EXPECT_TRUE(load(bytes));
    EXPECT_EQ(described(), defaults_);
}

TEST_F(JobFileTest, OneEnormousLineIsOneLine) {
    const std::string name(20'000'000, 'n');
    EXPECT_EQ(inEntry("InputFile=" + name).InputFile.length(), 20'000'000);
    ResetJobConfig(job_);
    std::string line(20'000'000, ' ');
    line.append("DisplayMode=NO").append(1000, '\t');
    EXPECT_TRUE(load(line));
    EXPECT_EQ(job_.DisplayMode, 0);
}

TEST_F(JobFileTest, AHundredThousandEntriesFormAReversedList) {
    std::string bytes;
    for (int i = 0; i < 100'000; ++i)
        bytes += "StartBatch\nDecimationTargetNum=" + std::to_string(i) + "\nEndBatch\n";
    EXPECT_TRUE(load(bytes));
    std::int32_t expected = 100'000;
    for (const BatchEntry& entry : job_.batchList)
        ASSERT_EQ(entry.settings.DecimationTargetNum, --expected);
    EXPECT_EQ(expected, 0);
}

TEST_F(JobFileTest, AnEntryStartsFromTheDefaultsNotTheJobsSettings) {
    load("DecimationTargetNum=77\nFreezeBorder=1\nStartBatch\nEndBatch\n");
    EXPECT_EQ(job_.settings.DecimationTargetNum, 77);
    EXPECT_EQ(test::describe(job_.batchList.front().settings), test::describe(BatchSettings()));
}

TEST_F(JobFileTest, StartBatchNamesTheKind) {
    const auto kindOf = [this](const char* value) {
        ResetJobConfig(job_);
        load("StartBatch=" + std::string(value));
        return job_.batchList.empty() ? -1 : job_.batchList.front().kind;
    };
    EXPECT_EQ(kindOf("Build progressive mesh"), 1);
    EXPECT_EQ(kindOf("DECIMATE MESH"), 2);
    EXPECT_EQ(kindOf("Decimate progressive mesh"), 3);
    EXPECT_EQ(kindOf("Decimate  mesh"), 0);
    EXPECT_EQ(kindOf(""), -1);
}

TEST_F(JobFileTest, StartBatchAndEndBatchWithEmptyValuesAreIgnored) {
    load("StartBatch\nNumThread=2\nEndBatch=\nNumThread=3\nStartBatch=\nNumThread=4\n"
         "EndBatch now\nNumThread=5\n");
    ASSERT_EQ(entryCount(), 1U);
    EXPECT_EQ(job_.batchList.front().kind, kBatchKindUnset);
    EXPECT_EQ(job_.batchList.front().settings.NumThread, 4);
    EXPECT_EQ(job_.settings.NumThread, 5);
}

TEST_F(JobFileTest, ASecondStartBatchOpensAnotherEntry) {
    load("StartBatch\nNumThread=2\nStartBatch=Decimate mesh\nNumThread=3\n");
    ASSERT_EQ(entryCount(), 2U);
    EXPECT_EQ(job_.batchList.front().settings.NumThread, 3);
    EXPECT_EQ(std::next(job_.batchList.begin())->settings.NumThread, 2);
}

TEST_F(JobFileTest, JobOnlyKeysAreIgnoredInsideAnEntry) {
    load("StartBatch\nUseProgressBar=1\nKeepTempFiles=1\nDisplayMode=NO\nProcessId=3\nQueueId=3\n"
         "MessageChannelId=3\nMessageReaderId=3\nEndBatch\n");
    job_.batchList.clear();
    EXPECT_EQ(described(), defaults_);
}

TEST_F(JobFileTest, SomeJobKeysWorkInsideAnEntry) {
    load("StartBatch\nDeleteConfigFile=1\nAppMode=korvalite\nFennikVersion=3.2\nEndBatch\n");
    EXPECT_TRUE(job_.DeleteConfigFile);
    EXPECT_EQ(job_.AppMode, 0);
    EXPECT_EQ(job_.versionCode, 320);
}

TEST_F(JobFileTest, JobKeysWorkOutsideEntries) {
    load("UseProgressBar=1\nKeepTempFiles=1\nDisplayMode=NO\nProcessId=3\nQueueId=4\n"
         "MessageChannelId=5\nMessageReaderId=6\nAppMode=full proto\n");
    EXPECT_TRUE(job_.UseProgressBar);
    EXPECT_TRUE(job_.KeepTempFiles);
    EXPECT_EQ(job_.DisplayMode, 0);
    EXPECT_EQ(job_.ProcessId, 3);
    EXPECT_EQ(job_.QueueId, 4);
    EXPECT_EQ(job_.MessageChannelId, 5);
    EXPECT_EQ(job_.MessageReaderId, 6);
    EXPECT_EQ(job_.AppMode, 3);
}

TEST_F(JobFileTest, EveryMeshKeyReachesItsField) {
    const BatchSettings settings = inEntry(
        "InputFile=i\nOutputFile=o\nDeleteInputFile=1\nSymmetry=x\nFreezeBorder=1\nUseMask=YES\n"
        "ProgressiveMeshMinNum=11\nDecimationTargetNum=12\nDecimationTargetPourcent=13.5\n"
        "MemSpeedTradeOff=14\nAvoidNormalReverse=0\nProtectTopology=0\nAllowFinishStep=1\n"
        "UseAreaWeighting=1\nIFlipX=1\nIFlipY=1\nIFlipZ=1\nISwitchYZ=1\nKeepUVs=1\nUseVtxColors=1\n"
        "UseVtxColorsCoef=15.5\nNumThread=16\nDoReorder=0\n");
    EXPECT_EQ(test::describe(settings),
              "InputFile=i OutputFile=o DeleteInputFile=1 Symmetry=1 FreezeBorder=1 UseMask=1 "
              "ProgressiveMeshMinNum=11 DecimationTargetNum=12 DecimationTargetPourcent=13.5 "
              "MemSpeedTradeOff=14 AvoidNormalReverse=0 ProtectTopology=0 AllowFinishStep=1 "
              "UseAreaWeighting=1 IFlipX=1 IFlipY=1 IFlipZ=1 ISwitchYZ=1 KeepUVs=1 UseVtxColors=1 "
              "UseVtxColorsCoef=15.5 NumThread=16 DoReorder=0 ");
}

TEST_F(JobFileTest, ResetGivesTheDefaultsAndNoEntries) {
    load("DeleteConfigFile\nStartBatch\nNumThread=3\n");
    ResetJobConfig(job_);
    EXPECT_EQ(described(), defaults_);
    EXPECT_EQ(job_.currentEntry, nullptr);
}

}  // namespace
}  // namespace korvalite::core

// SPDX-License-Identifier: MIT
#include "platform/platform.h"

#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace korvalite::core::platform {
namespace {

using test::pathOfUtf8;
using test::readWhole;
using test::ScratchFolder;
using test::writeWhole;

namespace fs = std::filesystem;

TEST(Platform, OpensANonAsciiNameAndReadsBackWhatWasWritten) {
    const ScratchFolder folder;
    const std::string path = folder / u8"Flügel 翼.Vok";
    std::FILE* file = openFile(path.c_str(), "wb");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(std::fputs("a\nb", file), 1);
    EXPECT_EQ(std::fclose(file), 0);
    EXPECT_EQ(readWhole(path), "a\nb");
}

TEST(Platform, NullAndEmptyPathsNameNoFile) {
    for (const char* path : {static_cast<const char*>(nullptr), ""}) {
        EXPECT_EQ(openFile(path, "rb"), nullptr);
        EXPECT_EQ(openFile(path, "wb"), nullptr);
        EXPECT_EQ(createExclusively(path), nullptr);
        EXPECT_FALSE(exists(path));
        EXPECT_FALSE(isRegularFile(path));
        EXPECT_FALSE(deleteFile(path));
    }
}

TEST(Platform, OpeningAMissingFileForReadingFailsAndCreatesNone) {
    const ScratchFolder folder;
    const std::string path = folder / u8"missing";
    EXPECT_EQ(openFile(path.c_str(), "rb"), nullptr);
    EXPECT_EQ(openFile(path.c_str(), "r+b"), nullptr);
    EXPECT_FALSE(exists(path.c_str()));
}

TEST(Platform, AFolderNeverOpens) {
    const ScratchFolder folder;
    for (const char* mode : {"rb", "wb", "r+b", "wb+"})
        EXPECT_EQ(openFile(folder.path().c_str(), mode), nullptr) << mode;
}

TEST(Platform, ExclusiveCreationRefusesAnExistingFileAndLeavesItAlone) {
    const ScratchFolder folder;
    const std::string path = folder / u8"VSplitList.data";
    writeWhole(path, "theirs");
    EXPECT_EQ(createExclusively(path.c_str()), nullptr);
    EXPECT_EQ(readWhole(path), "theirs");
}

TEST(Platform, ExclusiveCreationGivesAWritableAndReadableFile) {
    const ScratchFolder folder;
    const std::string path = folder / u8"VSplitList.data";
    std::FILE* file = createExclusively(path.c_str());
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(createExclusively(path.c_str()), nullptr);
    EXPECT_GE(std::fputs("page", file), 0);
    ASSERT_TRUE(seek(file, 1, SEEK_SET));
    EXPECT_EQ(std::fgetc(file), 'a');
    EXPECT_EQ(std::fclose(file), 0);
}

TEST(Platform, ExclusiveCreationInAMissingFolderFails) {
    const ScratchFolder folder;
    EXPECT_EQ(createExclusively((folder / u8"no/such.data").c_str()), nullptr);
}

TEST(Platform, SeeksAndReportsPositionsBeyondFourGigabytes) {
    const ScratchFolder folder;
    std::FILE* file = openFile((folder / u8"sparse").c_str(), "wb+");
    ASSERT_NE(file, nullptr);
    const std::int64_t far = (std::int64_t{5} << 30) + 3;
    EXPECT_TRUE(seek(file, far, SEEK_SET));
    EXPECT_EQ(tell(file), far);
    EXPECT_TRUE(seek(file, -4, SEEK_CUR));
    EXPECT_EQ(tell(file), far - 4);
    EXPECT_FALSE(seek(file, -1, SEEK_SET));
    std::fclose(file);
}

TEST(Platform, AFolderExistsButIsNotARegularFile) {
    const ScratchFolder folder;
    const std::string file = folder / u8"é";
    EXPECT_FALSE(exists(file.c_str()));
    EXPECT_FALSE(isRegularFile(file.c_str()));
    writeWhole(file, "");
    EXPECT_TRUE(exists(file.c_str()));
    EXPECT_TRUE(isRegularFile(file.c_str()));
    EXPECT_TRUE(exists(folder.path().c_str()));
    EXPECT_FALSE(isRegularFile(folder.path().c_str()));
}

TEST(Platform, DeletesOnlyExistingFiles) {
    const ScratchFolder folder;
    const std::string file = folder / u8"é.running";
    writeWhole(file, "x");
    EXPECT_TRUE(deleteFile(file.c_str()));
    EXPECT_FALSE(fs::exists(pathOfUtf8(file)));
    EXPECT_FALSE(deleteFile(file.c_str()));
    EXPECT_FALSE(deleteFile(folder.path().c_str()));
    EXPECT_TRUE(fs::exists(pathOfUtf8(folder.path())));
}

// Enters a folder and returns to the old one however the test ends.
class InFolder {
public:
    explicit InFolder(const std::string& path) : before_(fs::current_path()) {
        fs::current_path(pathOfUtf8(path));
    }
    ~InFolder() { fs::current_path(before_); }
    InFolder(const InFolder&) = delete;
    InFolder& operator=(const InFolder&) = delete;

private:
    fs::path before_;
};

TEST(Platform, TheCurrentDirectoryIsUtf8) {
    const ScratchFolder folder;
    const InFolder inside(folder.path());
    EXPECT_TRUE(fs::equivalent(pathOfUtf8(currentDirectory()), pathOfUtf8(folder.path())));
}

TEST(Platform, ACurrentDirectoryLongerThan512CharactersGivesAnEmptyPath) {
    const ScratchFolder folder;
    fs::path deep = pathOfUtf8(folder.path());
    for (int i = 0; i < 3; ++i)
        deep /= std::string(200, static_cast<char>('a' + i));
    fs::create_directories(deep);
    const InFolder inside(deep.string());
    EXPECT_EQ(currentDirectory(), "");
}

TEST(Platform, TheCounterTicksAtItsFrequencyAndNeverGoesBack) {
    std::int64_t frequency = 0;
    std::int64_t before = 0;
    std::int64_t after = 0;
    ASSERT_TRUE(counterFrequency(frequency));
    ASSERT_GT(frequency, 0);
    ASSERT_TRUE(counterValue(before));
    sleepMilliseconds(20);
    ASSERT_TRUE(counterValue(after));
    const double seconds = static_cast<double>(after - before) / static_cast<double>(frequency);
    EXPECT_GE(seconds, 0.019);
    EXPECT_LT(seconds, 60.0);
}

TEST(Platform, TheClockCountsMilliseconds) {
    const std::int64_t before = clockMilliseconds();
    sleepMilliseconds(40);
    const std::int64_t elapsed = clockMilliseconds() - before;
    EXPECT_GE(elapsed, 20);
    EXPECT_LT(elapsed, 60000);
}

TEST(Platform, SleepingForZeroOrLessReturnsAtOnce) {
    const std::int64_t before = clockMilliseconds();
    sleepMilliseconds(0);
    sleepMilliseconds(-1000000);
    EXPECT_LT(clockMilliseconds() - before, 60000);
}

TEST(Platform, SomeMemoryIsAvailableAndNoMoreThanAMachineHas) {
    EXPECT_GT(availableMemory(), std::uint64_t{1} << 20U);
    EXPECT_LT(availableMemory(), std::uint64_t{1} << 50U);
}

#ifndef _WIN32

TEST(Platform, ABoxIsOneLineWithItsNewlinesEscaped) {
    testing::internal::CaptureStderr();
    messageBox("Decimation", "first\nsecond\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Decimation\tfirst\\nsecond\\n\n");
}

TEST(Platform, ABoxTreatsNullAsEmptyText) {
    testing::internal::CaptureStderr();
    messageBox(nullptr, nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "\t\n");
}

std::string tailOf(std::vector<std::string> arguments) {
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    const int count = static_cast<int>(pointers.size());
    pointers.push_back(nullptr);
    return commandTail(count, pointers.data());
}

TEST(Platform, ASingleArgumentIsTheTailUnchanged) {
    EXPECT_EQ(tailOf({"korvalite", "my  scene.kvc "}), "my  scene.kvc ");
    EXPECT_EQ(tailOf({"korvalite", "\"scene.kvc\""}), "\"scene.kvc\"");
}

TEST(Platform, SeveralArgumentsAreJoinedByOneBlank) {
    EXPECT_EQ(tailOf({"korvalite", "my", "scene.kvc"}), "my scene.kvc");
    EXPECT_EQ(tailOf({"korvalite", "", "scene.kvc"}), " scene.kvc");
}

TEST(Platform, WithoutArgumentsTheTailIsEmpty) {
    EXPECT_EQ(tailOf({"korvalite"}), "");
    EXPECT_EQ(tailOf({}), "");
}

#endif

}  // namespace
}  // namespace korvalite::core::platform

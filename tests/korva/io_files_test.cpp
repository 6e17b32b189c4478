// SPDX-License-Identifier: MIT
#include "korva/files/vok.h"
#include "korva/io/input_file.h"
#include "korva/io/output_file.h"
#include "korva/io/partial_file.h"
#include "support/full_disk.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace korva {
namespace {

using korvalite::Error;
using korvalite::ErrorCode;
namespace test = korvalite::core::test;

class IoFiles : public testing::Test {
protected:
    [[nodiscard]] std::filesystem::path write(const std::string& bytes) const {
        test::writeWhole(folder_ / u8"a.txt", bytes);
        return test::pathOfUtf8(folder_ / u8"a.txt");
    }
    static std::vector<std::string> linesOf(const std::filesystem::path& path) {
        InputFile file(path);
        std::vector<std::string> lines;
        std::string_view line;
        while (file.readLine(line))
            lines.emplace_back(line);
        EXPECT_EQ(file.left(), 0U);
        return lines;
    }
    template <typename Call>
    static std::string errorOf(ErrorCode code, Call call) {
        try {
            call();
        } catch (const Error& error) {
            EXPECT_EQ(error.code(), code);
            return error.what();
        }
        return "no error";
    }

    test::ScratchFolder folder_;
};

using Lines = std::vector<std::string>;

TEST_F(IoFiles, LinesEndInAnyWay) {
    EXPECT_EQ(linesOf(write("a\nb\r\nc\rd")), (Lines{"a", "b", "c", "d"}));
    EXPECT_EQ(linesOf(write("\n\r\n\r\r")), (Lines{"", "", "", ""}));
    EXPECT_EQ(linesOf(write("")), Lines{});
    EXPECT_EQ(linesOf(write("a\r")), Lines{"a"});
}

TEST_F(IoFiles, LinesAcrossBlocksAreWhole) {
    // Around the size of a block, so that each part of an end of line comes last once.
    constexpr std::size_t kBlock = std::size_t{1} << 20U;
    for (std::size_t length = kBlock - 3; length < kBlock + 3; ++length) {
        const std::string first(length, 'x');
        EXPECT_EQ(linesOf(write(first + "\r\nend")), (Lines{first, "end"})) << length;
    }
    const std::string endless(5 * kBlock + 7, 'y');
    EXPECT_EQ(linesOf(write(endless + "\nz\n")), (Lines{endless, "z"}));
}

TEST_F(IoFiles, BytesAreReadToTheEndAndAgain) {
    InputFile file(write("0123456789"));
    std::string bytes(4, ' ');
    EXPECT_EQ(file.read(bytes.data(), 4), 4U);
    EXPECT_EQ(bytes, "0123");
    EXPECT_EQ(file.left(), 6U);
    std::string rest(20, ' ');
    EXPECT_EQ(file.read(rest.data(), 20), 6U);
    file.rewind();
    EXPECT_EQ(file.left(), 10U);
    EXPECT_EQ(file.read(rest.data(), 20), 10U);
}

TEST_F(IoFiles, ReadingReportsHowFarItIs) {
    std::uint64_t last = 0;
    InputFile file(write(std::string(3'000'000, 'x')),
                   [&](std::uint64_t done, std::uint64_t total) {
                       EXPECT_LE(last, done);
                       EXPECT_EQ(total, 3'000'000U);
                       last = done;
                   });
    std::string_view line;
    EXPECT_TRUE(file.readLine(line));
    EXPECT_EQ(last, 3'000'000U);
}

TEST_F(IoFiles, MissingFilesAndFoldersAreNamed) {
    const auto open = [](const std::filesystem::path& path) {
        return errorOf(ErrorCode::CannotRead, [&] { InputFile file(path); });
    };
    const std::string missing = open(test::pathOfUtf8(folder_ / u8"b ä.txt"));
    EXPECT_NE(missing.find("b ä.txt: there is no such file."), std::string::npos) << missing;
    EXPECT_NE(open(test::pathOfUtf8(folder_.path())).find("it is a folder"), std::string::npos);
}

TEST_F(IoFiles, AFileAppearsWhenItIsComplete) {
    const std::filesystem::path path = write("old");
    {
        OutputFile file(path);
        file.write("new");
        EXPECT_EQ(test::readWhole(folder_ / u8"a.txt"), "old");
        file.commit();
    }
    EXPECT_EQ(test::readWhole(folder_ / u8"a.txt"), "new");
}

TEST_F(IoFiles, AFileThatIsNotCompleteLeavesTheOldOne) {
    const std::filesystem::path path = write("old");
    {
        OutputFile file(path);
        file.write(std::string(3'000'000, 'x'));
    }
    EXPECT_EQ(test::readWhole(folder_ / u8"a.txt"), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(path.parent_path()), {}), 1);
}

TEST_F(IoFiles, AFileThatIsAbandonedLeavesTheOldOne) {
    const std::filesystem::path path = write("old");
    const auto abandon = [&] {
        PartialFile file(path);
        std::ofstream(file.partialPath()) << "new";
        PartialFile::abandonAll();
        std::_Exit(0);
    };
    EXPECT_EXIT(abandon(), testing::ExitedWithCode(0), "");
    EXPECT_EQ(test::readWhole(folder_ / u8"a.txt"), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(path.parent_path()), {}), 1);
}

TEST_F(IoFiles, WritingReportsHowFarItIs) {
    std::vector<std::uint64_t> seen;
    OutputFile file(test::pathOfUtf8(folder_ / u8"b.txt"),
                    [&](std::uint64_t done, std::uint64_t total) {
                        seen.push_back(done);
                        EXPECT_EQ(total, 0);
                    });
    file.write(std::string(3'000'000, 'x'));
    file.commit();
    EXPECT_GT(seen.size(), 2);
    EXPECT_TRUE(std::ranges::is_sorted(seen));
    EXPECT_EQ(seen.back(), 3'000'000);
}

TEST_F(IoFiles, AFullDiskLeavesTheOldFile) {
    const std::filesystem::path path = write("old");
    const std::string big(3'000'000, 'x');
    std::string sentence;
    {
        const test::FullDisk full(100'000);
        sentence = errorOf(ErrorCode::CannotWrite, [&] {
            OutputFile file(path);
            file.write(big);
            file.commit();
        });
    }
    EXPECT_NE(sentence.find("disk is full"), std::string::npos) << sentence;
    EXPECT_EQ(test::readWhole(folder_ / u8"a.txt"), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(path.parent_path()), {}), 1);
}

TEST_F(IoFiles, WritingVokLeavesOtherFilesAlone) {
    test::writeWhole(folder_ / u8"a.Vok.part", "mine");
    korvalite::Mesh mesh;
    mesh.positions = {0, 0, 0, 1, 0, 0, 1, 1, 0};
    mesh.triangles = {0, 1, 2};
    writeVok(test::pathOfUtf8(folder_ / u8"a.Vok"), mesh);
    EXPECT_EQ(test::readWhole(folder_ / u8"a.Vok.part"), "mine");
    EXPECT_EQ(readVok(test::pathOfUtf8(folder_ / u8"a.Vok")).mesh.triangles, mesh.triangles);
    const std::filesystem::directory_iterator files(test::pathOfUtf8(folder_.path()));
    EXPECT_EQ(std::distance(files, {}), 2);
}

TEST_F(IoFiles, AMissingFolderIsNamed) {
    const std::string sentence = errorOf(ErrorCode::CannotWrite, [&] {
        OutputFile file(test::pathOfUtf8(folder_ / u8"missing/a.txt"));
    });
    EXPECT_NE(sentence.find("folder"), std::string::npos) << sentence;
}

}  // namespace
}  // namespace korva

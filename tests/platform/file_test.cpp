// SPDX-License-Identifier: MIT
#include "platform/file.h"

#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>
#ifndef _WIN32
#include <unistd.h>
#endif

namespace korvalite::core::platform {
namespace {

using test::readWhole;
using test::ScratchFolder;
using test::writeWhole;

static_assert(!std::is_copy_constructible_v<File> && !std::is_copy_assignable_v<File>);
static_assert(std::is_nothrow_move_constructible_v<File>);
static_assert(std::is_nothrow_move_assignable_v<File>);

std::string readText(File& file, std::size_t byteCount) {
    std::string text(byteCount, '\0');
    text.resize(file.read(text.data(), byteCount));
    return text;
}

TEST(File, WritesAndReadsBackUnderANonAsciiName) {
    const ScratchFolder folder;
    const std::string path = folder / u8"größe 大.kvm";
    File out = File::open(path.c_str(), "wb");
    ASSERT_TRUE(out);
    EXPECT_TRUE(out.write("abc", 3));
    EXPECT_TRUE(out.write("", 0));
    EXPECT_EQ(out.tell(), 3);
    EXPECT_TRUE(out.flush());
    EXPECT_TRUE(out.close());

    File in = File::open(path.c_str(), "rb");
    ASSERT_TRUE(in.isOpen());
    EXPECT_EQ(readText(in, 2), "ab");
    EXPECT_EQ(readText(in, 10), "c");
    EXPECT_EQ(readText(in, 10), "");
    EXPECT_TRUE(in.close());
}

TEST(File, EveryCallOnAClosedFileFailsHarmlessly) {
    const ScratchFolder folder;
    File neverOpened;
    File failed = File::open((folder / u8"missing").c_str(), "rb");
    File closed = File::open((folder / u8"there").c_str(), "wb");
    EXPECT_TRUE(closed.close());
    for (File* file : {&neverOpened, &failed, &closed}) {
        char byte = 'x';
        EXPECT_FALSE(*file);
        EXPECT_FALSE(file->isOpen());
        EXPECT_EQ(file->stream(), nullptr);
        EXPECT_EQ(file->read(&byte, 1), 0u);
        EXPECT_EQ(byte, 'x');
        EXPECT_FALSE(file->write(&byte, 1));
        EXPECT_FALSE(file->write(&byte, 0));
        EXPECT_FALSE(file->seek(0, SEEK_SET));
        EXPECT_EQ(file->tell(), -1);
        EXPECT_EQ(file->bytesLeft(), -1);
        EXPECT_FALSE(file->flush());
        EXPECT_FALSE(file->close());
    }
}

TEST(File, MovingTransfersTheStreamAndClosesTheSource) {
    const ScratchFolder folder;
    const std::string path = folder / u8"a";
    File first = File::open(path.c_str(), "wb");
    std::FILE* stream = first.stream();
    File second = std::move(first);
    EXPECT_EQ(second.stream(), stream);
    EXPECT_FALSE(first.isOpen());  // NOLINT(bugprone-use-after-move)
    File third;
    third = std::move(second);
    EXPECT_EQ(third.stream(), stream);
    EXPECT_TRUE(third.write("x", 1));
    EXPECT_TRUE(third.close());
    EXPECT_EQ(readWhole(path), "x");
}

TEST(File, AssigningOverAnOpenFileClosesItFirst) {
    const ScratchFolder folder;
    const std::string path = folder / u8"a";
    File file = File::open(path.c_str(), "wb");
    ASSERT_TRUE(file.write("buffered", 8));
    file = File();
    EXPECT_EQ(readWhole(path), "buffered");
    EXPECT_FALSE(file);
}

TEST(File, TheDestructorWritesBufferedData) {
    const ScratchFolder folder;
    const std::string path = folder / u8"a";
    {
        File file = File::open(path.c_str(), "wb");
        ASSERT_TRUE(file.write("buffered", 8));
    }
    EXPECT_EQ(readWhole(path), "buffered");
}

TEST(File, SeeksFromAllThreeOrigins) {
    const ScratchFolder folder;
    const std::string path = folder / u8"a";
    writeWhole(path, "0123456789");
    File file = File::open(path.c_str(), "rb");
    ASSERT_TRUE(file.seek(4, SEEK_SET));
    EXPECT_EQ(readText(file, 1), "4");
    ASSERT_TRUE(file.seek(2, SEEK_CUR));
    EXPECT_EQ(readText(file, 1), "7");
    ASSERT_TRUE(file.seek(-1, SEEK_END));
    EXPECT_EQ(readText(file, 1), "9");
    EXPECT_FALSE(file.seek(-1, SEEK_SET));
    EXPECT_FALSE(file.seek(0, 77));
}

TEST(File, BytesLeftCountsToTheEndAndKeepsThePosition) {
    const ScratchFolder folder;
    const std::string path = folder / u8"a";
    writeWhole(path, "0123456789");
    File file = File::open(path.c_str(), "rb");
    EXPECT_EQ(file.bytesLeft(), 10);
    EXPECT_EQ(readText(file, 3), "012");
    EXPECT_EQ(file.bytesLeft(), 7);
    EXPECT_EQ(file.tell(), 3);
    EXPECT_EQ(readText(file, 1), "3");
    ASSERT_TRUE(file.seek(0, SEEK_END));
    EXPECT_EQ(file.bytesLeft(), 0);
    ASSERT_TRUE(file.seek(100, SEEK_SET));
    EXPECT_EQ(file.bytesLeft(), 0);
    EXPECT_EQ(file.tell(), 100);
}

TEST(File, BytesLeftIncludesBufferedData) {
    const ScratchFolder folder;
    File file = File::open((folder / u8"a").c_str(), "wb+");
    ASSERT_TRUE(file.write("012345", 6));
    ASSERT_TRUE(file.seek(2, SEEK_SET));
    EXPECT_EQ(file.bytesLeft(), 4);
}

TEST(File, CreatesExclusively) {
    const ScratchFolder folder;
    const std::string path = folder / u8"ä.data";
    File first = File::createExclusively(path.c_str());
    ASSERT_TRUE(first);
    EXPECT_FALSE(File::createExclusively(path.c_str()));
    EXPECT_TRUE(first.write("ab", 2));
    ASSERT_TRUE(first.seek(0, SEEK_SET));
    EXPECT_EQ(readText(first, 2), "ab");
    EXPECT_TRUE(first.close());
}

TEST(File, WritingToAFileOpenForReadingFails) {
    const ScratchFolder folder;
    const std::string path = folder / u8"a";
    writeWhole(path, "0123");
    File file = File::open(path.c_str(), "rb");
    EXPECT_FALSE(file.write("x", 1));
    EXPECT_FALSE(file.close());
    EXPECT_EQ(readWhole(path), "0123");
}

#ifndef _WIN32

// A device that accepts no bytes, like a full disk.
File openFullDisk() {
    return File::open("/dev/full", "wb");
}

TEST(File, FlushReportsAFullDisk) {
    File file = openFullDisk();
    ASSERT_TRUE(file);
    EXPECT_TRUE(file.write("x", 1)) << "one byte stays in the buffer";
    EXPECT_FALSE(file.flush());
    EXPECT_FALSE(file.close());
}

TEST(File, CloseReportsAFullDisk) {
    File file = openFullDisk();
    ASSERT_TRUE(file);
    EXPECT_TRUE(file.write("x", 1));
    EXPECT_FALSE(file.close());
    EXPECT_FALSE(file.isOpen());
}

TEST(File, AWriteLargerThanTheBufferReportsAFullDisk) {
    File file = openFullDisk();
    ASSERT_TRUE(file);
    const std::string large(1 << 20, 'x');
    EXPECT_FALSE(file.write(large.data(), large.size()));
    EXPECT_FALSE(file.close());
}

TEST(File, CloseReportsAFailureDuringASeek) {
    File file = openFullDisk();
    ASSERT_TRUE(file);
    EXPECT_TRUE(file.write("x", 1));
    // Whether the seek itself reports it is up to the library; the close must.
    file.seek(0, SEEK_SET);
    EXPECT_FALSE(file.close());
}

TEST(File, AMovedFileStillReportsItsFailure) {
    File file = openFullDisk();
    ASSERT_TRUE(file.write("x", 1));
    EXPECT_FALSE(file.flush());
    File moved = std::move(file);
    EXPECT_FALSE(moved.close());
}

TEST(File, AFileReopenedAfterAFailureStartsClean) {
    const ScratchFolder folder;
    File file = openFullDisk();
    ASSERT_TRUE(file.write("x", 1));
    EXPECT_FALSE(file.close());
    file = File::open((folder / u8"a").c_str(), "wb");
    EXPECT_TRUE(file.write("x", 1));
    EXPECT_TRUE(file.close());
}

TEST(File, BytesLeftOfAPipeIsUnknown) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    File reader = File::open(("/dev/fd/" + std::to_string(ends[0])).c_str(), "rb");
    ASSERT_TRUE(reader);
    EXPECT_EQ(reader.tell(), -1);
    EXPECT_EQ(reader.bytesLeft(), -1);
    reader.close();
    ::close(ends[0]);
    ::close(ends[1]);
}

#endif

}  // namespace
}  // namespace korvalite::core::platform

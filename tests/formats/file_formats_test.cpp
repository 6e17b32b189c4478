// SPDX-License-Identifier: MIT
#include "formats/file_formats.h"

#include "platform/platform.h"
#include "progressive/progressive_mesh.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>

namespace korvalite::core {
namespace {

class FileFormatsTest : public testing::Test {
protected:
    bool save(const char8_t* name, std::int32_t versionCode = 0) {
        path_ = folder_ / name;
        return fileFormatOf(path_.c_str()).write(path_.c_str(), pm_, versionCode);
    }
    bool fileExists(const std::string& suffix = "") const {
        return platform::exists((path_ + suffix).c_str());
    }

    // Where the colours and the mask of one active vertex are written.
    enum class Place { Nowhere, InTheObj, Beside, Several };
    Place colorPlaceFor(std::int32_t versionCode) {
        EXPECT_TRUE(save(u8"place.obj", versionCode));
        const bool isInside = test::readWhole(path_).find("MRGB") != std::string::npos;
        const bool isBeside = fileExists(".colors") || fileExists(".mask");
        platform::deleteFile((path_ + ".colors").c_str());
        platform::deleteFile((path_ + ".mask").c_str());
        if (isInside && isBeside) return Place::Several;
        if (isBeside) return Place::Beside;
        return isInside ? Place::InTheObj : Place::Nowhere;
    }
    void addVertex() {
        pm_.mesh.vertices.resize(1);
        pm_.mesh.vertexActive.Resize(1, true);
        pm_.mesh.numActiveVertices = 1;
    }

    test::ScratchFolder folder_;
    ProgressiveMesh pm_;
    std::string path_;
};

TEST_F(FileFormatsTest, WritesAVokFileWhateverTheCaseOfItsSuffix) {
    EXPECT_TRUE(save(u8"a.Vok"));
    EXPECT_EQ(test::readWhole(path_).substr(0, 4), "Vokb");
    EXPECT_TRUE(save(u8"b.vok"));
    EXPECT_TRUE(fileExists());
}

TEST_F(FileFormatsTest, WritesAnObjFile) {
    addVertex();
    EXPECT_TRUE(save(u8"a.obj"));
    EXPECT_EQ(test::readWhole(path_), "v 0.000000000 0.000000000 0.000000000\n");
    EXPECT_TRUE(save(u8"b.OBJ"));
    EXPECT_TRUE(fileExists());
}

TEST_F(FileFormatsTest, TheVersionDecidesWhereAnObjsColorsGo) {
    addVertex();
    pm_.mesh.vertexColors = {0xFF563412};
    pm_.m_useVertexColors_internal = true;
    for (const std::int32_t code : {0, 1, 310, 312})
        EXPECT_EQ(colorPlaceFor(code), Place::Beside) << code;
    for (const std::int32_t code : {313, 320, 401})
        EXPECT_EQ(colorPlaceFor(code), Place::InTheObj) << code;
}

TEST_F(FileFormatsTest, AMaskAloneCountsLikeColors) {
    addVertex();
    pm_.mesh.maskValues = {7};
    EXPECT_EQ(colorPlaceFor(312), Place::Beside);
    EXPECT_EQ(colorPlaceFor(313), Place::InTheObj);
}

TEST_F(FileFormatsTest, UnusedColorsAreNotWrittenToAnObj) {
    addVertex();
    pm_.mesh.vertexColors = {0xFF563412};
    EXPECT_EQ(colorPlaceFor(0), Place::Nowhere);
    EXPECT_EQ(colorPlaceFor(401), Place::Nowhere);
}

TEST_F(FileFormatsTest, StlIsAcceptedButWritesNoFile) {
    EXPECT_TRUE(save(u8"a.stl"));
    EXPECT_FALSE(fileExists());
}

TEST_F(FileFormatsTest, AFailingWriterReturnsFalse) {
    EXPECT_FALSE(save(u8"no such folder/a.Vok"));
    EXPECT_FALSE(save(u8"no such folder/a.obj"));
}

TEST_F(FileFormatsTest, ObjAndStlAreNeverReadWhateverTheyHold) {
    addVertex();
    ASSERT_TRUE(save(u8"a.Vok"));
    const auto all = [](std::uint32_t vertexCount) {
        return static_cast<std::int32_t>(vertexCount);
    };
    ProgressiveMesh fresh;
    for (const char* suffix : {".obj", ".stl"})
        EXPECT_FALSE(fileFormatOf(suffix).read(path_.c_str(), fresh, all)) << suffix;
    EXPECT_TRUE(fileFormatOf(".Vok").read(path_.c_str(), fresh, all));
}

TEST_F(FileFormatsTest, AnUnknownSuffixReadsAndWritesNothing) {
    EXPECT_TRUE(save(u8"a.ply"));
    EXPECT_FALSE(fileExists());
    const auto all = [](std::uint32_t vertexCount) {
        return static_cast<std::int32_t>(vertexCount);
    };
    EXPECT_FALSE(fileFormatOf("a.ply").read(path_.c_str(), pm_, all));
}

TEST(FileFormatOf, GoesByTheSuffixWhateverItsCase) {
    for (const char* path : {"a.Vok", "a.VOK", "a.obj", "a.OBJ", "a.stl", "a.STL", ".Vok"})
        EXPECT_EQ(fileFormatOf(path).content, FileContent::Mesh) << path;
    for (const char* path : {"a.kvm", "a.KVM"})
        EXPECT_EQ(fileFormatOf(path).content, FileContent::ProgressiveMesh) << path;
    for (const char* path : {"", "Vok", "aVok", "a.ply", "a.Vok.txt", "a.Vok "})
        EXPECT_EQ(fileFormatOf(path).content, FileContent::None) << path;
    EXPECT_EQ(fileFormatOf(HeapString()).content, FileContent::None);
}

}  // namespace
}  // namespace korvalite::core

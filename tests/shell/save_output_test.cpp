// SPDX-License-Identifier: MIT
#include "shell/save_output.h"

#include "mesh/progressive_mesh.h"
#include "platform/platform.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>

namespace korvalite {
namespace {

class SaveOutputTest : public testing::Test {
protected:
    bool save(const char8_t* name) {
        path_ = folder_ / name;
        return SaveOutput(path_.c_str(), pm_, 0);
    }
    bool fileExists() const { return platform::exists(path_.c_str()); }

    test::ScratchFolder folder_;
    ProgressiveMesh pm_;
    std::string path_;
};

TEST_F(SaveOutputTest, WritesAVokFileWhateverTheCaseOfItsSuffix) {
    EXPECT_TRUE(save(u8"a.Vok"));
    EXPECT_EQ(test::readWhole(path_).substr(0, 4), "Vokb");
    EXPECT_TRUE(save(u8"b.vok"));
    EXPECT_TRUE(fileExists());
}

TEST_F(SaveOutputTest, StlIsAcceptedAndMakesNoFile) {
    EXPECT_TRUE(save(u8"a.stl"));
    EXPECT_FALSE(fileExists());
    EXPECT_EQ(outputKindOf("a.STL"), OutputKind::Mesh);
}

TEST_F(SaveOutputTest, AWriterThatFailsGivesFalse) {
    EXPECT_FALSE(save(u8"no such folder/a.Vok"));
}

TEST(OutputKindOf, UnknownSuffixesAreNone) {
    EXPECT_EQ(outputKindOf("a.ply"), OutputKind::None);
    EXPECT_EQ(outputKindOf(""), OutputKind::None);
    EXPECT_EQ(outputKindOf(HeapString()), OutputKind::None);
    EXPECT_EQ(outputKindOf("Vok"), OutputKind::None);
}

}  // namespace
}  // namespace korvalite

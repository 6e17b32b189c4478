// SPDX-License-Identifier: MIT
//
// Which files a run deletes.
#include "jobs/job_run.h"

namespace korvalite::core::test {
namespace {

using Names = std::set<std::string>;

class DeletionTest : public JobTest {
protected:
    DeletionTest() {
        writeMesh("a.Vok");
        writeMarker();
    }
};

TEST_F(DeletionTest, ByDefaultOnlyTheMarkerIsDeleted) {
    runJob(entry("a.Vok", "out.Vok"));
    EXPECT_EQ(files(), (Names{"a.Vok", "out.Vok", "scene.kvc"}));
    EXPECT_EQ(errors_, "");
}

TEST_F(DeletionTest, WithTheProgressBarTheMarkerIsDeletedToo) {
    runJob("UseProgressBar=1\n" + entry("a.Vok", "out.Vok"));
    EXPECT_EQ(files(), (Names{"a.Vok", "out.Vok", "scene.kvc"}));
}

TEST_F(DeletionTest, TheJobIsDeletedOnRequest) {
    runJob("DeleteConfigFile=1\n" + entry("a.Vok", "out.Vok"));
    EXPECT_EQ(files(), (Names{"a.Vok", "out.Vok"}));
}

TEST_F(DeletionTest, AnInputIsDeletedOnRequest) {
    writeMesh("b.Vok");
    runJob(entry("a.Vok", "out.Vok", "DeleteInputFile=1") + entry("b.Vok", "out2.Vok"));
    EXPECT_EQ(files(), (Names{"b.Vok", "out.Vok", "out2.Vok", "scene.kvc"}));
}

TEST_F(DeletionTest, KeepTempFilesSparesAllButTheMarker) {
    runJob("DeleteConfigFile=1\nKeepTempFiles=1\n" +
           entry("a.Vok", "out.Vok", "DeleteInputFile=1"));
    EXPECT_EQ(files(), (Names{"a.Vok", "out.Vok", "scene.kvc"}));
}

TEST_F(DeletionTest, AFailedEntryStillDeletesItsInput) {
    writeWhole(in("bad.Vok"), "no mesh");
    runJob(entry("bad.Vok", "out.Vok", "DeleteInputFile=1"));
    EXPECT_EQ(files(), (Names{"a.Vok", "scene.kvc"}));
    EXPECT_EQ(errors_, failureBox(in("bad.Vok")));
}

TEST_F(DeletionTest, DeletingAMissingInputIsNotAnError) {
    runJob(entry("none.Vok", "out.Vok", "DeleteInputFile=1"));
    EXPECT_EQ(files(), (Names{"a.Vok", "scene.kvc"}));
}

TEST_F(DeletionTest, AClashStillDeletesAllInputsMarkedForDeletion) {
    writeMesh("b.Vok");
    writeMesh("c.Vok");
    runJob("DeleteConfigFile=1\n" + entry("a.Vok", "out.Vok", "DeleteInputFile=1") +
           entry("a.Vok", "out2.Vok") + entry("b.Vok", "out3.Vok", "DeleteInputFile=1") +
           entry("c.Vok", "out4.Vok"));
    EXPECT_EQ(files(), Names{"c.Vok"});
}

TEST_F(DeletionTest, AClashWithKeepTempFilesDeletesNoInput) {
    runJob("KeepTempFiles=1\n" + entry("a.Vok", "out.Vok", "DeleteInputFile=1") +
           entry("a.Vok", "out2.Vok"));
    EXPECT_TRUE(exists("a.Vok"));
    EXPECT_FALSE(exists("out.Vok"));
}

TEST_F(DeletionTest, AJobWithAnotherSuffixIsRefusedAndKept) {
    for (const char* name : {"scene.KVC", "scene.txt", "scene.kvc.bak"}) {
        writeWhole(in(name), "DeleteConfigFile=1\n" + entry("a.Vok", "out.Vok", "DeleteInputFile"));
        writeWhole(in(std::string(name) + ".running"), ProgressImage::opened().bytes());
        run(in(name));
        EXPECT_TRUE(exists(name));
        EXPECT_FALSE(exists(std::string(name) + ".running"));
    }
    EXPECT_TRUE(exists("a.Vok"));
    EXPECT_FALSE(exists("out.Vok"));
    EXPECT_EQ(errors_, "");
}

TEST_F(DeletionTest, APathInQuotesIsRefused) {
    writeJob("DeleteConfigFile=1\n" + entry("a.Vok", "out.Vok"));
    run('"' + job_ + '"');
    EXPECT_EQ(files(), (Names{"a.Vok", "scene.kvc", "scene.kvc.running"}));
}

TEST_F(DeletionTest, AMissingJobSilentlyLosesItsMarker) {
    run();
    EXPECT_EQ(files(), Names{"a.Vok"});
    EXPECT_EQ(errors_, "");
}

TEST_F(DeletionTest, AnEmptyJobSilentlyLosesItsMarker) {
    runJob("");
    EXPECT_EQ(files(), (Names{"a.Vok", "scene.kvc"}));
    EXPECT_EQ(errors_, "");
}

TEST_F(DeletionTest, AJobWithoutEntriesObeysDeleteConfigFile) {
    runJob("DeleteConfigFile=1\n");
    EXPECT_EQ(files(), Names{"a.Vok"});
}

TEST_F(DeletionTest, WithoutAPathTheMarkerInTheCurrentFolderIsDeleted) {
    writeWhole(in(".running"), "");
    run("", folder_.path());
    EXPECT_EQ(files(), (Names{"a.Vok", "scene.kvc.running"}));
}

TEST_F(DeletionTest, AJobNamedBySuffixAloneIsOpened) {
    writeWhole(in(".kvc"), "DeleteConfigFile=1\n" + entry("a.Vok", "out.Vok"));
    run(".kvc", folder_.path());
    EXPECT_EQ(files(), (Names{"a.Vok", "out.Vok", "scene.kvc.running"}));
}

TEST_F(DeletionTest, AMarkerThatIsAFolderIsKept) {
    std::filesystem::remove(pathOfUtf8(marker_));
    std::filesystem::create_directory(pathOfUtf8(marker_));
    runJob("UseProgressBar=1\n" + entry("a.Vok", "out.Vok"));
    EXPECT_TRUE(exists("scene.kvc.running"));
    EXPECT_TRUE(exists("out.Vok"));
}

}  // namespace
}  // namespace korvalite::core::test

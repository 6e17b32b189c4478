// SPDX-License-Identifier: MIT
//
// How the entries of a job end: kinds, targets, failures and their message boxes.
#include "jobs/job_run.h"

namespace korvalite::core::test {
namespace {

class EntriesTest : public JobTest {
protected:
    EntriesTest() { writeMesh("a.Vok"); }

    // The vertex count of the output of an entry with these lines.
    std::int64_t resultOf(const std::string& lines) {
        runJob(entry("a.Vok", "out.Vok", lines));
        EXPECT_EQ(errors_, "") << lines;
        return vertexCountOf(in("out.Vok"));
    }
    void expectFailure(const std::string& input, const std::string& output,
                       const std::string& kind) {
        runJob(entry(input, output, "", kind));
        EXPECT_EQ(errors_, failureBox(in(input))) << input << ' ' << output << ' ' << kind;
        EXPECT_FALSE(exists(output));
    }
};

TEST_F(EntriesTest, DecimateMeshReachesItsTarget) {
    runJob(entry("a.Vok", "out.Vok", "", "Decimate mesh"));
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(vertexCountOf(in("out.Vok")), kVertexCount / 2);
}

TEST_F(EntriesTest, ThePercentageTakesPrecedenceOverTheNumber) {
    EXPECT_EQ(resultOf("DecimationTargetNum=300"), kVertexCount / 2);
    EXPECT_EQ(resultOf("DecimationTargetPourcent=-1\nDecimationTargetNum=300"), 300);
    EXPECT_EQ(resultOf("DecimationTargetPourcent=100"), kVertexCount);
    EXPECT_EQ(resultOf("DecimationTargetPourcent=33.4"), 133);
}

TEST_F(EntriesTest, NegativeTargetsDecimateNothing) {
    EXPECT_EQ(resultOf("DecimationTargetPourcent=-1\nDecimationTargetNum=-5"), kVertexCount);
    EXPECT_EQ(resultOf("DecimationTargetPourcent=-20"), kVertexCount);
    EXPECT_EQ(resultOf("DecimationTargetPourcent=nan"), kVertexCount);
}

TEST_F(EntriesTest, ATargetOfZeroDecimatesAsFarAsPossible) {
    const std::int64_t vertexCount = resultOf("DecimationTargetPourcent=0");
    EXPECT_GE(vertexCount, 0);
    EXPECT_LT(vertexCount, kVertexCount / 4);
}

TEST_F(EntriesTest, WithoutAKindTheSuffixesDecide) {
    runJob(entry("a.Vok", "out.VOK"));
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(vertexCountOf(in("out.VOK")), kVertexCount / 2);
}

TEST_F(EntriesTest, StlDecimatesButWritesNoFile) {
    runJob("StartBatch\nInputFile=" + in("a.Vok") + "\nOutputFile=" + in("out.stl") +
           "\nDeleteInputFile=1\nEndBatch\n");
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(files(), std::set<std::string>{"scene.kvc"});
}

TEST_F(EntriesTest, KindsThatDoNotMatchTheirFilesFail) {
    expectFailure("a.Vok", "out.Vok", "Build progressive mesh");
    expectFailure("a.Vok", "out.Vok", "Decimate progressive mesh");
    expectFailure("a.Vok", "out.ply", "Decimate mesh");
    expectFailure("a.Vok", "out.ply", "");
    expectFailure("a.Vok", "Vok", "");
}

TEST_F(EntriesTest, UnreadableInputsFail) {
    expectFailure("none.Vok", "out.Vok", "Decimate mesh");
    writeWhole(in("magic.Vok"), "Vokx" + std::string(100, '\0'));
    expectFailure("magic.Vok", "out.Vok", "Decimate mesh");
    writeWhole(in("short.Vok"), "Vokb" + std::string(27, '\0'));
    expectFailure("short.Vok", "out.Vok", "");
    writeWhole(in("mesh.obj"), "v 0 0 0\n");
    expectFailure("mesh.obj", "out.Vok", "");
    writeWhole(in("mesh.kvm"), "no such mesh");
    expectFailure("mesh.kvm", "out.Vok", "Decimate mesh");
    expectFailure("mesh.kvm", "out.kvm", "");
}

TEST_F(EntriesTest, AnIndexOutOfRangeFails) {
    VokBuilder file;
    file.points({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}).triangles({{0, 1, 2}, {0, 2, 3}}).end();
    writeWhole(in("bad.Vok"), file.bytes());
    expectFailure("bad.Vok", "out.Vok", "");
}

TEST_F(EntriesTest, AnEntryWithoutFilesFailsWithoutAName) {
    runJob("StartBatch\nEndBatch\n");
    EXPECT_EQ(errors_, failureBox(""));
}

TEST_F(EntriesTest, AFailedEntryDoesNotStopTheBatch) {
    writeMesh("b.Vok");
    runJob(entry("a.Vok", "out1.Vok") + entry("none.Vok", "out2.Vok") + entry("b.Vok", "out3.Vok") +
           entry("none2.Vok", "out4.Vok"));
    EXPECT_EQ(errors_, failureBox(in("none.Vok")) + failureBox(in("none2.Vok")));
    EXPECT_EQ(vertexCountOf(in("out1.Vok")), kVertexCount / 2);
    EXPECT_EQ(vertexCountOf(in("out3.Vok")), kVertexCount / 2);
}

TEST_F(EntriesTest, EntriesRunInTheOrderOfTheFile) {
    writeMesh("b.Vok");
    runJob(entry("a.Vok", "same.Vok", "DecimationTargetPourcent=25") +
           entry("b.Vok", "same.Vok", "DecimationTargetPourcent=75"));
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(vertexCountOf(in("same.Vok")), kVertexCount * 3 / 4);
}

TEST_F(EntriesTest, AnOutputCanFeedTheNextEntry) {
    runJob(entry("a.Vok", "b.Vok") + entry("b.Vok", "c.Vok"));
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(vertexCountOf(in("c.Vok")), kVertexCount / 4);
}

TEST_F(EntriesTest, AnUnwritableOutputIsSilent) {
    writeMesh("b.Vok");
    runJob(entry("a.Vok", "no such folder/out.Vok") + entry("b.Vok", "out.Vok"));
    EXPECT_EQ(errors_, "");
    EXPECT_FALSE(exists("no such folder"));
    EXPECT_EQ(vertexCountOf(in("out.Vok")), kVertexCount / 2);
}

TEST_F(EntriesTest, AFullDiskIsSilent) {
    ASSERT_TRUE(std::filesystem::exists("/dev/full"));
    std::filesystem::create_symlink("/dev/full", pathOfUtf8(in("full.Vok")));
    runJob(entry("a.Vok", "full.Vok"));
    EXPECT_EQ(errors_, "");
    EXPECT_TRUE(std::filesystem::exists("/dev/full"));
}

TEST_F(EntriesTest, InputsWithTheSameNameStopEverythingWithOneBox) {
    writeMesh("b.Vok");
    runJob(entry("a.Vok", "1.Vok") + entry("b.Vok", "2.Vok") + entry("A.VOK", "3.Vok") +
           entry("b.vok", "4.Vok"));
    EXPECT_EQ(
        errors_,
        "Cannot preprocess this Tool!\tSeveral Subforms have the same name in this "
        "tool:\\n   - A\\n   - b\\nPlease, change these Subform names and ensure all Subforms "
        "have unique names!\n");
    EXPECT_EQ(files(), (std::set<std::string>{"a.Vok", "b.Vok", "scene.kvc"}));
}

TEST_F(EntriesTest, OutputsWithTheSameNameDoNotClash) {
    writeMesh("b.Vok");
    runJob(entry("a.Vok", "out.Vok") + entry("b.Vok", "out.Vok"));
    EXPECT_EQ(errors_, "");
    EXPECT_TRUE(exists("out.Vok"));
}

TEST_F(EntriesTest, AnUnclosedEntryRunsToo) {
    runJob("StartBatch Decimate mesh\nInputFile=" + in("a.Vok") + "\nOutputFile=" + in("out.Vok") +
           "\nDecimationTargetNum=100");
    EXPECT_EQ(vertexCountOf(in("out.Vok")), 100);
}

TEST_F(EntriesTest, KeysOutsideEntriesAffectNoMesh) {
    runJob("DecimationTargetPourcent=10\n" + entry("a.Vok", "out.Vok"));
    EXPECT_EQ(vertexCountOf(in("out.Vok")), kVertexCount / 2);
}

TEST_F(EntriesTest, AJobPathWithoutASeparatorWorks) {
    writeMesh("a.Vok", 80);
    writeJob("StartBatch\nInputFile=a.Vok\nOutputFile=out.Vok\nDecimationTargetNum=100\nEndBatch");
    run("scene.kvc", folder_.path());
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(vertexCountOf(in("out.Vok")), 100);
    EXPECT_EQ(files(), (std::set<std::string>{"a.Vok", "out.Vok", "scene.kvc"}));
}

TEST_F(EntriesTest, AForeignScratchFileIsKeptAndNoneIsLeft) {
    writeMesh("a.Vok", 80);
    writeWhole(in("VSplitList.data"), "in use");
    runJob(entry("a.Vok", "out.Vok"));
    EXPECT_EQ(readWhole(in("VSplitList.data")), "in use");
    EXPECT_EQ(files(), (std::set<std::string>{"VSplitList.data", "a.Vok", "out.Vok", "scene.kvc"}));
}

TEST_F(EntriesTest, TwoRunsOfOneJobGiveTheSameBytes) {
    runJob(entry("a.Vok", "out.Vok"));
    const std::string first = readWhole(in("out.Vok"));
    run();
    EXPECT_EQ(readWhole(in("out.Vok")), first);
}

TEST_F(EntriesTest, HostileJobFilesAreSilent) {
    using namespace std::string_literals;
    const std::string good = entry("a.Vok", "out.Vok");
    const std::string hostile[] = {
        "\0"s + good,
        std::string(5'000'000, 'x'),
        std::string(1000, '\0'),
        "\xFF\xFE" + good.substr(0, 10),
        "EndBatch\nEndBatch\n",
        "=\n:\n==\r\r\n\n",
    };
    for (const std::string& text : hostile) {
        runJob(text);
        EXPECT_EQ(errors_, "");
        EXPECT_EQ(files(), (std::set<std::string>{"a.Vok", "scene.kvc"}));
    }
}

TEST_F(EntriesTest, AHundredThousandEntriesFinishInTime) {
    std::string text;
    for (int i = 0; i < 100'000; ++i)
        text += "StartBatch\nInputFile=" + std::to_string(i) + ".Vok\nEndBatch\n";
    runJob(text);
    EXPECT_EQ(std::count(errors_.begin(), errors_.end(), '\n'), 100'000);
    runJob(text + text);
    EXPECT_EQ(std::count(errors_.begin(), errors_.end(), '\n'), 1);
}

}  // namespace
}  // namespace korvalite::core::test

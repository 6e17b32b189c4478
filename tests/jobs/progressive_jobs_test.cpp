// SPDX-License-Identifier: MIT
//
// Jobs that build progressive meshes and extract levels from them, with the real executable.
#include "jobs/job_run.h"

namespace korvalite::core::test {
namespace {

constexpr const char* kBuild = "Build progressive mesh";
constexpr const char* kLevel = "Decimate progressive mesh";

class ProgressiveJobs : public JobTest {
protected:
    ProgressiveJobs() { writeMesh("a.Vok"); }

    void build(const std::string& lines = "", const std::string& output = "a.kvm") {
        runJob(entry("a.Vok", output, lines, kBuild));
        EXPECT_EQ(errors_, "");
    }
    // The vertex count of a level of a.kvm.
    std::int64_t levelOf(const std::string& lines) {
        runJob(entry("a.kvm", "level.Vok", lines, kLevel));
        EXPECT_EQ(errors_, "") << lines;
        return vertexCountOf(in("level.Vok"));
    }
    std::int64_t levelOfCount(std::int64_t count) {
        return levelOf("DecimationTargetPourcent=-1\nDecimationTargetNum=" + std::to_string(count));
    }
    std::int64_t levelOfPercent(const std::string& percent) {
        return levelOf("DecimationTargetPourcent=" + percent);
    }
    std::int32_t headerWord(const std::string& name, std::size_t offset) const {
        const std::string bytes = readWhole(in(name));
        std::uint32_t word = 0;
        for (std::size_t i = 4; i-- > 0;)
            word = (word << 8U) | static_cast<unsigned char>(bytes.at(offset + i));
        return static_cast<std::int32_t>(word);
    }
    void expectFailure(const std::string& input, const std::string& output,
                       const std::string& kind = "") {
        runJob(entry(input, output, "", kind));
        EXPECT_EQ(errors_, failureBox(in(input))) << input << ' ' << output << ' ' << kind;
        EXPECT_FALSE(exists(output));
    }

    // Offsets in the header.
    static constexpr std::size_t kTradeOff = 36;
    static constexpr std::size_t kAsked = 48;
    static constexpr std::size_t kFinal = 52;
    static constexpr std::size_t kPosition = 56;
    static constexpr std::size_t kSplits = 60;
};

TEST_F(ProgressiveJobs, BuildReachesItsLowestNumberWhateverTheTarget) {
    for (const std::int32_t lowest : {150, 60}) {
        build("DecimationTargetNum=300\nProgressiveMeshMinNum=" + std::to_string(lowest));
        EXPECT_EQ(headerWord("a.kvm", kFinal), lowest);
        EXPECT_EQ(headerWord("a.kvm", kSplits), kVertexCount - lowest);
        EXPECT_EQ(headerWord("a.kvm", kPosition), kVertexCount - lowest);
        EXPECT_EQ(headerWord("a.kvm", kAsked), -1);
        EXPECT_EQ(headerWord("a.kvm", kTradeOff), 1);
    }
}

TEST_F(ProgressiveJobs, WithoutAKindTheSuffixesDecide) {
    runJob(entry("a.Vok", "b.KVM"));
    EXPECT_EQ(errors_, "");
    build("", "a.kvm");
    EXPECT_EQ(readWhole(in("b.KVM")), readWhole(in("a.kvm")));
    runJob(entry("b.KVM", "level.VOK"));
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(vertexCountOf(in("level.VOK")), kVertexCount / 2);
}

TEST_F(ProgressiveJobs, KindsThatDoNotMatchTheirFilesFail) {
    build();
    expectFailure("a.kvm", "out.kvm");
    expectFailure("a.kvm", "out.kvm", kBuild);
    expectFailure("a.kvm", "out.kvm", kLevel);
    expectFailure("a.kvm", "out.Vok", "Decimate mesh");
    expectFailure("a.kvm", "out.Vok", kBuild);
    expectFailure("a.kvm", "out.ply", kLevel);
    expectFailure("a.Vok", "out.Vok", kBuild);
    expectFailure("a.Vok", "out.Vok", kLevel);
    expectFailure("a.Vok", "out.kvm", "Decimate mesh");
    expectFailure("a.Vok", "out.kvm", kLevel);
    expectFailure("none.kvm", "out.Vok", kLevel);
    expectFailure("none.kvm", "out.Vok");
}

TEST_F(ProgressiveJobs, ThePercentageTakesPrecedenceOverTheNumber) {
    build("ProgressiveMeshMinNum=100");
    EXPECT_EQ(levelOfPercent("50"), 200);
    EXPECT_EQ(levelOfPercent("33.4"), 133);
    EXPECT_EQ(levelOf("DecimationTargetNum=300"), 200) << "the percentage wins";
    EXPECT_EQ(levelOfCount(300), 300);
    EXPECT_EQ(levelOfCount(101), 101);
    EXPECT_EQ(levelOfCount(399), 399);
}

TEST_F(ProgressiveJobs, BelowTheLowestLevelTheLowestIsWritten) {
    build("ProgressiveMeshMinNum=100");
    for (const std::int64_t count : {100, 99, 50, 4, 1, 0, -1, -5, -2000000000})
        EXPECT_EQ(levelOfCount(count), 100) << count;
    for (const char* percent : {"25", "24.9", "1", "0", "-0", "-20", "nan"})
        EXPECT_EQ(levelOfPercent(percent), 100) << percent;
}

TEST_F(ProgressiveJobs, AboveTheFullCountTheInputIsWritten) {
    build("ProgressiveMeshMinNum=100");
    for (const std::int64_t count : {400, 401, 5000, 2000000000})
        EXPECT_EQ(levelOfCount(count), kVertexCount) << count;
    for (const char* percent : {"100", "100.3", "150", "10000"})
        EXPECT_EQ(levelOfPercent(percent), kVertexCount) << percent;
    // What no integer can hold becomes the lowest integer, as in every other target.
    EXPECT_EQ(levelOfPercent("1e30"), 100);
    EXPECT_EQ(levelOfPercent("inf"), 100);
}

TEST_F(ProgressiveJobs, WithoutATargetTheLowestLevelIsWritten) {
    build("ProgressiveMeshMinNum=100");
    runJob("StartBatch\nInputFile=" + in("a.kvm") + "\nOutputFile=" + in("level.Vok") +
           "\nEndBatch\n");
    EXPECT_EQ(vertexCountOf(in("level.Vok")), 100) << "the default is 4 vertices";
}

TEST_F(ProgressiveJobs, TheLowestLevelEqualsADecimationToItsCount) {
    for (const char* reorder : {"DoReorder=1\n", "DoReorder=0\n"}) {
        build(std::string(reorder) + "ProgressiveMeshMinNum=100");
        EXPECT_EQ(levelOfCount(100), 100);
        runJob(entry("a.Vok", "direct.Vok", std::string(reorder) + "DecimationTargetPourcent=25"));
        EXPECT_EQ(vertexCountOf(in("direct.Vok")), 100);
        EXPECT_EQ(readWhole(in("direct.Vok")), readWhole(in("level.Vok"))) << reorder;
    }
}

TEST_F(ProgressiveJobs, WithoutReorderingALevelEqualsADecimationToItsCount) {
    build("DoReorder=0");
    for (const char* percent : {"80", "50", "20"}) {
        levelOfPercent(percent);
        runJob(entry("a.Vok", "direct.Vok",
                     std::string("DoReorder=0\nDecimationTargetPourcent=") + percent));
        EXPECT_EQ(readWhole(in("direct.Vok")), readWhole(in("level.Vok"))) << percent;
    }
}

TEST_F(ProgressiveJobs, WithoutReorderingTheFullLevelEqualsItsInput) {
    build("DoReorder=0");
    EXPECT_EQ(levelOfPercent("100"), kVertexCount);
    // A decimation with nothing to do writes the mesh unchanged.
    runJob(entry("a.Vok", "copy.Vok", "DoReorder=0\nDecimationTargetPourcent=100"));
    EXPECT_EQ(readWhole(in("level.Vok")), readWhole(in("copy.Vok")));
}

TEST_F(ProgressiveJobs, TwoBuildsGiveTheSameLevels) {
    build();
    levelOfPercent("40");
    const std::string mesh = readWhole(in("a.kvm"));
    const std::string level = readWhole(in("level.Vok"));
    build();
    levelOfPercent("40");
    EXPECT_EQ(readWhole(in("a.kvm")), mesh) << "extracting a level leaves the file unchanged";
    EXPECT_EQ(readWhole(in("level.Vok")), level);
}

TEST_F(ProgressiveJobs, OneJobCanBuildAndExtractALevel) {
    runJob(entry("a.Vok", "a.kvm") + entry("a.kvm", "level.Vok"));
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(vertexCountOf(in("level.Vok")), kVertexCount / 2);
}

TEST_F(ProgressiveJobs, TwoLevelsOfOneFileNeedTwoJobs) {
    build();
    runJob(entry("a.kvm", "one.Vok") + entry("a.kvm", "two.Vok"));
    EXPECT_NE(errors_.find("Several Subforms have the same name in this tool:"), std::string::npos);
    EXPECT_FALSE(exists("one.Vok"));
    EXPECT_FALSE(exists("two.Vok"));
}

TEST_F(ProgressiveJobs, ALevelCanBeAnObjOrNoFile) {
    build();
    runJob(entry("a.kvm", "level.obj"));
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(readWhole(in("level.obj")).substr(0, 2), "v ");
    const std::set<std::string> before = files();
    runJob(entry("a.kvm", "level.stl"));
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(files(), before);
}

TEST_F(ProgressiveJobs, TheProgressiveMeshIsDeletedOnRequest) {
    build();
    EXPECT_EQ(levelOf("DeleteInputFile=1"), kVertexCount / 2);
    EXPECT_EQ(files(), (std::set<std::string>{"a.Vok", "level.Vok", "scene.kvc"}));
}

TEST_F(ProgressiveJobs, SeveralThreadsLeaveACompleteFileToo) {
    build();
    const std::string one = readWhole(in("a.kvm"));
    build("NumThread=4");
    EXPECT_EQ(headerWord("a.kvm", kTradeOff), 2);
    EXPECT_EQ(levelOfPercent("50"), kVertexCount / 2);
    EXPECT_GE(readWhole(in("a.kvm")).size(), one.size() / 2) << "more than the header";
}

TEST_F(ProgressiveJobs, AnUnwritableFileIsSilent) {
    runJob(entry("a.Vok", "no such folder/out.kvm"));
    EXPECT_EQ(errors_, "");
    ASSERT_TRUE(std::filesystem::exists("/dev/full"));
    std::filesystem::create_symlink("/dev/full", pathOfUtf8(in("full.kvm")));
    runJob(entry("a.Vok", "full.kvm"));
    EXPECT_EQ(errors_, "");
}

TEST_F(ProgressiveJobs, DamagedFilesDoNotStopTheNextEntry) {
    build();
    const std::string sound = readWhole(in("a.kvm"));
    const std::string huge(4, '\x7F');
    struct Row {
        const char* name;
        std::string bytes;
        bool fails;
    };
    const auto with = [&sound](std::size_t offset, const std::string& bytes) {
        std::string damaged = sound;
        return damaged.replace(offset, bytes.size(), bytes);
    };
    const std::vector<Row> rows{
        {"empty", "", false},
        {"counts made of letters",
         "no progressive mesh at all, but more than the header's 99 bytes of text, so "
         "that every field of it is something",
         true},
        {"half a header", sound.substr(0, 60), true},
        {"header", sound.substr(0, 99), true},
        {"half", sound.substr(0, sound.size() / 2), false},
        {"without the last byte", sound.substr(0, sound.size() - 1), false},
        {"triangles", with(75, huge), true},
        {"vertices", with(79, huge), true},
        {"UV indices", with(83, huge), true},
        {"UVs", with(87, huge), true},
        {"colours", with(91, huge), true},
        {"mask", with(95, huge), true},
        {"one vertex more", with(79, std::string("\x91\x01\0\0", 4)), true},
        {"splits", with(60, huge), false},
        {"position", with(56, huge), false},
        {"triangle of no vertex", with(99, huge), true},
    };
    for (const Row& row : rows) {
        writeWhole(in("bad.kvm"), row.bytes);
        std::filesystem::remove(pathOfUtf8(in("good.Vok")));
        runJob(entry("bad.kvm", "bad.Vok") + entry("a.kvm", "good.Vok"));
        EXPECT_EQ(errors_, row.fails ? failureBox(in("bad.kvm")) : "") << row.name;
        EXPECT_EQ(vertexCountOf(in("good.Vok")), kVertexCount / 2) << row.name;
    }
}

}  // namespace
}  // namespace korvalite::core::test

// SPDX-License-Identifier: MIT
//
// Jobs on the sample meshes, run by the executable, give the same bytes as ever, in debug, release
// and sanitizer builds alike, and with every width of lanes. README.md in this folder explains how
// to renew the hashes.
#include "jobs/job_run.h"
#include "support/fnv_hash.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

namespace korvalite::core::test {
namespace {

struct SampleJob {
    const char* name;
    const char* mesh;
    const char* outputSuffix;
    const char* lines;  // further lines of the entry
};
void PrintTo(const SampleJob& row, std::ostream* out) {
    *out << row.name;
}

const SampleJob kJobs[] = {
    {"torus", "synth-torus.Vok", ".Vok", "DecimationTargetPourcent=20"},
    {"torus_by_area", "synth-torus.Vok", ".Vok", "DecimationTargetPourcent=20\nUseAreaWeighting=1"},
    {"torus_unprotected", "synth-torus.Vok", ".Vok",
     "DecimationTargetNum=60\nProtectTopology=0\nAvoidNormalReverse=0"},
    {"torus_in_old_order", "synth-torus.Vok", ".kvm", "DoReorder=0"},
    {"torus_levels", "synth-torus.Vok", ".kvm", "ProgressiveMeshMinNum=40"},
    {"symmetric", "synth-symmetric.Vok", ".Vok", "DecimationTargetPourcent=15\nSymmetry=x"},
    {"asymmetric", "spot.Vok", ".Vok", "DecimationTargetPourcent=30\nSymmetry=y"},
    {"seams", "synth-seams.Vok", ".Vok", "DecimationTargetPourcent=25"},
    {"uvs", "spot.Vok", ".obj", "DecimationTargetPourcent=10"},
    {"colors", "spot-colored.Vok", ".Vok", "DecimationTargetPourcent=35\nUseVtxColorsCoef=80"},
    {"colors_without_weight", "spot-colored.Vok", ".Vok",
     "DecimationTargetPourcent=35\nUseVtxColorsCoef=1"},
    {"everything", "spot-everything.Vok", ".Vok", "DecimationTargetPourcent=50\nFreezeBorder=1"},
    {"everything_levels", "spot-everything.Vok", ".kvm", "Symmetry=x"},
    {"masked", "fish-masked.Vok", ".Vok", "DecimationTargetPourcent=40"},
};

// Reads lines "name hash".
std::map<std::string, std::string> committedHashes() {
    std::ifstream stream(KORVALITE_SOURCE_DIR "/tests/golden/sample_outputs.txt");
    std::map<std::string, std::string> hashes;
    std::string name;
    std::string hash;
    while (stream >> name >> hash)
        hashes[name] = hash;
    return hashes;
}

// A job, and the lanes to do it in. Those that the processor lacks are replaced by the plain
// routines.
class SampleOutputs : public JobTest,
                      public testing::WithParamInterface<std::tuple<SampleJob, const char*>> {
protected:
    SampleOutputs() { ::setenv("KORVALITE_LANES", std::get<1>(GetParam()), 1); }
    ~SampleOutputs() override { ::unsetenv("KORVALITE_LANES"); }
};

INSTANTIATE_TEST_SUITE_P(Job, SampleOutputs,
                         testing::Combine(testing::ValuesIn(kJobs),
                                          testing::Values("none", "sse2", "avx2")),
                         [](const auto& row) {
                             return std::get<0>(row.param).name + std::string("_") +
                                    std::get<1>(row.param);
                         });

TEST_P(SampleOutputs, AreTheSameBytesAsEver) {
    const SampleJob& row = std::get<0>(GetParam());
    const std::string output = std::string("out") + row.outputSuffix;
    std::filesystem::copy_file(pathOfUtf8(std::string(KORVALITE_SOURCE_DIR "/samples/") + row.mesh),
                               pathOfUtf8(in("mesh.Vok")));
    runJob("StartBatch\nInputFile=" + in("mesh.Vok") + "\nOutputFile=" + in(output) + "\n" +
           row.lines + "\nEndBatch\n");
    EXPECT_EQ(errors_, "");
    ASSERT_TRUE(exists(output));
    const auto hashes = committedHashes();
    const auto committed = hashes.find(row.name);
    EXPECT_EQ(fnvText(readWhole(in(output))),
              committed == hashes.end() ? "none is committed" : committed->second)
        << row.name;
}

TEST(SampleOutputHashes, BelongToExistingJobs) {
    std::map<std::string, std::string> left = committedHashes();
    for (const SampleJob& row : kJobs)
        EXPECT_EQ(left.erase(row.name), 1U) << row.name;
    EXPECT_TRUE(left.empty()) << left.begin()->first;
}

}  // namespace
}  // namespace korvalite::core::test

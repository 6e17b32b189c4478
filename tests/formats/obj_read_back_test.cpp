// SPDX-License-Identifier: MIT
//
// Decimated samples, written in both formats: the OBJ and its side files contain the same as the
// .Vok.
#include "formats/obj_writer.h"

#include "drivers/run_decimation.h"
#include "formats/vok_reader.h"
#include "formats/vok_writer.h"
#include "progressive/progressive_mesh.h"
#include "shell/input_files.h"
#include "support/mesh_builder.h"
#include "support/obj_reader.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace korvalite::core {
namespace {

// A sample, whether it keeps its UVs, and how its colours are written.
struct Case {
    std::string sample;
    bool withUVs;
    ObjColorMode mode;
};

std::string nameOf(const testing::TestParamInfo<Case>& info) {
    std::string name = info.param.sample;
    for (char& c : name)
        if (c == '-') c = '_';
    const char* const modes[] = {"Plain", "Embedded", "SideFiles"};
    return name + (info.param.withUVs ? "_AsItIs_" : "_WithoutUVs_") +
           modes[static_cast<int>(info.param.mode)];
}

class ObjReadBack : public testing::TestWithParam<Case> {
protected:
    void SetUp() override {
        BatchSettings settings;
        const std::string sample = KORVALITE_SOURCE_DIR "/samples/" + GetParam().sample + ".Vok";
        settings.InputFile = sample.c_str();
        ASSERT_EQ(LoadInputInProgMesh(settings, pm_), FileContent::Mesh) << sample;
        if (!GetParam().withUVs) pm_.mesh.coordsUV.clear();
        pm_.recordVSplits = false;
        pm_.TargetNumItem = static_cast<std::uint32_t>(pm_.mesh.vertexCount()) / 4;
        ASSERT_EQ(RunDecimation(pm_), 0);
        const std::string vokPath = folder_ / u8"out.Vok";
        ASSERT_TRUE(exportDMesh(vokPath.c_str(), pm_.mesh));
        ASSERT_TRUE(importDMesh(vokPath.c_str(), vok_));
        ASSERT_TRUE(saveObj(objPath_.c_str(), pm_.mesh, GetParam().mode));
        obj_ = test::readObj(objPath_);
    }

    std::size_t vertexCount() const { return vok_.vertices.size(); }

    // Nine decimals identify a float of at least 2^-6 exactly.
    static void expectWritten(double read, float value) {
        if (std::fabs(value) >= 0.015625F) {
            ASSERT_EQ(static_cast<float>(read), value);
        } else {
            ASSERT_NEAR(read, double{value}, 0.5000001e-9);
        }
    }
    void expectSamePoints() const {
        ASSERT_EQ(obj_.points.size(), vertexCount());
        for (std::size_t i = 0; i < vertexCount(); ++i) {
            expectWritten(obj_.points[i][0], vok_.vertices[i].x);
            expectWritten(obj_.points[i][1], vok_.vertices[i].y);
            expectWritten(obj_.points[i][2], vok_.vertices[i].z);
        }
    }
    void expectSameFaces() const {
        ASSERT_EQ(obj_.faces.size() * 3, vok_.triangles.size());
        for (std::size_t c = 0; c < vok_.triangles.size(); ++c)
            ASSERT_EQ(obj_.faces[c / 3][c % 3], static_cast<int>(vok_.triangles[c]));
    }
    void expectSameUVs() const {
        if (vok_.coordsUV.empty()) {
            EXPECT_TRUE(obj_.uvs.empty());
            EXPECT_TRUE(obj_.faceUVs.empty());
            return;
        }
        ASSERT_EQ(vok_.coordsUV.size(), vok_.triangles.size());
        ASSERT_EQ(obj_.faceUVs.size(), obj_.faces.size());
        std::vector<bool> isUsed(obj_.uvs.size(), false);
        for (std::size_t c = 0; c < vok_.coordsUV.size(); ++c) {
            const auto index = static_cast<std::size_t>(obj_.faceUVs[c / 3][c % 3]);
            ASSERT_LT(index, obj_.uvs.size());
            isUsed[index] = true;
            expectWritten(obj_.uvs[index][0], vok_.coordsUV[c].u);
            expectWritten(obj_.uvs[index][1], vok_.coordsUV[c].v);
        }
        EXPECT_EQ(std::find(isUsed.begin(), isUsed.end(), false), isUsed.end());
    }

    void expectEmbeddedColors() const {
        ASSERT_EQ(obj_.mrgb.size(), vok_.hasColors() ? vertexCount() / 64 * 64 : 0);
        for (std::size_t i = 0; i < obj_.mrgb.size(); ++i) {
            const auto& [mask, red, green, blue] = obj_.mrgb[i];
            ASSERT_EQ(test::packColor(red, green, blue), vok_.vertexColors[i]);
        }
    }
    void expectSideFiles() const {
        expectSideFile(".colors", vok_.hasColors(), 4, [&](std::size_t i, const auto& bytes) {
            return test::packColor(bytes[0], bytes[1], bytes[2]) == vok_.vertexColors[i];
        });
        expectSideFile(".mask", vok_.hasMask(), 1, [&](std::size_t i, const auto& bytes) {
            return bytes[0] == vok_.maskValues[i];
        });
    }
    template <typename IsSame>
    void expectSideFile(const char* suffix, bool isThere, std::size_t width, IsSame isSame) const {
        const std::string bytes = test::readWhole(objPath_ + suffix);
        ASSERT_EQ(bytes.size(), isThere ? 4 + width * vertexCount() : 0);
        const auto* at = reinterpret_cast<const unsigned char*>(bytes.data()) + 4;
        for (std::size_t i = 0; isThere && i < vertexCount(); ++i, at += width)
            ASSERT_TRUE(isSame(i, at)) << suffix << " of vertex " << i;
    }

    test::ScratchFolder folder_;
    const std::string objPath_ = folder_ / u8"out.obj";
    ProgressiveMesh pm_;
    DMesh vok_;
    test::ObjFile obj_;
};

TEST_P(ObjReadBack, EqualsTheVokFile) {
    ASSERT_GT(vertexCount(), 100U);
    expectSamePoints();
    expectSameFaces();
    expectSameUVs();
    const bool isEmbedded = GetParam().mode == ObjColorMode::Embedded;
    EXPECT_EQ(obj_.otherLines.size(), isEmbedded ? 1U : 0U);  // only the comment
    if (isEmbedded) {
        expectEmbeddedColors();
    } else {
        EXPECT_TRUE(obj_.mrgb.empty());
    }
    if (GetParam().mode == ObjColorMode::SideFiles) {
        expectSideFiles();
    } else {
        expectSideFile(".colors", false, 4, [](std::size_t, const auto&) { return false; });
        expectSideFile(".mask", false, 1, [](std::size_t, const auto&) { return false; });
    }
}

std::vector<Case> cases() {
    std::vector<Case> all;
    for (const char* sample :
         {"spot-colored", "spot-everything", "fish-masked", "synth-seams", "synth-torus"}) {
        for (const bool withUVs : {true, false}) {
            for (const ObjColorMode mode :
                 {ObjColorMode::None, ObjColorMode::Embedded, ObjColorMode::SideFiles})
                all.push_back({sample, withUVs, mode});
        }
    }
    return all;
}
INSTANTIATE_TEST_SUITE_P(Samples, ObjReadBack, testing::ValuesIn(cases()), nameOf);

}  // namespace
}  // namespace korvalite::core

// SPDX-License-Identifier: MIT
#include "korva/command_test.h"
#include "korva/picture/png.h"

#include <gtest/gtest.h>
#include <korvalite/korvalite.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#define STBI_NO_STDIO
#include "korva/picture/quiet_stb.h"

namespace korva {
namespace {

class PictureCommand : public CommandTest {
protected:
    const std::string torus_ = sample("synth-torus.Vok");
};

/// Decodes a PNG file with as many channels as it has.
Image decode(const std::string& bytes) {
    int width = 0;
    int height = 0;
    int channels = 0;
    const std::unique_ptr<stbi_uc, decltype(&std::free)> pixels(
        stbi_load_from_memory(reinterpret_cast<const stbi_uc*>(bytes.data()),
                              static_cast<int>(bytes.size()), &width, &height, &channels, 0),
        &std::free);
    if (!pixels) return {};
    Image image{static_cast<std::size_t>(width),
                static_cast<std::size_t>(height),
                static_cast<std::size_t>(channels),
                {}};
    image.pixels.assign(pixels.get(), pixels.get() + image.width * image.height * image.channels);
    return image;
}

TEST_F(PictureCommand, APngHoldsTheImage) {
    for (const std::size_t channels : {3U, 4U}) {
        Image image{37, 21, channels, {}};
        for (std::size_t i = 0; i < 37 * 21 * channels; ++i)
            image.pixels.push_back(static_cast<std::uint8_t>(i * i / 7));
        writePng(path("ä日本.png"), image);
        const std::string bytes = test::readWhole(in("ä日本.png"));
        const char color = channels == 4 ? '\6' : '\2';
        const std::string start =
            std::string("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\x25\0\0\0\x15\b", 25) + color;
        EXPECT_EQ(bytes.substr(0, 26), start);
        const Image decoded = decode(bytes);
        EXPECT_EQ(decoded.width, 37U);
        EXPECT_EQ(decoded.channels, channels);
        EXPECT_EQ(decoded.pixels, image.pixels);
        EXPECT_EQ(fileCount(), 1U);
    }
}

TEST_F(PictureCommand, DrawsOneMesh) {
    ASSERT_EQ(run({"picture", torus_, in("a.png"), "--size", "160x90", "-q"}), ExitCode::Done)
        << err_;
    EXPECT_EQ(err_, "");
    EXPECT_TRUE(has(out_, "160 x 90 pixels.")) << out_;
    const Image image = decode(test::readWhole(in("a.png")));
    EXPECT_EQ(image.width, 160U);
    EXPECT_EQ(image.height, 90U);
    EXPECT_EQ(image.channels, 3U);
}

TEST_F(PictureCommand, DrawsTwoMeshesWithEveryOption) {
    ASSERT_EQ(run({"picture", torus_, torus_, in("a.PNG"), "--size", "160x90", "--view", "-30,20",
                   "--up", "z", "--background", "transparent", "--smooth", "--wireframe",
                   "--no-colors", "--threads", "2", "--json"}),
              ExitCode::Done)
        << err_;
    const nlohmann::json result = nlohmann::json::parse(out_);
    EXPECT_EQ(result["inputs"].size(), 2U);
    EXPECT_EQ(result["inputs"][1]["triangles"], 2916);
    EXPECT_EQ(result["output"]["width"], 160);
    const Image image = decode(test::readWhole(in("a.PNG")));
    ASSERT_EQ(image.channels, 4U);
    EXPECT_EQ(image.at(0, 0)[3], 0);
    for (std::size_t y = 0; y < 90; ++y)
        for (std::size_t x = 0; x < 80; ++x)
            EXPECT_TRUE(std::equal(image.at(x, y), image.at(x, y) + 4, image.at(x + 80, y)));
}

TEST_F(PictureCommand, OptionsOutOfRangeAreUsageErrors) {
    for (const auto& [option, value] :
         std::vector<std::pair<std::string, std::string>>{{"--size", "15x100"},
                                                          {"--size", "100x16385"},
                                                          {"--size", "100"},
                                                          {"--size", "x"},
                                                          {"--size", "100x"},
                                                          {"--size", "-100x100"},
                                                          {"--size", "1e2x100"},
                                                          {"--size", "100x100x3"},
                                                          {"--view", "behind"},
                                                          {"--view", "30"},
                                                          {"--view", "30,100"},
                                                          {"--up", "x"},
                                                          {"--background", ""},
                                                          {"--threads", "-1"},
                                                          {"--threads", "1025"}}) {
        EXPECT_EQ(run({"picture", torus_, in("a.png"), option, value}), ExitCode::Usage)
            << option << ' ' << value;
        EXPECT_NE(err_, "");
    }
    EXPECT_EQ(run({"picture", torus_, in("a.jpg")}), ExitCode::Usage);
    EXPECT_TRUE(has(err_, "A picture is a .png file")) << err_;
    EXPECT_EQ(run({"picture", torus_, in("a")}), ExitCode::Usage);
    EXPECT_EQ(run({"picture", torus_}), ExitCode::Usage);
    EXPECT_EQ(run({"picture", torus_, torus_, torus_, in("a.png")}), ExitCode::Usage);
    EXPECT_EQ(fileCount(), 0U);
}

TEST_F(PictureCommand, ShowsWhereTwoMeshesDiffer) {
    test::writeWhole(in("a.obj"), "v 0 0 0\nv 4 0 0\nv 0 4 0\nf 1 2 3\n");
    test::writeWhole(in("b.obj"), "v 0 0 0\nv 4 0 0\nv 0 4 2\nf 1 2 3\n");
    ASSERT_EQ(run({"picture", in("a.obj"), in("b.obj"), in("a.png"), "--errors", "--json", "--view",
                   "front", "--size", "128x64"}),
              ExitCode::Done)
        << err_;
    EXPECT_DOUBLE_EQ(nlohmann::json::parse(out_)["largestError"], 2);
    const std::string colored = test::readWhole(in("a.png"));
    ASSERT_EQ(run({"picture", in("a.obj"), in("b.obj"), in("a.png"), "--view", "front", "--size",
                   "128x64"}),
              ExitCode::Done);
    EXPECT_NE(test::readWhole(in("a.png")), colored);
}

TEST_F(PictureCommand, ErrorsNeedTwoMeshes) {
    EXPECT_EQ(run({"picture", torus_, in("a.png"), "--errors"}), ExitCode::Usage);
    EXPECT_TRUE(has(err_, "needs two meshes")) << err_;
    EXPECT_EQ(fileCount(), 0U);
}

TEST_F(PictureCommand, BadInputLeavesNothing) {
    EXPECT_EQ(run({"picture", in("missing.obj"), in("a.png")}), ExitCode::BadInput);
    EXPECT_EQ(run({"picture", torus_, in("missing.obj"), in("a.png")}), ExitCode::BadInput);
    EXPECT_EQ(fileCount(), 0U);
    test::writeWhole(in("nan.obj"), "v nan 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    EXPECT_EQ(run({"picture", in("nan.obj"), in("a.png")}), ExitCode::BadInput);
    EXPECT_EQ(run({"picture", torus_, in("nan.obj"), in("a.png")}), ExitCode::BadInput);
    EXPECT_EQ(fileCount(), 1U);
}

TEST_F(PictureCommand, AFolderThatIsMissingGetsASentence) {
    EXPECT_EQ(run({"picture", torus_, in("missing/a.png"), "--size", "64x64"}),
              ExitCode::CannotWrite);
    EXPECT_TRUE(has(err_, "Cannot write ")) << err_;
    EXPECT_EQ(fileCount(), 0U);
}

TEST_F(PictureCommand, AFolderOfThatNameStays) {
    std::filesystem::create_directory(path("a.png"));
    EXPECT_EQ(run({"picture", torus_, in("a.png"), "--size", "64x64"}), ExitCode::CannotWrite);
    EXPECT_TRUE(std::filesystem::is_directory(path("a.png")));
    EXPECT_EQ(fileCount(), 1U);
}

}  // namespace
}  // namespace korva

// SPDX-License-Identifier: MIT
#include "korva/picture/draw_picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace korva {
namespace {

using Pixel = std::array<int, 4>;

Pixel pixelAt(const Image& image, std::size_t x, std::size_t y) {
    const std::uint8_t* p = image.at(x, y);
    return {p[0], p[1], p[2], image.channels == 4 ? p[3] : 255};
}

int brightness(const Pixel& pixel) {
    return pixel[0] + pixel[1] + pixel[2];
}

PictureSettings settingsFor(std::size_t width, std::size_t height, View view = {0, 0}) {
    PictureSettings settings;
    settings.width = width;
    settings.height = height;
    settings.view = view;
    settings.background = Background::Transparent;
    return settings;
}

Image draw(const korvalite::Mesh& mesh, const PictureSettings& settings) {
    return drawPicture(std::array{mesh}, settings);
}

/// A square of two triangles, seen from the front.
korvalite::Mesh square(float half = 1) {
    korvalite::Mesh mesh;
    mesh.positions = {-half, -half, 0, half, -half, 0, half, half, 0, -half, half, 0};
    mesh.triangles = {0, 1, 2, 0, 2, 3};
    return mesh;
}

/// A bumpy surface with enough triangles for several chunks of work.
korvalite::Mesh bumps(std::uint32_t side = 80) {
    korvalite::Mesh mesh;
    for (std::uint32_t i = 0; i < side * side; ++i) {
        const float x = static_cast<float>(i % side) / static_cast<float>(side);
        const float y = static_cast<float>(i / side) / static_cast<float>(side);
        mesh.positions.insert(mesh.positions.end(), {x, y, 0.1F * std::sin(20 * x * y + 9 * x)});
        if (i % side + 1 == side || i / side + 1 == side) continue;
        mesh.triangles.insert(mesh.triangles.end(), {i, i + 1, i + side});
        mesh.triangles.insert(mesh.triangles.end(), {i + 1, i + side + 1, i + side});
    }
    return mesh;
}

/// A cube whose six sides have colours of their own, by the axis that they face.
korvalite::Mesh colorfulCube() {
    korvalite::Mesh mesh;
    for (std::uint32_t side = 0; side < 6; ++side) {
        const std::size_t axis = side / 2;
        const float sign = side % 2 == 0 ? 1.0F : -1.0F;
        for (std::uint32_t k = 0; k < 4; ++k) {
            std::array<float, 3> point{};
            point[axis] = sign;
            point[(axis + 1) % 3] = k == 1 || k == 2 ? sign : -sign;
            point[(axis + 2) % 3] = k >= 2 ? 1.0F : -1.0F;
            mesh.positions.insert(mesh.positions.end(), point.begin(), point.end());
            std::array<std::uint8_t, 4> color{20, 20, 20, 255};
            color[axis] = sign > 0 ? 250 : 20;
            if (sign < 0) color[(axis + 1) % 3] = color[(axis + 2) % 3] = 250;
            mesh.colors.insert(mesh.colors.end(), color.begin(), color.end());
        }
        const std::uint32_t first = 4 * side;
        mesh.triangles.insert(mesh.triangles.end(), {first, first + 1, first + 2});
        mesh.triangles.insert(mesh.triangles.end(), {first, first + 2, first + 3});
    }
    return mesh;
}

/// Which side of the cube is in the middle: "x" or "-x", "y", ...
std::string sideSeen(const std::string& view, UpAxis upAxis) {
    PictureSettings settings = settingsFor(33, 33, parseView(view));
    settings.upAxis = upAxis;
    const Pixel pixel = pixelAt(draw(colorfulCube(), settings), 16, 16);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const int others = (pixel[(axis + 1) % 3] + pixel[(axis + 2) % 3]) / 2;
        if (std::abs(pixel[(axis + 1) % 3] - pixel[(axis + 2) % 3]) > 60) continue;
        const char name = static_cast<char>('x' + axis);
        return pixel[axis] > others ? std::string(1, name) : std::string("-") + name;
    }
    return "?";
}

TEST(Picture, NamedViewsSeeTheSideTheyName) {
    const auto sides = [](UpAxis upAxis) {
        std::vector<std::string> seen;
        for (const char* view : {"front", "back", "left", "right", "top", "bottom"})
            seen.push_back(sideSeen(view, upAxis));
        return seen;
    };
    using Names = std::vector<std::string>;
    EXPECT_EQ(sides(UpAxis::Y), (Names{"z", "-z", "-x", "x", "y", "-y"}));
    EXPECT_EQ(sides(UpAxis::Z), (Names{"-y", "y", "-x", "x", "z", "-z"}));
}

TEST(Picture, AViewIsANameOrTwoAngles) {
    EXPECT_EQ(parseView("-30,12.5").yaw, -30);
    EXPECT_EQ(parseView("-30,12.5").pitch, 12.5);
    EXPECT_EQ(parseView("360,-90").pitch, -90);
    EXPECT_EQ(parseView("iso").yaw, 45);
    for (const char* text : {"", ",", "30", "30,", ",20", "30;20", "30,20,10", "30,91", "361,0",
                             "nan,0", "inf,0", "Front", "30, 20", "1e999,0"})
        EXPECT_THROW(static_cast<void>(parseView(text)), korvalite::Error) << text;
}

TEST(Picture, AMeshFillsMostOfThePictureAndNothingElse) {
    const Image image = draw(square(), settingsFor(100, 200));
    for (std::size_t y = 0; y < 200; ++y)
        for (std::size_t x = 0; x < 100; ++x) {
            const bool isInside = x >= 7 && x < 93 && y >= 57 && y < 143;
            EXPECT_EQ(pixelAt(image, x, y)[3], isInside ? 255 : 0) << x << ' ' << y;
            if (!isInside) {
                EXPECT_EQ(brightness(pixelAt(image, x, y)), 0);
            }
        }
}

TEST(Picture, AnEdgeThroughAPixelCoversItInPart) {
    const Image image = draw(square(), settingsFor(50, 50));
    EXPECT_EQ(pixelAt(image, 2, 25)[3], 0);
    EXPECT_EQ(pixelAt(image, 3, 25)[3], 128);  // the square begins at 3.5
    EXPECT_EQ(pixelAt(image, 4, 25)[3], 255);
    EXPECT_EQ(pixelAt(image, 3, 3)[3], 64);
}

TEST(Picture, OnlyATransparentBackgroundHasAlpha) {
    PictureSettings settings = settingsFor(40, 40);
    EXPECT_EQ(draw(square(), settings).channels, 4U);
    const Pixel surface = pixelAt(draw(square(), settings), 20, 20);
    settings.background = Background::White;
    const Image white = draw(square(), settings);
    EXPECT_EQ(white.channels, 3U);
    EXPECT_EQ(pixelAt(white, 0, 0), (Pixel{255, 255, 255, 255}));
    EXPECT_EQ(pixelAt(white, 20, 20), surface);
    settings.background = Background::Dark;
    EXPECT_LT(brightness(pixelAt(draw(square(), settings), 0, 0)), 200);
    settings.background = Background::Light;
    EXPECT_GT(brightness(pixelAt(draw(square(), settings), 0, 39)), 600);
}

TEST(Picture, AnyNumberOfThreadsDrawsTheSameBytes) {
    const std::array meshes{bumps(), bumps(31)};
    for (const bool smooth : {false, true}) {
        PictureSettings settings = settingsFor(150, 90, {30, 20});
        settings.smooth = smooth;
        settings.wireframe = !smooth;
        const Image one = drawPicture(meshes, settings);
        for (const int threads : {2, 7}) {
            settings.threads = threads;
            EXPECT_EQ(drawPicture(meshes, settings).pixels, one.pixels) << threads;
        }
    }
}

TEST(Picture, TheOrderOfTrianglesMakesNoDifference) {
    korvalite::Mesh mesh = bumps();
    const Image image = draw(mesh, settingsFor(120, 90, {50, 10}));
    for (std::size_t i = 0; i < mesh.triangleCount() / 2; ++i)
        std::swap_ranges(&mesh.triangles[3 * i], &mesh.triangles[3 * i] + 3,
                         &mesh.triangles[mesh.triangles.size() - 3 * i - 3]);
    EXPECT_EQ(draw(mesh, settingsFor(120, 90, {50, 10})).pixels, image.pixels);
}

TEST(Picture, TwoMeshesShareViewAndScale) {
    const std::array same{square(), square()};
    const Image twice = drawPicture(same, settingsFor(200, 100));
    const Image once = draw(square(), settingsFor(100, 100));
    for (std::size_t y = 0; y < 100; ++y)
        for (std::size_t x = 0; x < 200; ++x)
            EXPECT_EQ(pixelAt(twice, x, y), pixelAt(once, x % 100, y)) << x << ' ' << y;

    const std::array halved{square(), square(0.5F)};
    const Image image = drawPicture(halved, settingsFor(200, 100));
    EXPECT_EQ(pixelAt(image, 150 + 20, 50)[3], 255);
    EXPECT_EQ(pixelAt(image, 150 + 21, 50)[3], 128);
    EXPECT_EQ(pixelAt(image, 150 + 22, 50)[3], 0);
    EXPECT_EQ(pixelAt(image, 92, 50)[3], 255);
}

TEST(Picture, AMeshStaysInItsHalf) {
    const std::array meshes{square(), square(100)};
    const Image image = drawPicture(meshes, settingsFor(201, 50));
    EXPECT_EQ(pixelAt(image, 99, 25)[3], 0);
    EXPECT_EQ(pixelAt(image, 100, 25)[3], 255);
    EXPECT_EQ(pixelAt(image, 200, 0)[3], 255);
}

TEST(Picture, LinesDarkenTheEdgesAndNothingElse) {
    PictureSettings settings = settingsFor(100, 100);
    const Image plain = draw(square(), settings);
    settings.wireframe = true;
    const Image lines = draw(square(), settings);
    for (std::size_t y = 7; y < 93; ++y)
        for (std::size_t x = 7; x < 93; ++x) {
            const auto fromEdge = [](std::size_t v) { return std::min(v - 7, 92 - v); };
            const std::size_t diagonal = x + y > 99 ? x + y - 99 : 99 - x - y;
            const std::size_t distance = std::min({fromEdge(x), fromEdge(y), diagonal});
            const int change = brightness(pixelAt(lines, x, y)) - brightness(pixelAt(plain, x, y));
            if (distance == 0) {
                EXPECT_LT(change, -40) << x << ' ' << y;
            }
            if (distance > 2) {
                EXPECT_EQ(change, 0) << x << ' ' << y;
            }
            EXPECT_LE(change, 0);
        }
}

TEST(Picture, LinesFadeWhereTheyWouldFillTheSurface) {
    PictureSettings settings = settingsFor(60, 60);
    const Image plain = draw(bumps(120), settings);
    settings.wireframe = true;
    EXPECT_EQ(draw(bumps(120), settings).pixels, plain.pixels);
}

TEST(Picture, TheBackOfASurfaceIsDarkerAndCooler) {
    const Pixel front = pixelAt(draw(square(), settingsFor(40, 40)), 20, 20);
    korvalite::Mesh turned = square();
    std::swap(turned.triangles[1], turned.triangles[2]);
    std::swap(turned.triangles[4], turned.triangles[5]);
    const Pixel back = pixelAt(draw(turned, settingsFor(40, 40)), 20, 20);
    EXPECT_LT(brightness(back), brightness(front) - 60);
    EXPECT_GT(front[0], front[2]);
    EXPECT_LT(back[0], back[2]);
}

TEST(Picture, SmoothShadingHidesFacetsButNotSharpEdges) {
    PictureSettings settings = settingsFor(160, 160, {20, 0});
    const Image flat = draw(bumps(12), settings);
    settings.smooth = true;
    EXPECT_NE(draw(bumps(12), settings).pixels, flat.pixels);
    korvalite::Mesh step;  // two squares at a right angle
    step.positions = {-1, -1, 0, 0, -1, 1, 1, -1, 0, 1, 1, 0, 0, 1, 1, -1, 1, 0};
    step.triangles = {0, 1, 4, 0, 4, 5, 1, 2, 3, 1, 3, 4};
    settings.smooth = false;
    const Image sharp = draw(step, settings);
    settings.smooth = true;
    EXPECT_EQ(draw(step, settings).pixels, sharp.pixels);
}

TEST(Picture, TrianglesAtVerticesThatAreNotFiniteAreLeftOut) {
    const Image clean = draw(square(), settingsFor(50, 50));
    for (const float value :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        korvalite::Mesh mesh = square();
        mesh.positions.insert(mesh.positions.end(), {value, 0, 0, 0, -value, 1});
        mesh.triangles.insert(mesh.triangles.end(), {0, 1, 4, 0, 2, 5, 1, 1, 2});
        for (const bool smooth : {false, true}) {
            PictureSettings settings = settingsFor(50, 50);
            settings.smooth = smooth;
            EXPECT_EQ(draw(mesh, settings).pixels, clean.pixels);
        }
    }
}

TEST(Picture, AnySizeOfMeshLooksTheSame) {
    const Image image = draw(square(), settingsFor(50, 50));
    for (const float size : {1e-30F, 1e-10F, 1e10F, 1.5e38F})
        EXPECT_EQ(draw(square(size), settingsFor(50, 50)).pixels, image.pixels) << size;
}

TEST(Picture, AFlatMeshSeenFromTheSideIsNothing) {
    const Image image = draw(square(), settingsFor(50, 50, {90, 0}));
    EXPECT_EQ(image.pixels, std::vector<std::uint8_t>(50U * 50U * 4U));
}

TEST(Picture, AMeshWithNothingToDrawIsRefused) {
    const auto codeFor = [](const korvalite::Mesh& first, const korvalite::Mesh& second) {
        try {
            static_cast<void>(drawPicture(std::array{first, second}, settingsFor(50, 50)));
        } catch (const korvalite::Error& error) {
            return error.code() == korvalite::ErrorCode::BadMesh;
        }
        return false;
    };
    korvalite::Mesh broken = square();
    for (float& coordinate : broken.positions)
        coordinate = std::numeric_limits<float>::quiet_NaN();
    korvalite::Mesh beyond = square();
    beyond.triangles[5] = 4;
    for (const korvalite::Mesh& bad : {korvalite::Mesh(), broken, beyond}) {
        EXPECT_TRUE(codeFor(bad, square()));
        EXPECT_TRUE(codeFor(square(), bad));
    }
    EXPECT_FALSE(codeFor(square(), square()));
}

}  // namespace
}  // namespace korva

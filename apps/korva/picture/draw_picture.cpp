// SPDX-License-Identifier: MIT
#include "korva/picture/draw_picture.h"

#include "korva/files/normals.h"
#include "korva/interrupt.h"
#include "korva/picture/surface_shader.h"
#include "korva/picture/visible_triangles.h"
#include "korva/picture/workers.h"

#include <algorithm>
#include <vector>

namespace korva {

namespace {

// Pictures are drawn in bands of rows, so that their samples take no more than 128 MB.
constexpr std::size_t kSamplesAtOnce = std::size_t{1} << 24U;
constexpr std::size_t kTrianglesAtOnce = 4096;

/// A large picture has many samples, and its rough edges look small.
std::size_t samplesPerPixelFor(const PictureSettings& settings) {
    return settings.width * settings.height <= std::size_t{1} << 22U ? 4 : 2;
}

/// The part of the picture that shows a mesh.
struct Panel {
    const korvalite::Mesh& mesh;
    std::size_t left;
    std::size_t width;
};

struct Sampling {
    std::size_t perPixel;  // along a row, and as many rows
    std::size_t firstRow;  // of pixels, and how many
    std::size_t rowCount;
};

void requireDrawable(const korvalite::Mesh& mesh) {
    const std::size_t vertexCount = mesh.vertexCount();
    const bool isGood = std::ranges::all_of(
        mesh.triangles, [&](std::uint32_t vertex) { return vertex < vertexCount; });
    if (!isGood)
        throw korvalite::Error(
            korvalite::ErrorCode::BadMesh,
            "A triangle refers to a vertex that does not exist; korva check says which.");
    for (std::size_t triangle = 0; triangle < mesh.triangleCount(); ++triangle)
        if (isDrawable(mesh, triangle)) return;
    throw korvalite::Error(korvalite::ErrorCode::BadMesh,
                           "A mesh has no triangle with finite vertices to draw.");
}

/// Light of the background at a height from 0 (top) to 1.
Light backgroundAt(Background background, float height) {
    Light top{};
    Light bottom{};
    switch (background) {
    case Background::White: return {1, 1, 1};
    case Background::Transparent: return {0, 0, 0};
    case Background::Light:
        top = linearOf(246, 246, 245);
        bottom = linearOf(222, 223, 226);
        break;
    case Background::Dark:
        top = linearOf(52, 55, 60);
        bottom = linearOf(27, 28, 31);
        break;
    }
    for (std::size_t k = 0; k < 3; ++k)
        top[k] += (bottom[k] - top[k]) * height;
    return top;
}

void drawBand(const Panel& panel, const Projection& projection, int threads,
              VisibleTriangles& visible) {
    const std::size_t count = panel.mesh.triangleCount();
    shareWork((count + kTrianglesAtOnce - 1) / kTrianglesAtOnce, threads, [&](std::size_t chunk) {
        const std::size_t end = std::min((chunk + 1) * kTrianglesAtOnce, count);
        for (std::size_t i = chunk * kTrianglesAtOnce; i < end; ++i) {
            throwIfInterrupted();
            ScreenTriangle triangle{};
            if (project(panel.mesh, i, projection, triangle))
                visible.draw(triangle, static_cast<std::uint32_t>(i));
        }
    });
}

/// A pixel from the sum of its samples; a share of them, `seen`, show the mesh.
void setPixel(const Light& sum, float seen, const Light& background, std::size_t channels,
              std::uint8_t* pixel) {
    for (std::size_t k = 0; k < 3; ++k) {
        if (channels == 3)
            pixel[k] = srgbOf(sum[k] + background[k] * (1 - seen));
        else
            pixel[k] = seen > 0 ? srgbOf(sum[k] / seen) : std::uint8_t{0};
    }
    if (channels == 4) pixel[3] = static_cast<std::uint8_t>(seen * 255 + 0.5F);
}

void shadeRow(const Panel& panel, std::size_t y, std::size_t perPixel, const Light& background,
              const VisibleTriangles& visible, SurfaceShader& shader, Image& image) {
    const float share = 1 / static_cast<float>(perPixel * perPixel);
    for (std::size_t x = 0; x < panel.width; ++x) {
        Light sum{};
        float seen = 0;
        for (std::size_t i = 0; i < perPixel * perPixel; ++i) {
            const std::size_t sampleX = x * perPixel + i % perPixel;
            const std::size_t sampleY = y * perPixel + i / perPixel;
            const std::uint32_t triangle = visible.at(sampleX, sampleY);
            if (triangle == VisibleTriangles::kNone) continue;
            const Light light = shader.at(triangle, sampleX, sampleY);
            seen += share;
            for (std::size_t k = 0; k < 3; ++k)
                sum[k] += std::min(light[k], 1.0F) * share;
        }
        setPixel(sum, seen, background, image.channels, image.at(panel.left + x, y));
    }
}

void shadeBand(const Panel& panel, const SurfaceLook& look, const Sampling& sampling,
               const PictureSettings& settings, const VisibleTriangles& visible, Image& image) {
    shareWork(sampling.rowCount, settings.threads, [&](std::size_t row) {
        throwIfInterrupted();
        const std::size_t y = sampling.firstRow + row;
        const Light background = backgroundAt(
            settings.background, (static_cast<float>(y) + 0.5F) / static_cast<float>(image.height));
        SurfaceShader shader(look);
        shadeRow(panel, y, sampling.perPixel, background, visible, shader, image);
    });
}

/// `projection` is to pixels, with (0, 0) in the middle of the panel.
void drawPanel(const Panel& panel, Projection projection, const PictureSettings& settings,
               const std::function<void(std::size_t rows)>& progress, Image& image) {
    Sampling sampling{samplesPerPixelFor(settings), 0, 0};
    const auto scale = static_cast<double>(sampling.perPixel);
    projection.scale *= scale;
    projection.middleX = static_cast<double>(panel.width) * scale / 2;
    projection.middleY = static_cast<double>(image.height) * scale / 2;
    const std::vector<float> normals =
        settings.smooth ? vertexNormals(panel.mesh) : std::vector<float>();
    const SurfaceLook look{panel.mesh, normals, projection, scale, settings.wireframe};

    const std::size_t perRow = panel.width * sampling.perPixel * sampling.perPixel;
    const std::size_t mostRows = std::clamp(kSamplesAtOnce / perRow, std::size_t{1}, image.height);
    VisibleTriangles visible(panel.width * sampling.perPixel, mostRows * sampling.perPixel);
    for (; sampling.firstRow < image.height; sampling.firstRow += sampling.rowCount) {
        progress(sampling.firstRow);
        sampling.rowCount = std::min(mostRows, image.height - sampling.firstRow);
        visible.start(sampling.firstRow * sampling.perPixel, sampling.rowCount * sampling.perPixel);
        drawBand(panel, projection, settings.threads, visible);
        shadeBand(panel, look, sampling, settings, visible, image);
    }
}

}  // namespace

Image drawPicture(std::span<const korvalite::Mesh> meshes, const PictureSettings& settings,
                  const DrawProgress& progress) {
    const Camera camera = cameraFor(settings.view, settings.upAxis);
    const std::size_t panelWidth = settings.width / meshes.size();
    for (const korvalite::Mesh& mesh : meshes)
        requireDrawable(mesh);
    const Projection projection = fit(meshes.front(), camera, static_cast<double>(panelWidth),
                                      static_cast<double>(settings.height));
    Image image{settings.width, settings.height, 3, {}};
    if (settings.background == Background::Transparent) image.channels = 4;
    image.pixels.resize(image.width * image.height * image.channels);
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        const bool isLast = i + 1 == meshes.size();
        const std::size_t left = i * panelWidth;
        const Panel panel{meshes[i], left, isLast ? settings.width - left : panelWidth};
        const auto rowsDone = [&](std::size_t rows) {
            if (progress) progress(i * image.height + rows, meshes.size() * image.height);
        };
        drawPanel(panel, projection, settings, rowsDone, image);
    }
    return image;
}

}  // namespace korva

// SPDX-License-Identifier: MIT
#include "korva/picture/surface_shader.h"

#include <algorithm>
#include <cmath>

namespace korva {

namespace {

const Light kClay = linearOf(214, 204, 194);
constexpr Light kBack{0.42F, 0.50F, 0.62F};  // of the light that the front would have
constexpr double kSharp = 0.77;              // cosine of 40 degrees
constexpr double kHalfLine = 0.5;            // in pixels
constexpr double kLineLight = 0.68;          // that a line takes away
// Lines fade between these sizes of triangles, in pixels, so that they do not fill a dense mesh.
constexpr double kDense = 2;
constexpr double kSparse = 9;

Vector3 unit(const Vector3& v) {
    const double length = std::sqrt(dot(v, v));
    if (!(length > 0)) return {0, 0, 1};
    return {v[0] / length, v[1] / length, v[2] / length};
}

}  // namespace

Light SurfaceShader::at(std::uint32_t triangle, std::size_t x, std::size_t y) {
    if (triangle != triangle_) take(triangle);
    if (isUniform_ && lineStrength_ <= 0) return uniform_;
    Vector3 edges{};
    Vector3 weights{};
    for (std::size_t k = 0; k < 3; ++k) {
        edges[k] = screen_.edge(k, static_cast<double>(x) + 0.5, static_cast<double>(y) + 0.5);
        weights[k] = edges[k] / screen_.area;
    }
    Light light = isUniform_ ? uniform_ : surfaceLight(weights);
    if (lineStrength_ > 0) {
        const float left = 1 - lineAt(edges);
        for (float& channel : light)
            channel *= left;
    }
    return light;
}

void SurfaceShader::take(std::uint32_t triangle) {
    triangle_ = triangle;
    // It was drawn, so it can be projected.
    static_cast<void>(project(look_.mesh, triangle, look_.projection, screen_));
    takeColors();
    takeNormals();
    isUniform_ = normals_[0] == normals_[1] && normals_[0] == normals_[2] &&
                 colors_[0] == colors_[1] && colors_[0] == colors_[2];
    if (isUniform_) uniform_ = surfaceLight({1, 0, 0});
    if (look_.wireframe) takeEdges();
}

void SurfaceShader::takeColors() {
    for (std::size_t k = 0; k < 3; ++k) {
        Light& color = colors_[k];
        color = kClay;
        if (!look_.mesh.colors.empty()) {
            const std::size_t corner = 3 * std::size_t{triangle_} + screen_.cornerInMesh(k);
            const std::uint8_t* c =
                &look_.mesh.colors[4 * std::size_t{look_.mesh.triangles[corner]}];
            color = linearOf(c[0], c[1], c[2]);
        }
        for (std::size_t channel = 0; screen_.seesBack && channel < 3; ++channel)
            color[channel] *= kBack[channel];
    }
}

/// In the picture, turned to the viewer.
Vector3 SurfaceShader::seen(const Vector3& normal) const {
    const Camera& camera = look_.projection.camera;
    const double side = screen_.seesBack ? -1 : 1;
    return {side * dot(camera.right, normal), side * dot(camera.up, normal),
            side * dot(camera.toViewer, normal)};
}

Vector3 SurfaceShader::facetNormal() const {
    std::array<Vector3, 3> corners{};
    for (std::size_t k = 0; k < 3; ++k) {
        const std::size_t vertex = look_.mesh.triangles[3 * std::size_t{triangle_} + k];
        for (std::size_t axis = 0; axis < 3; ++axis)
            corners[k][axis] = look_.mesh.positions[3 * vertex + axis];
    }
    const auto from = [&](std::size_t k) {
        return Vector3{corners[k][0] - corners[0][0], corners[k][1] - corners[0][1],
                       corners[k][2] - corners[0][2]};
    };
    return unit(cross(from(1), from(2)));
}

void SurfaceShader::takeNormals() {
    const Vector3 facet = seen(facetNormal());
    normals_ = {facet, facet, facet};
    if (look_.normals.empty()) return;
    for (std::size_t k = 0; k < 3; ++k) {
        const std::size_t corner = 3 * std::size_t{triangle_} + screen_.cornerInMesh(k);
        const float* n = &look_.normals[3 * std::size_t{look_.mesh.triangles[corner]}];
        const Vector3 smooth = seen({double{n[0]}, double{n[1]}, double{n[2]}});
        // A sharp edge stays one.
        if (dot(smooth, facet) > kSharp) normals_[k] = smooth;
    }
}

void SurfaceShader::takeEdges() {
    const double size = std::sqrt(screen_.area) / look_.samplesPerPixel;
    lineStrength_ = kLineLight * std::clamp((size - kDense) / (kSparse - kDense), 0.0, 1.0);
    for (std::size_t k = 0; k < 3; ++k) {
        const std::size_t a = (k + 1) % 3;
        const std::size_t b = (k + 2) % 3;
        perEdge_[k] = 1 / std::hypot(screen_.x[b] - screen_.x[a], screen_.y[b] - screen_.y[a]);
    }
}

Light SurfaceShader::surfaceLight(const Vector3& weights) const {
    Vector3 normal{};
    Light color{};
    for (std::size_t k = 0; k < 3; ++k) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            normal[axis] += weights[k] * normals_[k][axis];
            color[axis] += static_cast<float>(weights[k]) * colors_[k][axis];
        }
    }
    return lit(unit(normal), color);
}

/// How much light the nearest edge takes away.
float SurfaceShader::lineAt(const Vector3& edges) const {
    const double distance =
        std::min({edges[0] * perEdge_[0], edges[1] * perEdge_[1], edges[2] * perEdge_[2]});
    const double covered = std::clamp(kHalfLine * look_.samplesPerPixel - distance + 0.5, 0.0, 1.0);
    return static_cast<float>(covered * lineStrength_);
}

}  // namespace korva

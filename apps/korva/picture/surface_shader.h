// SPDX-License-Identifier: MIT
#pragma once

#include "korva/picture/light.h"
#include "korva/picture/screen_triangle.h"

#include <array>
#include <cstdint>
#include <span>

namespace korva {

/// What all samples of a mesh have in common.
struct SurfaceLook {
    const korvalite::Mesh& mesh;
    std::span<const float> normals;  // of vertices, or empty to show facets
    const Projection& projection;    // to samples
    double samplesPerPixel;          // along a row
    bool wireframe;
};

/// Finds the light of samples. It keeps what it knows of a triangle, so neighbouring samples should
/// come one after the other. Each thread needs its own.
class SurfaceShader {
public:
    explicit SurfaceShader(const SurfaceLook& look) : look_(look) {}

    /// The light of a triangle at the middle of a sample inside it.
    [[nodiscard]] Light at(std::uint32_t triangle, std::size_t x, std::size_t y);

private:
    void take(std::uint32_t triangle);
    void takeColors();
    void takeNormals();
    void takeEdges();
    [[nodiscard]] Light surfaceLight(const Vector3& weights) const;
    [[nodiscard]] float lineAt(const Vector3& edges) const;
    [[nodiscard]] Vector3 facetNormal() const;
    [[nodiscard]] Vector3 seen(const Vector3& normal) const;

    const SurfaceLook& look_;
    std::uint32_t triangle_ = 0xFFFFFFFF;
    ScreenTriangle screen_{};
    std::array<Light, 3> colors_{};
    std::array<Vector3, 3> normals_{};
    bool isUniform_ = false;  // the light is the same everywhere
    Light uniform_{};
    Vector3 perEdge_{};  // turns edge functions into distances in samples
    double lineStrength_ = 0;
};

}  // namespace korva

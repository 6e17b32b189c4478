// SPDX-License-Identifier: MIT
#pragma once

#include "korva/picture/camera.h"
#include "korva/picture/image.h"

#include <korvalite/korvalite.h>

#include <cstdint>
#include <functional>
#include <span>

namespace korva {

enum class Background { Light, White, Dark, Transparent };

struct PictureSettings {
    std::size_t width = 1600;  // in pixels, from 16 to 16384
    std::size_t height = 900;
    View view;
    UpAxis upAxis = UpAxis::Y;
    Background background = Background::Light;
    bool smooth = false;     // shades across edges that are not sharp
    bool wireframe = false;  // draws the edges of triangles
    int threads = 1;         // any number gives the same picture
};

/// Called now and then from the caller's thread. May throw to cancel.
using DrawProgress = std::function<void(std::uint64_t done, std::uint64_t total)>;

/// Draws a mesh, or several side by side from the same view and at the scale that suits the first.
/// Colours of vertices are sRGB. Ends early with Error(Cancelled) if the process is interrupted.
/// Throws Error(BadMesh) if a mesh has nothing to draw or an index out of range.
[[nodiscard]] Image drawPicture(std::span<const korvalite::Mesh> meshes,
                                const PictureSettings& settings, const DrawProgress& progress = {});

}  // namespace korva

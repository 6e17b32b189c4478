// SPDX-License-Identifier: MIT
//
// Where a mesh is seen from, and how it fits the picture. The projection is parallel, like a long
// lens: nothing can be too near, and equal lengths look equal.
#pragma once

#include <korvalite/korvalite.h>

#include <array>
#include <string>

namespace korva {

using Vector3 = std::array<double, 3>;

[[nodiscard]] inline double dot(const Vector3& a, const Vector3& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

[[nodiscard]] inline Vector3 cross(const Vector3& a, const Vector3& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// In degrees. Yaw 0 sees the front; positive yaw goes to the right around the mesh, positive pitch
/// above it.
struct View {
    double yaw = 30;
    double pitch = 18;
};

/// Reads "front", "back", "left", "right", "top", "bottom", "iso" or "YAW,PITCH", with a yaw from
/// -360 to 360 and a pitch from -90 to 90. Throws Error(BadOption).
[[nodiscard]] View parseView(const std::string& text);

/// The direction that points up in the mesh. With z up, the front is seen along y.
enum class UpAxis { Y, Z };

/// Unit vectors of the picture in the coordinates of the mesh.
struct Camera {
    Vector3 right;
    Vector3 up;
    Vector3 toViewer;
};

[[nodiscard]] Camera cameraFor(const View& view, UpAxis upAxis);

/// Takes points of a mesh to the picture: x to the right, y down, and z away from the viewer, all
/// in the same unit.
struct Projection {
    Camera camera;
    Vector3 centre{};  // of the mesh as the camera sees it
    double scale = 1;
    double middleX = 0;
    double middleY = 0;

    [[nodiscard]] Vector3 operator()(const float* p) const {
        const Vector3 point{double{p[0]}, double{p[1]}, double{p[2]}};
        return {(dot(camera.right, point) - centre[0]) * scale + middleX,
                middleY - (dot(camera.up, point) - centre[1]) * scale,
                (centre[2] - dot(camera.toViewer, point)) * scale};
    }
};

/// Centres the triangles of a mesh on (0, 0) so that they fill most of a picture of this size.
/// At least one must have only finite vertices.
[[nodiscard]] Projection fit(const korvalite::Mesh& mesh, const Camera& camera, double width,
                             double height);

/// Whether a triangle has only finite vertices.
[[nodiscard]] bool isDrawable(const korvalite::Mesh& mesh, std::size_t triangle);

}  // namespace korva

// SPDX-License-Identifier: MIT
#include "korva/picture/camera.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <numbers>
#include <string_view>

namespace korva {

namespace {

struct NamedView {
    const char* name;
    View view;
};

constexpr std::array kViews{
    NamedView{"front", {0, 0}},
    NamedView{"back", {180, 0}},
    NamedView{"left", {-90, 0}},
    NamedView{"right", {90, 0}},
    NamedView{"top", {0, 90}},
    NamedView{"bottom", {0, -90}},
    NamedView{"iso", {45, 35.264389682754654}},  // atan(1 / sqrt 2): all axes look equally long
};

/// False unless the whole text is a number from -limit to limit.
bool parseDegrees(std::string_view text, double limit, double& degrees) {
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, degrees);
    return error == std::errc() && stop == end && std::abs(degrees) <= limit;
}

/// Sine and cosine that are exact at right angles, so that straight views are.
double sine(double degrees) {
    const double turn = std::remainder(degrees, 360.0);
    if (std::remainder(turn, 180.0) == 0) return 0;
    if (turn == 90) return 1;
    if (turn == -90) return -1;
    return std::sin(turn * std::numbers::pi / 180);
}

double cosine(double degrees) {
    return sine(degrees + 90);
}

constexpr double kFilled = 0.86;  // share of the picture

}  // namespace

View parseView(const std::string& text) {
    for (const NamedView& named : kViews)
        if (text == named.name) return named.view;
    const std::size_t comma = text.find(',');
    View view;
    if (comma != std::string::npos &&
        parseDegrees(std::string_view(text).substr(0, comma), 360, view.yaw) &&
        parseDegrees(std::string_view(text).substr(comma + 1), 90, view.pitch))
        return view;
    throw korvalite::Error(
        korvalite::ErrorCode::BadOption,
        "The view " + text +
            " is not known; write front, back, left, right, top, bottom, iso, or a yaw from -360 "
            "to 360 and a pitch from -90 to 90, as in 30,20.");
}

Camera cameraFor(const View& view, UpAxis upAxis) {
    Camera camera;
    camera.toViewer = {sine(view.yaw) * cosine(view.pitch), sine(view.pitch),
                       cosine(view.yaw) * cosine(view.pitch)};
    camera.right = {cosine(view.yaw), 0, -sine(view.yaw)};
    camera.up = cross(camera.toViewer, camera.right);
    if (upAxis == UpAxis::Z) {
        for (Vector3* axis : {&camera.right, &camera.up, &camera.toViewer})
            *axis = {(*axis)[0], -(*axis)[2], (*axis)[1]};
    }
    return camera;
}

bool isDrawable(const korvalite::Mesh& mesh, std::size_t triangle) {
    for (std::size_t corner = 0; corner < 3; ++corner) {
        const std::uint32_t vertex = mesh.triangles[3 * triangle + corner];
        const float* p = &mesh.positions[3 * std::size_t{vertex}];
        if (!std::isfinite(p[0]) || !std::isfinite(p[1]) || !std::isfinite(p[2])) return false;
    }
    return true;
}

Projection fit(const korvalite::Mesh& mesh, const Camera& camera, double width, double height) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const Projection unscaled{camera};
    Vector3 low{kInfinity, kInfinity, kInfinity};
    Vector3 high{-kInfinity, -kInfinity, -kInfinity};
    for (std::size_t triangle = 0; triangle < mesh.triangleCount(); ++triangle) {
        if (!isDrawable(mesh, triangle)) continue;
        for (std::size_t corner = 0; corner < 3; ++corner) {
            const std::size_t vertex = mesh.triangles[3 * triangle + corner];
            const Vector3 point = unscaled(&mesh.positions[3 * vertex]);
            for (std::size_t axis = 0; axis < 3; ++axis) {
                low[axis] = std::min(low[axis], point[axis]);
                high[axis] = std::max(high[axis], point[axis]);
            }
        }
    }
    Projection projection{camera};
    projection.centre = {(low[0] + high[0]) / 2, -(low[1] + high[1]) / 2, -(low[2] + high[2]) / 2};
    const double widest = std::max((high[0] - low[0]) / width, (high[1] - low[1]) / height);
    if (widest > 0) projection.scale = kFilled / widest;
    return projection;
}

}  // namespace korva

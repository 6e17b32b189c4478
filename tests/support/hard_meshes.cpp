// SPDX-License-Identifier: MIT
#include "support/hard_meshes.h"

#include "support/mesh_builder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <numbers>

namespace korvalite::core::test {

namespace {

constexpr double kTau = 2 * std::numbers::pi;
constexpr std::uint32_t kCylinders = 50;
constexpr std::uint32_t kCylindersInARow = 10;
constexpr double kCylinderSpacing = 3;
constexpr double kPatchWidth = 0.001;
constexpr double kPatchDistance = 5;  // from the mirror plane

struct Surface {
    Points points;
    Faces faces;

    [[nodiscard]] std::uint32_t pointCount() const {
        return static_cast<std::uint32_t>(points.size());
    }
    void addPoint(double x, double y, double z) { points.push_back(toFloat(DoubleVec3{x, y, z})); }
};

// A grid of size x size vertices; the position of each is a function of two numbers in 0..1.
template <typename PositionAt>
void addGrid(Surface& surface, std::uint32_t size, PositionAt positionAt) {
    const std::uint32_t first = surface.pointCount();
    const double steps = size - 1;
    for (std::uint32_t row = 0; row < size; ++row) {
        for (std::uint32_t column = 0; column < size; ++column)
            surface.points.push_back(toFloat(positionAt(row / steps, column / steps)));
    }
    for (std::uint32_t row = 0; row + 1 < size; ++row) {
        for (std::uint32_t column = 0; column + 1 < size; ++column) {
            const std::uint32_t a = first + row * size + column;
            const std::uint32_t b = a + size;
            surface.faces.push_back({a, b, b + 1});
            surface.faces.push_back({a, b + 1, a + 1});
        }
    }
}

template <typename HeightAt>
Surface heightField(std::uint32_t size, HeightAt heightAt) {
    Surface surface;
    addGrid(surface, size, [&](double x, double y) { return DoubleVec3{x, y, heightAt(x, y)}; });
    return surface;
}

// Broad hills with a fine relief.
double hillsAt(double x, double y) {
    return 0.1 * std::sin(9 * x) * std::cos(7 * y) + 0.002 * std::sin(300 * x * y);
}

Surface relief(std::uint32_t size) {
    return heightField(size, hillsAt);
}

Surface terrain(std::uint32_t size) {
    return heightField(size, [](double x, double y) { return std::max(0.0, hillsAt(x, y)); });
}

Surface plate(std::uint32_t size) {
    return heightField(size, [](double, double) { return 0.0; });
}

using CubePoint = std::array<std::uint32_t, 3>;

// Seen from outside, the turn from the first number to the second is counterclockwise.
CubePoint onSide(std::uint32_t side, std::uint32_t i, std::uint32_t j, std::uint32_t size) {
    switch (side) {
    case 0: return {j, i, 0};
    case 1: return {i, j, size};
    case 2: return {i, 0, j};
    case 3: return {j, size, i};
    case 4: return {0, j, i};
    default: return {size, i, j};
    }
}

// Sides share the points of their common edges.
class CubeBuilder {
public:
    explicit CubeBuilder(std::uint32_t size) : size_(size) {}

    void addSquare(std::uint32_t side, std::uint32_t i, std::uint32_t j) {
        const std::uint32_t a = indexOf(onSide(side, i, j, size_));
        const std::uint32_t b = indexOf(onSide(side, i + 1, j, size_));
        const std::uint32_t c = indexOf(onSide(side, i + 1, j + 1, size_));
        const std::uint32_t d = indexOf(onSide(side, i, j + 1, size_));
        surface_.faces.push_back({a, b, c});
        surface_.faces.push_back({a, c, d});
    }
    [[nodiscard]] const Surface& surface() const { return surface_; }

private:
    std::uint32_t indexOf(const CubePoint& point) {
        const auto [found, isNew] = indices_.try_emplace(point, surface_.pointCount());
        const double steps = size_;
        if (isNew) surface_.addPoint(point[0] / steps, point[1] / steps, point[2] / steps);
        return found->second;
    }

    std::uint32_t size_;
    std::map<CubePoint, std::uint32_t> indices_;
    Surface surface_;
};

Surface cube(std::uint32_t size) {
    CubeBuilder builder(size);
    for (std::uint32_t side = 0; side < 6; ++side) {
        for (std::uint32_t i = 0; i < size; ++i) {
            for (std::uint32_t j = 0; j < size; ++j)
                builder.addSquare(side, i, j);
        }
    }
    return builder.surface();
}

void addCylinder(Surface& surface, std::uint32_t size, double centerX, double centerY) {
    const std::uint32_t bottom = surface.pointCount();
    const std::uint32_t top = bottom + size;
    const std::uint32_t bottomHub = top + size;
    const std::uint32_t topHub = bottomHub + 1;
    for (const double z : {0.0, 1.0}) {
        for (std::uint32_t i = 0; i < size; ++i) {
            const double angle = kTau * i / size;
            surface.addPoint(std::cos(angle) + centerX, std::sin(angle) + centerY, z);
        }
    }
    surface.addPoint(centerX, centerY, 0);
    surface.addPoint(centerX, centerY, 1);
    for (std::uint32_t i = 0; i < size; ++i) {
        const std::uint32_t next = (i + 1) % size;
        surface.faces.push_back({bottom + i, bottom + next, top + next});
        surface.faces.push_back({bottom + i, top + next, top + i});
        surface.faces.push_back({bottom + next, bottom + i, bottomHub});
        surface.faces.push_back({top + i, top + next, topHub});
    }
}

Surface cylinders(std::uint32_t size) {
    Surface surface;
    for (std::uint32_t k = 0; k < kCylinders; ++k) {
        const std::uint32_t column = k % kCylindersInARow;
        const std::uint32_t row = k / kCylindersInARow;
        addCylinder(surface, size, kCylinderSpacing * column, kCylinderSpacing * row);
    }
    return surface;
}

Surface fan(std::uint32_t size) {
    Surface surface;
    for (std::uint32_t i = 0; i < size; ++i) {
        const double angle = kTau * i / size;
        const double radius = 1 + 0.01 * std::sin(37 * angle);
        surface.addPoint(radius * std::cos(angle), radius * std::sin(angle),
                         0.05 * std::sin(11 * angle));
    }
    surface.addPoint(0, 0, 0.3);
    for (std::uint32_t i = 0; i < size; ++i)
        surface.faces.push_back({i, (i + 1) % size, size});
    return surface;
}

Surface patches(std::uint32_t size) {
    Surface surface;
    for (const double x : {-kPatchDistance, kPatchDistance}) {
        addGrid(surface, size, [&](double across, double along) {
            return DoubleVec3{x + kPatchWidth * across, kPatchWidth * along, 0};
        });
    }
    return surface;
}

struct Kind {
    std::string_view name;
    Surface (*make)(std::uint32_t size);
};

constexpr std::array kKinds{
    Kind{"relief", relief},   Kind{"terrain", terrain},     Kind{"plate", plate},
    Kind{"cube", cube},       Kind{"cylinders", cylinders}, Kind{"fan", fan},
    Kind{"patches", patches},
};

}  // namespace

std::optional<DMesh> hardMesh(std::string_view kind, std::int32_t size) {
    const auto* const found = std::find_if(kKinds.begin(), kKinds.end(),
                                           [&](const Kind& row) { return row.name == kind; });
    if (found == kKinds.end() || size < 3) return std::nullopt;
    const Surface surface = found->make(static_cast<std::uint32_t>(size));
    return buildMesh(surface.points, surface.faces);
}

}  // namespace korvalite::core::test

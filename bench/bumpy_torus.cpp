// SPDX-License-Identifier: MIT
#include "bumpy_torus.h"

#include "formats/vok_writer.h"
#include "mesh/dmesh.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace korvalite::core::bench {

namespace {

constexpr double kTau = 2 * std::numbers::pi;
constexpr double kTubeRadius = 0.4;  // around a circle of radius 1
constexpr double kReliefPerEdge = 0.15;

/// In -1..1, and the same at a given place on every machine.
double noiseAt(std::uint32_t row, std::uint32_t column) {
    std::uint32_t bits = row * 0x9E3779B1U ^ (column + 1) * 0x85EBCA77U;
    bits = (bits ^ (bits >> 15U)) * 0x2C1B3C6DU;
    bits = (bits ^ (bits >> 12U)) * 0x297A2D39U;
    bits ^= bits >> 15U;
    return static_cast<double>(bits) / 2147483648.0 - 1.0;
}

struct Grid {
    std::uint32_t rows = 3;     // around the tube
    std::uint32_t columns = 3;  // around the hole

    [[nodiscard]] std::uint32_t at(std::uint32_t row, std::uint32_t column) const {
        return row % rows * columns + column % columns;
    }
};

Grid gridFor(std::int32_t triangles) {
    const double vertices = triangles / 2.0;
    Grid grid;
    grid.rows = static_cast<std::uint32_t>(std::max(3.0, std::sqrt(vertices * kTubeRadius)));
    grid.columns = static_cast<std::uint32_t>(std::max(3.0, vertices / grid.rows));
    return grid;
}

FloatVec3 pointAt(const Grid& grid, std::uint32_t row, std::uint32_t column) {
    const double tube = kTau * row / grid.rows;
    const double ring = kTau * column / grid.columns;
    const double edge = kTau * kTubeRadius / grid.rows;
    const double radius = kTubeRadius + 0.03 * std::sin(7 * tube) * std::cos(5 * ring) +
                          0.01 * std::sin(23 * ring + 11 * tube) +
                          kReliefPerEdge * edge * noiseAt(row, column);
    const double distance = 1 + radius * std::cos(tube);
    return {static_cast<float>(distance * std::cos(ring)),
            static_cast<float>(distance * std::sin(ring)),
            static_cast<float>(radius * std::sin(tube))};
}

}  // namespace

void makeBumpyTorus(DMesh& mesh, std::int32_t triangles) {
    const Grid grid = gridFor(triangles);
    const std::size_t vertexCount = std::size_t{grid.rows} * grid.columns;
    mesh.vertices.reserve(vertexCount);
    mesh.triangles.reserve(6 * vertexCount);
    for (std::uint32_t row = 0; row < grid.rows; ++row) {
        for (std::uint32_t column = 0; column < grid.columns; ++column) {
            mesh.vertices.emplace_back().setPosition(pointAt(grid, row, column));
            const std::uint32_t a = grid.at(row, column);
            const std::uint32_t b = grid.at(row, column + 1);
            const std::uint32_t c = grid.at(row + 1, column + 1);
            const std::uint32_t d = grid.at(row + 1, column);
            mesh.triangles.insert(mesh.triangles.end(), {a, b, c, a, c, d});
        }
    }
    mesh.vertexActive.Resize(mesh.vertexCount(), true);
    mesh.numActiveVertices = static_cast<std::uint32_t>(mesh.vertexCount());
    mesh.triangleActive.Resize(mesh.triangleCount(), true);
    mesh.numActiveTriangles = static_cast<std::uint32_t>(mesh.triangleCount());
    recomputeBoundingBox(mesh);
}

bool writeBumpyTorus(const char* path, std::int32_t triangles) {
    DMesh mesh;
    makeBumpyTorus(mesh, triangles);
    return exportDMesh(path, mesh);
}

}  // namespace korvalite::core::bench

// SPDX-License-Identifier: MIT
//
// Small meshes for tests, in their state after reading: every bit set, counts and bounding box set,
// no corner lists yet. All are made by hand-written rules, so they are the same everywhere.
#pragma once

#include "mesh/dmesh.h"
#include "support/random.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace korvalite::core::test {

using Points = std::vector<FloatVec3>;
using Faces = std::vector<std::array<std::uint32_t, 3>>;

// Sets bits, counts and box for the existing vertices and triangles.
inline void completeMesh(DMesh& mesh) {
    activateAll(mesh);
    recomputeBoundingBox(mesh);
}

inline DMesh buildMesh(const Points& points, const Faces& faces) {
    DMesh mesh;
    for (const FloatVec3& point : points) {
        mesh.vertices.emplace_back();
        mesh.vertices.back().setPosition(point);
    }
    for (const auto& face : faces) {
        mesh.triangles.insert(mesh.triangles.end(), face.begin(), face.end());
    }
    completeMesh(mesh);
    return mesh;
}

//   2
//   | \        one triangle in the plane z = 0
//   0---1
inline DMesh oneTriangle() {
    return buildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}});
}

//   3---2
//   | / |      two triangles that share the edge 0-2
//   0---1
inline DMesh twoTriangles() {
    return buildMesh({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {{0, 1, 2}, {0, 2, 3}});
}

// Closed, normals outward: the origin and one vertex on each axis.
inline DMesh tetrahedron() {
    return buildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
                     {{0, 2, 1}, {0, 1, 3}, {0, 3, 2}, {1, 2, 3}});
}

// Closed, normals outward: vertices 0 to 5 at +x, -x, +y, -y, +z, -z.
inline DMesh octahedron() {
    return buildMesh(
        {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}},
        {{4, 0, 2}, {4, 2, 1}, {4, 1, 3}, {4, 3, 0}, {5, 2, 0}, {5, 1, 2}, {5, 3, 1}, {5, 0, 3}});
}

//   6---7---8
//   | / | / |   A fan of six around an inner vertex, and a border around all: columns x rows
//   3---4---5   squares of side 1, normals to +z. Vertex (c, r) has the index
//   | / | / |   r * (columns + 1) + c and is at (c, r, height(c, r)); a square is its lower
//   0---1---2   right triangle, then its upper left one.
template <typename Height>
DMesh grid(std::uint32_t columns, std::uint32_t rows, Height height) {
    Points points;
    for (std::uint32_t r = 0; r <= rows; ++r) {
        for (std::uint32_t c = 0; c <= columns; ++c) {
            points.push_back({static_cast<float>(c), static_cast<float>(r), height(c, r)});
        }
    }
    Faces faces;
    for (std::uint32_t r = 0; r < rows; ++r) {
        for (std::uint32_t c = 0; c < columns; ++c) {
            const std::uint32_t a = r * (columns + 1) + c;
            const std::uint32_t above = a + columns + 1;
            faces.push_back({a, a + 1, above + 1});
            faces.push_back({a, above + 1, above});
        }
    }
    return buildMesh(points, faces);
}
inline DMesh grid(std::uint32_t columns, std::uint32_t rows) {
    return grid(columns, rows, [](std::uint32_t, std::uint32_t) { return 0.0F; });
}

// Heights of a grid without flat parts.
inline float hills(std::uint32_t c, std::uint32_t r) {
    const auto x = static_cast<float>(c);
    const auto y = static_cast<float>(r);
    return 0.6F * std::sin(0.9F * x) + 0.4F * std::cos(0.7F * y + 0.3F * x);
}

// Closed and of genus 1 around the z axis, radii 2 and 0.75; at least 3 by 3.
inline DMesh torus(std::uint32_t around, std::uint32_t across) {
    constexpr double kTurn = 6.283185307179586;
    Points points;
    for (std::uint32_t i = 0; i < around; ++i) {
        for (std::uint32_t j = 0; j < across; ++j) {
            const double a = kTurn * i / around;
            const double b = kTurn * j / across;
            const double r = 2.0 + 0.75 * std::cos(b);
            points.push_back({static_cast<float>(r * std::cos(a)),
                              static_cast<float>(r * std::sin(a)),
                              static_cast<float>(0.75 * std::sin(b))});
        }
    }
    Faces faces;
    for (std::uint32_t i = 0; i < around; ++i) {
        for (std::uint32_t j = 0; j < across; ++j) {
            const std::uint32_t nextI = (i + 1) % around;
            const std::uint32_t nextJ = (j + 1) % across;
            const std::uint32_t a = i * across + j;
            const std::uint32_t b = nextI * across + j;
            const std::uint32_t c = nextI * across + nextJ;
            const std::uint32_t d = i * across + nextJ;
            faces.push_back({a, b, c});
            faces.push_back({a, c, d});
        }
    }
    return buildMesh(points, faces);
}

// Splits each triangle into four; new vertices are at the midpoints of the old edges.
inline DMesh subdivided(const DMesh& mesh) {
    Points points;
    for (const VertexRecord& vertex : mesh.vertices)
        points.push_back(vertex.position());
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> middles;
    const auto middle = [&](std::uint32_t a, std::uint32_t b) {
        const auto [place, isNew] = middles.try_emplace({std::min(a, b), std::max(a, b)},
                                                        static_cast<std::uint32_t>(points.size()));
        if (isNew) {
            const FloatVec3 sum = points[a] + points[b];
            points.push_back({sum.x * 0.5F, sum.y * 0.5F, sum.z * 0.5F});
        }
        return place->second;
    };
    Faces faces;
    for (std::size_t t = 0; t + 2 < mesh.triangles.size(); t += 3) {
        const std::uint32_t a = mesh.triangles[t];
        const std::uint32_t b = mesh.triangles[t + 1];
        const std::uint32_t c = mesh.triangles[t + 2];
        const std::uint32_t ab = middle(a, b);
        const std::uint32_t bc = middle(b, c);
        const std::uint32_t ca = middle(c, a);
        faces.insert(faces.end(), {{a, ab, ca}, {b, bc, ab}, {c, ca, bc}, {ab, bc, ca}});
    }
    return buildMesh(points, faces);
}

// A ball of 8 * 4^level triangles and radius 1, mirror-symmetric bit for bit across x, y and z = 0.
inline DMesh sphere(unsigned level) {
    DMesh mesh = octahedron();
    for (unsigned i = 0; i < level; ++i) {
        mesh = subdivided(mesh);
        for (VertexRecord& vertex : mesh.vertices) {
            const FloatVec3 p = vertex.position();
            // Adds the squares in ascending order, so that mirrored and rotated vertices round
            // alike.
            std::array<float, 3> squares{p.x * p.x, p.y * p.y, p.z * p.z};
            std::sort(squares.begin(), squares.end());
            const float length = std::sqrt(squares[0] + squares[1] + squares[2]);
            vertex.setPosition({p.x / length, p.y / length, p.z / length});
        }
    }
    recomputeBoundingBox(mesh);
    return mesh;
}

// The mesh and its mirror image across the plane where the axis (0, 1, 2) is 0. Vertices exactly on
// the plane are shared. `mirrorOf`, if given, receives the mirror image of each vertex.
inline DMesh withMirrorImage(const DMesh& half, int axis,
                             std::vector<std::int32_t>* mirrorOf = nullptr) {
    Points points;
    for (const VertexRecord& vertex : half.vertices)
        points.push_back(vertex.position());
    const std::size_t halfCount = points.size();
    std::vector<std::uint32_t> image(halfCount);
    std::vector<std::int32_t> pairs(halfCount);
    for (std::size_t v = 0; v < halfCount; ++v) {
        FloatVec3 p = points[v];
        const float distance = component(p, axis);
        image[v] = static_cast<std::uint32_t>(distance == 0.0F ? v : points.size());
        pairs[v] = static_cast<std::int32_t>(image[v]);
        if (distance == 0.0F) continue;
        setComponent(p, axis, -distance);
        points.push_back(p);
        pairs.push_back(static_cast<std::int32_t>(v));
    }
    Faces faces;
    for (std::size_t t = 0; t + 2 < half.triangles.size(); t += 3) {
        faces.push_back({half.triangles[t], half.triangles[t + 1], half.triangles[t + 2]});
    }
    const std::size_t halfFaces = faces.size();
    for (std::size_t t = 0; t < halfFaces; ++t) {
        faces.push_back({image[faces[t][0]], image[faces[t][2]], image[faces[t][1]]});
    }
    if (mirrorOf != nullptr) *mirrorOf = pairs;
    return buildMesh(points, faces);
}

// Moves every coordinate by up to `most`, in a way that a seed reproduces everywhere.
inline void jitter(DMesh& mesh, float most, std::uint32_t seed) {
    Random random(seed);
    for (VertexRecord& vertex : mesh.vertices) {
        const float dx = random.around(most);
        const float dy = random.around(most);
        const float dz = random.around(most);
        vertex.setPosition(vertex.position() + FloatVec3{dx, dy, dz});
    }
    recomputeBoundingBox(mesh);
}

// One UV record per corner, as read: (x, y) / 16 of the vertex, shifted to the right by
// chartOf(triangle) whole charts. Charts meet at seams.
template <typename ChartOf>
void addCornerUVs(DMesh& mesh, ChartOf chartOf) {
    mesh.indicesUV.clear();
    mesh.coordsUV.clear();
    for (std::size_t corner = 0; corner < mesh.triangles.size(); ++corner) {
        const VertexRecord& vertex = mesh.vertices[mesh.triangles[corner]];
        const auto chart = static_cast<float>(chartOf(static_cast<std::uint32_t>(corner / 3)));
        mesh.coordsUV.push_back({vertex.x / 16.0F + 4.0F * chart, vertex.y / 16.0F});
    }
}
inline void addCornerUVs(DMesh& mesh) {
    addCornerUVs(mesh, [](std::uint32_t) { return 0; });
}

// Packs red, green, blue and a fourth byte.
constexpr std::uint32_t packColor(std::uint32_t r, std::uint32_t g, std::uint32_t b,
                                  std::uint32_t fourth = 0) {
    return r | (g << 8U) | (b << 16U) | (fourth << 24U);
}

// Sets colorOf(position) for each vertex.
template <typename ColorOf>
void addColors(DMesh& mesh, ColorOf colorOf) {
    mesh.vertexColors.clear();
    for (const VertexRecord& vertex : mesh.vertices)
        mesh.vertexColors.push_back(colorOf(vertex.position()));
}

// Sets maskOf(position), 0 to 255, for each vertex.
template <typename MaskOf>
void addMask(DMesh& mesh, MaskOf maskOf) {
    mesh.maskValues.clear();
    for (const VertexRecord& vertex : mesh.vertices)
        mesh.maskValues.push_back(static_cast<std::uint8_t>(maskOf(vertex.position())));
}

// Three pairs of back-to-back triangles, of which none may collapse.
inline DMesh threePillows() {
    Points points;
    Faces faces;
    for (std::uint32_t i = 0; i < 3; ++i) {
        const auto x = static_cast<float>(3 * i);
        points.insert(points.end(), {{x, 0, 0}, {x + 1, 0, 0}, {x, 1, 0.5F}});
        faces.insert(faces.end(), {{3 * i, 3 * i + 1, 3 * i + 2}, {3 * i + 1, 3 * i, 3 * i + 2}});
    }
    return buildMesh(points, faces);
}

// sphere(3) with a duplicate triangle on the side of positive x, which follows in a mirrored pair:
// collapses there fail the link test, while those on the other side alone would not.
inline DMesh ballWithADoubledTriangle() {
    DMesh ball = sphere(3);
    std::size_t corner = 0;
    while (ball.vertices[ball.triangles[corner]].x < 0.5F)
        corner += 3;
    for (std::size_t k = 0; k < 3; ++k)
        ball.triangles.push_back(ball.triangles[corner + k]);
    completeMesh(ball);
    return ball;
}

// Uneven, with a different colour at each vertex.
inline DMesh colorfulBall() {
    DMesh mesh = sphere(2);
    jitter(mesh, 0.02F, 1);
    addColors(mesh, [](const FloatVec3& p) {
        return packColor(static_cast<std::uint32_t>(100 + 90 * p.x), 30,
                         static_cast<std::uint32_t>(100 + 90 * p.y));
    });
    return mesh;
}

}  // namespace korvalite::core::test

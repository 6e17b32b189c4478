// SPDX-License-Identifier: MIT
//
// Meshes that no modeller would send: non-manifold, not finite, without extent, or almost empty.
#pragma once

#include "support/mesh_builder.h"
#include "support/mesh_validator.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

namespace korvalite::core::test {

inline constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
inline constexpr float kInfinity = std::numeric_limits<float>::infinity();

struct HostileSurface {
    std::string name;
    std::function<DMesh()> mesh;
    Degenerate degenerate = Degenerate::Refused;
};
inline void PrintTo(const HostileSurface& row, std::ostream* out) {
    *out << row.name;
}

inline Points pointsOf(const DMesh& mesh) {
    Points points;
    for (const VertexRecord& vertex : mesh.vertices)
        points.push_back(vertex.position());
    return points;
}
inline Faces facesOf(const DMesh& mesh) {
    Faces faces;
    for (std::size_t c = 0; c < mesh.triangles.size(); c += 3)
        faces.push_back({mesh.triangles[c], mesh.triangles[c + 1], mesh.triangles[c + 2]});
    return faces;
}

// A ball with one coordinate of every `every`-th vertex replaced, starting at `first`.
inline DMesh ballWith(float value, std::size_t every, std::size_t first) {
    DMesh mesh = sphere(2);
    for (std::size_t v = first; v < mesh.vertices.size(); v += every) {
        FloatVec3 p = mesh.vertices[v].position();
        setComponent(p, static_cast<int>(v % 3), value);
        mesh.vertices[v].setPosition(p);
    }
    recomputeBoundingBox(mesh);
    return mesh;
}

inline DMesh scaledBall(float scale) {
    Points points = pointsOf(sphere(2));
    for (FloatVec3& p : points)
        p = {p.x * scale, p.y * scale, p.z * scale};
    return buildMesh(points, facesOf(sphere(2)));
}

inline DMesh moved(const DMesh& mesh, const std::function<FloatVec3(const FloatVec3&)>& place) {
    Points points = pointsOf(mesh);
    for (FloatVec3& p : points)
        p = place(p);
    return buildMesh(points, facesOf(mesh));
}

// Strips of squares that all share one edge of the z axis, like the pages of a book.
inline DMesh book(std::uint32_t pages) {
    constexpr std::uint32_t kHeight = 4;
    Points points;
    Faces faces;
    for (std::uint32_t z = 0; z <= kHeight; ++z)
        points.push_back({0, 0, static_cast<float>(z)});
    for (std::uint32_t page = 0; page < pages; ++page) {
        const auto first = static_cast<std::uint32_t>(points.size());
        const auto y = static_cast<float>(page) - 2.0F;
        for (std::uint32_t z = 0; z <= kHeight; ++z)
            points.push_back({1.5F, y, static_cast<float>(z)});
        for (std::uint32_t z = 0; z < kHeight; ++z) {
            faces.push_back({z, first + z, first + z + 1});
            faces.push_back({z, first + z + 1, z + 1});
        }
    }
    return buildMesh(points, faces);
}

// Two balls that share their first vertex, and one very thin triangle at it.
inline DMesh ballsInOnePoint() {
    Points points = pointsOf(sphere(1));
    Faces faces = facesOf(sphere(1));
    const FloatVec3 shared = points[0];
    const auto count = static_cast<std::uint32_t>(points.size());
    for (std::uint32_t v = 1; v < count; ++v) {
        const FloatVec3 p = points[v];
        points.push_back({2 * shared.x - p.x, 2 * shared.y - p.y, 2 * shared.z - p.z});
    }
    const auto copyOf = [&](std::uint32_t v) { return v == 0 ? 0 : count + v - 1; };
    for (const auto& face : facesOf(sphere(1)))
        faces.push_back({copyOf(face[0]), copyOf(face[2]), copyOf(face[1])});
    points.push_back({1, 3, 0});
    points.push_back({1, 3, 0.1F});
    const auto hair = static_cast<std::uint32_t>(points.size() - 2);
    faces.push_back({0, hair, hair + 1});
    return buildMesh(points, faces);
}

inline DMesh withStrays() {
    Points points = pointsOf(sphere(2));
    const Faces faces = facesOf(sphere(2));
    for (int i = 0; i < 9; ++i)
        points.insert(points.end(), {static_cast<float>(i) - 4.0F, 0.5F, 0});
    return buildMesh(points, faces);
}

inline DMesh repeated(const DMesh& mesh, int times) {
    Faces faces;
    for (int i = 0; i < times; ++i) {
        const Faces once = facesOf(mesh);
        faces.insert(faces.end(), once.begin(), once.end());
    }
    return buildMesh(pointsOf(mesh), faces);
}

inline DMesh insideOut(const DMesh& mesh) {
    Faces faces = facesOf(mesh);
    const Faces once = faces;
    for (const auto& face : once)
        faces.push_back({face[0], face[2], face[1]});
    return buildMesh(pointsOf(mesh), faces);
}

inline DMesh moebius() {
    constexpr std::uint32_t kAround = 12;
    Points points;
    Faces faces;
    for (std::uint32_t i = 0; i < kAround; ++i) {
        const double a = 6.283185307179586 * i / kAround;
        for (const double side : {-0.4, 0.4}) {
            const double r = 2 + side * std::cos(a / 2);
            points.push_back({static_cast<float>(r * std::cos(a)),
                              static_cast<float>(r * std::sin(a)),
                              static_cast<float>(side * std::sin(a / 2))});
        }
    }
    for (std::uint32_t i = 0; i < kAround; ++i) {
        const bool last = i + 1 == kAround;
        const std::uint32_t low = last ? 1 : 2 * i + 2;
        const std::uint32_t high = last ? 0 : 2 * i + 3;
        faces.push_back({2 * i, low, high});
        faces.push_back({2 * i, high, 2 * i + 1});
    }
    return buildMesh(points, faces);
}

// A double fan of triangles between two poles.
inline DMesh umbrella(std::uint32_t ribs) {
    Points points{{0, 0, 1}, {0, 0, -1}};
    Faces faces;
    for (std::uint32_t i = 0; i < ribs; ++i) {
        const double a = 6.283185307179586 * i / ribs;
        points.push_back({static_cast<float>(std::cos(a)), static_cast<float>(std::sin(a)), 0});
        const std::uint32_t next = (i + 1) % ribs;
        faces.push_back({0, 2 + i, 2 + next});
        faces.push_back({1, 2 + next, 2 + i});
    }
    return buildMesh(points, faces);
}

// Random triangles between a few points, with repeated vertices or without.
inline DMesh jumble(std::uint32_t seed, bool repeatedVertices) {
    Random random(seed);
    Points points;
    for (int i = 0; i < 24; ++i)
        points.push_back({random.around(1), random.around(1), random.around(1)});
    Faces faces;
    while (faces.size() < 60) {
        const std::array<std::uint32_t, 3> face{random.below(24), random.below(24),
                                                random.below(24)};
        const bool repeats = face[0] == face[1] || face[1] == face[2] || face[2] == face[0];
        if (!repeats || repeatedVertices) faces.push_back(face);
    }
    return buildMesh(points, faces);
}

inline std::vector<HostileSurface> hostileSurfaces() {
    const auto largest = std::numeric_limits<float>::max();
    const auto smallest = std::numeric_limits<float>::denorm_min();
    return {
        {"NoVertices", [] { return buildMesh({}, {}); }},
        {"NoTriangles", [] { return buildMesh(pointsOf(sphere(1)), {}); }},
        {"OneVertex",
         [] {
             return buildMesh({{1, 2, 3}}, {});
         }},
        {"OneTriangle", oneTriangle},
        {"OneTriangleFromBothSides", [] { return insideOut(oneTriangle()); }},
        {"FromBothSides", [] { return insideOut(sphere(2)); }},
        {"RepeatedTriangles", [] { return repeated(sphere(1), 3); }},
        {"AllInOnePoint",
         [] { return moved(sphere(2), [](auto&) {
                  return FloatVec3{1, 2, 3};
              }); }},
        {"AllOnOneLine",
         [] { return moved(sphere(2), [](auto& p) {
                  return FloatVec3{p.x, 0, 0};
              }); }},
        {"AllInOnePlane",
         [] { return moved(sphere(2), [](auto& p) {
                  return FloatVec3{p.x, p.y, 0};
              }); }},
        {"NoNumberFirst", [] { return ballWith(kNan, 1000, 0); }},
        {"SomeNoNumbers", [] { return ballWith(kNan, 7, 3); }},
        {"AllNoNumbers",
         [] { return moved(sphere(2), [](auto&) {
                  return FloatVec3{kNan, kNan, kNan};
              }); }},
        {"Infinite", [] { return ballWith(kInfinity, 9, 2); }},
        {"MinusInfinite", [] { return ballWith(-kInfinity, 1000, 0); }},
        {"Largest", [largest] { return ballWith(largest, 5, 1); }},
        {"Huge", [] { return scaledBall(1e30F); }},
        {"Tiny", [] { return scaledBall(1e-30F); }},
        {"Denormal", [smallest] { return scaledBall(smallest * 9); }},
        {"NonManifoldEdges", [] { return book(5); }},
        {"NonManifoldVertex", ballsInOnePoint},
        {"IsolatedVertices", withStrays},
        {"Moebius", moebius},
        {"Umbrella", [] { return umbrella(150); }},
        {"VerticesTwice", [] { return jumble(1, true); }, Degenerate::Allowed},
        {"OnlyVerticesTwice",
         [] {
             return buildMesh({{0, 0, 0}, {1, 0, 0}}, {{0, 0, 1}, {1, 1, 1}, {1, 0, 1}});
         },
         Degenerate::Allowed},
        {"Jumble", [] { return jumble(2, false); }},
        {"OtherJumble", [] { return jumble(3, false); }},
    };
}

}  // namespace korvalite::core::test

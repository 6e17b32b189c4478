// SPDX-License-Identifier: MIT
//
// Nearest places and distances, compared with CGAL's tree of boxes.
#include <gtest/gtest.h>

#ifdef KORVALITE_HAS_CGAL

#include "library/library_meshes.h"
#include "library/surface_meshes.h"

#include <CGAL/AABB_traits.h>
#include <CGAL/AABB_tree.h>
#include <CGAL/AABB_triangle_primitive.h>
#include <CGAL/Simple_cartesian.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace korvalite::test {
namespace {

using Kernel = CGAL::Simple_cartesian<double>;
using Triangles = std::vector<Kernel::Triangle_3>;
using Primitive = CGAL::AABB_triangle_primitive<Kernel, Triangles::const_iterator>;
using Tree = CGAL::AABB_tree<CGAL::AABB_traits<Kernel, Primitive>>;

Kernel::Point_3 pointOf(const Mesh& mesh, std::size_t vertex) {
    const float* p = &mesh.positions[3 * vertex];
    return {static_cast<double>(p[0]), static_cast<double>(p[1]), static_cast<double>(p[2])};
}

// CGAL does not accept triangles without area.
Triangles trianglesOf(const Mesh& mesh) {
    Triangles triangles;
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        const Kernel::Triangle_3 triangle(pointOf(mesh, mesh.triangles[i]),
                                          pointOf(mesh, mesh.triangles[i + 1]),
                                          pointOf(mesh, mesh.triangles[i + 2]));
        if (!triangle.is_degenerate()) triangles.push_back(triangle);
    }
    return triangles;
}

void expectSameAsCgal(const Mesh& mesh, float size, std::uint32_t seed) {
    const Triangles triangles = trianglesOf(mesh);
    Tree tree(triangles.begin(), triangles.end());
    tree.accelerate_distance_queries();
    const Surface surface(mesh.view());
    core::test::Random random(seed);
    for (int i = 0; i < 2000; ++i) {
        const std::array<double, 3> p{static_cast<double>(random.around(size)),
                                      static_cast<double>(random.around(size)),
                                      static_cast<double>(random.around(size))};
        const double expected = std::sqrt(tree.squared_distance({p[0], p[1], p[2]}));
        EXPECT_NEAR(surface.nearest(p).distance, expected, 1e-12 * static_cast<double>(size));
    }
}

TEST(AgainstCgal, NearestPlacesAreAsFarAway) {
    expectSameAsCgal(torusMesh(), 3, 1);
    expectSameAsCgal(soup(3000, 2), 2, 2);
    expectSameAsCgal(soup(3000, 3, 0.01F), 1.2F, 3);
    expectSameAsCgal(sphere(48, 1), 2, 4);
    expectSameAsCgal(sampleMesh("spot.Vok"), 2, 5);
}

TEST(AgainstCgal, TheLargestDistanceIsBetweenTheFoundAndTheBound) {
    const Mesh mesh = sampleMesh("spot.Vok");
    Options options;
    options.target = Target::percent(10);
    const Mesh simple = simplify(mesh.view(), options).mesh;
    const Triangles triangles = trianglesOf(simple);
    Tree tree(triangles.begin(), triangles.end());
    tree.accelerate_distance_queries();
    double largest = 0;
    for (const Kernel::Triangle_3& t : trianglesOf(mesh)) {
        constexpr int kSteps = 6;
        for (int i = 0; i <= kSteps; ++i) {
            for (int k = 0; i + k <= kSteps; ++k) {
                const auto place = t.vertex(0) + (1.0 * i / kSteps) * (t.vertex(1) - t.vertex(0)) +
                                   (1.0 * k / kSteps) * (t.vertex(2) - t.vertex(0));
                largest = std::max(largest, std::sqrt(tree.squared_distance(place)));
            }
        }
    }
    const Measurement measured =
        measure(mesh.view(), simple.view(), {.samples = 100'000, .threads = 2});
    EXPECT_GE(measured.fromAToB.atMost, largest - 1e-12);
    EXPECT_NEAR(measured.fromAToB.largest, largest, 0.02 * largest);
}

}  // namespace
}  // namespace korvalite::test

#else

TEST(AgainstCgal, NearestPlacesAreAsFarAway) {
    GTEST_SKIP() << "CGAL was not found when the tests were compiled (Debian: libcgal-dev).";
}

#endif

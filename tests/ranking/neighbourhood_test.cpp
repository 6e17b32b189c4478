// SPDX-License-Identifier: MIT
#include "ranking/neighbourhood.h"

#include "lanes/kernels.h"
#include "support/mesh_builder.h"
#include "support/prepared_mesh.h"
#include "support/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <set>
#include <span>
#include <utility>
#include <vector>

namespace korvalite::core {
namespace {

constexpr std::uint32_t kNoSlot = NeighbourhoodMarks::kNoSlot;

// Gathers the same with maps and sets.
class Slowly {
public:
    Slowly(const DMesh& mesh, std::int32_t kept, IndexList corners, IndexList ring) : mesh_(mesh) {
        if (corners.empty()) GetVertexCorners(mesh, kept, corners);
        if (ring.empty()) GetVertexNeighbours(mesh, kept, ring);
        giveSlot(kept);
        for (const std::int32_t vertex : ring)
            giveSlot(vertex);
        ringEnd = vertices.size();
        listNeighbours();
        for (const std::int32_t x : neighbours) {
            if (!slotOf.contains(x)) giveSlot(x);
        }
        listTriangles(corners);
    }

    [[nodiscard]] std::uint32_t slot(std::int32_t vertex) const {
        const auto place = slotOf.find(vertex);
        return place == slotOf.end() ? kNoSlot : place->second;
    }

    std::vector<std::int32_t> vertices;  // in slot order
    std::size_t ringEnd = 0;
    std::map<std::int32_t, std::uint32_t> slotOf;
    std::vector<std::int32_t> neighbours;  // of the ring vertices, one after the other
    std::vector<std::size_t> neighboursEnd{0};
    std::vector<std::int32_t> triangles;

private:
    // A vertex that a triangle repeats is in its own ring, and has two slots: the last counts.
    void giveSlot(std::int32_t vertex) {
        if (vertices.size() >= kNoSlot) return;
        slotOf[vertex] = static_cast<std::uint32_t>(vertices.size());
        vertices.push_back(vertex);
    }
    void listNeighbours() {
        IndexList around;
        for (std::size_t slot = 1; slot < ringEnd; ++slot) {
            GetVertexNeighbours(mesh_, vertices[slot], around);
            neighbours.insert(neighbours.end(), around.begin(), around.end());
            neighboursEnd.push_back(neighbours.size());
        }
    }
    // All corners of the kept vertex, then what the outer ring adds.
    void listTriangles(const IndexList& corners) {
        for (const std::int32_t corner : corners)
            triangles.push_back(triangleOf(corner));
        std::set<std::int32_t> listed(triangles.begin(), triangles.end());
        for (const std::int32_t outer : std::span(vertices).subspan(ringEnd)) {
            forEachCorner(mesh_, outer, [&](std::int32_t corner) {
                if (listed.insert(triangleOf(corner)).second)
                    triangles.push_back(triangleOf(corner));
            });
        }
    }

    const DMesh& mesh_;
};

template <typename Item>
std::vector<Item> asVector(std::span<const Item> items) {
    return {items.begin(), items.end()};
}

struct Gathered {
    ProgressiveMesh pm;
    NeighbourhoodMarks marks;
    Neighbourhood area;

    explicit Gathered(DMesh mesh) { take(std::move(mesh)); }

    void take(DMesh mesh) {
        test::prepare(pm, std::move(mesh));
        marks.prepare(pm.mesh);
    }
    // With the corner list and the ring of the kept vertex as they are, or as given.
    void check(std::int32_t kept, const IndexList& corners = {}, const IndexList& ring = {}) {
        const Slowly expected(pm.mesh, kept, corners, ring);
        area.gatherVertices(pm, marks, kept, corners, ring);
        checkVertices(expected);
        checkNeighbours(expected);
        area.gatherTriangles(pm, marks);
        checkTriangles(expected);
        area.clear(marks);
        ASSERT_TRUE(marksAreClear());
    }
    void checkAll() {
        for (std::int32_t kept = 0; kept < pm.mesh.vertexCount(); ++kept) {
            SCOPED_TRACE(kept);
            check(kept);
            if (testing::Test::HasFailure()) return;
        }
    }

private:
    void checkVertices(const Slowly& expected) const {
        ASSERT_EQ(asVector(area.vertices()), expected.vertices);
        ASSERT_EQ(area.ring().size(), expected.ringEnd);
        ASSERT_EQ(area.outerRing().size(), expected.vertices.size() - expected.ringEnd);
        for (std::int32_t v = 0; v < pm.mesh.vertexCount(); ++v)
            ASSERT_EQ(marks.vertexSlot[v], expected.slot(v)) << v;
    }
    void checkNeighbours(const Slowly& expected) const {
        ASSERT_EQ(asVector(area.neighbours()), expected.neighbours);
        ASSERT_EQ(area.neighbourSlots().size(), expected.neighbours.size());
        for (std::size_t i = 0; i < expected.neighbours.size(); ++i)
            ASSERT_EQ(area.neighbourSlots()[i], expected.slot(expected.neighbours[i])) << i;
        for (std::size_t slot = 1; slot < expected.ringEnd; ++slot)
            ASSERT_EQ(area.neighboursEnd(slot), expected.neighboursEnd[slot]) << slot;
    }
    void checkTriangles(const Slowly& expected) const {
        ASSERT_EQ(asVector(area.triangles()), expected.triangles);
        const std::size_t corners = 3 * expected.triangles.size();
        const std::size_t padded = 3 * lanes::padded(expected.triangles.size());
        ASSERT_GE(area.triangleVertices().size(), padded);
        ASSERT_GE(area.triangleSlots().size(), padded);
        for (std::size_t i = 0; i < corners; ++i) {
            const std::int32_t vertex =
                vertexAt(pm.mesh, 3 * expected.triangles[i / 3] + static_cast<std::int32_t>(i % 3));
            ASSERT_EQ(area.triangleVertices()[i], static_cast<std::uint32_t>(vertex)) << i;
            if (expected.slot(vertex) == kNoSlot) {
                ASSERT_TRUE(isSpare(area.triangleSlots()[i])) << i;
            } else {
                ASSERT_EQ(area.triangleSlots()[i], expected.slot(vertex)) << i;
            }
        }
        for (std::size_t i = corners; i < padded; ++i) {
            ASSERT_LT(area.triangleVertices()[i], pm.mesh.vertices.size());
            ASSERT_TRUE(isSpare(area.triangleSlots()[i])) << i;
        }
    }
    [[nodiscard]] bool isSpare(std::uint32_t slot) const {
        const std::size_t slots = area.vertices().size();
        return slot >= slots && slot < slots + Neighbourhood::kSpareSlots;
    }
    [[nodiscard]] bool marksAreClear() const {
        return std::all_of(marks.vertexSlot.begin(), marks.vertexSlot.end(),
                           [](std::uint16_t slot) { return slot == kNoSlot; });
    }
};

void expectAsSlowly(DMesh mesh) {
    Gathered(std::move(mesh)).checkAll();
}

// The same triangles in another order, which changes the order of corners and of rings.
DMesh shuffled(const DMesh& mesh, std::uint32_t seed) {
    test::Random random(seed);
    test::Points points;
    for (const VertexRecord& vertex : mesh.vertices)
        points.push_back(vertex.position());
    test::Faces faces;
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3)
        faces.push_back({mesh.triangles[i], mesh.triangles[i + 1], mesh.triangles[i + 2]});
    for (std::size_t i = faces.size(); i > 1; --i)
        std::swap(faces[i - 1], faces[random.below(static_cast<std::uint32_t>(i))]);
    for (auto& face : faces)
        std::rotate(face.begin(), face.begin() + random.below(3), face.end());
    return test::buildMesh(points, faces);
}

// A hub, its rim, and a second rim around that, with a strip of triangles between the two.
DMesh wheel(std::uint32_t spokes) {
    test::Faces faces;
    for (std::uint32_t i = 0; i < spokes; ++i) {
        const std::uint32_t a = 1 + i;
        const std::uint32_t b = 1 + (i + 1) % spokes;
        faces.insert(faces.end(), {{0, a, b}, {a, a + spokes, b}, {b, a + spokes, b + spokes}});
    }
    return test::buildMesh(test::Points(2 * spokes + 1), faces);
}

// Any triangles between a few vertices, so that edges have many and some vertices repeat.
DMesh tangle(test::Random& random, std::uint32_t vertices, std::uint32_t triangles) {
    test::Faces faces;
    for (std::uint32_t i = 0; i < triangles; ++i) {
        faces.push_back({random.below(vertices), random.below(vertices), random.below(vertices)});
        if (random.onceIn(8)) faces.back()[1] = faces.back()[0];
        if (random.onceIn(8)) faces.push_back(faces[random.below(i + 1)]);
    }
    return test::buildMesh(test::Points(vertices), faces);
}

TEST(Neighbourhood, IsTheSameAsWithMapsAndSets) {
    expectAsSlowly(test::oneTriangle());
    expectAsSlowly(test::twoTriangles());
    expectAsSlowly(test::octahedron());
    expectAsSlowly(test::threePillows());
    for (const DMesh& mesh : {test::grid(8, 8), test::grid(1, 7), test::sphere(2),
                              test::torus(7, 5), test::torus(3, 3)}) {
        expectAsSlowly(mesh);
        expectAsSlowly(shuffled(mesh, 1));
    }
}

TEST(Neighbourhood, OfATetrahedronLacksTheTriangleOfItsRing) {
    Gathered gathered(test::tetrahedron());
    gathered.checkAll();
    gathered.area.gatherVertices(gathered.pm, gathered.marks, 0, {}, {});
    gathered.area.gatherTriangles(gathered.pm, gathered.marks);
    EXPECT_EQ(asVector(gathered.area.triangles()), (std::vector<std::int32_t>{2, 1, 0}));
    EXPECT_TRUE(gathered.area.outerRing().empty());
    gathered.area.clear(gathered.marks);
    EXPECT_TRUE(gathered.area.vertices().empty());
}

TEST(Neighbourhood, OfAVertexWithoutTrianglesIsThatVertex) {
    Gathered gathered(test::buildMesh(test::Points(4), {{0, 1, 3}}));
    gathered.checkAll();
    gathered.area.gatherVertices(gathered.pm, gathered.marks, 2, {}, {});
    gathered.area.gatherTriangles(gathered.pm, gathered.marks);
    EXPECT_EQ(asVector(gathered.area.vertices()), (std::vector<std::int32_t>{2}));
    EXPECT_TRUE(gathered.area.neighbours().empty());
    EXPECT_TRUE(gathered.area.triangles().empty());
}

TEST(Neighbourhood, IsTheSameAroundHubs) {
    // The hub as the kept vertex, in the ring and in the outer ring, around the numbers of corners
    // that fit a run and that are searched one by one.
    for (const std::uint32_t spokes : {3U, 7U, 8U, 9U, 16U, 31U, 64U, 65U, 66U}) {
        expectAsSlowly(wheel(spokes));
        expectAsSlowly(shuffled(wheel(spokes), spokes));
    }
}

TEST(Neighbourhood, IsTheSameAroundAHubOfHundreds) {
    Gathered gathered(shuffled(wheel(900), 2));
    for (const std::int32_t kept : {0, 1, 17, 900, 901, 902, 1700, 1800})
        gathered.check(kept);
}

TEST(Neighbourhood, IsTheSameInTanglesOfTriangles) {
    test::Random random(3);
    for (int round = 0; round < 150; ++round) {
        const std::uint32_t vertices = 1 + random.below(40);
        expectAsSlowly(tangle(random, vertices, random.below(3 * vertices)));
        if (HasFailure()) return;
    }
}

TEST(Neighbourhood, IsTheSameAmongDegenerateAndDuplicateTriangles) {
    test::Random random(4);
    for (const DMesh& clean : {test::grid(8, 8), test::sphere(2), wheel(70)}) {
        DMesh mesh = clean;
        for (int i = 0; i < 60; ++i) {
            const std::uint32_t triangle =
                random.below(static_cast<std::uint32_t>(clean.triangleCount()));
            std::uint32_t face[3];
            for (std::size_t k = 0; k < 3; ++k)
                face[k] = clean.triangles[3 * triangle + k];
            if (random.onceIn(2)) face[random.below(3)] = face[random.below(3)];
            mesh.triangles.insert(mesh.triangles.end(), face, face + 3);
        }
        test::completeMesh(mesh);
        expectAsSlowly(shuffled(mesh, 5));
    }
}

TEST(Neighbourhood, ListsEachTriangleOnce) {
    // All but those in which the kept vertex itself is repeated: these count once for each corner.
    DMesh mesh = test::grid(8, 8);
    mesh.triangles.insert(mesh.triangles.end(), {40, 41, 41, 42, 42, 42, 40, 40, 31, 43, 52, 43});
    test::completeMesh(mesh);
    Gathered gathered(shuffled(mesh, 6));
    for (std::int32_t kept = 0; kept < gathered.pm.mesh.vertexCount(); ++kept) {
        gathered.check(kept);
        if (kept >= 40 && kept <= 43) continue;
        gathered.area.gatherVertices(gathered.pm, gathered.marks, kept, {}, {});
        gathered.area.gatherTriangles(gathered.pm, gathered.marks);
        const auto triangles = gathered.area.triangles();
        EXPECT_EQ(std::set(triangles.begin(), triangles.end()).size(), triangles.size()) << kept;
        gathered.area.clear(gathered.marks);
    }
}

TEST(Neighbourhood, KeepsNothingFromTheOneBefore) {
    // In turn large and small, on meshes of different sizes.
    Gathered gathered(wheel(300));
    for (int round = 0; round < 3; ++round) {
        gathered.take(wheel(300));
        gathered.check(0);
        gathered.check(450);
        gathered.take(shuffled(test::grid(5, 5), 7));
        gathered.checkAll();
        gathered.take(test::oneTriangle());
        gathered.checkAll();
    }
}

TEST(Neighbourhood, TakesTheListsOfTheKeptVertexIfTheyAreKnown) {
    Gathered gathered(shuffled(test::grid(8, 8), 8));
    IndexList ring;
    IndexList corners;
    for (std::int32_t kept = 0; kept < gathered.pm.mesh.vertexCount(); ++kept) {
        GetVertexCornersAndNeighbours(gathered.pm.mesh, kept, ring, corners);
        gathered.check(kept, corners, ring);
        gathered.check(kept, corners, {});
        gathered.check(kept, {}, ring);
        // Their order is kept.
        std::ranges::reverse(ring);
        std::ranges::reverse(corners);
        gathered.check(kept, corners, ring);
    }
}

TEST(Neighbourhood, OmitsDeadTriangles) {
    test::Random random(9);
    Gathered gathered(shuffled(test::sphere(2), 9));
    DMesh& mesh = gathered.pm.mesh;
    for (std::int32_t triangle = 0; triangle < mesh.triangleCount(); ++triangle) {
        if (!random.onceIn(4)) continue;
        mesh.triangleActive.Clear(triangle);
        --mesh.numActiveTriangles;
    }
    dropDeadVertexCorners(mesh);
    gathered.checkAll();
}

// More vertices than there are slots.

TEST(Neighbourhood, GivesNoSlotToTheRestOfATooLargeRing) {
    test::Faces faces;
    for (std::uint32_t i = 0; i < 70000; ++i)
        faces.push_back({0, 1 + i, 1 + (i + 1) % 70000});
    Gathered gathered(test::buildMesh(test::Points(70001), faces));
    gathered.check(0);
    gathered.check(1);
}

TEST(Neighbourhood, GivesNoSlotToTheRestOfATooLargeOuterRing) {
    Gathered gathered(wheel(40000));
    gathered.check(0);
}

// With symmetry, a collapse of the mirror image may have changed the mesh after the lists of the
// kept vertex were gathered.

// A mesh whose collapse of `removed` came after the lists of `kept` were gathered.
struct Mirrored : Gathered {
    IndexList corners;
    IndexList ring;

    Mirrored(DMesh mesh, std::int32_t kept) : Gathered(std::move(mesh)) {
        pm.m_handleSymmetry_internal = true;
        pm.symmetrySlaves.Resize(pm.mesh.vertexCount(), false);
        GetVertexCornersAndNeighbours(pm.mesh, kept, ring, corners);
    }
    // Moves the triangles of one vertex to the other. Those that have both disappear.
    void collapse(std::int32_t removed, std::int32_t onto) {
        DMesh& mesh = pm.mesh;
        IndexList moving;
        GetVertexCorners(mesh, removed, moving);
        for (const std::int32_t corner : moving) {
            const bool dies = vertexAt(mesh, nextCorner(corner)) == onto ||
                              vertexAt(mesh, previousCorner(corner)) == onto;
            mesh.triangles[corner] = static_cast<std::uint32_t>(onto);
            if (!dies || !mesh.triangleActive.Test(triangleOf(corner))) continue;
            mesh.triangleActive.Clear(triangleOf(corner));
            --mesh.numActiveTriangles;
        }
        BuildVertexCorners(mesh);
        dropDeadVertexCorners(mesh);
    }
};

TEST(Neighbourhood, WithSymmetryIsTheSameWithListsThatAreUpToDate) {
    for (const DMesh& mesh : {test::grid(8, 8), test::sphere(2), wheel(20)}) {
        for (std::int32_t kept = 0; kept < mesh.vertexCount(); ++kept) {
            Mirrored mirrored(shuffled(mesh, 10), kept);
            mirrored.check(kept);
            mirrored.check(kept, mirrored.corners, mirrored.ring);
        }
    }
}

//   *---*---*
//   | / | / |    The collapse of x moves its triangles to the kept vertex k. They are not in the
//   o---x---o    list of k, but those that have an o are at a vertex of its outer ring.
//   | / | / |
//   r---r---r
//   | / | / |
//   r---k---r
TEST(Neighbourhood, WithSymmetryListsNewTrianglesOfTheKeptVertexAtTheOuterRing) {
    constexpr std::int32_t kKept = 24;
    constexpr std::int32_t kRemoved = 38;
    Mirrored mirrored(test::grid(6, 6), kKept);
    mirrored.collapse(kRemoved, kKept);
    mirrored.check(kKept, mirrored.corners, mirrored.ring);

    mirrored.area.gatherVertices(mirrored.pm, mirrored.marks, kKept, mirrored.corners,
                                 mirrored.ring);
    mirrored.area.gatherTriangles(mirrored.pm, mirrored.marks);
    const auto outer = mirrored.area.outerRing();
    const auto isOuter = [&](std::int32_t corner) {
        return std::ranges::count(outer, vertexAt(mirrored.pm.mesh, corner)) > 0;
    };
    int listed = 0;
    int others = 0;
    forEachCorner(mirrored.pm.mesh, kKept, [&](std::int32_t corner) {
        if (contains(mirrored.corners, corner)) return;
        const bool hasOuter = isOuter(nextCorner(corner)) || isOuter(previousCorner(corner));
        ++(hasOuter ? listed : others);
        EXPECT_EQ(std::ranges::count(mirrored.area.triangles(), triangleOf(corner)),
                  hasOuter ? 1 : 0);
    });
    EXPECT_EQ(listed, 4);
    EXPECT_EQ(others, 2);
}

TEST(Neighbourhood, WithSymmetryFollowsTheSameRuleWithOldLists) {
    test::Random random(11);
    for (const DMesh& mesh : {test::grid(8, 8), test::sphere(2), test::torus(9, 7), wheel(20)}) {
        for (int round = 0; round < 100; ++round) {
            const std::int32_t last = mesh.vertexCount() - 1;
            const std::int32_t kept = random.between(0, last);
            Mirrored mirrored(shuffled(mesh, 12), kept);
            // A neighbour of the ring, or any vertex.
            IndexList nearby = mirrored.ring;
            for (int step = 0; step < 2; ++step) {
                const auto any = random.below(static_cast<std::uint32_t>(nearby.size()));
                GetVertexNeighbours(mirrored.pm.mesh, nearby[any], nearby);
            }
            const std::int32_t removed =
                nearby[random.below(static_cast<std::uint32_t>(nearby.size()))];
            const std::int32_t onto = random.onceIn(2) ? kept : random.between(0, last);
            if (removed == onto || removed == kept) continue;
            mirrored.collapse(removed, onto);
            mirrored.check(kept, mirrored.corners, mirrored.ring);
            mirrored.check(kept, mirrored.corners, {});
            mirrored.check(kept, {}, mirrored.ring);
            mirrored.check(kept);
            ASSERT_FALSE(HasFailure()) << kept << ' ' << removed << ' ' << onto;
        }
    }
}

}  // namespace
}  // namespace korvalite::core

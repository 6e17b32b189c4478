// SPDX-License-Identifier: MIT
//
// Compares check with a slow second way to count, on random soups.
#include "library/mesh_check.h"
#include "support/random.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <set>
#include <utility>
#include <vector>

namespace korvalite {
namespace {

using core::test::Random;
using Edge = std::pair<std::uint32_t, std::uint32_t>;  // the lower end first

struct Soup {
    std::vector<float> positions;
    std::vector<std::uint32_t> faces;
    std::uint32_t verticesPerFace = 3;
    std::vector<float> uvs;
    std::vector<std::uint32_t> faceUVs;

    [[nodiscard]] MeshView view() const {
        return {positions, faces, verticesPerFace, {}, {}, uvs, faceUVs};
    }
};

// Few vertices at few places, so that triangles often meet.
Soup randomSoup(Random& random) {
    Soup soup;
    const std::uint32_t vertexCount = 4 + random.below(11);
    for (std::uint32_t i = 0; i < 3 * vertexCount; ++i) {
        float value = static_cast<float>(random.below(4)) - 1.0F;
        if (value == 0 && random.onceIn(2)) value = -0.0F;
        if (random.onceIn(60)) value = std::numeric_limits<float>::quiet_NaN();
        if (random.onceIn(60)) value = std::numeric_limits<float>::infinity();
        soup.positions.push_back(value);
    }
    soup.verticesPerFace = random.onceIn(2) ? 4 : 3;
    const bool hasUVs = random.onceIn(2);
    const std::uint32_t uvCount = 2 * vertexCount;
    if (hasUVs) {
        for (std::uint32_t i = 0; i < 2 * uvCount; ++i)
            soup.uvs.push_back(static_cast<float>(random.below(2)));
    }
    const std::uint32_t faceCount = random.below(24);
    for (std::uint32_t i = 0; i < faceCount * soup.verticesPerFace; ++i) {
        const bool isFourth = soup.verticesPerFace == 4 && i % 4 == 3;
        const std::uint32_t vertex = random.below(vertexCount);
        soup.faces.push_back(isFourth && random.onceIn(3) ? kNoVertex
                             : random.onceIn(50)          ? vertexCount + random.below(3)
                                                          : vertex);
        if (!hasUVs) continue;
        // Mostly the same UV point at the same vertex.
        const std::uint32_t uv = random.onceIn(4) ? random.below(uvCount) : vertex;
        soup.faceUVs.push_back(random.onceIn(50) ? uvCount : uv);
    }
    return soup;
}

struct Corner {
    std::uint32_t vertex = 0;
    std::uint32_t uv = 0;
};

struct Triangle {
    std::uint32_t index = 0;
    std::array<Corner, 3> corners;

    [[nodiscard]] std::set<std::uint32_t> vertices() const {
        return {corners[0].vertex, corners[1].vertex, corners[2].vertex};
    }
    [[nodiscard]] bool has(std::uint32_t vertex) const { return vertices().count(vertex) == 1; }
    [[nodiscard]] std::uint32_t uvAt(std::uint32_t vertex) const {
        const auto at = std::find_if(corners.begin(), corners.end(),
                                     [&](const Corner& c) { return c.vertex == vertex; });
        return at->uv;
    }
    [[nodiscard]] bool goesFromTo(std::uint32_t from, std::uint32_t to) const {
        for (std::size_t i = 0; i < 3; ++i) {
            if (corners[i].vertex == from && corners[(i + 1) % 3].vertex == to) return true;
        }
        return false;
    }
};

std::vector<Triangle> split(const Soup& soup) {
    std::vector<Triangle> triangles;
    const auto add = [&](std::size_t a, std::size_t b, std::size_t c) {
        Triangle triangle;
        triangle.index = static_cast<std::uint32_t>(triangles.size());
        std::size_t i = 0;
        for (const std::size_t place : {a, b, c})
            triangle.corners[i++] = {soup.faces[place],
                                     soup.faceUVs.empty() ? 0 : soup.faceUVs[place]};
        triangles.push_back(triangle);
    };
    for (std::size_t face = 0; face < soup.faces.size(); face += soup.verticesPerFace) {
        add(face, face + 1, face + 2);
        if (soup.verticesPerFace == 4 && soup.faces[face + 3] != kNoVertex)
            add(face, face + 2, face + 3);
    }
    return triangles;
}

// The number of groups that items form if those that touch belong together.
template <typename Item, typename Touch>
std::uint64_t groupCount(const std::vector<Item>& items, Touch touch) {
    std::vector<std::size_t> group(items.size());
    for (std::size_t i = 0; i < items.size(); ++i) {
        group[i] = i;
        for (std::size_t j = 0; j < i; ++j) {
            if (!touch(items[i], items[j])) continue;
            std::replace(group.begin(), group.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                         std::size_t{group[j]}, std::size_t{group[i]});
        }
    }
    return std::set<std::size_t>(group.begin(), group.end()).size();
}

class NaiveCheck {
public:
    explicit NaiveCheck(const Soup& soup)
        : soup_(soup), vertexCount_(soup.positions.size() / 3), uvCount_(soup.uvs.size() / 2) {
        result_.vertices = vertexCount_;
        sortTriangles();
        checkVertices();
        checkEdges();
        checkWhatIsConnected();
        for (auto* places :
             {&result_.places.nonFiniteVertices, &result_.places.badTriangles,
              &result_.places.borderEdges, &result_.places.nonManifoldEdges,
              &result_.places.nonManifoldVertices, &result_.places.flippedEdges,
              &result_.places.degenerateTriangles, &result_.places.duplicateTriangles,
              &result_.places.unusedVertices, &result_.places.repeatedPositions}) {
            std::sort(places->begin(), places->end());
            places->erase(std::unique(places->begin(), places->end()), places->end());
            places->resize(std::min<std::size_t>(places->size(), 10));
        }
    }

    [[nodiscard]] const MeshCheck& result() const { return result_; }

private:
    static void add(std::uint64_t& count, std::vector<std::uint32_t>& places, std::size_t place) {
        ++count;
        places.push_back(static_cast<std::uint32_t>(place));
    }

    [[nodiscard]] std::array<double, 3> position(std::size_t vertex) const {
        const float* p = &soup_.positions[3 * vertex];
        return {static_cast<double>(p[0]), static_cast<double>(p[1]), static_cast<double>(p[2])};
    }

    // No area where the square of the dot product is the product of the squares; this is exact,
    // because finite coordinates are small whole numbers. A triangle with others is not flat.
    [[nodiscard]] bool isFlat(const Triangle& triangle) const {
        const auto dot = [](const std::array<double, 3>& a, const std::array<double, 3>& b) {
            return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
        };
        auto a = position(triangle.corners[1].vertex);
        auto b = position(triangle.corners[2].vertex);
        const auto origin = position(triangle.corners[0].vertex);
        for (std::size_t axis = 0; axis < 3; ++axis) {
            a[axis] -= origin[axis];
            b[axis] -= origin[axis];
        }
        const double areas = dot(a, a) * dot(b, b);
        return std::isfinite(areas) && dot(a, b) * dot(a, b) == areas;
    }

    void sortTriangles() {
        std::set<std::set<std::uint32_t>> seen;
        for (const Triangle& triangle : split(soup_)) {
            ++result_.triangles;
            const auto isOutside = [&](const Corner& c) { return c.vertex >= vertexCount_; };
            const auto isUVOutside = [&](const Corner& c) {
                return !soup_.faceUVs.empty() && c.uv >= uvCount_;
            };
            const auto& corners = triangle.corners;
            const bool isBad = std::any_of(corners.begin(), corners.end(), isOutside);
            if (isBad || std::any_of(corners.begin(), corners.end(), isUVOutside))
                add(result_.badTriangles, result_.places.badTriangles, triangle.index);
            if (isBad) continue;
            used_.merge(triangle.vertices());
            const bool isPinched = triangle.vertices().size() < 3;
            if (isPinched || isFlat(triangle))
                add(result_.degenerateTriangles, result_.places.degenerateTriangles,
                    triangle.index);
            if (isPinched) continue;
            if (!seen.insert(triangle.vertices()).second)
                add(result_.duplicateTriangles, result_.places.duplicateTriangles, triangle.index);
            for (std::size_t i = 0; i < 3; ++i) {
                const auto ends = std::minmax({corners[i].vertex, corners[(i + 1) % 3].vertex});
                edges_[ends].push_back(triangle);
            }
            triangles_.push_back(triangle);
        }
    }

    void checkVertices() {
        for (std::size_t vertex = 0; vertex < vertexCount_; ++vertex) {
            const auto p = position(vertex);
            if (!std::all_of(p.begin(), p.end(), [](double x) { return std::isfinite(x); }))
                add(result_.nonFiniteVertices, result_.places.nonFiniteVertices, vertex);
            if (used_.count(static_cast<std::uint32_t>(vertex)) == 0)
                add(result_.unusedVertices, result_.places.unusedVertices, vertex);
            bool isRepeated = false;
            for (std::size_t earlier = 0; earlier < vertex; ++earlier)
                isRepeated = isRepeated || position(earlier) == p;
            if (isRepeated)
                add(result_.repeatedPositions, result_.places.repeatedPositions, vertex);
        }
    }

    [[nodiscard]] bool isSeamAt(std::uint32_t vertex, const Triangle& a, const Triangle& b) const {
        const std::size_t uvA = a.uvAt(vertex);
        const std::size_t uvB = b.uvAt(vertex);
        if (uvA >= uvCount_ || uvB >= uvCount_) return false;
        return soup_.uvs[2 * uvA] != soup_.uvs[2 * uvB] ||
               soup_.uvs[2 * uvA + 1] != soup_.uvs[2 * uvB + 1];
    }

    void checkEdges() {
        for (const auto& [edge, triangles] : edges_) {
            const std::uint32_t first = triangles.front().index;
            if (triangles.size() == 1) add(result_.borderEdges, result_.places.borderEdges, first);
            if (triangles.size() > 2)
                add(result_.nonManifoldEdges, result_.places.nonManifoldEdges, first);
            if (triangles.size() != 2) continue;
            const Triangle& a = triangles[0];
            const Triangle& b = triangles[1];
            if (a.goesFromTo(edge.first, edge.second) == b.goesFromTo(edge.first, edge.second))
                add(result_.flippedEdges, result_.places.flippedEdges, first);
            if (isSeamAt(edge.first, a, b) || isSeamAt(edge.second, a, b)) ++result_.seamEdges;
        }
    }

    void checkWhatIsConnected() {
        result_.components = groupCount(triangles_, [](const Triangle& a, const Triangle& b) {
            const auto vertices = a.vertices();
            return std::any_of(vertices.begin(), vertices.end(),
                               [&](std::uint32_t vertex) { return b.has(vertex); });
        });
        std::vector<Edge> borders;
        for (const auto& [edge, triangles] : edges_) {
            if (triangles.size() == 1) borders.push_back(edge);
        }
        result_.borderLoops = groupCount(borders, [](const Edge& a, const Edge& b) {
            return a.first == b.first || a.first == b.second || a.second == b.first ||
                   a.second == b.second;
        });
        for (const std::uint32_t vertex : used_) {
            if (fansAround(vertex) > 1)
                add(result_.nonManifoldVertices, result_.places.nonManifoldVertices, vertex);
        }
    }

    [[nodiscard]] std::uint64_t fansAround(std::uint32_t vertex) const {
        std::vector<Triangle> around;
        for (const Triangle& triangle : triangles_) {
            if (triangle.has(vertex)) around.push_back(triangle);
        }
        return groupCount(around, [&](const Triangle& a, const Triangle& b) {
            for (std::uint32_t other = 0; other < vertexCount_; ++other) {
                if (other != vertex && a.has(other) && b.has(other) &&
                    edges_.at(std::minmax({vertex, other})).size() == 2)
                    return true;
            }
            return false;
        });
    }

    const Soup& soup_;
    std::size_t vertexCount_;
    std::size_t uvCount_;
    std::set<std::uint32_t> used_;
    std::vector<Triangle> triangles_;  // without bad ones and those with a vertex twice
    std::map<Edge, std::vector<Triangle>> edges_;
    MeshCheck result_;
};

// Which kinds of faults the soups had, so that the comparison is known to cover all of them.
struct Seen {
    std::uint64_t faults[13] = {};

    void add(const MeshCheck& c) {
        const std::uint64_t counts[] = {c.nonFiniteVertices,
                                        c.badTriangles,
                                        c.components > 1,
                                        c.borderEdges,
                                        c.borderLoops > 1,
                                        c.nonManifoldEdges,
                                        c.nonManifoldVertices,
                                        c.flippedEdges,
                                        c.degenerateTriangles,
                                        c.duplicateTriangles,
                                        c.unusedVertices,
                                        c.repeatedPositions,
                                        c.seamEdges};
        for (std::size_t i = 0; i < std::size(counts); ++i)
            faults[i] += counts[i];
    }
};

TEST(CheckProperty, CountsAndPlacesEqualThoseOfTheSlowWay) {
    Seen seen;
    for (std::uint32_t seed = 0; seed < 2000; ++seed) {
        Random random(seed);
        const Soup soup = randomSoup(random);
        const NaiveCheck naive(soup);
        SCOPED_TRACE(seed);
        test::expectEqual(check(soup.view()), naive.result());
        seen.add(naive.result());
        if (testing::Test::HasFailure()) return;
    }
    for (const std::uint64_t count : seen.faults)
        EXPECT_GT(count, 50U);
}

TEST(CheckProperty, TheEndsOfNonManifoldEdgesHaveSeveralFans) {
    std::uint64_t edges = 0;
    for (std::uint32_t seed = 0; seed < 2000; ++seed) {
        Random random(seed);
        // One edge with many triangles, and others that join them anywhere else.
        Soup soup;
        soup.positions.resize(3 * 10);
        for (std::uint32_t i = 0; i < 3; ++i)
            soup.faces.insert(soup.faces.end(), {0, 1, 2 + random.below(8)});
        for (std::uint32_t i = 0; i < 8; ++i)
            soup.faces.insert(soup.faces.end(), {0, 2 + random.below(8), 2 + random.below(8)});
        const MeshCheck result = check(soup.view());
        ASSERT_GE(result.nonManifoldEdges, 1U);
        ASSERT_GE(result.places.nonManifoldVertices.size(), 2U) << seed;
        ASSERT_EQ(result.places.nonManifoldVertices[0], 0U) << seed;
        ASSERT_EQ(result.places.nonManifoldVertices[1], 1U) << seed;
        edges += result.nonManifoldEdges;
    }
    EXPECT_GT(edges, 2000U);
}

}  // namespace
}  // namespace korvalite

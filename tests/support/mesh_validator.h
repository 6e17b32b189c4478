// SPDX-License-Identifier: MIT
//
// What must hold for a mesh after every operation. Use as EXPECT_TRUE(isSound(mesh)): a failure
// says what is wrong and where.
#pragma once

#include "mesh/corner_lists.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <set>
#include <utility>
#include <vector>

namespace korvalite::core::test {

enum class Degenerate { Refused, Allowed };

inline testing::AssertionResult countsMatchBits(const DMesh& mesh) {
    const auto compare = [](const char* what, const BitArray& bits, std::size_t items,
                            std::uint32_t count) -> testing::AssertionResult {
        if (static_cast<std::size_t>(bits.count()) != items) {
            return testing::AssertionFailure()
                   << items << ' ' << what << " and " << bits.count() << " active bits";
        }
        std::uint32_t set = 0;
        for (std::int32_t i = 0; i < bits.count(); ++i)
            set += bits.Test(i) ? 1U : 0U;
        if (set != count) {
            return testing::AssertionFailure()
                   << count << " active " << what << " are counted, but " << set << " bits are set";
        }
        return testing::AssertionSuccess();
    };
    const auto vertices =
        compare("vertices", mesh.vertexActive, mesh.vertices.size(), mesh.numActiveVertices);
    if (!vertices) return vertices;
    return compare("triangles", mesh.triangleActive, mesh.triangles.size() / 3,
                   mesh.numActiveTriangles);
}

// Requires of every active triangle: indices in range, no dead vertex and, unless allowed, no
// vertex twice.
inline testing::AssertionResult trianglesAreSound(const DMesh& mesh,
                                                  Degenerate degenerate = Degenerate::Refused) {
    if (mesh.triangles.size() % 3 != 0) return testing::AssertionFailure() << "half a triangle";
    for (std::int32_t t = 0; t < mesh.triangleCount(); ++t) {
        const std::uint32_t* v = &mesh.triangles[3 * static_cast<std::size_t>(t)];
        for (int k = 0; k < 3; ++k) {
            if (v[k] >= mesh.vertices.size()) {
                return testing::AssertionFailure() << "triangle " << t << " names vertex " << v[k];
            }
            if (mesh.triangleActive.Test(t) && !mesh.vertexActive.Test(v[k])) {
                return testing::AssertionFailure()
                       << "active triangle " << t << " names dead vertex " << v[k];
            }
        }
        if (degenerate == Degenerate::Refused && mesh.triangleActive.Test(t) &&
            (v[0] == v[1] || v[1] == v[2] || v[2] == v[0])) {
            return testing::AssertionFailure()
                   << "active triangle " << t << " names a vertex twice";
        }
    }
    return testing::AssertionSuccess();
}

// Checks bits, counts and triangles.
inline testing::AssertionResult isSound(const DMesh& mesh,
                                        Degenerate degenerate = Degenerate::Refused) {
    const auto counts = countsMatchBits(mesh);
    return counts ? trianglesAreSound(mesh, degenerate) : counts;
}

// Every corner of an active triangle is on the list of its vertex exactly once; nothing else is on
// any list; every list ends.
inline testing::AssertionResult cornerListsAreSound(const DMesh& mesh) {
    if (!mesh.vertexCorners.areBuiltFor(mesh.vertices.size(), mesh.triangles.size())) {
        return testing::AssertionFailure() << "the lists do not have the size of the mesh";
    }
    std::vector<bool> listed(mesh.triangles.size());
    for (std::size_t v = 0; v < mesh.vertices.size(); ++v) {
        CornerCursor cursor(mesh.vertexCorners, static_cast<std::int32_t>(v));
        for (std::int32_t c = cursor.next(); c != kNone; c = cursor.next()) {
            const auto corner = static_cast<std::size_t>(c);
            if (c < 0 || corner >= listed.size()) {
                return testing::AssertionFailure() << "vertex " << v << " lists corner " << c;
            }
            if (listed[corner]) {
                return testing::AssertionFailure()
                       << "corner " << c << " is listed twice, at " << v;
            }
            if (mesh.triangles[corner] != v) {
                return testing::AssertionFailure() << "vertex " << v << " lists corner " << c
                                                   << " of " << mesh.triangles[corner];
            }
            if (!mesh.triangleActive.Test(c / 3)) {
                return testing::AssertionFailure()
                       << "vertex " << v << " lists a corner of dead triangle " << c / 3;
            }
            listed[corner] = true;
        }
    }
    for (std::size_t corner = 0; corner < listed.size(); ++corner) {
        if (!listed[corner] && mesh.triangleActive.Test(static_cast<std::int32_t>(corner / 3))) {
            return testing::AssertionFailure() << "corner " << corner << " is on no list";
        }
    }
    return testing::AssertionSuccess();
}

// The active vertices and triangles form a prefix of the arrays and name nothing after it.
inline testing::AssertionResult isAPrefix(const DMesh& mesh) {
    for (std::int32_t v = 0; v < mesh.vertexCount(); ++v) {
        if (mesh.vertexActive.Test(v) != (static_cast<std::uint32_t>(v) < mesh.numActiveVertices))
            return testing::AssertionFailure() << "vertex " << v;
    }
    for (std::int32_t t = 0; t < mesh.triangleCount(); ++t) {
        if (mesh.triangleActive.Test(t) !=
            (static_cast<std::uint32_t>(t) < mesh.numActiveTriangles))
            return testing::AssertionFailure() << "triangle " << t;
    }
    for (std::size_t c = 0; c < 3 * std::size_t{mesh.numActiveTriangles}; ++c) {
        if (mesh.triangles[c] >= mesh.numActiveVertices)
            return testing::AssertionFailure() << "corner " << c << " of " << mesh.triangles[c];
    }
    return testing::AssertionSuccess();
}

// The active triangles form one closed fan around each of their vertices, all with the same
// orientation.
inline testing::AssertionResult isClosedManifold(const DMesh& mesh) {
    // Around v, the triangle (v, a, b) leads from a to b.
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> turn;
    std::map<std::uint32_t, std::uint32_t> corners;
    for (std::int32_t t = 0; t < mesh.triangleCount(); ++t) {
        if (!mesh.triangleActive.Test(t)) continue;
        const std::uint32_t* v = &mesh.triangles[3 * static_cast<std::size_t>(t)];
        for (int k = 0; k < 3; ++k) {
            const std::uint32_t a = v[(k + 1) % 3];
            if (!turn.insert({{v[k], a}, v[(k + 2) % 3]}).second) {
                return testing::AssertionFailure() << "edge " << v[k] << " -> " << a
                                                   << " is on two triangles, one of them " << t;
            }
            ++corners[v[k]];
        }
    }
    for (const auto& [edge, opposite] : turn) {
        const auto [v, first] = edge;
        std::uint32_t steps = 0;
        std::uint32_t a = first;
        do {
            const auto next = turn.find({v, a});
            if (next == turn.end()) {
                return testing::AssertionFailure() << "edge " << v << " -> " << a << " is open";
            }
            a = next->second;
            ++steps;
        } while (a != first && steps <= corners[v]);
        if (steps != corners[v]) {
            return testing::AssertionFailure() << "vertex " << v << " has more than one fan";
        }
    }
    return testing::AssertionSuccess();
}

}  // namespace korvalite::core::test

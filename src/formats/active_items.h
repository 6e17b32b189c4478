// SPDX-License-Identifier: MIT
//
// The items of a mesh that go into a file: the active ones, in the order of their arrays. Active
// bits past the end of an array are ignored.
#pragma once

#include "mesh/dmesh.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace korvalite::core {

/// Calls visit(index) for each.
template <typename Visit>
void forEachActiveVertex(const DMesh& mesh, Visit visit) {
    const std::int32_t end = std::min(mesh.vertexActive.count(), mesh.vertexCount());
    for (std::int32_t i = 0; i < end; ++i) {
        if (mesh.vertexActive.Test(i)) visit(static_cast<std::size_t>(i));
    }
}

/// Calls visit(firstCorner) for each.
template <typename Visit>
void forEachActiveTriangle(const DMesh& mesh, Visit visit) {
    const std::int32_t end = std::min(mesh.triangleActive.count(), mesh.triangleCount());
    for (std::int32_t t = 0; t < end; ++t) {
        if (mesh.triangleActive.Test(t)) visit(static_cast<std::size_t>(t) * 3);
    }
}

/// One past the index of the last active vertex. In a partly loaded mesh most records come after it
/// and never need an entry in a table of new indices.
inline std::size_t endOfActiveVertices(const DMesh& mesh) {
    std::int32_t end = std::min(mesh.vertexActive.count(), mesh.vertexCount());
    while (end > 0 && !mesh.vertexActive.Test(end - 1))
        --end;
    return static_cast<std::size_t>(end);
}

/// Returns `otherwise` if the index is out of range.
template <typename T>
T itemOr(const std::vector<T>& items, std::uint32_t index, T otherwise) {
    return index < items.size() ? items[index] : otherwise;
}

}  // namespace korvalite::core

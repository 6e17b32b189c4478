// SPDX-License-Identifier: MIT
//
// What of a mesh goes into a file: the active items, in the order of their arrays. Active bits
// behind the end of an array mean nothing.
#pragma once

#include "mesh/dmesh.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace korvalite {

/// Visits the index of each.
template <typename Visit>
void forEachActiveVertex(const DMesh& mesh, Visit visit) {
    const std::int32_t end = std::min(mesh.vertexActive.count(), mesh.vertexCount());
    for (std::int32_t i = 0; i < end; ++i) {
        if (mesh.vertexActive.Test(i)) visit(static_cast<std::size_t>(i));
    }
}

/// Visits the first corner of each.
template <typename Visit>
void forEachActiveTriangle(const DMesh& mesh, Visit visit) {
    const std::int32_t end = std::min(mesh.triangleActive.count(), mesh.triangleCount());
    for (std::int32_t t = 0; t < end; ++t) {
        if (mesh.triangleActive.Test(t)) visit(static_cast<std::size_t>(t) * 3);
    }
}

/// One behind the index of the last active vertex. Of a partly loaded mesh most records lie behind
/// it, and never need an entry in a table of new indices.
inline std::size_t endOfActiveVertices(const DMesh& mesh) {
    std::int32_t end = std::min(mesh.vertexActive.count(), mesh.vertexCount());
    while (end > 0 && !mesh.vertexActive.Test(end - 1))
        --end;
    return static_cast<std::size_t>(end);
}

/// An index that leads nowhere gives the default instead.
template <typename T>
T itemOr(const std::vector<T>& items, std::uint32_t index, T otherwise) {
    return index < items.size() ? items[index] : otherwise;
}

}  // namespace korvalite

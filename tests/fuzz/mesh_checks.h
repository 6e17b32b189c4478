// SPDX-License-Identifier: MIT
//
// What the fuzz targets of mesh files check. A check that fails aborts, which the fuzzer reports.
#pragma once

#include <korvalite/korvalite.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace korva::test {

inline void require(bool holds) {
    if (!holds) std::abort();
}

/// The arrays fit together, and all indices are in range.
inline void requireConsistent(const korvalite::Mesh& mesh) {
    const std::size_t vertices = mesh.vertexCount();
    require(mesh.positions.size() == 3 * vertices && mesh.triangles.size() % 3 == 0);
    require(mesh.colors.empty() || mesh.colors.size() == 4 * vertices);
    require(mesh.mask.empty() || mesh.mask.size() == vertices);
    require(mesh.triangleUVs.empty() || mesh.triangleUVs.size() == mesh.triangles.size());
    for (const std::uint32_t vertex : mesh.triangles)
        require(vertex < vertices);
    for (const std::uint32_t point : mesh.triangleUVs)
        require(point < mesh.uvs.size() / 2);
}

template <typename Value>
bool sameBytes(const std::vector<Value>& a, const std::vector<Value>& b) {
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(Value)) == 0);
}

/// Equal floats, including the sign of zeros. NaN equals NaN, because text does not keep its
/// payload.
inline bool sameFloats(const std::vector<float>& a, const std::vector<float>& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (std::isnan(a[i]) != std::isnan(b[i])) return false;
        if (!std::isnan(a[i]) && (a[i] != b[i] || std::signbit(a[i]) != std::signbit(b[i])))
            return false;
    }
    return true;
}

}  // namespace korva::test

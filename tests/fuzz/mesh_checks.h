// SPDX-License-Identifier: MIT
//
// What the fuzz targets of mesh files check. A check that fails aborts, which the fuzzer reports.
#pragma once

#include "support/scratch_folder.h"

#include <korvalite/korvalite.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
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

/// The bytes are those of a file: reading it must end in Error(CannotRead) or a consistent mesh,
/// and `requireSame` gets that mesh and the one that comes back from a file of its own.
template <auto read, auto write, typename RequireSame>
void requireRoundTrip(const std::uint8_t* data, std::size_t size, RequireSame requireSame) {
    namespace core = korvalite::core::test;
    static const core::ScratchFolder folder;
    static const std::string name = folder / u8"mesh";
    const std::filesystem::path path = core::pathOfUtf8(name);
    core::writeWhole(name, std::string(data, data + size));
    korvalite::Mesh mesh;
    try {
        mesh = read(path, {}).mesh;
    } catch (const korvalite::Error& error) {
        require(error.code() == korvalite::ErrorCode::CannotRead);
        return;
    }
    requireConsistent(mesh);
    write(path, mesh);
    requireSame(mesh, read(path, {}).mesh);
}

}  // namespace korva::test

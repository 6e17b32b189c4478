// SPDX-License-Identifier: MIT
//
// Any bytes as a .Vok file. The result must be a consistent mesh, and reading the file again must
// give the same.
#include "formats/vok_format.h"
#include "formats/vok_reader.h"
#include "platform/file.h"
#include "support/scratch_folder.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>

namespace {

using namespace korvalite::core;

// Enough to reach every path; more would only slow the fuzzer down.
constexpr std::int64_t kBytesBeyondFile = 1 << 16U;

void require(bool holds) {
    if (!holds) std::abort();
}

void requireAllActive(const BitArray& bits, std::uint32_t active, std::size_t count) {
    require(active == count);
    require(bits.count() == static_cast<std::int32_t>(count));
    require(bits.CountSet() == bits.count());
}

void requireConsistent(const DMesh& mesh) {
    require(mesh.triangles.size() % 3 == 0);
    require(mesh.coordsUV.size() % 3 == 0);
    require(mesh.indicesUV.empty());
    requireAllActive(mesh.vertexActive, mesh.numActiveVertices, mesh.vertices.size());
    requireAllActive(mesh.triangleActive, mesh.numActiveTriangles, mesh.triangles.size() / 3);
    // A first vertex whose x is NaN leaves the box empty for the next one.
    require(!mesh.vertices.empty() || mesh.boundingBox.isEmpty());
}

// Also requires that no byte in them is uninitialized, where the build can detect that.
template <typename List>
bool sameBytes(const List& a, const List& b) {
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), std::span(a).size_bytes()) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const test::ScratchFolder folder;
    static const std::string path = folder / u8"input.Vok";
    {
        platform::File file = platform::File::open(path.c_str(), "wb");
        require(file.write(data, size) && file.close());
    }
    DMesh mesh;
    const bool read = importDMesh(path.c_str(), mesh, kBytesBeyondFile);
    if (size < kVokFileHeaderBytes) require(!read);
    if (!read) return 0;
    requireConsistent(mesh);

    DMesh again;
    require(importDMesh(path.c_str(), again, kBytesBeyondFile));
    require(sameBytes(mesh.vertices, again.vertices) && sameBytes(mesh.triangles, again.triangles));
    require(sameBytes(mesh.coordsUV, again.coordsUV));
    require(sameBytes(mesh.maskValues, again.maskValues));
    require(sameBytes(mesh.vertexColors, again.vertexColors));

    dropUniformMask(mesh);
    require(mesh.maskValues.size() != 1);
    return 0;
}

// SPDX-License-Identifier: MIT
//
// Any bytes as an OFF file.
#include "fuzz/mesh_checks.h"
#include "korva/files/off/off_reader.h"
#include "korva/files/off/off_writer.h"

#include <cstddef>
#include <cstdint>

namespace {

using korvalite::Mesh;

void writeMesh(const std::filesystem::path& path, const Mesh& mesh) {
    korva::writeOff(path, mesh);
}

void requireSame(const Mesh& a, const Mesh& b) {
    using namespace korva::test;
    require(a.triangles == b.triangles && a.colors == b.colors);
    require(sameFloats(a.positions, b.positions));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    korva::test::requireRoundTrip<korva::readOff, writeMesh>(data, size, requireSame);
    return 0;
}

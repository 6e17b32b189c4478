// SPDX-License-Identifier: MIT
#include "formats/vok_writer.h"

#include "base/debug_log.h"
#include "formats/active_items.h"
#include "formats/buffered_output.h"
#include "platform/platform.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace korvalite::core {

namespace {

// One file being written. The counts are of active items.
struct VokExport {
    platform::File& file;
    const DMesh& mesh;
    BufferedOutput elements;
    std::uint32_t vertexCount;
    std::uint32_t triangleCount;
    // One per vertex record up to the last active one; kNone for a dead vertex.
    std::vector<std::int32_t> newIndices;
};

bool beginBlock(VokExport& out, VokTag tag, std::uint32_t count, std::uint32_t elementBytes) {
    // COMPAT: wraps above 4 GiB; the field has 32 bits in all files.
    const std::uint32_t size = count * elementBytes + kVokBlockHeaderBytes;
    return writeVokBlockHeader(out.file, {tag, size, count, 0});
}

bool writeFlags(VokExport& out) {
    if (!beginBlock(out, Vok_TAG_FLAGS, 1, 4)) return false;
    out.elements.put(std::array<std::uint32_t, 1>{0});
    DebugLog("   - Flags bloc written!");
    return out.elements.flush();
}

bool writePoints(VokExport& out) {
    if (!beginBlock(out, Vok_TAG_POINT_LIST, out.vertexCount, 12)) return false;
    out.newIndices.assign(endOfActiveVertices(out.mesh), kNone);
    std::int32_t newIndex = 0;
    forEachActiveVertex(out.mesh, [&](std::size_t i) {
        const VertexRecord& vertex = out.mesh.vertices[i];
        out.elements.put(std::array{vertex.x, vertex.y, vertex.z});
        out.newIndices[i] = newIndex++;
    });
    DebugLog("   - Vertices bloc written!");
    return out.elements.flush();
}

bool writeTriangles(VokExport& out) {
    if (!beginBlock(out, Vok_TAG_FACE3_LIST, out.triangleCount, 12)) return false;
    forEachActiveTriangle(out.mesh, [&](std::size_t corner) {
        std::array<std::int32_t, 3> indices{};
        for (std::size_t k = 0; k < 3; ++k)
            indices[k] = itemOr(out.newIndices, out.mesh.triangles[corner + k], kNone);
        out.elements.put(indices);
    });
    DebugLog("   - Triangles bloc written (Vok_TAG_FACE3_LIST)!");
    return out.elements.flush();
}

// COMPAT: per corner again, although the mesh shares them; hosts expect it.
bool writeUVs(VokExport& out) {
    if (out.mesh.indicesUV.size() != out.mesh.triangles.size()) return true;
    if (!beginBlock(out, Vok_TAG_UV3_LIST, out.triangleCount, 24)) return false;
    forEachActiveTriangle(out.mesh, [&](std::size_t corner) {
        std::array<UVCoord, 3> uvs;
        for (std::size_t k = 0; k < 3; ++k)
            uvs[k] = itemOr(out.mesh.coordsUV, out.mesh.indicesUV[corner + k], UVCoord{});
        out.elements.put(uvs);
    });
    DebugLog("   - UVs3 bloc written !");
    return out.elements.flush();
}

bool writeMask(VokExport& out) {
    if (out.mesh.maskValues.size() != out.mesh.vertices.size()) return true;
    if (!beginBlock(out, Vok_TAG_MASK_LIST, out.vertexCount, 1)) return false;
    forEachActiveVertex(
        out.mesh, [&](std::size_t i) { out.elements.put(std::array{out.mesh.maskValues[i]}); });
    DebugLog("   - Mask bloc written!");
    return out.elements.flush();
}

// COMPAT: blue, green, red and 0, never the mask byte of a colour; hosts read it so.
std::array<std::uint8_t, 4> fileColorOf(std::uint32_t color) {
    return {static_cast<std::uint8_t>(color >> 16U), static_cast<std::uint8_t>(color >> 8U),
            static_cast<std::uint8_t>(color), 0};
}

bool writeColors(VokExport& out) {
    if (out.mesh.vertexColors.size() != out.mesh.vertices.size()) return true;
    if (!beginBlock(out, Vok_TAG_MRGB_LIST, out.vertexCount, 4)) return false;
    forEachActiveVertex(
        out.mesh, [&](std::size_t i) { out.elements.put(fileColorOf(out.mesh.vertexColors[i])); });
    DebugLog("   - VtxColors bloc written!");
    return out.elements.flush();
}

bool writeEnd(VokExport& out) {
    if (!beginBlock(out, Vok_TAG_END, 0, 0)) return false;
    DebugLog("   - EndOfFile bloc written !");
    return true;
}

bool writeVokFile(platform::File& file, const DMesh& mesh) {
    if (!writeVokFileHeader(file)) return false;
    DebugLog("   - FileHeader written!");
    VokExport out{file,
                  mesh,
                  BufferedOutput(file),
                  static_cast<std::uint32_t>(mesh.vertexActive.CountSet()),
                  static_cast<std::uint32_t>(mesh.triangleActive.CountSet()),
                  {}};
    return writeFlags(out) && writePoints(out) && writeTriangles(out) && writeUVs(out) &&
           writeMask(out) && writeColors(out) && writeEnd(out);
}

}  // namespace

bool exportDMesh(const HeapString& path, const DMesh& mesh) {
    DebugLog(" START exportDMesh in Vok: %s", path.c_str());
    platform::File file = platform::File::open(path.c_str(), "wb");
    const bool written = writeVokFile(file, mesh);
    // A full disk may show only at close.
    if (file.close() && written) return true;
    DebugLog("   - **** ERROR in Vok Export ****");
    // If the file could not even be opened, it is an older mesh and must go too.
    if (platform::isRegularFile(path.c_str())) platform::deleteFile(path.c_str());
    return false;
}

bool writeVokFileHeader(platform::File& file) {
    const VokFileHeader header;
    return file.write(header.magic.data(), header.magic.size()) &&
           file.write(header.reserved.data(), header.reserved.size());
}

bool writeVokBlockHeader(platform::File& file, const VokBlockHeader& header) {
    return file.write(&header.Tag, sizeof header.Tag) &&
           file.write(&header.Size, sizeof header.Size) &&
           file.write(&header.Count, sizeof header.Count) &&
           file.write(&header.reserved, sizeof header.reserved);
}

}  // namespace korvalite::core

// SPDX-License-Identifier: MIT
#include "formats/kvm_writer.h"

#include "base/debug_log.h"
#include "formats/kvm_format.h"
#include "platform/platform.h"
#include "progressive/progressive_mesh.h"

#include <algorithm>

namespace korvalite::core {

namespace {

template <typename Item>
void writeAll(platform::File& file, const std::vector<Item>& items) {
    file.write(items.data(), items.size() * sizeof(Item));
}

void writeVertices(platform::File& file, const VertexRecords& vertices) {
    std::vector<KvmVertex> buffer;
    for (std::size_t first = 0; first < vertices.size(); first += kKvmVerticesAtOnce) {
        const std::size_t end = std::min(first + kKvmVerticesAtOnce, vertices.size());
        buffer.clear();
        for (std::size_t i = first; i < end; ++i) {
            const VertexRecord& vertex = vertices[i];
            buffer.push_back({vertex.x, vertex.y, vertex.z, vertex.partner});
        }
        writeAll(file, buffer);
    }
}

void writeActivity(platform::File& file, const BitArray& bits, std::uint32_t numActive) {
    const std::int32_t count = bits.count();
    file.write(&count, sizeof count);
    file.write(bits.data(), bits.byteCount());
    file.write(&numActive, sizeof numActive);
}

void writeBody(platform::File& file, const ProgMeshHeader& header, ProgressiveMesh& pm) {
    const DMesh& mesh = pm.mesh;
    writeAll(file, mesh.triangles);
    DebugLog("   - triangles saved (#tri=%d)", header.OriginalTriangleCount);
    writeVertices(file, mesh.vertices);
    DebugLog("   - vertices+costs saved (#vtx=%d)", header.OriginalVertexCount);
    writeActivity(file, mesh.triangleActive, mesh.numActiveTriangles);
    writeActivity(file, mesh.vertexActive, mesh.numActiveVertices);
    DebugLog("   - tri/vtx activity saved");
    writeAll(file, mesh.vertexColors);
    DebugLog("   - vtx color saved (#=%d)", header.OriginalColorCount);
    writeAll(file, mesh.maskValues);
    DebugLog("   - mask saved (#=%d)", header.OriginalMaskCount);
    writeAll(file, mesh.indicesUV);
    DebugLog("   - indicesUV saved (#=%d)", header.OriginalIndicesUVCount);
    writeAll(file, mesh.coordsUV);
    DebugLog("   - coordsUV saved (#=%d)", header.OriginalCoordsUVCount);
    pm.vsplitList.saveTo(file);
    DebugLog("   - vtxSplitlist saved!");
}

void writeHeaderAndBody(platform::File& file, ProgressiveMesh& pm) {
    ProgMeshHeader header;
    fillProgMeshHeader(header, pm);
    writeProgMeshHeader(header, file);
    if (hasBody(header)) writeBody(file, header, pm);
}

}  // namespace

bool writeProgressiveMesh(ProgressiveMesh& pm, const HeapString& path) {
    platform::File file = platform::File::open(path.c_str(), "wb");
    if (!file) return false;
    writeHeaderAndBody(file, pm);
    if (file.close()) return true;
    if (platform::isRegularFile(path.c_str())) platform::deleteFile(path.c_str());
    return false;
}

int saveProgressiveMesh(ProgressiveMesh& pm, const HeapString& path) {
    DebugLog("Saving ProgressiveMesh %s", path.c_str());
    platform::File file = platform::File::open(path.c_str(), "wb");
    if (!file) return 1;
    // COMPAT: writes are not checked; hosts find a short file if the disk is full.
    writeHeaderAndBody(file, pm);
    return 0;
}

}  // namespace korvalite::core

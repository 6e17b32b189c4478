// SPDX-License-Identifier: MIT
#include "formats/file_formats.h"

#include "base/debug_log.h"
#include "formats/kvm_reader.h"
#include "formats/kvm_writer.h"
#include "formats/obj_writer.h"
#include "formats/vok_reader.h"
#include "formats/vok_writer.h"
#include "mesh/dmesh.h"
#include "progressive/progressive_mesh.h"

namespace korvalite::core {

namespace {

bool readVok(const HeapString& path, ProgressiveMesh& pm, const WantedVertices&) {
    DebugLog("START LoadInputInProgMesh : loading Vok file...");
    if (!importDMesh(path, pm.mesh) || !canBeDecimated(pm.mesh)) return false;
    dropUniformMask(pm.mesh);
    return true;
}

bool writeVok(const HeapString& path, ProgressiveMesh& pm, std::int32_t) {
    DebugLog("SaveOutput : .Vok file.");
    return exportDMesh(path, pm.mesh);
}

bool readKvm(const HeapString& path, ProgressiveMesh& pm, const WantedVertices& wanted) {
    DebugLog("START LoadInputInProgMesh : loading .kvm file...");
    ProgMeshHeader header;
    if (!readProgMeshFileHeader(path, header)) return false;
    if (loadProgressiveMesh(pm, path, wanted(header.OriginalVertexCount)) != 0) return false;
    DebugLog("    #VtxTotal=%d", pm.mesh.vertexCount());
    DebugLog("    #ActiveVtx=%d", pm.mesh.numActiveVertices);
    DebugLog("    HasMask=%s", trueOrFalse(pm.mesh.hasMask()));
    DebugLog("    HasColor=%s", trueOrFalse(pm.mesh.hasColors()));
    return true;
}

bool writeKvm(const HeapString& path, ProgressiveMesh& pm, std::int32_t) {
    DebugLog("SaveOutput : .kvm file.");
    return saveProgressiveMesh(pm, path) == 0;
}

// COMPAT: hosts from 3.15 on read colours from the OBJ itself; 3.12 to 3.14 have the code 312.
constexpr std::int32_t kFirstWithEmbeddedColors = 313;

ObjColorMode objColorModeFor(const ProgressiveMesh& pm, std::int32_t versionCode) {
    if (!pm.m_useVertexColors_internal && pm.mesh.maskValues.empty()) return ObjColorMode::None;
    return versionCode < kFirstWithEmbeddedColors ? ObjColorMode::SideFiles
                                                  : ObjColorMode::Embedded;
}

bool writeObj(const HeapString& path, ProgressiveMesh& pm, std::int32_t versionCode) {
    DebugLog("SaveOutput : .obj file.");
    return saveObj(path, pm.mesh, objColorModeFor(pm, versionCode));
}

bool readNothing(const HeapString&, ProgressiveMesh&, const WantedVertices&) {
    return false;
}

// COMPAT: not a failure; a host may want only the decimation.
bool writeNothing(const HeapString&, ProgressiveMesh&, std::int32_t) {
    return true;
}

constexpr FileFormat kFileFormats[] = {
    {".Vok", FileContent::Mesh, readVok, writeVok},
    {".kvm", FileContent::ProgressiveMesh, readKvm, writeKvm},
    {".obj", FileContent::Mesh, readNothing, writeObj},
    {".stl", FileContent::Mesh, readNothing, writeNothing},
};

constexpr FileFormat kUnknownFormat = {"", FileContent::None, readNothing, writeNothing};

}  // namespace

const FileFormat& fileFormatOf(const HeapString& path) {
    for (const FileFormat& format : kFileFormats)
        if (path.EndsWith(format.suffix)) return format;
    return kUnknownFormat;
}

}  // namespace korvalite::core

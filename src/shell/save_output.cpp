// SPDX-License-Identifier: MIT
#include "shell/save_output.h"

#include "base/debug_log.h"
#include "formats/kvm_writer.h"
#include "formats/obj_writer.h"
#include "formats/vok_writer.h"
#include "progressive/progressive_mesh.h"

namespace korvalite {

namespace {

using Writer = bool (*)(const HeapString& path, ProgressiveMesh& pm, std::int32_t versionCode);

bool writeKvm(const HeapString& path, ProgressiveMesh& pm, std::int32_t) {
    DebugLog("SaveOutput : .kvm file.");
    return saveProgressiveMesh(pm, path) == 0;
}

// Hosts with this version code or a later one read colours from the OBJ itself.
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

bool writeVok(const HeapString& path, ProgressiveMesh& pm, std::int32_t) {
    DebugLog("SaveOutput : .Vok file.");
    return exportDMesh(path, pm.mesh);
}

// For an accepted suffix without a writer: the host may want only the decimation.
bool writeNothing(const HeapString&, ProgressiveMesh&, std::int32_t) {
    return true;
}

struct OutputFormat {
    const char* suffix;
    OutputKind kind;
    Writer write;
};

constexpr OutputFormat kOutputFormats[] = {
    {".kvm", OutputKind::Progressive, writeKvm},
    {".obj", OutputKind::Mesh, writeObj},
    {".Vok", OutputKind::Mesh, writeVok},
    {".stl", OutputKind::Mesh, writeNothing},
};

const OutputFormat* formatOf(const HeapString& path) {
    for (const OutputFormat& format : kOutputFormats)
        if (path.EndsWith(format.suffix)) return &format;
    return nullptr;
}

}  // namespace

OutputKind outputKindOf(const HeapString& path) {
    const OutputFormat* format = formatOf(path);
    return format != nullptr ? format->kind : OutputKind::None;
}

bool SaveOutput(const HeapString& path, ProgressiveMesh& pm, std::int32_t versionCode) {
    const OutputFormat* format = formatOf(path);
    return format == nullptr || format->write(path, pm, versionCode);
}

}  // namespace korvalite

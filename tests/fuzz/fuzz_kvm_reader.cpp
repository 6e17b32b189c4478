// SPDX-License-Identifier: MIT
//
// Any bytes as a .kvm file. It is loaded in full and in part, taken to several levels and saved as
// a .Vok and as a .kvm. Whatever the file contains, the resulting meshes can be read again, and a
// progressive mesh that was loaded and saved once never changes again.
#include "formats/kvm_check.h"
#include "formats/kvm_format.h"
#include "formats/kvm_reader.h"
#include "formats/kvm_writer.h"
#include "formats/vok_reader.h"
#include "formats/vok_writer.h"
#include "host/job_paths.h"
#include "mesh/dmesh.h"
#include "progressive/level_update.h"
#include "progressive/progressive_mesh.h"
#include "support/scratch_folder.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>

namespace {

using namespace korvalite::core;

// The bytes of arrays beyond the file that are still tried: enough to reach every path; more would
// only slow the fuzzer down.
constexpr std::uint64_t kBytesBeyondFile = 1 << 16U;

void require(bool holds, int line = __builtin_LINE()) {
    if (holds) return;
    std::fprintf(stderr, "line %d does not hold\n", line);
    std::abort();
}

struct Files {
    test::ScratchFolder folder;
    std::string input = folder / u8"input.kvm";
    std::string mesh = folder / u8"level.Vok";
    std::string saved = folder / u8"saved.kvm";
    std::string savedAgain = folder / u8"again.kvm";
};

const Files& files() {
    static const Files all;
    return all;
}

bool isWorthTheTime(const ProgMeshHeader& header, std::size_t size) {
    const std::uint64_t asked = std::uint64_t{header.OriginalTriangleCount} * 12 +
                                std::uint64_t{header.OriginalVertexCount} * 16 +
                                std::uint64_t{header.OriginalIndicesUVCount} * 4 +
                                std::uint64_t{header.OriginalCoordsUVCount} * 8 +
                                std::uint64_t{header.OriginalColorCount} * 4 +
                                std::uint64_t{header.OriginalMaskCount};
    return asked <= size + kBytesBeyondFile;
}

void requireExport(const ProgressiveMesh& pm) {
    require(exportDMesh(files().mesh.c_str(), pm.mesh));
    DMesh again;
    require(importDMesh(files().mesh.c_str(), again));
    require(again.vertexCount() == pm.mesh.vertexActive.CountSet());
    require(again.triangleCount() == pm.mesh.triangleActive.CountSet());
}

// A file of another driver has no body: its triangles need not match its vertices, but none is
// active.
void requireSafe(ProgressiveMesh& pm) {
    if (pm.vsplitList.isOpen())
        require(canBeDecimated(pm.mesh) && canChangeLevel(pm));
    else
        require(pm.mesh.triangleActive.count() == 0 && pm.mesh.vertexActive.count() == 0);
}

void goTo(ProgressiveMesh& pm, std::int32_t target) {
    const auto recordCount = static_cast<std::int64_t>(pm.vsplitList.NumVtxSplit());
    const bool inList = pm.CurVtxSplitPos >= 0 && pm.CurVtxSplitPos <= recordCount;
    require(updateMeshAtLevel(pm, target) == 0);
    require(!inList || (pm.CurVtxSplitPos >= 0 && pm.CurVtxSplitPos <= recordCount));
    requireSafe(pm);
}

void walk(std::int32_t wanted) {
    ProgressiveMesh pm;
    if (loadProgressiveMesh(pm, files().input.c_str(), wanted) != 0) return;
    requireSafe(pm);
    pm.targetCountsVertices = true;
    goTo(pm, wanted);
    requireExport(pm);
    goTo(pm, std::numeric_limits<std::int32_t>::max());
    goTo(pm, -1);
    requireExport(pm);
    pm.targetCountsVertices = false;
    goTo(pm, pm.mesh.triangleCount() / 2);
    requireExport(pm);
}

// A file that was loaded and saved once loads and saves again to the same bytes.
void requireStable() {
    ProgressiveMesh pm;
    if (loadProgressiveMesh(pm, files().input.c_str(), 0) != 0) return;
    require(saveProgressiveMesh(pm, files().saved.c_str()) == 0);
    ProgressiveMesh again;
    require(loadProgressiveMesh(again, files().saved.c_str(), 0) == 0);
    require(saveProgressiveMesh(again, files().savedAgain.c_str()) == 0);
    require(test::readWhole(files().saved) == test::readWhole(files().savedAgain));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    SetJobDirectory(files().folder.path().c_str());
    test::writeWhole(files().input, {reinterpret_cast<const char*>(data), size});
    ProgMeshHeader header;
    require(readProgMeshFileHeader(files().input.c_str(), header));
    if (!isWorthTheTime(header, size)) return 0;
    const auto vertexCount = static_cast<std::int32_t>(header.OriginalVertexCount);
    for (const std::int32_t wanted : {0, 1, vertexCount / 2, vertexCount})
        walk(wanted);
    requireStable();
    return 0;
}

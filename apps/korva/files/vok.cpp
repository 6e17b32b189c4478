// SPDX-License-Identifier: MIT
#include "korva/files/vok.h"

#include "formats/vok_reader.h"
#include "formats/vok_writer.h"
#include "korva/io/partial_file.h"
#include "library/mesh_copy.h"
#include "library/paths.h"

#include <numeric>

namespace korva {

namespace {

namespace core = korvalite::core;

/// Files have a UV point for each corner.
void numberUVs(core::DMesh& mesh) {
    if (mesh.coordsUV.size() != mesh.triangles.size()) {
        mesh.coordsUV.clear();
        return;
    }
    mesh.indicesUV.resize(mesh.coordsUV.size());
    std::iota(mesh.indicesUV.begin(), mesh.indicesUV.end(), 0U);
}

void copyUVsIn(const korvalite::Mesh& mesh, core::DMesh& out) {
    out.indicesUV.assign(mesh.triangleUVs.begin(), mesh.triangleUVs.end());
    out.coordsUV.clear();
    for (std::size_t i = 0; i + 1 < mesh.uvs.size(); i += 2)
        out.coordsUV.push_back({mesh.uvs[i], mesh.uvs[i + 1]});
}

}  // namespace

ImportedMesh readVok(const std::filesystem::path& path, const ByteProgress& progress) {
    const std::uint64_t size = InputFile(path).size();
    core::DMesh mesh;
    if (!core::importDMesh(korvalite::pathText(path), mesh))
        failToRead(path, "it is not a .Vok mesh, or it is damaged.");
    if (!core::canBeDecimated(mesh)) failToRead(path, "a triangle refers to a missing vertex.");
    if (progress) progress(size, size);
    numberUVs(mesh);
    ImportedMesh imported;
    imported.mesh = korvalite::copyOut(mesh);
    return imported;
}

void writeVok(const std::filesystem::path& path, const korvalite::Mesh& mesh,
              const ByteProgress& progress) {
    core::DMesh out;
    korvalite::MeshView view = mesh.view();
    view.faceUVs = {};
    korvalite::copyIn(view, out);
    copyUVsIn(mesh, out);
    PartialFile file(path);
    if (!core::exportDMesh(korvalite::pathText(file.partialPath()), out))
        file.fail("the folder may be missing or protected, or the disk full.");
    if (progress) progress(1, 1);
    file.commit();
}

}  // namespace korva

// SPDX-License-Identifier: MIT
#include "korva/files/obj/obj_writer.h"

#include "korva/files/text_line.h"

#include <cstddef>
#include <cstdint>

namespace korva {

namespace {

void writeVertices(OutputFile& file, const korvalite::Mesh& mesh) {
    for (std::size_t i = 0; i < mesh.vertexCount(); ++i) {
        TextLine line("v");
        for (std::size_t axis = 0; axis < 3; ++axis)
            line.add(' ', mesh.positions[3 * i + axis]);
        for (std::size_t channel = 0; channel < 3 && !mesh.colors.empty(); ++channel)
            line.add(' ', static_cast<float>(mesh.colors[4 * i + channel]) / 255);
        line.writeTo(file);
    }
}

void writeUVs(OutputFile& file, const korvalite::Mesh& mesh) {
    for (std::size_t i = 0; i + 1 < mesh.uvs.size(); i += 2) {
        TextLine line("vt");
        line.add(' ', mesh.uvs[i]);
        line.add(' ', mesh.uvs[i + 1]);
        line.writeTo(file);
    }
}

void writeNormals(OutputFile& file, std::span<const float> normals) {
    for (std::size_t i = 0; i < normals.size(); i += 3) {
        TextLine line("vn");
        for (std::size_t axis = 0; axis < 3; ++axis)
            line.add(' ', normals[i + axis]);
        line.writeTo(file);
    }
}

/// A corner is "v", "v/vt", "v//vn" or "v/vt/vn".
void writeTriangles(OutputFile& file, const korvalite::Mesh& mesh, bool hasNormals) {
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        TextLine line("f");
        for (std::size_t corner = i; corner < i + 3; ++corner) {
            line.add(' ', std::uint64_t{mesh.triangles[corner]} + 1);
            if (!mesh.triangleUVs.empty())
                line.add('/', std::uint64_t{mesh.triangleUVs[corner]} + 1);
            if (!hasNormals) continue;
            if (mesh.triangleUVs.empty()) line.add("/");
            line.add('/', std::uint64_t{mesh.triangles[corner]} + 1);
        }
        line.writeTo(file);
    }
}

}  // namespace

void writeObj(const std::filesystem::path& path, const korvalite::Mesh& mesh,
              std::span<const float> normals, const ByteProgress& progress) {
    OutputFile file(path, progress);
    writeVertices(file, mesh);
    if (!mesh.triangleUVs.empty()) writeUVs(file, mesh);
    writeNormals(file, normals);
    writeTriangles(file, mesh, !normals.empty());
    file.commit();
}

}  // namespace korva

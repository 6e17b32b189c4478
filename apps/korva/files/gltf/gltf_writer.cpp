// SPDX-License-Identifier: MIT
#include "korva/files/gltf/gltf_writer.h"

#include "korva/files/gltf/glb_format.h"
#include "korva/files/gltf/gltf_layout.h"
#include "korva/files/gltf/gltf_uri.h"
#include "korva/files/normals.h"
#include "korva/io/input_file.h"
#include "korva/io/output_file.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace korva {

namespace {

std::vector<GltfPart> partsOf(Scene& scene) {
    std::vector<GltfPart> parts;
    for (NamedMesh& named : scene.meshes) {
        if (named.mesh.triangles.empty()) continue;
        GltfPart part;
        // Before splitting, so that no seam shows.
        if (scene.hadNormals) part.normals = vertexNormals(named.mesh);
        part.splits = splitForGltf(named.mesh);
        part.named = &named;
        parts.push_back(std::move(part));
    }
    return parts;
}

/// Writes the values of all vertices of the mesh, then again those of the repeated ones.
template <typename Value>
void writeAttribute(OutputFile& file, const std::vector<Value>& values, std::size_t columns,
                    const GltfSplits& splits) {
    if (values.empty()) return;
    file.write(values.data(), values.size() * sizeof(Value));
    for (const std::uint32_t vertex : splits.repeated)
        file.write(&values[columns * vertex], columns * sizeof(Value));
}

void writeUVs(OutputFile& file, const GltfSplits& splits) {
    for (const std::uint32_t point : splits.uvPoints) {
        const float* uv = &splits.uvs[2 * std::size_t{point}];
        // The origin of textures is at the top in glTF and at the bottom elsewhere.
        file.writeValue(std::array{uv[0], 1 - uv[1]});
    }
}

void writeIndices(OutputFile& file, const GltfPart& part) {
    const std::vector<std::uint32_t>& triangles = part.mesh().triangles;
    if (!part.hasShortIndices()) {
        file.write(triangles.data(), triangles.size() * sizeof(std::uint32_t));
        return;
    }
    std::vector<std::uint16_t> indices(part.indexBytes() / 2);
    std::ranges::transform(triangles, indices.begin(),
                           [](std::uint32_t index) { return static_cast<std::uint16_t>(index); });
    file.write(indices.data(), indices.size() * sizeof(std::uint16_t));
}

void writeParts(OutputFile& file, const std::vector<GltfPart>& parts) {
    for (const GltfPart& part : parts) {
        writeAttribute(file, part.mesh().positions, 3, part.splits);
        writeAttribute(file, part.normals, 3, part.splits);
        writeUVs(file, part.splits);
        writeAttribute(file, part.mesh().colors, 4, part.splits);
        writeIndices(file, part);
    }
}

}  // namespace

std::uint32_t glbBytes(const std::filesystem::path& path, std::uint64_t jsonBytes,
                       std::uint64_t binaryBytes) {
    constexpr std::uint64_t kMost = 0xFFFFFFFF;
    std::uint64_t bytes = kGlbHeaderBytes + sizeof(GlbChunk) + (jsonBytes + 3) / 4 * 4;
    if (binaryBytes > 0) bytes += sizeof(GlbChunk) + binaryBytes;
    if (bytes > kMost)
        throw korvalite::Error(
            korvalite::ErrorCode::CannotWrite,
            "Cannot write " + textOf(path) + ": it would have " + std::to_string(bytes) +
                " bytes, but a GLB file can have at most 4294967295; write .gltf or .ply "
                "instead.");
    return static_cast<std::uint32_t>(bytes);
}

void writeGlb(const std::filesystem::path& path, Scene& scene, const ByteProgress& progress) {
    const std::vector<GltfPart> parts = partsOf(scene);
    GltfLayout layout = layOutGltf(parts, {});
    const std::uint32_t bytes = glbBytes(path, layout.json.size(), layout.binaryBytes);
    layout.json.resize((layout.json.size() + 3) / 4 * 4, ' ');
    OutputFile file(path, progress);
    file.writeValue(kGlbMagic);
    file.writeValue(GlbHeader{kGlbVersion, bytes});
    file.writeValue(GlbChunk{static_cast<std::uint32_t>(layout.json.size()), kGlbJsonChunk});
    file.write(layout.json);
    if (layout.binaryBytes > 0) {
        file.writeValue(GlbChunk{static_cast<std::uint32_t>(layout.binaryBytes), kGlbBinaryChunk});
        writeParts(file, parts);
    }
    file.commit();
}

void writeGltf(const std::filesystem::path& path, Scene& scene, const ByteProgress& progress) {
    const std::vector<GltfPart> parts = partsOf(scene);
    const std::filesystem::path binaryPath = std::filesystem::path(path).replace_extension(".bin");
    const GltfLayout layout = layOutGltf(parts, gltfUriOf(binaryPath.filename()));
    OutputFile file(path);
    file.write(layout.json);
    if (layout.binaryBytes == 0) {
        file.commit();
        return;
    }
    OutputFile binary(binaryPath, progress);
    writeParts(binary, parts);
    // Both files are on the disk before either gets its name.
    file.finish();
    binary.finish();
    binary.commit();
    file.commit();
}

}  // namespace korva

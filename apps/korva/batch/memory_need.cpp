// SPDX-License-Identifier: MIT
#include "korva/batch/memory_need.h"

#include "korva/files/file_table.h"
#include "korva/files/ply/ply_header.h"
#include "korva/files/stl/stl_format.h"
#include "korva/io/input_file.h"
#include "library/memory_estimate.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <optional>
#include <string_view>

namespace korva {

namespace {

using korvalite::MeshSize;

constexpr std::uint64_t kBuffers = 4'000'000;  // for reading and writing

/// The mesh itself stays in memory while it is simplified.
std::uint64_t needOf(const MeshSize& size, int threads) {
    std::uint64_t perVertex = 12 + 3 * static_cast<std::uint64_t>(std::max(threads, 1));
    if (size.hasColors) perVertex += 4;
    if (size.hasMask) perVertex += 1;
    const std::uint64_t perTriangle = size.hasUVs ? 24 : 12;
    return kBuffers + korvalite::estimateSimplifyBytes(size) + perVertex * size.vertices +
           perTriangle * size.triangles + 8 * size.uvPoints;
}

bool hasProperty(const PlyElement& element, std::string_view name) {
    return std::ranges::any_of(element.properties,
                               [&](const PlyProperty& p) { return p.name == name; });
}

/// The triangles of polygons or strips whose rows take `bytes`, as if their lists held only
/// corners.
std::uint64_t trianglesIn(const PlyElement& element, PlyEncoding encoding, std::uint64_t bytes) {
    // As text, most polygons have three or four corners; a strip is one long row.
    if (encoding == PlyEncoding::Ascii) return std::max(2 * element.count, bytes / 24);
    std::uint64_t perCorner = 0;
    for (const PlyProperty& property : element.properties) {
        if (property.isList)
            perCorner += (property.name == "texcoord" ? 2 : 1) * byteSizeOf(property.type);
    }
    const std::uint64_t counts = element.count * fewestRowBytes(element, encoding);
    const std::uint64_t corners =
        (bytes - std::min(bytes, counts)) / std::max<std::uint64_t>(perCorner, 1);
    return corners - std::min(corners, 2 * element.count);
}

MeshSize plySize(const std::filesystem::path& path) {
    InputFile file(path);
    const PlyHeader header = readPlyHeader(file);
    std::uint64_t bytes = file.left();
    MeshSize size;
    for (const PlyElement& element : header.elements) {
        if (element.name == "vertex") {
            size.vertices = element.count;
            size.hasColors = hasProperty(element, "red");
            size.hasMask = hasProperty(element, "quality");
            size.hasUVs = hasProperty(element, "s") || hasProperty(element, "u") ||
                          hasProperty(element, "texture_u");
            bytes -= std::min(bytes, element.count * fewestRowBytes(element, header.encoding));
        } else if (element.name == "face" || element.name == "tristrips") {
            size.triangles += trianglesIn(element, header.encoding, bytes);
            size.hasUVs = size.hasUVs || hasProperty(element, "texcoord");
        }
    }
    if (size.hasUVs) size.uvPoints = 3 * size.triangles;
    return size;
}

/// A closed surface has half as many vertices as triangles once its corners are joined.
MeshSize stlSize(std::uint64_t facets) {
    return {.vertices = facets, .triangles = facets};
}

/// Nothing if it is not binary STL.
std::optional<MeshSize> binaryStlSize(const std::filesystem::path& path) {
    InputFile file(path);
    std::array<char, kStlHeaderBytes> header{};
    if (file.read(header.data(), header.size()) < header.size()) return std::nullopt;
    std::uint32_t facets = 0;
    std::memcpy(&facets, header.data() + kStlNoteBytes, sizeof facets);
    const std::uint64_t bytes = std::uint64_t{kStlFacetBytes} * facets;
    if (file.left() < bytes || file.left() - bytes >= kStlFacetBytes) return std::nullopt;
    return stlSize(facets);
}

/// What the size of a file says. The bytes for a vertex with its two triangles are those of a mesh
/// with short numbers and without anything else, because anything else adds more to the file
/// than to the work.
MeshSize sizeFromBytes(std::uint64_t bytes, std::string_view suffix) {
    if (suffix == ".stl") return stlSize(bytes / 100);  // text
    const bool isText = suffix == ".obj" || suffix == ".off";
    const std::uint64_t vertices = bytes / (isText ? 40 : 24);
    return {.vertices = vertices, .triangles = 2 * vertices};
}

MeshSize sizeOf(const std::filesystem::path& path) {
    const std::string_view suffix = fileKindOf(path).suffix;
    if (suffix == ".ply") return plySize(path);
    if (suffix == ".stl") {
        if (const std::optional<MeshSize> size = binaryStlSize(path)) return *size;
    }
    return sizeFromBytes(InputFile(path).size(), suffix);
}

}  // namespace

std::uint64_t memoryNeedOf(const std::filesystem::path& path, int threads) {
    try {
        return needOf(sizeOf(path), threads);
    } catch (const std::exception&) {
        return kBuffers;
    }
}

}  // namespace korva

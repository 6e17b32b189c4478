// SPDX-License-Identifier: MIT
#include "formats/obj_writer.h"

#include "base/debug_log.h"
#include "formats/active_items.h"
#include "formats/buffered_output.h"
#include "formats/nine_decimals.h"
#include "platform/file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace korvalite::core {

namespace {

using IndexTable = std::vector<std::int32_t>;  // new index by old index; kNone if it has none

constexpr std::size_t kLongestNumber = kLongestNineDecimals;  // an index is shorter
constexpr std::size_t kLongestLine = 2 + 6 * (kLongestNumber + 1);

constexpr std::string_view kMrgbComment =
    "# The following MRGB block contains Fennik Vertex Color (Surfcoat) and masking output as 4 "
    "hexadecimal values per vertex. The vertex color format is MMRRGGBB with up to 64 entries per "
    "MRGB line.\n";
constexpr std::string_view kMrgbPrefix = "#MRGB ";
constexpr std::size_t kMrgbDigits = 8;               // per vertex
constexpr std::size_t kMrgbLine = 64 * kMrgbDigits;  // without the prefix

char* append(char* out, std::string_view text) {
    return std::copy(text.begin(), text.end(), out);
}

// COMPAT: 1-based, as in OBJ, but 0 for an index out of range; outputs depend on it.
char* appendIndex(char* out, const IndexTable& newIndices, std::uint32_t index) {
    const std::int32_t number = itemOr(newIndices, index, kNone) + 1;
    return std::to_chars(out, out + kLongestNumber, number).ptr;
}

template <std::size_t N>
void writeNumbers(BufferedOutput& out, std::string_view keyword,
                  const std::array<float, N>& numbers) {
    char* end = append(out.room(kLongestLine), keyword);
    for (const float number : numbers) {
        *end++ = ' ';
        end = appendNineDecimals(end, number);
    }
    *end++ = '\n';
    out.advanceTo(end);
}

IndexTable writeVertices(BufferedOutput& out, const DMesh& mesh) {
    IndexTable newIndices(endOfActiveVertices(mesh), kNone);
    std::int32_t newIndex = 0;
    forEachActiveVertex(mesh, [&](std::size_t i) {
        const VertexRecord& vertex = mesh.vertices[i];
        newIndices[i] = newIndex++;
        writeNumbers(out, "v", std::array{vertex.x, vertex.y, vertex.z});
    });
    return newIndices;
}

// Writes the number of active vertices, then whatever `put` writes for each of them.
template <typename Put>
void writeSideFile(const HeapString& path, const DMesh& mesh, Put put) {
    platform::File file = platform::File::open(path.c_str(), "wb");
    if (!file) return;
    BufferedOutput out(file);
    out.put(std::array{mesh.numActiveVertices});
    forEachActiveVertex(mesh, [&](std::size_t i) { put(out, i); });
    out.flush();
}

// COMPAT: in memory order, red first, unlike in .Vok files; older hosts read them so.
std::array<std::uint8_t, 4> bytesOf(std::uint32_t color) {
    return {static_cast<std::uint8_t>(color), static_cast<std::uint8_t>(color >> 8U),
            static_cast<std::uint8_t>(color >> 16U), static_cast<std::uint8_t>(color >> 24U)};
}

void writeSideFiles(const HeapString& objPath, const DMesh& mesh) {
    if (mesh.vertexColors.size() == mesh.vertices.size()) {
        const HeapString path = objPath + ".colors";
        DebugLog("   Save Attached colors in %s", path.c_str());
        writeSideFile(path, mesh, [&](BufferedOutput& out, std::size_t i) {
            out.put(bytesOf(mesh.vertexColors[i]));
        });
    }
    if (mesh.maskValues.size() == mesh.vertices.size()) {
        const HeapString path = objPath + ".mask";
        DebugLog("   Save Attached Mask in %s", path.c_str());
        writeSideFile(path, mesh, [&](BufferedOutput& out, std::size_t i) {
            out.put(std::array{mesh.maskValues[i]});
        });
    }
}

// mmrrggbb
char* appendMrgb(char* out, std::uint32_t color) {
    constexpr std::string_view kHexDigits = "0123456789abcdef";
    for (const unsigned shift : {24U, 0U, 8U, 16U}) {
        *out++ = kHexDigits[color >> (shift + 4) & 0xFU];
        *out++ = kHexDigits[color >> shift & 0xFU];
    }
    return out;
}

// COMPAT: only full lines; hosts expect the last (n mod 64) colours to be missing.
void writeMrgbLines(BufferedOutput& out, const DMesh& mesh) {
    std::array<char, kMrgbPrefix.size() + kMrgbLine + 1> line{};
    char* const begin = append(line.data(), kMrgbPrefix);
    char* const lineEnd = begin + kMrgbLine;
    *lineEnd = '\n';
    char* end = begin;
    forEachActiveVertex(mesh, [&](std::size_t i) {
        end = appendMrgb(end, mesh.vertexColors[i]);
        if (end != lineEnd) return;
        out.put(line);
        end = begin;
    });
}

void embedColors(BufferedOutput& out, const DMesh& mesh) {
    DebugLog("   Includes Colors in .obj file !!");
    out.advanceTo(append(out.room(kMrgbComment.size()), kMrgbComment));
    // COMPAT: a mesh with a mask but no colours gets only the comment; outputs depend on it.
    if (mesh.vertexColors.size() >= mesh.vertices.size()) writeMrgbLines(out, mesh);
}

void writeColors(BufferedOutput& out, const HeapString& path, const DMesh& mesh,
                 ObjColorMode colorMode) {
    switch (colorMode) {
    case ObjColorMode::None: DebugLog("   NO color/mask saving !!"); break;
    case ObjColorMode::Embedded: embedColors(out, mesh); break;
    case ObjColorMode::SideFiles: writeSideFiles(path, mesh); break;
    }
}

// COMPAT: numbers the used UVs in the order of coordsUV, not of first use; outputs depend on it.
IndexTable writeUVs(BufferedOutput& out, const DMesh& mesh) {
    constexpr std::int32_t kUsed = 0;  // any value but kNone; replaced below
    IndexTable newIndices(mesh.coordsUV.size(), kNone);
    forEachActiveTriangle(mesh, [&](std::size_t corner) {
        for (std::size_t k = 0; k < 3; ++k) {
            const std::uint32_t index = mesh.indicesUV[corner + k];
            if (index < newIndices.size()) newIndices[index] = kUsed;
        }
    });
    std::int32_t newIndex = 0;
    for (std::size_t i = 0; i < newIndices.size(); ++i) {
        if (newIndices[i] == kNone) continue;
        newIndices[i] = newIndex++;
        writeNumbers(out, "vt", std::array{mesh.coordsUV[i].u, mesh.coordsUV[i].v});
    }
    return newIndices;
}

// Calls appendCorner(end, corner) for the three corners of each face.
template <typename AppendCorner>
void writeFaces(BufferedOutput& out, const DMesh& mesh, AppendCorner appendCorner) {
    forEachActiveTriangle(mesh, [&](std::size_t corner) {
        char* end = out.room(kLongestLine);
        *end++ = 'f';
        for (std::size_t k = 0; k < 3; ++k) {
            *end++ = ' ';
            end = appendCorner(end, corner + k);
        }
        *end++ = '\n';
        out.advanceTo(end);
    });
}

void writePlainFaces(BufferedOutput& out, const DMesh& mesh, const IndexTable& newVertices) {
    writeFaces(out, mesh, [&](char* end, std::size_t corner) {
        return appendIndex(end, newVertices, mesh.triangles[corner]);
    });
}

void writeFacesWithUVs(BufferedOutput& out, const DMesh& mesh, const IndexTable& newVertices) {
    const IndexTable newUVs = writeUVs(out, mesh);
    writeFaces(out, mesh, [&](char* end, std::size_t corner) {
        end = appendIndex(end, newVertices, mesh.triangles[corner]);
        *end++ = '/';
        return appendIndex(end, newUVs, mesh.indicesUV[corner]);
    });
}

}  // namespace

bool saveObj(const HeapString& path, const DMesh& mesh, ObjColorMode colorMode) {
    platform::File file = platform::File::open(path.c_str(), "w");
    if (!file) return false;
    BufferedOutput out(file);
    const IndexTable newVertices = writeVertices(out, mesh);
    writeColors(out, path, mesh, colorMode);
    if (mesh.indicesUV.size() == mesh.triangles.size()) {
        writeFacesWithUVs(out, mesh, newVertices);
    } else {
        writePlainFaces(out, mesh, newVertices);
    }
    out.flush();
    return true;
}

}  // namespace korvalite::core

// SPDX-License-Identifier: MIT
#include "korva/files/ply/ply_reader.h"

#include "korva/files/ply/ply_faces.h"
#include "korva/files/ply/ply_header.h"
#include "korva/files/ply/ply_rows.h"
#include "korva/files/ply/ply_vertices.h"
#include "korva/files/words.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace korva {

namespace {

constexpr std::size_t kMostNamesInNote = 12;

/// Where the properties of each element go.
using ColumnsOfElements = std::vector<std::vector<int>>;

std::size_t vertexElementOf(const InputFile& file, const PlyHeader& header) {
    const auto isVertices = [](const PlyElement& element) { return element.name == "vertex"; };
    const auto begin = header.elements.begin();
    const auto end = header.elements.end();
    const auto found = std::find_if(begin, end, isVertices);
    if (found == end) failToRead(file.path(), "it has no element \"vertex\".");
    if (std::find_if(found + 1, end, isVertices) != end)
        failToRead(file.path(), "it has two elements \"vertex\".");
    if (found->count > kMostElements) failToRead(file.path(), "it has too many vertices.");
    return static_cast<std::size_t>(found - begin);
}

bool hasTriangles(const PlyElement& element) {
    return element.count > 0 && (element.name == "face" || element.name == "tristrips");
}

ColumnsOfElements columnsOf(const InputFile& file, const PlyHeader& header,
                            ImportedMesh& imported) {
    ColumnsOfElements columns;
    for (const PlyElement& element : header.elements) {
        if (element.name == "vertex")
            columns.push_back(plyVertexColumns(file, element, imported));
        else if (hasTriangles(element))
            columns.push_back(plyFaceColumns(file, element, imported));
        else
            columns.emplace_back(element.properties.size(), kPlyIgnored);
    }
    return columns;
}

/// The names of what is in the file but goes nowhere.
std::vector<std::string> ignoredNames(const PlyHeader& header, const ColumnsOfElements& columns) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < header.elements.size(); ++i) {
        const PlyElement& element = header.elements[i];
        if (element.count == 0) continue;
        if (element.name != "vertex" && !hasTriangles(element)) {
            names.push_back(printable(element.name));
            continue;
        }
        for (std::size_t p = 0; p < element.properties.size(); ++p) {
            if (columns[i][p] == kPlyIgnored)
                names.push_back(printable(element.properties[p].name) + " of " + element.name);
        }
    }
    return names;
}

void noteIgnored(const PlyHeader& header, const ColumnsOfElements& columns,
                 std::vector<std::string>& notes) {
    if (header.textureCount == 1)
        notes.emplace_back("The name of a texture is ignored.");
    else if (header.textureCount > 1)
        notes.push_back("The names of " + std::to_string(header.textureCount) +
                        " textures are ignored.");
    const std::vector<std::string> names = ignoredNames(header, columns);
    if (names.empty()) return;
    const std::size_t shown = std::min(names.size(), kMostNamesInNote);
    std::string note = "Elements and properties that are ignored: " + names[0];
    for (std::size_t i = 1; i < shown; ++i)
        note += ", " + names[i];
    if (names.size() > shown) note += " and " + std::to_string(names.size() - shown) + " more";
    notes.push_back(note + ".");
}

void skipRows(PlyRows& rows, const PlyElement& element, const std::vector<int>& goesTo) {
    // Such rows take no bytes, so the header may announce any number of them.
    if (element.properties.empty()) return;
    rows.start(element, goesTo);
    PlyRow row;
    for (std::uint64_t i = 0; i < element.count; ++i)
        rows.readRow(row);
}

/// The bytes left that the elements after this one do not need.
std::uint64_t bytesFor(const PlyHeader& header, std::size_t index, std::uint64_t left) {
    for (std::size_t i = index + 1; i < header.elements.size(); ++i) {
        const PlyElement& element = header.elements[i];
        left -= std::min(left, element.count * fewestRowBytes(element, header.encoding));
    }
    return left;
}

/// The number of triangles for which the bytes left are enough. Exact for a binary file of polygons
/// with nothing but their vertices.
std::size_t trianglesIn(std::uint64_t left, const PlyElement& element,
                        const std::vector<int>& goesTo, PlyEncoding encoding) {
    if (encoding == PlyEncoding::Ascii)  // "3 0 1 2" and its end
        return static_cast<std::size_t>(std::min(element.count, left / 8));
    std::uint64_t cornerBytes = 0;
    for (std::size_t i = 0; i < goesTo.size(); ++i) {
        if (goesTo[i] == kPlyIndices) cornerBytes += byteSizeOf(element.properties[i].type);
        if (goesTo[i] == kPlyUVs) cornerBytes += 2 * byteSizeOf(element.properties[i].type);
    }
    const std::uint64_t fixedBytes = element.count * fewestRowBytes(element, encoding);
    const std::uint64_t corners = (left - std::min(left, fixedBytes)) / cornerBytes;
    return static_cast<std::size_t>(corners - std::min(corners, 2 * element.count));
}

void readElements(InputFile& file, const PlyHeader& header, const ColumnsOfElements& columns,
                  std::size_t vertexElement, ImportedMesh& imported) {
    PlyFaces faces(static_cast<std::size_t>(header.elements[vertexElement].count), imported);
    const std::unique_ptr<PlyRows> rows = header.encoding == PlyEncoding::Ascii
                                              ? asciiPlyRows(file, header.lineCount)
                                              : binaryPlyRows(file, header.encoding);
    for (std::size_t i = 0; i < header.elements.size(); ++i) {
        const PlyElement& element = header.elements[i];
        if (i == vertexElement)
            readPlyVertices(*rows, element, columns[i], imported);
        else if (!hasTriangles(element))
            skipRows(*rows, element, columns[i]);
        else if (element.name == "face")
            faces.readFaces(*rows, element, columns[i],
                            trianglesIn(bytesFor(header, i, rows->left()), element, columns[i],
                                        header.encoding));
        else
            faces.readStrips(*rows, element, columns[i]);
    }
    faces.finish();
    if (rows->goesOn())
        imported.notes.emplace_back("The file goes on after its last element; this is ignored.");
    const std::vector<std::string> notes = rows->notes();
    imported.notes.insert(imported.notes.end(), notes.begin(), notes.end());
}

}  // namespace

ImportedMesh readPly(const std::filesystem::path& path, const ByteProgress& progress) {
    InputFile file(path, progress);
    const PlyHeader header = readPlyHeader(file);
    const std::size_t vertexElement = vertexElementOf(file, header);
    ImportedMesh imported;
    const ColumnsOfElements columns = columnsOf(file, header, imported);
    noteIgnored(header, columns, imported.notes);
    readElements(file, header, columns, vertexElement, imported);
    return imported;
}

}  // namespace korva

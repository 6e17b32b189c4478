// SPDX-License-Identifier: MIT
#include "korva/files/ply/ply_vertices.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>

namespace korva {

namespace {

enum Column : int { kX = 0, kRed = 3, kAlpha = 6, kMask = 7, kU = 8 };

using Names = std::initializer_list<std::string_view>;

/// If all names are there as single numbers, they go to the column `first` and those after it.
bool claim(const PlyElement& element, Names names, int first, std::vector<int>& goesTo) {
    std::vector<std::size_t> found;
    for (const std::string_view name : names) {
        const auto isNamed = [&](const PlyProperty& p) { return !p.isList && p.name == name; };
        const auto at = std::find_if(element.properties.begin(), element.properties.end(), isNamed);
        if (at == element.properties.end()) return false;
        found.push_back(static_cast<std::size_t>(at - element.properties.begin()));
    }
    for (std::size_t i = 0; i < found.size(); ++i)
        goesTo[found[i]] = first < 0 ? first : first + static_cast<int>(i);
    return true;
}

/// Turns the numbers of a property into bytes, as long as all of them are in its range.
class ByteColumn {
public:
    ByteColumn(const PlyElement& element, const std::vector<int>& goesTo, int column)
        : column_(static_cast<std::size_t>(column)) {
        const auto at = std::find(goesTo.begin(), goesTo.end(), column);
        isPresent_ = at != goesTo.end();
        if (!isPresent_) return;
        const auto index = static_cast<std::size_t>(at - goesTo.begin());
        if (isFloat(element.properties[index].type)) most_ = 1;
    }

    [[nodiscard]] bool isPresent() const { return isPresent_; }
    [[nodiscard]] bool isInRange() const { return isInRange_; }

    /// 255 if the property is absent.
    std::uint8_t byteOf(const PlyRow& row) {
        if (!isPresent_) return 255;
        const float value = row.numbers[column_];
        if (value >= 0 && value <= most_)
            return static_cast<std::uint8_t>(most_ == 1 ? value * 255 + 0.5F : value);
        isInRange_ = false;
        return 0;
    }

private:
    std::size_t column_;
    float most_ = 255;
    bool isPresent_ = false;
    bool isInRange_ = true;
};

void dropBytesOutOfRange(const std::array<ByteColumn, 4>& colors, const ByteColumn& mask,
                         ImportedMesh& imported) {
    const auto isInRange = [](const ByteColumn& column) { return column.isInRange(); };
    if (!std::all_of(colors.begin(), colors.end(), isInRange)) {
        imported.mesh.colors = {};
        imported.notes.emplace_back(
            "Colours are ignored: not all are within 0 to 1 (floats) or 0 to 255 (integers).");
    }
    if (!mask.isInRange()) {
        imported.mesh.mask = {};
        imported.notes.emplace_back(
            "The quality or mask of vertices is ignored: not all values are "
            "within 0 to 1 (floats) or 0 to 255 (integers).");
    }
}

}  // namespace

std::vector<int> plyVertexColumns(const InputFile& file, const PlyElement& element,
                                  ImportedMesh& imported) {
    std::vector<int> goesTo(element.properties.size(), kPlyIgnored);
    if (!claim(element, {"x", "y", "z"}, kX, goesTo))
        failToRead(file.path(), "its vertices have no x, y and z.");
    if (claim(element, {"red", "green", "blue"}, kRed, goesTo))
        claim(element, {"alpha"}, kAlpha, goesTo);
    else if (claim(element, {"diffuse_red", "diffuse_green", "diffuse_blue"}, kRed, goesTo))
        claim(element, {"diffuse_alpha"}, kAlpha, goesTo);
    claim(element, {"mask"}, kMask, goesTo) || claim(element, {"quality"}, kMask, goesTo);
    claim(element, {"s", "t"}, kU, goesTo) || claim(element, {"u", "v"}, kU, goesTo) ||
        claim(element, {"texture_u", "texture_v"}, kU, goesTo);
    if (claim(element, {"nx", "ny", "nz"}, kPlyExpected, goesTo)) imported.hadNormals = true;
    return goesTo;
}

void readPlyVertices(PlyRows& rows, const PlyElement& element, const std::vector<int>& goesTo,
                     ImportedMesh& imported) {
    std::array<ByteColumn, 4> colors = {
        ByteColumn(element, goesTo, kRed), ByteColumn(element, goesTo, kRed + 1),
        ByteColumn(element, goesTo, kRed + 2), ByteColumn(element, goesTo, kAlpha)};
    ByteColumn mask(element, goesTo, kMask);
    const bool hasUVs = std::find(goesTo.begin(), goesTo.end(), kU) != goesTo.end();
    const auto count = static_cast<std::size_t>(element.count);

    korvalite::Mesh& mesh = imported.mesh;
    mesh.positions.resize(3 * count);
    if (colors[0].isPresent()) mesh.colors.resize(4 * count);
    if (mask.isPresent()) mesh.mask.resize(count);
    if (hasUVs) mesh.uvs.resize(2 * count);

    rows.start(element, goesTo);
    PlyRow row;
    for (std::size_t i = 0; i < count; ++i) {
        rows.readRow(row);
        std::copy_n(&row.numbers[kX], 3, &mesh.positions[3 * i]);
        if (colors[0].isPresent())
            for (std::size_t c = 0; c < 4; ++c)
                mesh.colors[4 * i + c] = colors[c].byteOf(row);
        if (mask.isPresent()) mesh.mask[i] = mask.byteOf(row);
        if (hasUVs) std::copy_n(&row.numbers[kU], 2, &mesh.uvs[2 * i]);
    }
    dropBytesOutOfRange(colors, mask, imported);
}

}  // namespace korva

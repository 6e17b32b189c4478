// SPDX-License-Identifier: MIT
#include "korva/files/ply/ply_writer.h"

#include "korva/io/output_file.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace korva {

namespace {

/// Collects rows, so that the file gets them in large parts.
class Rows {
public:
    explicit Rows(OutputFile& file) : file_(file), bytes_(kBlock) {}

    void addByte(std::uint8_t byte) { bytes_[size_++] = static_cast<char>(byte); }
    void addWord(std::uint32_t word) {
        if constexpr (std::endian::native == std::endian::big)
            word =
                (word >> 24U) | ((word >> 8U) & 0xFF00U) | ((word & 0xFF00U) << 8U) | (word << 24U);
        std::memcpy(&bytes_[size_], &word, sizeof word);
        size_ += sizeof word;
    }
    void addFloat(float value) { addWord(std::bit_cast<std::uint32_t>(value)); }

    void endRow() {
        if (size_ + kLongestRow > kBlock) flush();
    }
    void flush() {
        file_.write(bytes_.data(), size_);
        size_ = 0;
    }

private:
    static constexpr std::size_t kBlock = std::size_t{1} << 16U;
    static constexpr std::size_t kLongestRow = 13 + 25;  // a face with UVs

    OutputFile& file_;
    std::vector<char> bytes_;
    std::size_t size_ = 0;
};

std::string headerOf(const korvalite::Mesh& mesh, bool hasNormals) {
    std::string text = "ply\nformat binary_little_endian 1.0\n";
    text += "element vertex " + std::to_string(mesh.vertexCount()) + "\n";
    text += "property float x\nproperty float y\nproperty float z\n";
    if (hasNormals) text += "property float nx\nproperty float ny\nproperty float nz\n";
    if (!mesh.colors.empty())
        text += "property uchar red\nproperty uchar green\nproperty uchar blue\n"
                "property uchar alpha\n";
    if (!mesh.mask.empty()) text += "property uchar quality\n";
    text += "element face " + std::to_string(mesh.triangleCount()) + "\n";
    text += "property list uchar int vertex_indices\n";
    if (!mesh.triangleUVs.empty()) text += "property list uchar float texcoord\n";
    return text + "end_header\n";
}

void addVertices(Rows& rows, const korvalite::Mesh& mesh, std::span<const float> normals) {
    const std::size_t count = mesh.vertexCount();
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t c = 0; c < 3; ++c)
            rows.addFloat(mesh.positions[3 * i + c]);
        for (std::size_t c = 0; c < 3 && !normals.empty(); ++c)
            rows.addFloat(normals[3 * i + c]);
        if (!mesh.colors.empty())
            for (std::size_t c = 0; c < 4; ++c)
                rows.addByte(mesh.colors[4 * i + c]);
        if (!mesh.mask.empty()) rows.addByte(mesh.mask[i]);
        rows.endRow();
    }
}

void addFaces(Rows& rows, const korvalite::Mesh& mesh) {
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        rows.addByte(3);
        for (std::size_t c = 0; c < 3; ++c)
            rows.addWord(mesh.triangles[i + c]);
        if (!mesh.triangleUVs.empty()) {
            rows.addByte(6);
            for (std::size_t c = 0; c < 3; ++c) {
                const float* uv = &mesh.uvs[2 * std::size_t{mesh.triangleUVs[i + c]}];
                rows.addFloat(uv[0]);
                rows.addFloat(uv[1]);
            }
        }
        rows.endRow();
    }
}

}  // namespace

void writePly(const std::filesystem::path& path, const korvalite::Mesh& mesh,
              std::span<const float> normals, const ByteProgress& progress) {
    OutputFile file(path, progress);
    file.write(headerOf(mesh, !normals.empty()));
    Rows rows(file);
    addVertices(rows, mesh, normals);
    addFaces(rows, mesh);
    rows.flush();
    file.commit();
}

}  // namespace korva

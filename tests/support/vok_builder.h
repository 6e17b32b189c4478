// SPDX-License-Identifier: MIT
#pragma once

#include "support/scratch_folder.h"

#include <array>
#include <bit>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace korvalite::core::test {

// Assembles a .Vok file in memory, byte by byte and without any code of the product, valid or not
// as the test requires.
class VokBuilder {
public:
    explicit VokBuilder(std::string_view magic = "Vokb") : bytes_(magic) {
        bytes_.append(28, '\0');
    }

    // Any 16 bytes of block header, and any payload after them.
    VokBuilder& block(std::uint32_t tag, std::uint32_t size, std::uint32_t count,
                      std::string_view payload = {}) {
        return word(tag).word(size).word(count).word(0).raw(payload);
    }
    // A block with the size of its payload.
    VokBuilder& list(std::uint32_t tag, std::size_t count, std::string_view payload) {
        return block(tag, static_cast<std::uint32_t>(16 + payload.size()),
                     static_cast<std::uint32_t>(count), payload);
    }

    VokBuilder& points(const std::vector<std::array<float, 3>>& points) {
        return list(10001, points.size(), bytesOf(points));
    }
    VokBuilder& triangles(const std::vector<std::array<std::uint32_t, 3>>& faces) {
        return list(20003, faces.size(), bytesOf(faces));
    }
    // kTriangle as the fourth index makes a triangle.
    static constexpr std::uint32_t kTriangle = 0xFFFFFFFF;
    VokBuilder& faces(const std::vector<std::array<std::uint32_t, 4>>& faces) {
        return list(20001, faces.size(), bytesOf(faces));
    }
    // The u, v of the three or four corners of each face.
    VokBuilder& triangleUVs(const std::vector<std::array<float, 6>>& uvs) {
        return list(25002, uvs.size(), bytesOf(uvs));
    }
    VokBuilder& faceUVs(const std::vector<std::array<float, 8>>& uvs) {
        return list(25001, uvs.size(), bytesOf(uvs));
    }
    VokBuilder& mask(std::string_view values) { return list(30001, values.size(), values); }
    VokBuilder& mask16(const std::vector<std::uint16_t>& values) {
        std::string payload;
        for (const std::uint16_t value : values) {
            payload += static_cast<char>(value & 0xFFU);
            payload += static_cast<char>(value >> 8U);
        }
        return list(30002, values.size(), payload);
    }
    // Blue, green, red, mask.
    VokBuilder& colors(const std::vector<std::array<std::uint8_t, 4>>& colors) {
        std::string payload;
        for (const auto& color : colors) {
            for (const std::uint8_t channel : color)
                payload += static_cast<char>(channel);
        }
        return list(35001, colors.size(), payload);
    }
    VokBuilder& end() { return block(0, 16, 0); }

    VokBuilder& word(std::uint32_t value) {
        for (unsigned shift = 0; shift < 32; shift += 8)
            bytes_ += static_cast<char>((value >> shift) & 0xFFU);
        return *this;
    }
    VokBuilder& raw(std::string_view bytes) {
        bytes_ += bytes;
        return *this;
    }

    const std::string& bytes() const { return bytes_; }

    // The UTF-8 path of the file, written into the folder.
    std::string writeTo(const ScratchFolder& folder, const char8_t* name = u8"mesh.Vok") const {
        const std::string path = folder / name;
        writeWhole(path, bytes_);
        return path;
    }

    // The little-endian words of a list of rows.
    template <typename Row>
    static std::string bytesOf(const std::vector<Row>& rows) {
        VokBuilder words{""};
        words.bytes_.clear();
        for (const Row& row : rows) {
            for (const auto value : row)
                words.word(std::bit_cast<std::uint32_t>(value));
        }
        return words.bytes_;
    }

private:
    std::string bytes_;
};

}  // namespace korvalite::core::test

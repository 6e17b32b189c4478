// SPDX-License-Identifier: MIT
//
// Small PLY files for tests.
#pragma once

#include "korva/file_bytes.h"
#include "korva/files/ply/ply_reader.h"
#include "support/scratch_folder.h"

#include <korvalite/korvalite.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace korva::test {

using korvalite::core::test::pathOfUtf8;
using korvalite::core::test::readWhole;
using korvalite::core::test::ScratchFolder;
using korvalite::core::test::writeWhole;

inline constexpr auto readPlyBytes = readBytesBy<readPly>;
inline constexpr auto plyErrorOf = errorOfBytesBy<readPly>;

/// The bytes of numbers in either order.
class Bytes {
public:
    explicit Bytes(bool isBigEndian = false) : isBigEndian_(isBigEndian) {}

    template <typename Value>
    Bytes& add(Value value) {
        char bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        if (isBigEndian_) std::reverse(bytes, bytes + sizeof value);
        text_.append(bytes, sizeof value);
        return *this;
    }
    template <typename Value>
    Bytes& addAll(const std::vector<Value>& values) {
        for (const Value& value : values)
            add(value);
        return *this;
    }
    [[nodiscard]] const std::string& text() const { return text_; }

private:
    std::string text_;
    bool isBigEndian_;
};

inline const std::string kPlyVertexLines = "property float x\n"
                                           "property float y\n"
                                           "property float z\n";

/// A text file with four vertices, and what the header and body say about faces.
inline std::string plyWithFaces(const std::string& header, const std::string& body) {
    return "ply\nformat ascii 1.0\nelement vertex 4\n" + kPlyVertexLines + header +
           "end_header\n0 0 0\n1 0 0\n1 1 0\n0 1 0.5\n" + body;
}

/// A text file with one vertex that has more than a position.
inline std::string plyWithVertex(const std::string& properties, const std::string& values) {
    return "ply\nformat ascii 1.0\nelement vertex 1\n" + kPlyVertexLines + properties +
           "end_header\n1 2 3 " + values + "\n";
}

using Indices = std::vector<std::uint32_t>;
using Floats = std::vector<float>;
using ByteList = std::vector<std::uint8_t>;
using Notes = std::vector<std::string>;

inline const std::string kPointCloudNote = "There are no faces: the file is a point cloud.";

}  // namespace korva::test

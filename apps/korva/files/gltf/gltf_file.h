// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/gltf/gltf_item.h"
#include "korva/io/input_file.h"

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace korva {

/// A glTF 2.0 file, which is JSON or GLB, as its first bytes say. Throws
/// korvalite::Error(CannotRead) if the file or one of its buffers is invalid.
class GltfFile {
public:
    explicit GltfFile(const std::filesystem::path& path, ByteProgress progress = {});
    ~GltfFile();
    GltfFile(const GltfFile&) = delete;
    GltfFile& operator=(const GltfFile&) = delete;

    [[nodiscard]] GltfItem root() const { return {*json_, path_, "the JSON"}; }
    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

    /// The bytes of a buffer. It is read when it is first used, and then stays where it is.
    [[nodiscard]] std::span<const char> buffer(std::uint64_t index);

    /// Lets the user cancel. Call it many times a second.
    void pulse() const;

    [[nodiscard]] const std::vector<std::string>& notes() const { return notes_; }

private:
    struct Buffer {
        std::unique_ptr<char[]> bytes;
        std::size_t size = 0;
    };

    void readGlb(InputFile& file);
    [[nodiscard]] std::size_t readChunk(InputFile& file, std::uint64_t& left, std::uint32_t& kind);
    void parse(Buffer text);
    void checkVersion() const;
    void loadBuffer(const GltfItem& item, std::size_t index);
    [[nodiscard]] static Buffer loadDataUri(const GltfItem& item, const std::string& uri,
                                            std::uint64_t size);
    [[nodiscard]] Buffer loadBeside(const GltfItem& item, std::uint64_t size) const;
    [[nodiscard]] static Buffer take(InputFile& file, std::size_t byteCount);
    [[noreturn]] void fail(const std::string& reason) const;

    std::filesystem::path path_;
    ByteProgress progress_;
    std::unique_ptr<nlohmann::json> json_;  // a pointer, because its header is slow to compile
    Buffer binary_;                         // the BIN chunk
    std::vector<Buffer> buffers_;
    std::vector<std::string> notes_;
    std::uint64_t fileSize_ = 0;
};

}  // namespace korva

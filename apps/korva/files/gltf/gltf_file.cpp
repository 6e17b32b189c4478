// SPDX-License-Identifier: MIT
#include "korva/files/gltf/gltf_file.h"

#include "korva/files/gltf/glb_format.h"
#include "korva/files/gltf/gltf_uri.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

namespace korva {

namespace {

constexpr int kDeepestNesting = 100;

}  // namespace

GltfFile::GltfFile(const std::filesystem::path& path, ByteProgress progress)
    : path_(path), progress_(std::move(progress)) {
    InputFile file(path, progress_);
    fileSize_ = file.size();
    std::uint32_t magic = 0;
    const std::size_t got = file.read(&magic, sizeof magic);
    if (got == 0) fail("it is empty.");
    if (got == sizeof magic && magic == kGlbMagic) {
        readGlb(file);
    } else {
        file.rewind();
        parse(take(file, static_cast<std::size_t>(file.size())));
    }
    checkVersion();
    buffers_.resize(root().length("buffers"));
}

GltfFile::~GltfFile() = default;

void GltfFile::readGlb(InputFile& file) {
    GlbHeader header{};
    if (file.read(&header, sizeof header) < sizeof header) fail("it is cut off in its header.");
    if (header.version != kGlbVersion)
        fail("it is GLB version " + std::to_string(header.version) + "; export it as glTF 2.0.");
    if (header.length > fileSize_)
        fail("its header announces " + std::to_string(header.length) + " bytes, but it has " +
             std::to_string(fileSize_) + ". It is cut off or damaged.");
    if (header.length < kGlbHeaderBytes)
        fail("its header announces fewer bytes than a header has.");
    if (header.length < fileSize_)
        notes_.push_back(std::to_string(fileSize_ - header.length) +
                         " bytes after the end of the GLB data are ignored.");
    std::uint64_t left = header.length - kGlbHeaderBytes;
    std::uint32_t kind = 0;
    const std::size_t jsonBytes = readChunk(file, left, kind);
    if (kind != kGlbJsonChunk) fail("its first chunk is not JSON.");
    parse(take(file, jsonBytes));
    if (left == 0) return;
    // Only the second chunk can be the buffer; all others are for extensions.
    const std::size_t binaryBytes = readChunk(file, left, kind);
    if (kind == kGlbBinaryChunk) binary_ = take(file, binaryBytes);
}

std::size_t GltfFile::readChunk(InputFile& file, std::uint64_t& left, std::uint32_t& kind) {
    GlbChunk chunk{};
    if (left < sizeof chunk || file.read(&chunk, sizeof chunk) < sizeof chunk)
        fail("it ends within the header of a chunk; is it cut off?");
    left -= sizeof chunk;
    if (chunk.length > left)
        fail("a chunk announces " + std::to_string(chunk.length) + " bytes, but only " +
             std::to_string(left) + " follow. It is damaged.");
    left -= chunk.length;
    kind = chunk.kind;
    return chunk.length;
}

void GltfFile::parse(Buffer text) {
    const auto limitDepth = [this](int depth, nlohmann::json::parse_event_t, nlohmann::json&) {
        if (depth > kDeepestNesting) fail("its JSON is nested too deeply to be glTF.");
        return true;
    };
    try {
        json_ = std::make_unique<nlohmann::json>(
            nlohmann::json::parse(text.bytes.get(), text.bytes.get() + text.size, limitDepth));
    } catch (const nlohmann::json::parse_error& error) {
        fail("its JSON has an error at byte " + std::to_string(error.byte) +
             ". It is damaged, cut off or not glTF.");
    } catch (const nlohmann::json::exception&) {
        fail("a number in its JSON is too large.");
    }
}

void GltfFile::checkVersion() const {
    const std::optional<GltfItem> asset = root().object("asset");
    if (!asset) fail("it is not glTF: its JSON has no \"asset\".");
    const std::string version = asset->text("version");
    if (version != "2" && !version.starts_with("2."))
        fail("its glTF version is not 2; export it as glTF 2.0.");
}

std::span<const char> GltfFile::buffer(std::uint64_t index) {
    const GltfItem item = root().element("buffers", index, "buffer");
    Buffer& buffer = buffers_[static_cast<std::size_t>(index)];
    if (!buffer.bytes) loadBuffer(item, static_cast<std::size_t>(index));
    return {buffer.bytes.get(), buffer.size};
}

void GltfFile::loadBuffer(const GltfItem& item, std::size_t index) {
    const std::uint64_t size = item.wholeNeeded("byteLength");
    if (item.has("uri")) {
        nlohmann::json& uri = (*json_)["buffers"][index]["uri"];
        if (uri.is_string() && uri.get_ref<const std::string&>().starts_with("data:")) {
            // Moved, because it can be most of the file.
            const std::string text = std::move(uri.get_ref<std::string&>());
            buffers_[index] = loadDataUri(item, text, size);
        } else {
            buffers_[index] = loadBeside(item, size);
        }
        return;
    }
    if (index != 0 || !binary_.bytes) item.fail("it has no data.");
    if (size > binary_.size)
        item.fail("it should have " + std::to_string(size) + " bytes, but the file holds " +
                  std::to_string(binary_.size) + ".");
    buffers_[index] = {std::move(binary_.bytes), static_cast<std::size_t>(size)};
}

GltfFile::Buffer GltfFile::loadDataUri(const GltfItem& item, const std::string& uri,
                                       std::uint64_t size) {
    const std::optional<std::string_view> text = base64Of(uri);
    if (!text) item.fail("its data are not in base64.");
    if (size > text->size()) item.fail("its data are shorter than its \"byteLength\".");
    const auto byteCount = static_cast<std::size_t>(size);
    Buffer buffer{std::make_unique_for_overwrite<char[]>(byteCount), byteCount};
    if (!decodeBase64(*text, buffer.bytes.get(), byteCount))
        item.fail("its data are not valid base64, or shorter than its \"byteLength\".");
    return buffer;
}

GltfFile::Buffer GltfFile::loadBeside(const GltfItem& item, std::uint64_t size) const {
    const std::optional<std::filesystem::path> name = pathOfGltfUri(item.text("uri"));
    if (!name)
        item.fail(
            "its \"uri\" is not a path to a file in the folder of the glTF file; put the file "
            "there and correct the path.");
    const std::filesystem::path path = path_.parent_path() / *name;
    std::error_code failure;
    if (!std::filesystem::is_regular_file(path, failure))
        item.fail("its file " + textOf(path) + " is missing.");
    InputFile file(path, progress_);
    if (size > file.size())
        item.fail("its file " + textOf(path) + " should have " + std::to_string(size) +
                  " bytes, but has " + std::to_string(file.size()) + "; is it cut off?");
    return take(file, static_cast<std::size_t>(size));
}

GltfFile::Buffer GltfFile::take(InputFile& file, std::size_t byteCount) {
    Buffer buffer{std::make_unique_for_overwrite<char[]>(byteCount), byteCount};
    if (file.read(buffer.bytes.get(), byteCount) < byteCount)
        failToRead(file.path(), "it became shorter while it was read.");
    return buffer;
}

void GltfFile::pulse() const {
    if (progress_) progress_(fileSize_, fileSize_);
}

void GltfFile::fail(const std::string& reason) const {
    failToRead(path_, reason);
}

}  // namespace korva

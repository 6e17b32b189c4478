// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace korva {

/// The path that a URI in a glTF file refers to, relative to the folder of that file. Nothing if it
/// is not such a path or could lead out of the folder.
[[nodiscard]] std::optional<std::filesystem::path> pathOfGltfUri(std::string_view uri);

/// The URI of a file in the same folder.
[[nodiscard]] std::string gltfUriOf(const std::filesystem::path& name);

/// The base64 text of a "data:" URI. Nothing if the data have another encoding.
[[nodiscard]] std::optional<std::string_view> base64Of(std::string_view dataUri);

/// Decodes the first `byteCount` bytes into `to`. False if the text is not base64 or is too short.
[[nodiscard]] bool decodeBase64(std::string_view text, char* to, std::size_t byteCount);

}  // namespace korva

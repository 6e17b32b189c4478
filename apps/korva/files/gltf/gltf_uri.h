// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace korva {

/// The path that a URI in a glTF file means, relative to the folder of that file. Nothing if it is
/// no such path, or could lead out of the folder.
[[nodiscard]] std::optional<std::filesystem::path> pathOfGltfUri(std::string_view uri);

/// The URI of a file in the same folder.
[[nodiscard]] std::string gltfUriOf(const std::filesystem::path& name);

/// The base64 text of a "data:" URI. Nothing if the data are in another form.
[[nodiscard]] std::optional<std::string_view> base64Of(std::string_view dataUri);

/// Decodes into `to`, which has room for `byteCount`, and leaves out what is beyond. False if the
/// text is no base64 or too short.
[[nodiscard]] bool decodeBase64(std::string_view text, char* to, std::size_t byteCount);

}  // namespace korva

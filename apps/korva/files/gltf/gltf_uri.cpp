// SPDX-License-Identifier: MIT
#include "korva/files/gltf/gltf_uri.h"

#include "korva/io/input_file.h"
#include "platform/utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace korva {

namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

std::optional<std::string> withoutPercents(std::string_view uri) {
    std::string text;
    for (std::size_t i = 0; i < uri.size(); ++i) {
        if (uri[i] != '%') {
            text += uri[i];
            continue;
        }
        if (i + 2 >= uri.size()) return std::nullopt;
        const int high = hexValue(uri[i + 1]);
        const int low = hexValue(uri[i + 2]);
        if (high < 0 || low < 0) return std::nullopt;
        text += static_cast<char>(16 * high + low);
        i += 2;
    }
    return text;
}

bool isControl(char c) {
    return static_cast<unsigned char>(c) < ' ' || c == '\x7F';
}

bool isUnreserved(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '-' ||
           c == '_' || c == '.' || c == '~';
}

constexpr std::uint8_t kNoDigit = 64;

constexpr std::array<std::uint8_t, 256> base64Values() {
    std::array<std::uint8_t, 256> values{};
    values.fill(kNoDigit);
    constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::size_t i = 0; i < kDigits.size(); ++i)
        values[static_cast<unsigned char>(kDigits[i])] = static_cast<std::uint8_t>(i);
    return values;
}

}  // namespace

std::optional<std::filesystem::path> pathOfGltfUri(std::string_view uri) {
    // A colon ends a scheme or the name of a drive.
    if (uri.empty() || uri.find(':') != std::string_view::npos) return std::nullopt;
    const std::optional<std::string> text = withoutPercents(uri);
    if (!text || std::ranges::any_of(*text, isControl)) return std::nullopt;
    if (!korvalite::core::platform::isUtf8(*text)) return std::nullopt;
    // A backslash separates folders on some systems, so it is refused on all.
    if (text->find('\\') != std::string::npos) return std::nullopt;
    const std::filesystem::path path = pathOf(*text);
    if (path.has_root_path() || !path.has_filename()) return std::nullopt;
    if (std::ranges::find(path, std::filesystem::path("..")) != path.end()) return std::nullopt;
    return path;
}

std::string gltfUriOf(const std::filesystem::path& name) {
    std::string uri;
    for (const char c : textOf(name)) {
        if (isUnreserved(c)) {
            uri += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        uri += {'%', kHexDigits[byte / 16], kHexDigits[byte % 16]};
    }
    return uri;
}

std::optional<std::string_view> base64Of(std::string_view dataUri) {
    const std::size_t comma = dataUri.find(',');
    if (comma == std::string_view::npos || !dataUri.substr(0, comma).ends_with(";base64"))
        return std::nullopt;
    return dataUri.substr(comma + 1);
}

bool decodeBase64(std::string_view text, char* to, std::size_t byteCount) {
    static constexpr std::array<std::uint8_t, 256> kValues = base64Values();
    std::uint32_t bits = 0;
    unsigned bitCount = 0;
    std::size_t done = 0;
    while (text.ends_with('='))
        text.remove_suffix(1);
    for (const char c : text) {
        const std::uint8_t value = kValues[static_cast<unsigned char>(c)];
        if (value == kNoDigit) return false;
        bits = bits << 6U | value;
        bitCount += 6;
        if (bitCount < 8) continue;
        bitCount -= 8;
        if (done < byteCount) to[done++] = static_cast<char>(bits >> bitCount & 0xFFU);
    }
    return done == byteCount;
}

}  // namespace korva

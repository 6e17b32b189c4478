// SPDX-License-Identifier: MIT
#pragma once

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace korva {

/// An object in the JSON of a glTF file. If a value does not have the type asked for, every
/// function throws a korvalite::Error(CannotRead) that names the object. A view: the JSON and the
/// path must outlive it.
class GltfItem {
public:
    /// `place` is its name in messages: "accessor 3".
    GltfItem(const nlohmann::json& json, const std::filesystem::path& file, std::string place);

    [[nodiscard]] const std::string& place() const { return place_; }
    /// "Cannot read FILE: PLACE: REASON"
    [[noreturn]] void fail(const std::string& reason) const;

    [[nodiscard]] bool has(const char* key) const { return find(key) != nullptr; }
    /// A whole number from 0 to 2^53, if there is one.
    [[nodiscard]] std::optional<std::uint64_t> whole(const char* key) const;
    [[nodiscard]] std::uint64_t wholeNeeded(const char* key) const;
    [[nodiscard]] bool flag(const char* key) const;
    /// Empty if there is none.
    [[nodiscard]] std::string text(const char* key) const;
    /// Exactly `count` numbers; empty if there are none.
    [[nodiscard]] std::vector<double> numbers(const char* key, std::size_t count) const;
    [[nodiscard]] std::vector<std::uint64_t> wholes(const char* key) const;
    [[nodiscard]] std::vector<std::string> texts(const char* key) const;
    [[nodiscard]] std::optional<GltfItem> object(const char* key) const;
    [[nodiscard]] std::vector<std::string> keys() const;

    /// The length of an array; 0 if there is none.
    [[nodiscard]] std::size_t length(const char* key) const;
    /// An element of an array. Its place is `kind` followed by the index.
    [[nodiscard]] GltfItem element(const char* key, std::uint64_t index, const char* kind) const;

private:
    [[nodiscard]] const nlohmann::json* find(const char* key) const;
    [[nodiscard]] const nlohmann::json* findArray(const char* key) const;
    [[nodiscard]] std::uint64_t wholeOf(const nlohmann::json& value, const char* key) const;

    const nlohmann::json* json_;
    const std::filesystem::path* file_;
    std::string place_;
};

}  // namespace korva

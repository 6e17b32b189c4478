// SPDX-License-Identifier: MIT
#include "korva/files/gltf/gltf_item.h"

#include "korva/io/input_file.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <utility>

namespace korva {

using Json = nlohmann::json;

GltfItem::GltfItem(const Json& json, const std::filesystem::path& file, std::string place)
    : json_(&json), file_(&file), place_(std::move(place)) {
    if (!json.is_object()) fail("it should be a JSON object.");
}

void GltfItem::fail(const std::string& reason) const {
    failToRead(*file_, place_ + ": " + reason);
}

const Json* GltfItem::find(const char* key) const {
    const auto found = json_->find(key);
    return found == json_->end() ? nullptr : &*found;
}

const Json* GltfItem::findArray(const char* key) const {
    const Json* value = find(key);
    if (value != nullptr && !value->is_array())
        fail("\"" + std::string(key) + "\" should be an array.");
    return value;
}

std::uint64_t GltfItem::wholeOf(const Json& value, const char* key) const {
    constexpr double kMost = 9007199254740992.0;
    const double number = value.is_number() ? value.get<double>() : -1;
    if (!(number >= 0 && number <= kMost) || std::floor(number) != number)
        fail("\"" + std::string(key) + "\" should be a whole number and not negative.");
    return static_cast<std::uint64_t>(number);
}

std::optional<std::uint64_t> GltfItem::whole(const char* key) const {
    const Json* value = find(key);
    if (value == nullptr) return std::nullopt;
    return wholeOf(*value, key);
}

std::uint64_t GltfItem::wholeNeeded(const char* key) const {
    const Json* value = find(key);
    if (value == nullptr) fail("\"" + std::string(key) + "\" is missing.");
    return wholeOf(*value, key);
}

bool GltfItem::flag(const char* key) const {
    const Json* value = find(key);
    if (value == nullptr) return false;
    if (!value->is_boolean()) fail("\"" + std::string(key) + "\" should be true or false.");
    return value->get<bool>();
}

std::string GltfItem::text(const char* key) const {
    const Json* value = find(key);
    if (value == nullptr) return {};
    if (!value->is_string()) fail("\"" + std::string(key) + "\" should be a string.");
    return value->get<std::string>();
}

std::vector<double> GltfItem::numbers(const char* key, std::size_t count) const {
    std::vector<double> numbers;
    const Json* values = findArray(key);
    if (values == nullptr) return numbers;
    for (const Json& value : *values) {
        if (!value.is_number()) break;
        numbers.push_back(value.get<double>());
    }
    if (values->size() != count || numbers.size() != count)
        fail("\"" + std::string(key) + "\" should be " + std::to_string(count) + " numbers.");
    return numbers;
}

std::vector<std::uint64_t> GltfItem::wholes(const char* key) const {
    std::vector<std::uint64_t> wholes;
    const Json* values = findArray(key);
    if (values == nullptr) return wholes;
    for (const Json& value : *values)
        wholes.push_back(wholeOf(value, key));
    return wholes;
}

std::vector<std::string> GltfItem::texts(const char* key) const {
    std::vector<std::string> texts;
    const Json* values = findArray(key);
    if (values == nullptr) return texts;
    for (const Json& value : *values) {
        if (!value.is_string()) fail("\"" + std::string(key) + "\" should be an array of strings.");
        texts.push_back(value.get<std::string>());
    }
    return texts;
}

std::optional<GltfItem> GltfItem::object(const char* key) const {
    const Json* value = find(key);
    if (value == nullptr) return std::nullopt;
    return GltfItem(*value, *file_, place_ + ", \"" + key + "\"");
}

std::vector<std::string> GltfItem::keys() const {
    std::vector<std::string> keys;
    for (const auto& [key, value] : json_->items())
        keys.push_back(key);
    return keys;
}

std::size_t GltfItem::length(const char* key) const {
    const Json* values = findArray(key);
    return values == nullptr ? 0 : values->size();
}

GltfItem GltfItem::element(const char* key, std::uint64_t index, const char* kind) const {
    const Json* values = findArray(key);
    const std::string place = std::string(kind) + ' ' + std::to_string(index);
    if (values == nullptr || index >= values->size())
        failToRead(*file_, place + " is referred to but does not exist.");
    return {(*values)[static_cast<std::size_t>(index)], *file_, place};
}

}  // namespace korva

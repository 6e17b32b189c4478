// SPDX-License-Identifier: MIT
#include "korva/mask_source.h"

#include "korva/files/words.h"
#include "korva/io/input_file.h"
#include "korva/numbers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace korva {

namespace {

constexpr std::array<std::string_view, 4> kChannels{"red", "green", "blue", "alpha"};

void takeChannel(korvalite::Mesh& mesh, std::size_t channel) {
    if (mesh.colors.empty())
        throw korvalite::Error(korvalite::ErrorCode::BadOption,
                               "--mask " + std::string(kChannels[channel]) +
                                   " needs a mesh with colours, and this one has none.");
    mesh.mask.resize(mesh.vertexCount());
    for (std::size_t i = 0; i < mesh.mask.size(); ++i)
        mesh.mask[i] = mesh.colors[4 * i + channel];
}

std::uint8_t nextValue(Words& words, std::size_t vertex) {
    const std::string_view word = words.next();
    if (word.empty())
        words.fail("the file ends, but vertex " + withCommas(vertex + 1) + " needs a number.");
    float value = 0;
    if (!parseFloat(word, value) || !(value >= 0 && value <= 255))
        words.fail(quoted(word) + " is not a number from 0 to 255.");
    return static_cast<std::uint8_t>(std::lround(value));
}

void takeFile(Scene& scene, const std::string& source) {
    InputFile file(pathOf(source));
    Words words(file);
    std::size_t vertex = 0;
    for (auto& [name, mesh] : scene.meshes) {
        mesh.mask.resize(mesh.vertexCount());
        for (std::uint8_t& value : mesh.mask)
            value = nextValue(words, vertex++);
    }
    if (!words.next().empty())
        words.fail("there are more numbers than the " + withCommas(vertex) + " vertices.");
}

}  // namespace

void setMask(Scene& scene, const std::string& source) {
    const auto channel = std::ranges::find(kChannels, source);
    if (channel == kChannels.end()) return takeFile(scene, source);
    for (auto& [name, mesh] : scene.meshes)
        takeChannel(mesh, static_cast<std::size_t>(channel - kChannels.begin()));
}

}  // namespace korva

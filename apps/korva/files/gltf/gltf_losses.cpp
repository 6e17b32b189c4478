// SPDX-License-Identifier: MIT
#include "korva/files/gltf/gltf_losses.h"

#include "korva/files/words.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace korva {

namespace {

/// Extensions that are supported or do not change the shape of meshes. A star matches any ending.
constexpr std::array<std::string_view, 11> kHarmless{
    "KHR_mesh_quantization", "KHR_materials_*", "KHR_texture_*",
    "EXT_texture_*",         "MSFT_texture_*",  "KHR_lights_*",
    "EXT_lights_*",          "KHR_animation_*", "KHR_xmp*",
    "EXT_materials_*",       "MSFT_packing_*"};

bool isHarmless(std::string_view name) {
    return std::ranges::any_of(kHarmless, [name](std::string_view known) {
        return known.ends_with('*') ? name.starts_with(known.substr(0, known.size() - 1))
                                    : name == known;
    });
}

std::string counted(std::size_t count, const std::string& thing) {
    return std::to_string(count) + ' ' + thing + (count == 1 ? "" : "s");
}

/// "1 camera is ignored.", "2 cameras are ignored.", or nothing for 0.
void noteIgnored(std::vector<std::string>& notes, std::size_t count, const std::string& thing) {
    if (count > 0)
        notes.push_back(counted(count, thing) + (count == 1 ? " is" : " are") + " ignored.");
}

/// Contents of primitives that are not carried over.
struct Unused {
    bool furtherUVs = false;
    bool furtherColors = false;
    bool tangents = false;
    bool morphs = false;
};

void look(const GltfItem& primitive, Unused& unused) {
    unused.morphs = unused.morphs || primitive.length("targets") > 0;
    const std::optional<GltfItem> attributes = primitive.object("attributes");
    if (!attributes) return;
    for (const std::string& name : attributes->keys()) {
        if (name.starts_with("TEXCOORD_") && name != "TEXCOORD_0") unused.furtherUVs = true;
        if (name.starts_with("COLOR_") && name != "COLOR_0") unused.furtherColors = true;
        if (name == "TANGENT") unused.tangents = true;
    }
}

void noteAttributes(const GltfItem& root, std::vector<std::string>& notes) {
    Unused unused;
    for (std::size_t i = 0; i < root.length("meshes"); ++i) {
        const GltfItem mesh = root.element("meshes", i, "mesh");
        for (std::size_t k = 0; k < mesh.length("primitives"); ++k)
            look(mesh.element("primitives", k, "primitive"), unused);
    }
    if (unused.morphs) notes.emplace_back("Morph targets are ignored.");
    if (unused.furtherUVs) notes.emplace_back("UVs from TEXCOORD_1 on are ignored.");
    if (unused.furtherColors) notes.emplace_back("Colours from COLOR_1 on are ignored.");
    if (unused.tangents) notes.emplace_back("Tangents are ignored.");
}

}  // namespace

std::vector<std::string> gltfLosses(const GltfItem& root) {
    std::vector<std::string> notes;
    const std::size_t materials = root.length("materials");
    const std::size_t textures = root.length("textures");
    if (materials > 0 && textures > 0)
        notes.push_back(counted(materials, "material") + " and " + counted(textures, "texture") +
                        " are ignored.");
    else
        noteIgnored(notes, materials + textures, materials > 0 ? "material" : "texture");
    noteIgnored(notes, root.length("animations"), "animation");
    noteIgnored(notes, root.length("skins"), "skin");
    noteIgnored(notes, root.length("cameras"), "camera");
    noteAttributes(root, notes);
    return notes;
}

void refuseGltfExtensions(const GltfItem& root) {
    for (const std::string& name : root.texts("extensionsRequired")) {
        if (!isHarmless(name))
            root.fail("the file needs the extension " + printable(name) +
                      ", which is not supported; export it without this extension.");
    }
}

}  // namespace korva

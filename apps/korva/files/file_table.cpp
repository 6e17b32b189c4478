// SPDX-License-Identifier: MIT
#include "korva/files/file_table.h"

#include "korva/files/gltf/gltf_reader.h"
#include "korva/files/gltf/gltf_writer.h"
#include "korva/files/imported_mesh.h"
#include "korva/files/normals.h"
#include "korva/files/obj/obj_reader.h"
#include "korva/files/obj/obj_writer.h"
#include "korva/files/off/off_reader.h"
#include "korva/files/off/off_writer.h"
#include "korva/files/ply/ply_reader.h"
#include "korva/files/ply/ply_writer.h"
#include "korva/files/stl/stl_reader.h"
#include "korva/files/stl/stl_writer.h"
#include "korva/files/vok.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace korva {

namespace {

template <auto read>
Scene readOne(const std::filesystem::path& path, const ByteProgress& progress) {
    ImportedMesh imported = read(path, progress);
    Scene scene;
    scene.meshes.push_back({"", std::move(imported.mesh)});
    scene.hadNormals = imported.hadNormals;
    scene.notes = std::move(imported.notes);
    return scene;
}

template <auto write>
void writeOne(const std::filesystem::path& path, Scene& scene, const ByteProgress& progress) {
    write(path, joinMeshes(scene.meshes), progress);
}

template <auto write>
void writeWithNormals(const std::filesystem::path& path, Scene& scene,
                      const ByteProgress& progress) {
    const korvalite::Mesh mesh = joinMeshes(scene.meshes);
    write(path, mesh, scene.hadNormals ? vertexNormals(mesh) : std::vector<float>(), progress);
}

// Suffix, name, whether it carries colours, a mask, UVs and several meshes, and a millimetre.
constexpr std::array kKinds{
    FileKind{".obj", "Wavefront OBJ", true, false, true, false, 1, readOne<readObj>,
             writeWithNormals<writeObj>},
    FileKind{".ply", "Stanford PLY", true, true, true, false, 1, readOne<readPly>,
             writeWithNormals<writePly>},
    FileKind{".gltf", "glTF", true, false, true, true, 0.001, readGltf, writeGltf},
    FileKind{".glb", "GLB", true, false, true, true, 0.001, readGltf, writeGlb},
    FileKind{".stl", "STL", false, false, false, false, 1, readOne<readStl>, writeOne<writeStl>},
    FileKind{".off", "OFF", true, false, false, false, 1, readOne<readOff>, writeOne<writeOff>},
    FileKind{".vok", "Vok", true, true, true, false, 1, readOne<readVok>, writeOne<writeVok>},
};

}  // namespace

std::string lowerSuffixOf(const std::filesystem::path& path) {
    std::string suffix = textOf(path.extension());
    std::ranges::transform(suffix, suffix.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    });
    return suffix;
}

std::span<const FileKind> fileKinds() {
    return kKinds;
}

const FileKind& fileKindOf(const std::filesystem::path& path) {
    const std::string suffix = lowerSuffixOf(path);
    const auto kind =
        std::ranges::find_if(kKinds, [&](const FileKind& k) { return suffix == k.suffix; });
    if (kind != kKinds.end()) return *kind;
    std::string known;
    for (const FileKind& k : kKinds)
        known += (known.empty() ? "" : ", ") + std::string(k.suffix);
    throw korvalite::Error(korvalite::ErrorCode::BadOption,
                           "The format of " + textOf(path) +
                               " is not known by its suffix. The known suffixes are " + known +
                               ".");
}

std::string lossOf(const FileKind& kind, const Scene& scene) {
    const auto anyHas = [&](auto member) {
        return std::ranges::any_of(
            scene.meshes, [&](const NamedMesh& named) { return !(named.mesh.*member).empty(); });
    };
    std::vector<std::string> lost;
    if (anyHas(&korvalite::Mesh::colors) && !kind.carriesColors) lost.emplace_back("colours");
    if (anyHas(&korvalite::Mesh::mask) && !kind.carriesMask) lost.emplace_back("the mask");
    if (anyHas(&korvalite::Mesh::triangleUVs) && !kind.carriesUVs) lost.emplace_back("UVs");
    if (scene.meshes.size() > 1 && !kind.carriesSeveral)
        lost.emplace_back("the names of " + std::to_string(scene.meshes.size()) + " meshes");
    if (lost.empty()) return {};
    std::string sentence = std::string(kind.name) + " cannot hold ";
    for (std::size_t i = 0; i < lost.size(); ++i)
        sentence += (i == 0 ? "" : i + 1 == lost.size() ? " and " : ", ") + lost[i];
    return sentence + "; they are left out.";
}

}  // namespace korva

// SPDX-License-Identifier: MIT
#include "korva/files/gltf/gltf_reader.h"

#include "korva/files/gltf/gltf_file.h"
#include "korva/files/gltf/gltf_losses.h"
#include "korva/files/gltf/gltf_mesh.h"
#include "korva/files/gltf/gltf_nodes.h"
#include "korva/files/imported_mesh.h"

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace korva {

namespace {

/// Makes names unique: "a", "a 2", "a 3".
class UniqueNames {
public:
    std::string of(const std::string& name) {
        std::uint64_t& uses = uses_[name];
        if (++uses == 1) return name;
        for (;; ++uses) {
            std::string numbered = name + ' ' + std::to_string(uses);
            if (uses_.try_emplace(numbered, 1).second) return numbered;
        }
    }

private:
    std::unordered_map<std::string, std::uint64_t> uses_;
};

/// The meshes that are used, each opened once.
using OpenMeshes = std::map<std::uint64_t, GltfMesh>;

OpenMeshes openMeshes(GltfFile& file, const std::vector<GltfInstance>& instances) {
    OpenMeshes meshes;
    std::uint64_t vertices = 0;
    std::uint64_t corners = 0;
    for (const GltfInstance& instance : instances) {
        auto found = meshes.find(instance.mesh);
        if (found == meshes.end())
            found = meshes.emplace(instance.mesh, openGltfMesh(file, instance.mesh)).first;
        vertices += found->second.vertexCount;
        corners += 3 * found->second.triangleCount;
        if (vertices > kMostElements || corners > kMostElements)
            failToRead(file.path(), "its scene has more than 2147483647 vertices or triangle "
                                    "corners.");
    }
    return meshes;
}

std::string nameOf(const GltfItem& root, const GltfInstance& instance) {
    if (!instance.name.empty()) return instance.name;
    const std::string name = root.element("meshes", instance.mesh, "mesh").text("name");
    return name.empty() ? "mesh " + std::to_string(instance.mesh) : name;
}

void noteShapes(const OpenMeshes& meshes, Scene& scene) {
    std::size_t pointsAndLines = 0;
    std::size_t incomplete = 0;
    for (const auto& [index, mesh] : meshes) {
        pointsAndLines += mesh.pointsAndLines;
        incomplete += mesh.incomplete;
    }
    if (pointsAndLines > 0)
        scene.notes.push_back(std::to_string(pointsAndLines) +
                              (pointsAndLines == 1 ? " primitive of points or lines is"
                                                   : " primitives of points or lines are") +
                              " ignored.");
    if (incomplete > 0)
        scene.notes.push_back("The last corners of " + std::to_string(incomplete) +
                              (incomplete == 1 ? " primitive" : " primitives") +
                              " form no triangle and are ignored.");
}

void noteWelding(const GltfWeldCounts& counts, Scene& scene) {
    const auto note = [&](std::uint64_t count, const char* one, const char* several) {
        if (count > 0) scene.notes.push_back(std::to_string(count) + (count == 1 ? one : several));
    };
    note(counts.joined, " vertex that differed only in UVs or normals was joined.",
         " vertices that differed only in UVs or normals were joined.");
    note(counts.differing, " of them had another colour, which is lost.",
         " of them had other colours, which are lost.");
}

void readMeshes(const GltfFile& file, const OpenMeshes& meshes,
                const std::vector<GltfInstance>& instances, Scene& scene) {
    UniqueNames names;
    GltfWeldCounts counts;
    std::size_t empty = 0;
    for (const GltfInstance& instance : instances) {
        const GltfMesh& mesh = meshes.at(instance.mesh);
        if (mesh.triangleCount == 0) {
            ++empty;
            continue;
        }
        scene.hadNormals = scene.hadNormals || mesh.hadNormals;
        scene.meshes.push_back({names.of(nameOf(file.root(), instance)),
                                readGltfMesh(file, mesh, instance.transform, counts)});
        file.pulse();
    }
    noteWelding(counts, scene);
    if (scene.meshes.empty()) failToRead(file.path(), "its scene has no triangles.");
    if (empty > 0)
        scene.notes.push_back(
            std::to_string(empty) +
            (empty == 1 ? " mesh without triangles is" : " meshes without triangles are") +
            " left out.");
}

}  // namespace

Scene readGltf(const std::filesystem::path& path, const ByteProgress& progress) {
    GltfFile file(path, progress);
    const GltfItem root = file.root();
    refuseGltfExtensions(root);
    Scene scene;
    scene.notes = file.notes();
    for (std::string& note : gltfLosses(root))
        scene.notes.push_back(std::move(note));
    const GltfInstances found = gltfInstances(root);
    if (found.elsewhere > 0)
        scene.notes.push_back(std::to_string(found.elsewhere) +
                              (found.elsewhere == 1 ? " node with a mesh outside the scene is"
                                                    : " nodes with meshes outside the scene are") +
                              " left out.");
    const OpenMeshes meshes = openMeshes(file, found.instances);
    noteShapes(meshes, scene);
    readMeshes(file, meshes, found.instances, scene);
    return scene;
}

}  // namespace korva

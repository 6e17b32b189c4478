// SPDX-License-Identifier: MIT
#include "korva/load_scene.h"

#include "korva/files/file_table.h"
#include "korva/files/weld.h"
#include "korva/mask_source.h"
#include "korva/numbers.h"

#include <cmath>
#include <cstdint>

namespace korva {

namespace {

void leaveOut(korvalite::Mesh& mesh, const InputOptions& options) {
    if (!options.colors) mesh.colors = {};
    if (!options.mask) mesh.mask = {};
    if (!options.uvs) {
        mesh.uvs = {};
        mesh.triangleUVs = {};
    }
}

/// What was done to all meshes of a file.
struct Repairs {
    std::uint64_t nonFinite = 0;
    UnusableCounts removed;
    WeldCounts welded;
};

void note(Scene& scene, std::uint64_t count, const char* one, const char* several) {
    if (count == 0) return;
    scene.notes.push_back(withCommas(count) + ' ' + (count == 1 ? one : several));
}

/// Removes triangles at vertices that are not finite, and returns their number. The vertices are
/// then unused.
std::uint64_t removeNonFinite(korvalite::Mesh& mesh) {
    const auto isFinite = [&](std::uint32_t vertex) {
        const float* p = &mesh.positions[3 * std::size_t{vertex}];
        return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]);
    };
    const bool hasUVs = !mesh.triangleUVs.empty();
    std::size_t to = 0;
    for (std::size_t from = 0; from < mesh.triangles.size(); from += 3) {
        if (!isFinite(mesh.triangles[from]) || !isFinite(mesh.triangles[from + 1]) ||
            !isFinite(mesh.triangles[from + 2]))
            continue;
        for (std::size_t k = 0; k < 3; ++k, ++to) {
            mesh.triangles[to] = mesh.triangles[from + k];
            if (hasUVs) mesh.triangleUVs[to] = mesh.triangleUVs[from + k];
        }
    }
    const std::uint64_t removed = (mesh.triangles.size() - to) / 3;
    mesh.triangles.resize(to);
    if (hasUVs) mesh.triangleUVs.resize(to);
    return removed;
}

void repair(korvalite::Mesh& mesh, Repairs& repairs) {
    repairs.nonFinite += removeNonFinite(mesh);
    const UnusableCounts removed = removeUnusable(mesh);
    repairs.removed.degenerateTriangles += removed.degenerateTriangles;
    repairs.removed.duplicateTriangles += removed.duplicateTriangles;
    repairs.removed.unusedVertices += removed.unusedVertices;
}

void join(korvalite::Mesh& mesh, Repairs& repairs) {
    const WeldCounts welded = weld(mesh);
    repairs.welded.joined += welded.joined;
    repairs.welded.differing += welded.differing;
}

void noteRepairs(Scene& scene, const Repairs& repairs) {
    note(scene, repairs.welded.joined, "vertex was joined with another at the same place.",
         "vertices were joined with others at the same place.");
    note(scene, repairs.welded.differing, "of them had another colour or mask, which is lost.",
         "of them had other colours or masks, which are lost.");
    note(scene, repairs.nonFinite, "triangle at a vertex that is not finite was removed.",
         "triangles at vertices that are not finite were removed.");
    note(scene, repairs.removed.degenerateTriangles, "triangle with a vertex twice was removed.",
         "triangles with a vertex twice were removed.");
    note(scene, repairs.removed.duplicateTriangles, "triangle that was there twice was removed.",
         "triangles that were there twice were removed.");
    note(scene, repairs.removed.unusedVertices, "vertex without triangles was removed.",
         "vertices without triangles were removed.");
}

/// Roughly the size of its file: a progress bar need not be exact.
std::uint64_t aboutBytesOf(const Scene& scene) {
    return 24 * std::uint64_t{scene.vertexCount()} + 16 * std::uint64_t{scene.triangleCount()} + 1;
}

}  // namespace

Scene loadScene(const std::filesystem::path& path, const InputOptions& options,
                const ByteProgress& progress) {
    Scene scene = fileKindOf(path).read(path, progress);
    if (!options.maskSource.empty()) setMask(scene, options.maskSource);
    Repairs repairs;
    for (auto& [name, mesh] : scene.meshes) {
        leaveOut(mesh, options);
        if (options.weld) join(mesh, repairs);
        if (options.repair) repair(mesh, repairs);
    }
    noteRepairs(scene, repairs);
    return scene;
}

void requireTriangles(const Scene& scene, const std::filesystem::path& path) {
    if (scene.triangleCount() > 0) return;
    throw korvalite::Error(korvalite::ErrorCode::BadMesh,
                           textOf(path) + " has no triangles to simplify.");
}

std::string saveScene(const std::filesystem::path& path, Scene& scene,
                      const ByteProgress& progress) {
    const FileKind& kind = fileKindOf(path);
    const std::string loss = lossOf(kind, scene);
    const std::uint64_t expected = aboutBytesOf(scene);
    kind.write(path, scene, [&](std::uint64_t done, std::uint64_t) {
        if (progress) progress(std::min(done, expected), expected);
    });
    return loss;
}

}  // namespace korva

// SPDX-License-Identifier: MIT
#include "progressive/progressive_mesh.h"

#include "formats/kvm_reader.h"
#include "formats/kvm_writer.h"
#include "library/mesh_copy.h"
#include "library/paths.h"
#include "library/simplify_run.h"
#include "library/watched_run.h"
#include "platform/platform.h"
#include "progressive/level_update.h"
#include <korvalite/korvalite.h>

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

namespace korvalite {

struct ProgressiveMesh::State {
    core::ProgressiveMesh pm;
    Report report;
};

namespace {

constexpr std::int32_t kWholeFile = -1;

/// On the way up, a move can end one triangle above its target, because most collapses remove two.
/// The second move goes back below it, so that a level does not depend on the previous one.
void moveTo(core::ProgressiveMesh& pm, std::uint32_t wanted) {
    constexpr std::uint32_t kMost = std::numeric_limits<std::int32_t>::max();
    const auto target = static_cast<std::int32_t>(std::min(wanted, kMost));
    core::updateMeshAtLevel(pm, target);
    if (pm.activeCount() > wanted) core::updateMeshAtLevel(pm, target);
}

}  // namespace

ProgressiveMesh::ProgressiveMesh(std::unique_ptr<State> state) : state_(std::move(state)) {}
ProgressiveMesh::ProgressiveMesh(ProgressiveMesh&& other) noexcept = default;
ProgressiveMesh& ProgressiveMesh::operator=(ProgressiveMesh&& other) noexcept = default;
ProgressiveMesh::~ProgressiveMesh() = default;

ProgressiveMesh ProgressiveMesh::build(const MeshView& mesh, const Options& options,
                                       const Monitor& monitor) {
    auto state = std::make_unique<State>();
    state->report = runSimplification(state->pm, mesh, options, monitor);
    return ProgressiveMesh(std::move(state));
}

ProgressiveMesh ProgressiveMesh::load(const std::filesystem::path& path) {
    auto state = std::make_unique<State>();
    const core::HeapString text = pathText(path);
    const bool loaded = core::loadProgressiveMesh(state->pm, text, kWholeFile) == 0;
    // The format has no magic number, so the core reads almost any short file as a mesh without
    // vertices.
    if (!loaded || state->pm.mesh.vertices.empty()) {
        const bool isThere = core::platform::isRegularFile(text.c_str());
        throw Error(ErrorCode::CannotRead,
                    std::string("Cannot read ") + text.c_str() +
                        (isThere ? ": it is not a progressive mesh, or it is damaged."
                                 : ": no such file."));
    }
    return ProgressiveMesh(std::move(state));
}

void ProgressiveMesh::save(const std::filesystem::path& path) {
    const core::HeapString text = pathText(path);
    if (core::writeProgressiveMesh(state_->pm, text)) return;
    throw Error(ErrorCode::CannotWrite, std::string("Cannot write ") + text.c_str() +
                                            ": the folder may be missing or read-only, or the "
                                            "disk full.");
}

const Report& ProgressiveMesh::report() const {
    return state_->report;
}

std::uint32_t ProgressiveMesh::finestVertexCount() const {
    return static_cast<std::uint32_t>(state_->pm.mesh.vertexCount());
}

std::uint32_t ProgressiveMesh::vertexCount() const {
    return state_->pm.mesh.numActiveVertices;
}

std::uint32_t ProgressiveMesh::finestTriangleCount() const {
    return static_cast<std::uint32_t>(state_->pm.mesh.triangleCount());
}

std::uint32_t ProgressiveMesh::triangleCount() const {
    return state_->pm.mesh.numActiveTriangles;
}

Mesh ProgressiveMesh::level(const Target& target, const Monitor& monitor) {
    core::ProgressiveMesh& pm = state_->pm;
    const std::uint32_t wanted = applyTarget(pm, target);
    WatchedRun watched(pm, monitor, Phase::ChangingLevel);
    moveTo(pm, wanted);
    watched.finish();
    return copyOut(pm.mesh);
}

Measurement ProgressiveMesh::measureLevel(const Target& target, const MeasureOptions& options,
                                          const Monitor& monitor) {
    const Mesh finest = level(Target::percent(100), monitor);
    const Mesh coarse = level(target, monitor);
    return measure(finest.view(), coarse.view(), options, monitor);
}

}  // namespace korvalite

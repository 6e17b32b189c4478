// SPDX-License-Identifier: MIT
#pragma once

#include "korva/simplify_scene.h"

#include <korvalite/korvalite.h>

#include <cstdint>
#include <optional>

namespace korva {

/// A mesh with all its levels of detail, and how far each is from it. Holds the mesh, a tree of its
/// triangles and the progressive mesh in memory.
class MeasuredLevels {
public:
    /// The options' target is the coarsest level. A mesh without triangles has no error at any.
    MeasuredLevels(korvalite::Mesh mesh, const korvalite::Options& options,
                   const korvalite::Monitor& monitor);

    struct Level {
        korvalite::Mesh mesh;
        korvalite::Measurement measurement;  // from the mesh to the level
    };
    [[nodiscard]] Level level(const korvalite::Target& target, const korvalite::Monitor& monitor);

    /// The coarsest level within `limit` of the mesh: no point of either is farther from the other.
    /// Halves the range of levels until it is one percent wide. The error need not grow from level
    /// to level, so a coarser level within the limit may exist.
    [[nodiscard]] Level coarsestWithin(double limit, const MonitorMaker& monitorFor);

    /// Of the mesh.
    [[nodiscard]] double diagonal() const { return surface_ ? surface_->diagonal() : 0; }
    [[nodiscard]] std::uint32_t finestVertexCount() const {
        return progressive_.finestVertexCount();
    }
    [[nodiscard]] const korvalite::Report& report() const { return progressive_.report(); }

private:
    korvalite::Mesh original_;
    std::optional<korvalite::Surface> surface_;  // if the mesh has triangles
    korvalite::ProgressiveMesh progressive_;
    std::uint32_t coarsest_;
    korvalite::MeasureOptions measuring_;
};

}  // namespace korva

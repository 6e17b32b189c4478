// SPDX-License-Identifier: MIT
//
// A half-edge collapse on the index arrays: one vertex is removed, the other is kept and moves. The
// collapse is carried out, tested on the result, and undone if the test fails.
//
// Several threads may collapse at once if each has reserved both vertices and their rings.
#pragma once

#include "collapse/sharing.h"
#include "collapse/work_record.h"
#include "collapse/working_mesh.h"
#include "mesh/corner_lists.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

namespace korvalite::core {

enum class CollapseResult {
    Done,
    Refused,            // a normal would flip, or the link test fails
    RefusedBothBorder,  // the link test fails between two border vertices
};

/// The triangles that flipped most recently, latest first.
class TurnedOverTriangles {
public:
    [[nodiscard]] std::span<const std::int32_t> triangles() const {
        return std::span(triangles_).first(count_);
    }
    void add(std::int32_t triangle) {
        const auto known = std::ranges::find(triangles(), triangle);
        auto place = static_cast<std::size_t>(known - triangles().begin());
        if (place == count_) place = count_ < kMost ? count_++ : kMost - 1;
        std::shift_right(triangles_.begin(), triangles_.begin() + place + 1, 1);
        triangles_.front() = triangle;
    }

private:
    static constexpr std::size_t kMost = 16;
    std::array<std::int32_t, kMost> triangles_{};
    std::size_t count_ = 0;
};

/// What a driver or thread keeps from collapse to collapse.
struct CollapseScratch {
    TurnedOverTriangles turnedOver;
    std::uint64_t trianglesTested = 0;  // around kept vertices, so far
    // Scratch.
    IndexList keptCorners;
    IndexList corners;
};

/// Collapses `removed` onto `kept` at `position`. Fills `record`, which must be clear. A refusal
/// leaves the mesh unchanged except for the order of corner lists; with ProtectTopology off there
/// is no link test, and the order does not change either.
///
/// Shared, it does not touch the queue: with ProtectTopology off, an orphan stays active and
/// queued, and its own collapse is refused.
template <SharingPolicy Sharing>
CollapseResult CollapseEdge(WorkingMesh& work, std::int32_t removed, std::int32_t kept,
                            const FloatVec3& position, CollapseRecord& record,
                            CollapseScratch& scratch, const Sharing& sharing);

/// Undoes a successful collapse. The corner lists end up in a different order, and vertices that
/// the collapse removed from the queue are not queued again.
template <SharingPolicy Sharing>
void UndoCollapse(DMesh& mesh, std::int32_t removed, std::int32_t kept,
                  const CollapseRecord& record, CollapseScratch& scratch, const Sharing& sharing);

}  // namespace korvalite::core

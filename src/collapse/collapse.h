// SPDX-License-Identifier: MIT
//
// A half-edge collapse on the index arrays: v is removed, w is kept and moves. The collapse is
// carried out, tested on the result, and undone if the test fails.
//
// The plain forms are for one thread. The _MT forms may run on several threads at once if each
// thread has reserved both vertices and their rings.
#pragma once

#include "collapse/working_mesh.h"
#include "mesh/corner_lists.h"
#include "splits/vsplit.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

namespace korvalite {

struct CriticalSections;

enum class CollapseResult {
    Done,
    Refused,            // a normal would flip, or the link test fails
    RefusedBothBorder,  // the link test fails between two border vertices
};

/// One collapse and its results. The driver reuses the record, so a collapse allocates nothing once
/// the lists have grown.
struct CollapseRecord {
    VSplit split;
    CollapseFlags flags;
    // The ring of w after the collapse, gathered by the link test; empty with ProtectTopology off,
    // which skips that test.
    IndexList neighbours;
    IndexList ringCorners;

    void clear() {
        split.clear();
        flags = {};
        neighbours.clear();
        ringCorners.clear();
    }
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

/// State that a driver or thread keeps between flip tests.
struct CollapseScratch {
    TurnedOverTriangles turnedOver;
    std::uint64_t trianglesTested = 0;  // around kept vertices, so far
};

/// Collapses v onto w at `position`. Fills `record`, which must be clear. A refusal leaves the mesh
/// unchanged except for the order of corner lists; with ProtectTopology off there is no link test,
/// and the order does not change either.
CollapseResult CollapseEdge(WorkingMesh& work, std::int32_t v, std::int32_t w,
                            const FloatVec3& position, CollapseRecord& record,
                            CollapseScratch& scratch);

/// The same, but does not touch the queue: with ProtectTopology off, an orphan stays active and
/// queued, and its own collapse is refused.
CollapseResult CollapseEdge_MT(WorkingMesh& work, std::int32_t v, std::int32_t w,
                               const FloatVec3& position, CollapseRecord& record,
                               CollapseScratch& scratch, CriticalSections& sections);

/// Undoes a successful collapse. The corner lists end up in a different order, and vertices that
/// the collapse removed from the queue are not queued again.
void UndoCollapse(WorkingMesh& work, std::int32_t v, std::int32_t w, const VSplit& split,
                  const CollapseFlags& flags);
void UndoCollapse_MT(WorkingMesh& work, std::int32_t v, std::int32_t w, const VSplit& split,
                     const CollapseFlags& flags, CriticalSections& sections);

}  // namespace korvalite

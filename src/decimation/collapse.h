// SPDX-License-Identifier: MIT
//
// A half-edge collapse on the index arrays: v goes, w stays and moves. Carried out, tested on the
// result, and undone if the test fails.
//
// The plain forms are for one thread. The _MT forms may run on several threads at once, each of
// which has reserved both vertices and their rings.
#pragma once

#include "decimation/vsplit.h"
#include "mesh/corner_lists.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

namespace korvalite {

struct CriticalSections;
struct ProgressiveMesh;

enum class CollapseResult {
    Done,
    Refused,            // a normal would turn over, or w's link would be no disc
    RefusedBothBorder,  // the link test between two border vertices
};

/// One collapse and what it leaves behind. Kept by the driver and used again, so that a collapse
/// allocates nothing once the lists have grown.
struct CollapseRecord {
    VSplit split;
    CollapseFlags flags;
    // The ring of w after the collapse, as gathered by the link test; empty with ProtectTopology
    // off, when there is no such test.
    IndexList neighbours;
    IndexList ringCorners;

    void clear() {
        split.clear();
        flags = {};
        neighbours.clear();
        ringCorners.clear();
    }
};

/// The triangles that turned over last, the latest first.
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

/// What a driver or thread keeps from one normal test to the next.
struct CollapseScratch {
    TurnedOverTriangles turnedOver;
    std::uint64_t trianglesTested = 0;  // around kept vertices, so far
};

/// Collapses v onto w at `position`. Fills `record`, which must be clear. After a refusal nothing
/// of the mesh has changed but the order of corner lists (and, with ProtectTopology off, nothing at
/// all: no link test is made).
CollapseResult CollapseEdge(ProgressiveMesh& pm, std::int32_t v, std::int32_t w,
                            const FloatVec3& position, CollapseRecord& record,
                            CollapseScratch& scratch);

/// The same, but the queue is left alone: with ProtectTopology off, a vertex that loses its last
/// triangle stays active and queued, and its own collapse is refused.
CollapseResult CollapseEdge_MT(ProgressiveMesh& pm, std::int32_t v, std::int32_t w,
                               const FloatVec3& position, CollapseRecord& record,
                               CollapseScratch& scratch, CriticalSections& sections);

/// Takes back a collapse that stands. The corner lists come back in another order, and vertices
/// that the collapse took out of the queue are not queued again.
void UndoCollapse(ProgressiveMesh& pm, std::int32_t v, std::int32_t w, const VSplit& split,
                  const CollapseFlags& flags);
void UndoCollapse_MT(ProgressiveMesh& pm, std::int32_t v, std::int32_t w, const VSplit& split,
                     const CollapseFlags& flags, CriticalSections& sections);

}  // namespace korvalite

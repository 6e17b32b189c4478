// SPDX-License-Identifier: MIT
#pragma once

#include "collapse/working_mesh.h"
#include "mesh/corner_lists.h"
#include "ranking/neighbourhood_marks.h"

#include <cstddef>
#include <cstdint>
#include <numeric>
#include <span>
#include <vector>

namespace korvalite::core {

/// The quadrics of a neighbourhood's vertices, each summed on first use; in mostly flat areas few
/// are used. A sum takes the triangles in the order listed, so it has the same bits as when all
/// quadrics are summed at once.
///
/// Belongs to one thread; keeps its capacity from neighbourhood to neighbourhood.
template <typename Metric>
class QuadricsOnDemand {
public:
    using Quadric = typename Metric::Quadric;

    /// `triangles` are the listed triangles, which must not change until the last call of `of`;
    /// `marks` has the slots of their vertices, all below `slotCount`.
    void prepare(const DMesh& mesh, std::span<const std::int32_t> triangles,
                 const NeighbourhoodMarks& marks, std::size_t slotCount) {
        triangles_ = triangles;
        triangleQuadrics_.resize(triangles.size());
        isTriangleKnown_.assign(triangles.size(), false);
        slotQuadrics_.resize(slotCount);
        isSlotKnown_.assign(slotCount, false);
        sortBySlot(mesh, marks, slotCount);
    }

    /// The quadric of the vertex in a slot; valid until the next `prepare`.
    const Quadric& of(const WorkingMesh& work, std::uint16_t slot) {
        Quadric& sum = slotQuadrics_[slot];
        if (isSlotKnown_[slot]) return sum;
        isSlotKnown_[slot] = true;
        sum = {};
        for (std::uint32_t i = slot == 0 ? 0 : end_[slot - 1U]; i < end_[slot]; ++i)
            sum += triangleQuadric(work, places_[i]);
        return sum;
    }

private:
    /// A counting sort that lists the places of each slot's triangles in ascending order.
    void sortBySlot(const DMesh& mesh, const NeighbourhoodMarks& marks, std::size_t slotCount) {
        end_.assign(slotCount + 1, 0);
        forEachSlot(mesh, marks,
                    [this](std::uint16_t slot, std::uint32_t /*place*/) { ++end_[slot + 1U]; });
        std::partial_sum(end_.begin(), end_.end(), end_.begin());
        places_.resize(end_.back());
        // Each entry starts as the end of the previous slot and advances to the end of its own.
        forEachSlot(mesh, marks, [this](std::uint16_t slot, std::uint32_t place) {
            places_[end_[slot]++] = place;
        });
    }

    template <typename Visit>
    void forEachSlot(const DMesh& mesh, const NeighbourhoodMarks& marks, Visit visit) const {
        for (std::uint32_t place = 0; place < triangles_.size(); ++place) {
            const std::int32_t first = 3 * triangles_[place];
            for (std::int32_t corner = first; corner < first + 3; ++corner) {
                const auto vertex = static_cast<std::size_t>(vertexAt(mesh, corner));
                const std::uint16_t slot = marks.vertexSlot[vertex];
                if (slot != NeighbourhoodMarks::kNoSlot) visit(slot, place);
            }
        }
    }

    const Quadric& triangleQuadric(const WorkingMesh& work, std::uint32_t place) {
        if (!isTriangleKnown_[place]) {
            isTriangleKnown_[place] = true;
            triangleQuadrics_[place] = Metric::triangleQuadric(work.mesh, work, triangles_[place]);
        }
        return triangleQuadrics_[place];
    }

    std::span<const std::int32_t> triangles_;
    std::vector<Quadric> triangleQuadrics_;
    std::vector<bool> isTriangleKnown_;
    std::vector<Quadric> slotQuadrics_;
    std::vector<bool> isSlotKnown_;
    std::vector<std::uint32_t> end_;     // of each slot's part of places_
    std::vector<std::uint32_t> places_;  // in triangles_
};

}  // namespace korvalite::core

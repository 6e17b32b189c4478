// SPDX-License-Identifier: MIT
#pragma once

#include "mesh/dmesh.h"
#include "metric/metric_rules.h"

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

    /// `triangles` are the listed triangles and `slots` the slots of their three vertices each;
    /// neither must change until the last call of `of`. Slots from `slotCount` on have no quadric.
    void prepare(std::span<const std::int32_t> triangles, std::span<const std::uint32_t> slots,
                 std::size_t slotCount) {
        triangles_ = triangles;
        slots_ = slots.first(3 * triangles.size());
        triangleQuadrics_.resize(triangles.size());
        isTriangleKnown_.assign(triangles.size(), false);
        slotQuadrics_.resize(slotCount);
        isSlotKnown_.assign(slotCount, false);
        sortBySlot(slotCount);
    }

    /// The quadric of the vertex in a slot; valid until the next `prepare`.
    const Quadric& of(const DMesh& mesh, const MetricRules& rules, std::uint32_t slot) {
        Quadric& sum = slotQuadrics_[slot];
        if (isSlotKnown_[slot]) return sum;
        isSlotKnown_[slot] = true;
        sum = {};
        for (std::uint32_t i = slot == 0 ? 0 : end_[slot - 1U]; i < end_[slot]; ++i)
            sum += triangleQuadric(mesh, rules, places_[i]);
        return sum;
    }

private:
    /// A counting sort that lists the places of each slot's triangles in ascending order.
    void sortBySlot(std::size_t slotCount) {
        end_.assign(slotCount + 1, 0);
        forEachSlot([this](std::uint32_t slot, std::uint32_t /*place*/) { ++end_[slot + 1]; });
        std::partial_sum(end_.begin(), end_.end(), end_.begin());
        places_.resize(end_.back());
        // Each entry starts as the end of the previous slot and advances to the end of its own.
        forEachSlot(
            [this](std::uint32_t slot, std::uint32_t place) { places_[end_[slot]++] = place; });
    }

    template <typename Visit>
    void forEachSlot(Visit visit) const {
        for (std::uint32_t corner = 0; corner < slots_.size(); ++corner) {
            if (slots_[corner] < slotQuadrics_.size()) visit(slots_[corner], corner / 3);
        }
    }

    const Quadric& triangleQuadric(const DMesh& mesh, const MetricRules& rules,
                                   std::uint32_t place) {
        if (!isTriangleKnown_[place]) {
            isTriangleKnown_[place] = true;
            triangleQuadrics_[place] = Metric::triangleQuadric(mesh, rules, triangles_[place]);
        }
        return triangleQuadrics_[place];
    }

    std::span<const std::int32_t> triangles_;
    std::span<const std::uint32_t> slots_;
    std::vector<Quadric> triangleQuadrics_;
    std::vector<bool> isTriangleKnown_;
    std::vector<Quadric> slotQuadrics_;
    std::vector<bool> isSlotKnown_;
    std::vector<std::uint32_t> end_;     // of each slot's part of places_
    std::vector<std::uint32_t> places_;  // in triangles_
};

}  // namespace korvalite::core
